// SPDX-License-Identifier: MIT
#include "ui/BlockingCall.h"

#include "ui/WindowNote.h"

#include <QApplication>
#include <QDialog>
#include <QEvent>
#include <QEventLoop>
#include <QThread>

#include <utility>

namespace tav {

namespace {

class PressFilter : public QObject
{
public:
    bool eventFilter(QObject*, QEvent* event) override
    {
        // Input for a message box that a timer of the host opened meanwhile is not dropped.
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

/// The request's event loop leaves input in the queue. Otherwise a second click would be delivered when the
/// button is enabled again.
void dropQueuedPresses()
{
    PressFilter filter;
    qApp->installEventFilter(&filter);
    QCoreApplication::processEvents();
}

/// Waits until its window has come up.
class FirstShow : public QObject
{
public:
    FirstShow(QWidget* target, std::function<void()> then)
        : QObject(target)
        , window(target)
        , load(std::move(then))
    {
        window->installEventFilter(this);
    }

    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::Show)
            QMetaObject::invokeMethod(
                this, [this] { run(); }, Qt::QueuedConnection);
        return false;
    }

private:
    void run()
    {
        if (!load || !window->isVisible()) // hidden again at once
            return;
        deleteLater();
        std::exchange(load, nullptr)(); // may destroy the window
    }

    QWidget* window;
    std::function<void()> load;
};

/// Whether the application is quitting: new event loops then return at once. Other events are kept back as
/// far as Qt allows.
bool applicationQuits()
{
    bool ran = false;
    QEventLoop loop;
    const auto end = [&] {
        ran = true;
        loop.quit();
    };
    QMetaObject::invokeMethod(&loop, end, Qt::QueuedConnection);
    loop.exec(QEventLoop::ExcludeUserInputEvents | QEventLoop::ExcludeSocketNotifiers
        | QEventLoop::X11ExcludeTimers);
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
    if (window->isVisible() && !what.isEmpty())
        note = new WindowNote(window, what);
    QApplication::setOverrideCursor(Qt::WaitCursor);
}

Waiting::~Waiting()
{
    dropQueuedPresses();
    QApplication::restoreOverrideCursor();
    delete note;
}

BuiltApart* BuiltApart::innermost = nullptr;

BuiltApart::BuiltApart(QDialog* target)
    : outer(std::exchange(innermost, this))
    , dialog(target)
    , hadParent(target->parentWidget())
    , parent(target->parentWidget())
{
    dialog->setParent(nullptr, dialog->windowFlags());
}

BuiltApart::~BuiltApart()
{
    innermost = outer;
    if (parent)
        dialog->setParent(parent, dialog->windowFlags());
}

bool BuiltApart::isOrphan(const QWidget* window)
{
    return innermost && innermost->dialog == window && innermost->hadParent && !innermost->parent;
}

Attendance::Attendance(QWidget* within)
    : part(within)
    , window(within->window())
    , wasOpen(window->isVisible())
{
}

bool Attendance::lasts() const
{
    return part && window && (!wasOpen || window->isVisible()) && !BuiltApart::isOrphan(window);
}

void onceShown(QWidget* window, const std::function<void()>& load)
{
    new FirstShow(window, load);
}

Outcome callPlatform(QWidget* within, const QString& what, const std::function<bool()>& request)
{
    const Attendance attendance(within);
    if (!attendance.lasts())
        return Outcome::Abandoned;
    bool done = false;
    bool quits = false;
    {
        // Also around applicationQuits(), which processes events.
        const Waiting waiting(within, what);
        quits = applicationQuits();
        done = !quits && request();
        quits = quits || applicationQuits();
    }
    if (quits || !attendance.lasts())
        return Outcome::Abandoned;
    return done ? Outcome::Done : Outcome::Refused;
}

} // namespace tav
