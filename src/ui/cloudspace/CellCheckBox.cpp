// SPDX-License-Identifier: MIT
#include "ui/cloudspace/CellCheckBox.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QStyleOptionButton>

namespace tav {

CellCheckBox::CellCheckBox(QWidget* cell)
{
    auto* layout = new QHBoxLayout(cell);
    layout->setContentsMargins(0, 0, 0, 0); // the row is no higher than its texts
    layout->addStretch();
    layout->addWidget(this);
    layout->addStretch();
}

void CellCheckBox::paintEvent(QPaintEvent* event)
{
    QCheckBox::paintEvent(event);
    QStyleOptionButton option;
    initStyleOption(&option);
    const QRect indicator = style()->subElementRect(QStyle::SE_CheckBoxIndicator, &option, this);
    QColor outline = palette().color(QPalette::Text);
    outline.setAlphaF(0.5);
    QPainter painter(this);
    painter.setPen(outline);
    painter.drawRect(indicator.adjusted(0, 0, -1, -1));
}

} // namespace tav
