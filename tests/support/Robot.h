// SPDX-License-Identifier: MIT
#pragma once

#include <QPoint>
#include <QString>
#include <Qt>

#include <functional>

class QWidget;

/// Mouse and keyboard input as a user makes it: through the window system's queue, to what is under the
/// pointer or has the focus when it is delivered. So a window behind a modal one or a disabled widget gets
/// none of it. The running test fails when no window can take the input.
namespace robot {

/// Waits for \a condition with the event loop running, long enough for a busy machine.
bool waitUntil(const std::function<bool()>& condition);
/// Waits until the window of \a widget is on the screen and in front. It may be destroyed meanwhile.
void waitForFront(const QWidget& widget);

/// Clicks at \a at in \a widget, by default in its middle, once the window is on the screen, and processes
/// the events that follow.
void click(const QWidget& widget, QPoint at = {}, Qt::MouseButton button = Qt::LeftButton);
/// Presses a key with the window of \a widget in front.
void key(const QWidget& widget, Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
/// Types any letters, with the window of \a widget in front.
void write(const QWidget& widget, const QString& text);

/// The same, left in the queue: for while the application does not process input.
void queueClick(const QWidget& widget, QPoint at = {}, Qt::MouseButton button = Qt::LeftButton);
void queueKey(Qt::Key key, const QString& text = {}, Qt::KeyboardModifiers modifiers = Qt::NoModifier);

} // namespace robot
