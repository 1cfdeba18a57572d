// SPDX-License-Identifier: MIT
#pragma once

#include <QColor>
#include <QEvent>
#include <QPainter>
#include <QWidget>

namespace tav {

/// Draws a focus frame on a widget whose style or style sheet draws none. The widget owns it.
class FocusMark : public QObject
{
public:
    /// \param markColour by default that of the widget's texts
    explicit FocusMark(QWidget* target, const QColor& markColour = QColor())
        : QObject(target)
        , widget(target)
        , colour(markColour)
    {
        widget->installEventFilter(this);
    }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() != QEvent::Paint || !widget->hasFocus())
            return false;
        watched->event(event);
        QPainter painter(widget);
        const QColor textColour = widget->palette().color(QPalette::Text);
        painter.setPen(QPen(colour.isValid() ? colour : textColour, 1, Qt::DotLine));
        painter.drawRect(QRectF(widget->rect()).adjusted(0.5, 0.5, -0.5, -0.5));
        return true;
    }

private:
    QWidget* widget;
    QColor colour;
};

} // namespace tav
