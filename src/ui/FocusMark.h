// SPDX-License-Identifier: MIT
#pragma once

#include <QEvent>
#include <QPainter>
#include <QWidget>

/// Marks a widget while it has the focus, for one whose style or style sheet does not. The widget owns it.
class FocusMark : public QObject
{
public:
    explicit FocusMark(QWidget* target)
        : QObject(target)
        , widget(target)
    {
        widget->installEventFilter(this);
    }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() != QEvent::Paint || !widget->hasFocus())
            return false;
        watched->event(event);
        QPainter painter(widget);
        painter.setPen(QPen(widget->palette().color(QPalette::Text), 1, Qt::DotLine));
        painter.drawRect(QRectF(widget->rect()).adjusted(0.5, 0.5, -0.5, -0.5));
        return true;
    }

private:
    QWidget* widget;
};
