// SPDX-License-Identifier: MIT
#include "ui/BlockingCall.h"

#include <QAbstractButton>
#include <QApplication>
#include <QEvent>

namespace {

class WaitCursor
{
public:
    WaitCursor() { QApplication::setOverrideCursor(Qt::WaitCursor); }
    ~WaitCursor() { QApplication::restoreOverrideCursor(); }
    WaitCursor(const WaitCursor&) = delete;
    WaitCursor& operator=(const WaitCursor&) = delete;
};

class PressFilter : public QObject
{
public:
    bool eventFilter(QObject*, QEvent* event) override
    {
        switch (event->type()) {
        case QEvent::KeyPress:
        case QEvent::MouseButtonDblClick:
        case QEvent::MouseButtonPress:
        case QEvent::ShortcutOverride:
        case QEvent::TouchBegin:
            event->accept();
            return true;
        default:
            return false;
        }
    }
};

/// The request's event loop leaves input in the queue. A second click would else come when the button is
/// enabled again.
void dropQueuedPresses()
{
    PressFilter filter;
    qApp->installEventFilter(&filter);
    QCoreApplication::processEvents();
}

} // namespace

DisabledWhile::DisabledWhile(QWidget* target)
    : widget(target)
{
    if (!widget)
        return;
    hadFocus = widget->window()->focusWidget() == widget;
    wasEnabled = widget->isEnabled();
    if (hadFocus)
        widget->clearFocus();
    widget->setEnabled(false);
}

DisabledWhile::~DisabledWhile()
{
    if (!widget || !wasEnabled)
        return;
    widget->setEnabled(true);
    if (hadFocus && !widget->window()->focusWidget())
        widget->setFocus();
}

Outcome callPlatform(QAbstractButton* pressed, const std::function<bool()>& request)
{
    const QPointer<QWidget> window(pressed->window());
    const bool wasOpen = window->isVisible();
    bool done = false;
    {
        const DisabledWhile disabled(pressed);
        const WaitCursor cursor;
        done = request();
        dropQueuedPresses();
    }
    if (!window || (wasOpen && !window->isVisible()))
        return Outcome::Abandoned;
    return done ? Outcome::Done : Outcome::Refused;
}
