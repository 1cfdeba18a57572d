// SPDX-License-Identifier: MIT
#pragma once

#include <QPointer>
#include <QString>
#include <QWidget>

#include <functional>
#include <list>

class QDialog;

namespace tav {

class WindowNote;

/// Keeps a widget disabled for a while, and puts back what that changed: whether it was enabled, and the
/// focus that Qt took from it. Null is fine; so is a widget that is destroyed meanwhile.
class DisabledWhile
{
public:
    explicit DisabledWhile(QWidget* target);
    ~DisabledWhile();
    DisabledWhile(const DisabledWhile&) = delete;
    DisabledWhile& operator=(const DisabledWhile&) = delete;

private:
    QPointer<QWidget> widget;
    QPointer<QWidget> focus; // what in it had the focus
    bool wasEnabled = false;
};

/// While it lives, the user sees that a window waits for the platform, and why: everything in the window is
/// disabled, so that neither a second request nor another text can come between, a note says what the window
/// is doing, and the cursor says wait. What the user pressed meanwhile was meant for the window as it was
/// before, and is dropped at the end. The window may be destroyed before.
class Waiting
{
public:
    Waiting(QWidget* within, const QString& what);
    ~Waiting();
    Waiting(const Waiting&) = delete;
    Waiting& operator=(const Waiting&) = delete;

private:
    std::list<DisabledWhile> disabled;
    QPointer<WindowNote> note;
};

/// Keeps a dialog that asks the platform while it is built out of its parent's hands for that time: a parent
/// that is destroyed meanwhile would destroy it half built. It stays without a parent then, and nobody waits
/// for it.
class BuiltApart
{
public:
    explicit BuiltApart(QDialog* target);
    ~BuiltApart();
    BuiltApart(const BuiltApart&) = delete;
    BuiltApart& operator=(const BuiltApart&) = delete;

    /// Whether \a window is being built and lost its parent.
    static bool isOrphan(const QWidget* window);

private:
    static BuiltApart* innermost;

    BuiltApart* outer;
    QDialog* dialog;
    bool hadParent;
    QPointer<QWidget> parent;
};

/// Whether anybody waits for what a window does next. Made before something that runs an event loop, and
/// asked after it.
class Attendance
{
public:
    /// \param within a part of the window
    explicit Attendance(QWidget* within);

    /// Not when the window or the part was closed or destroyed meanwhile. Runs no events: what was meant for
    /// a box or a dialog that comes next still comes there.
    bool lasts() const;

private:
    QPointer<QWidget> part;
    QPointer<QWidget> window;
    bool wasOpen;
};

/// Calls \a load once, when \a window has come up: it may wait for the platform, which is seen then.
void onceShown(QWidget* window, const std::function<void()>& load);

/// How a request ended.
enum class Outcome
{
    Done,
    Refused, ///< by the platform or on the way to it
    Cancelled, ///< by the user, in the window of a transfer
    Abandoned ///< the window was closed or destroyed, or the application quits: nobody waits for an answer
};

/// Runs \a request, which blocks in an event loop of its own, with the window of \a within Waiting; not when
/// nobody waits for it any more. After Outcome::Abandoned the caller may not exist any more.
/// \param what what the window is doing, for the user; empty where another window says it
Outcome callPlatform(QWidget* within, const QString& what, const std::function<bool()>& request);

} // namespace tav
