// SPDX-License-Identifier: MIT
#include "ui/ElidedLabel.h"

#include <QHelpEvent>
#include <QPainter>
#include <QStyle>
#include <QTextDocument>
#include <QToolTip>

ElidedLabel::ElidedLabel(const QString& text, int maximumWidth)
    : maximum(maximumWidth)
{
    setTextFormat(Qt::PlainText);
    setText(text);
}

QSize ElidedLabel::sizeHint() const
{
    return {qMin(fontMetrics().horizontalAdvance(text()) + 2, maximum), fontMetrics().height()};
}

QSize ElidedLabel::minimumSizeHint() const
{
    return {0, fontMetrics().height()};
}

void ElidedLabel::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    style()->drawItemText(
        &painter, contentsRect(), int(alignment()), colours(), isEnabled(), fitting(), foregroundRole());
}

/// Not in the colours of a style sheet that is meant for the label.
bool ElidedLabel::event(QEvent* event)
{
    if (event->type() != QEvent::ToolTip)
        return QLabel::event(event);
    QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), toolTip());
    return true;
}

void ElidedLabel::resizeEvent(QResizeEvent* event)
{
    QLabel::resizeEvent(event);
    setToolTip(isCut() ? plainToolTip(text()) : QString());
}

QString ElidedLabel::fitting() const
{
    return fontMetrics().elidedText(text(), Qt::ElideMiddle, contentsRect().width());
}

QString plainToolTip(const QString& text)
{
    return text.isEmpty() ? text : Qt::convertFromPlainText(text, Qt::WhiteSpaceNormal);
}
