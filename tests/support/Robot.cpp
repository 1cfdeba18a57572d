// SPDX-License-Identifier: MIT
#include "Robot.h"

#include <QApplication>
#include <QPointer>
#include <QTest>
#include <QWidget>
#include <QWindow>

/// Qt's platform plugins put input into the queue with these functions. QTest's own bypass the queue.
class Q_GUI_EXPORT QWindowSystemInterface
{
public:
    struct AsynchronousDelivery;
    template <class Delivery>
    static bool handleMouseEvent(QWindow* window, ulong timestamp, const QPointF& local,
        const QPointF& global, Qt::MouseButtons state, Qt::MouseButton button, QEvent::Type type,
        Qt::KeyboardModifiers modifiers, Qt::MouseEventSource source);
    template <class Delivery>
    static bool handleKeyEvent(QWindow* window, ulong timestamp, QEvent::Type type, int key,
        Qt::KeyboardModifiers modifiers, const QString& text, bool repeats, ushort count);
    static bool sendWindowSystemEvents(QEventLoop::ProcessEventsFlags flags);
};

namespace {
using Queue = QWindowSystemInterface;
constexpr int waitLimitMs = 30000;

/// So far from the last one that two clicks never make a double click.
ulong nextTimestamp()
{
    static ulong timestamp = 0;
    return timestamp += 1000;
}

void deliver()
{
    Queue::sendWindowSystemEvents(QEventLoop::AllEvents);
    QCoreApplication::processEvents();
}

bool isOnScreen(const QWidget& window)
{
    const QWindow* handle = window.windowHandle();
    return handle && handle->isExposed();
}
} // namespace

bool robot::waitUntil(const std::function<bool()>& condition)
{
    return QTest::qWaitFor(condition, waitLimitMs);
}

void robot::waitForFront(const QWidget& widget)
{
    const QPointer<QWidget> window(widget.window());
    // There is no window manager to bring the next window to the front when one is closed, nor one to tell
    // Qt of a window that comes back.
    if (window->isVisible() && !window->isActiveWindow())
        window->activateWindow();
    const QByteArray complaint = "not in front: " + window->windowTitle().toUtf8();
    const bool wasVisible = window->isVisible();
    const bool inFront = waitUntil([window, wasVisible] {
        if (!window || (wasVisible && !window->isVisible())) // destroyed or closed meanwhile
            return true;
        if (!window->isActiveWindow() && window->windowHandle() == QGuiApplication::focusWindow())
            QApplication::setActiveWindow(window);
        return isOnScreen(*window) && window->isActiveWindow();
    });
    QVERIFY2(inFront, complaint);
}

void robot::queueClick(const QWidget& widget, QPoint at, Qt::MouseButton button)
{
    const QWidget* window = widget.window();
    const QPoint local = widget.mapTo(window, at.isNull() ? widget.rect().center() : at);
    const QWidget* hit = window->childAt(local);
    QVERIFY2(&widget == window || &widget == hit || widget.isAncestorOf(hit),
        qPrintable("covered by another widget: " + widget.objectName() + ' ' + widget.accessibleName()));
    const QPoint global = window->mapToGlobal(local);
    const ulong timestamp = nextTimestamp();
    for (const auto type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease})
        Queue::handleMouseEvent<Queue::AsynchronousDelivery>(window->windowHandle(), timestamp, local, global,
            type == QEvent::MouseButtonPress ? button : Qt::NoButton, button, type, Qt::NoModifier,
            Qt::MouseEventNotSynthesized);
}

void robot::queueKey(Qt::Key key, const QString& text, Qt::KeyboardModifiers modifiers)
{
    const ulong timestamp = nextTimestamp();
    for (const auto type : {QEvent::KeyPress, QEvent::KeyRelease})
        Queue::handleKeyEvent<Queue::AsynchronousDelivery>(
            nullptr, timestamp, type, key, modifiers, text, false, 1);
}

void robot::click(const QWidget& widget, QPoint at, Qt::MouseButton button)
{
    const QWidget* window = widget.window();
    QVERIFY2(waitUntil([window] { return isOnScreen(*window); }),
        qPrintable("not on the screen: " + window->windowTitle()));
    queueClick(widget, at, button);
    deliver();
}

void robot::key(const QWidget& widget, Qt::Key key, Qt::KeyboardModifiers modifiers)
{
    waitForFront(widget);
    const bool isText = key >= Qt::Key_Space && key <= Qt::Key_AsciiTilde && modifiers == Qt::NoModifier;
    queueKey(key, isText ? QString(QChar(key)).toLower() : QString(), modifiers);
    deliver();
}

void robot::write(const QWidget& widget, const QString& text)
{
    waitForFront(widget);
    for (const QChar letter : text)
        queueKey(letter.unicode() < 128 ? QTest::asciiToKey(letter.toLatin1()) : Qt::Key_unknown, letter);
    deliver();
}
