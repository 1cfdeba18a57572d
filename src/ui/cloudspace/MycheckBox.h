// SPDX-License-Identifier: MIT
#pragma once

#include <QWidget>

class QCheckBox;

/// A check box in the middle of a table's cell, which signals its row when it becomes checked.
class MycheckBox : public QWidget
{
    Q_OBJECT

public:
    MycheckBox(int tableRow, QWidget* parent);

    QCheckBox* checkBox() const { return box; }

signals:
    void boxChecked(int row);

private slots:
    void _onCheckStateChange(int state);

private:
    QCheckBox* box;
    int row;
};
