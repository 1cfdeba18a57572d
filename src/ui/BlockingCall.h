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

/// Disables a widget while this object lives, and restores what that changed: whether it was enabled, and the
/// focus that Qt took from it. The widget may be null, and may be destroyed meanwhile.
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

/// Shows that a window waits for the platform while this object lives: everything in the window is disabled,
/// so that no second request can start and no text can change, a note says what the window is doing, and the
/// cursor shows waiting. Key presses and clicks of that time were meant for the window as it was before, and
/// are dropped at the end. The window may be destroyed meanwhile.
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

/// Takes a dialog out of its parent while the dialog's constructor asks the platform: a parent that is
/// destroyed meanwhile would destroy the dialog half built. The dialog then stays without a parent, and its
/// requests end as abandoned.
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

/// Tells whether a window is still there after something that ran an event loop. Constructed before that, and
/// asked after it.
class Attendance
{
public:
    /// \param within a part of the window
    explicit Attendance(QWidget* within);

    /// False when the window or the part was closed or destroyed meanwhile. Processes no events, so that
    /// input meant for the next box or dialog still reaches it.
    bool lasts() const;

private:
    QPointer<QWidget> part;
    QPointer<QWidget> window;
    bool wasOpen;
};

/// Calls \a load once, after \a window has been shown, so that the user sees it wait for the platform.
void onceShown(QWidget* window, const std::function<void()>& load);

/// How a request ended.
enum class Outcome
{
    Done,
    Refused, ///< by the platform or on the way to it
    Cancelled, ///< by the user, in the window of a transfer
    Abandoned ///< the window was closed or destroyed, or the application quits
};

/// Runs \a request, which blocks in an event loop of its own, with the window of \a within Waiting. It is not
/// run when the window is gone already. After Outcome::Abandoned the caller may have been destroyed.
/// \param what what the window is doing, for the user; empty where another window says it
Outcome callPlatform(QWidget* within, const QString& what, const std::function<bool()>& request);

} // namespace tav
