// SPDX-License-Identifier: MIT
#pragma once

#include <QCheckBox>

namespace tav {

/// A check box in the middle of a table's cell. Styles outline check boxes in a shade of the window's colour,
/// which cannot be seen on the table in a dark palette; this one has an outline in the text's colour.
class CellCheckBox : public QCheckBox
{
public:
    /// \param cell gets a layout with the box in its middle
    explicit CellCheckBox(QWidget* cell);

protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace tav
