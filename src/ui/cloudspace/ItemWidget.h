// SPDX-License-Identifier: MIT
#pragma once

#include <QWidget>

class QCheckBox;

/// A small check box in the middle of a table's cell.
class ItemWidget : public QWidget
{
    Q_OBJECT

public:
    explicit ItemWidget(QWidget* parent);

    QCheckBox* checkBox() const { return box; }

private:
    QCheckBox* box;
};
