// SPDX-License-Identifier: MIT
#include "ui/cloudspace/ItemWidget.h"

#include "ui/cloudspace/CellCheckBox.h"

using namespace tav;

ItemWidget::ItemWidget(QWidget* parent)
    : QWidget(parent)
    , box(new CellCheckBox(this))
{
    box->setStyleSheet("QCheckBox::indicator{Width: 12px;Height: 12px;}");
}
