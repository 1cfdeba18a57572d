// SPDX-License-Identifier: MIT
#include "ui/BlockingCall.h"

#include "ui/WindowNote.h"

#include <QApplication>
#include <QDialog>
#include <QEvent>
#include <QEventLoop>
#include <QThread>
#include <QTimer>

namespace {

class PressFilter : public QObject
{
public:
    bool eventFilter(QObject*, QEvent* event) override
    {
        // A box that a timer of the host opens meanwhile is answered as ever.
        if (QThread::currentThread()->loopLevel() > level)
            return false;
        switch (event->type()) {
        case QEvent::ContextMenu:
        case QEvent::InputMethod:
        case QEvent::KeyPress:
        case QEvent::MouseButtonDblClick:
        case QEvent::MouseButtonPress:
        case QEvent::ShortcutOverride:
        case QEvent::TouchBegin:
        case QEvent::Wheel:
            event->accept();
            return true;
        default:
            return false;
        }
    }

private:
    const int level = QThread::currentThread()->loopLevel();
};

/// The request's event loop leaves input in the queue. A second click would else come when the button is
/// enabled again.
void dropQueuedPresses()
{
    PressFilter filter;
    qApp->installEventFilter(&filter);
    QCoreApplication::processEvents();
}

/// Whether the application is on its way out: its event loops end before they begin.
bool applicationQuits()
{
    bool ran = false;
    QEventLoop loop;
    QTimer::singleShot(0, &loop, [&] {
        ran = true;
        loop.quit();
    });
    loop.exec(QEventLoop::ExcludeUserInputEvents);
    return !ran;
}

} // namespace

DisabledWhile::DisabledWhile(QWidget* target)
    : widget(target)
{
    if (!widget)
        return;
    QWidget* focused = widget->window()->focusWidget();
    if (focused && (focused == widget || widget->isAncestorOf(focused))) {
        focus = focused;
        focus->clearFocus();
    }
    wasEnabled = widget->isEnabledTo(widget->parentWidget());
    widget->setEnabled(false);
}

DisabledWhile::~DisabledWhile()
{
    if (!widget || !wasEnabled)
        return;
    widget->setEnabled(true);
    if (focus && !widget->window()->focusWidget())
        focus->setFocus();
}

Waiting::Waiting(QWidget* within, const QString& what)
{
    QWidget* window = within->window();
    for (QWidget* part : window->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly)) {
        if (!part->isWindow())
            disabled.emplace_back(part);
    }
    if (window->isVisible())
        note = new WindowNote(window, what);
    QApplication::setOverrideCursor(Qt::WaitCursor);
}

Waiting::~Waiting()
{
    dropQueuedPresses();
    QApplication::restoreOverrideCursor();
    delete note;
}

BuiltApart::BuiltApart(QDialog* target)
    : dialog(target)
    , parent(target->parentWidget())
{
    dialog->setParent(nullptr, dialog->windowFlags());
}

BuiltApart::~BuiltApart()
{
    if (parent)
        dialog->setParent(parent, dialog->windowFlags());
}

Outcome callPlatform(QWidget* within, const QString& what, const std::function<bool()>& request)
{
    const QPointer<QWidget> window(within->window());
    const bool wasOpen = window->isVisible();
    bool done = false;
    {
        const Waiting waiting(window, what);
        done = request();
    }
    // The window last: it may go while the application is asked.
    if ((!done && applicationQuits()) || !window || (wasOpen && !window->isVisible()))
        return Outcome::Abandoned;
    return done ? Outcome::Done : Outcome::Refused;
}
