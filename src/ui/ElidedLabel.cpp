// SPDX-License-Identifier: MIT
#include "ui/ElidedLabel.h"

#include <QHelpEvent>
#include <QPainter>
#include <QStyle>
#include <QTextDocument>
#include <QTextLayout>
#include <QToolTip>

namespace tav {

namespace {

QStringList brokenLines(const QString& text, const QFont& font, int width)
{
    QTextLayout layout(text, font);
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(option);
    QStringList lines;
    layout.beginLayout();
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(width);
        lines.append(text.mid(line.textStart(), line.textLength()));
    }
    layout.endLayout();
    return lines;
}

} // namespace

QStringList fittingLines(const QString& text, const QFont& font, int width, int maximumLines)
{
    const QFontMetrics metrics(font);
    if (maximumLines == 1)
        return {metrics.elidedText(text, Qt::ElideMiddle, width)};
    const int step = qMax(metrics.averageCharWidth(), 1);
    for (int room = width * maximumLines; room > 0; room -= step) {
        QStringList lines = brokenLines(metrics.elidedText(text, Qt::ElideMiddle, room), font, width);
        if (lines.size() <= maximumLines)
            return lines;
    }
    return {};
}

ElidedLabel::ElidedLabel(const QString& text, int widthLimit, int lineLimit)
    : maximumHint(widthLimit)
    , maximumLines(lineLimit)
{
    setTextFormat(Qt::PlainText);
    setText(text);
}

QSize ElidedLabel::sizeHint() const
{
    return {qMin(fontMetrics().horizontalAdvance(text()) + 2, maximumHint),
        maximumLines * fontMetrics().height()};
}

QSize ElidedLabel::minimumSizeHint() const
{
    return {0, maximumLines * fontMetrics().height()};
}

void ElidedLabel::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    QRect line = contentsRect();
    if (maximumLines > 1)
        line.setHeight(fontMetrics().height());
    for (const QString& text : fitting()) {
        style()->drawItemText(
            &painter, line, int(alignment()), colours(), isEnabled(), text.trimmed(), foregroundRole());
        line.translate(0, line.height());
    }
}

/// Shows the tooltip without the label as its parent, whose style sheet would colour it.
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

QStringList ElidedLabel::fitting() const
{
    return fittingLines(text(), font(), contentsRect().width(), maximumLines);
}

QString plainToolTip(const QString& text)
{
    return text.isEmpty() ? text : Qt::convertFromPlainText(text, Qt::WhiteSpaceNormal);
}

} // namespace tav
