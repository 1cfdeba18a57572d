// SPDX-License-Identifier: MIT
#pragma once

#include <QCheckBox>

namespace tav {

/// A check box in the middle of a table's cell. Styles outline theirs in a shade of the window, which in a
/// dark palette cannot be told from the table; this one's is of the text's colour.
class CellCheckBox : public QCheckBox
{
public:
    /// \param cell gets a layout with the box in its middle
    explicit CellCheckBox(QWidget* cell);

protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace tav
