// SPDX-License-Identifier: MIT
#include "ui/cloudspace/MycheckBox.h"

#include "ui/cloudspace/CellCheckBox.h"

using namespace tav;

MycheckBox::MycheckBox(int tableRow, QWidget* parent)
    : QWidget(parent)
    , box(new CellCheckBox(this))
    , row(tableRow)
{
    connect(box, &QCheckBox::stateChanged, this, &MycheckBox::_onCheckStateChange);
}

void MycheckBox::_onCheckStateChange(int state)
{
    if (state != Qt::Unchecked)
        emit boxChecked(row);
}
