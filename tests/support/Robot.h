// SPDX-License-Identifier: MIT
#pragma once

#include <QPoint>
#include <QString>
#include <Qt>

#include <functional>

class QWidget;

/// A person's hand at mouse and keyboard. What it does goes through the window system's queue, to whatever is
/// under the pointer or has the focus then: a window behind a modal one or a disabled widget gets nothing of
/// it. A hand that finds no window to use fails the running test.
namespace robot {

/// Waits for \a condition with the event loop running. Patient enough for a machine with other work to do.
bool waitUntil(const std::function<bool()>& condition);
/// Waits until the window of \a widget is on the screen and the one in front. It may go meanwhile.
void waitForFront(const QWidget& widget);

/// Clicks at \a at in \a widget, by default in its middle, once the window is on the screen, and lets the
/// application do what comes of it.
void click(const QWidget& widget, QPoint at = {}, Qt::MouseButton button = Qt::LeftButton);
/// Presses a key with the window of \a widget in front.
void key(const QWidget& widget, Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
/// Types any letters, with the window of \a widget in front.
void write(const QWidget& widget, const QString& text);

/// The same, left in the queue: for the time in which the application does not look there.
void queueClick(const QWidget& widget, QPoint at = {}, Qt::MouseButton button = Qt::LeftButton);
void queueKey(Qt::Key key, const QString& text = {}, Qt::KeyboardModifiers modifiers = Qt::NoModifier);

} // namespace robot
