// SPDX-License-Identifier: MIT
#pragma once

#include <QPointer>
#include <QString>
#include <QWidget>

#include <functional>
#include <list>

class QDialog;
class WindowNote;

/// Keeps a widget disabled for a while, and puts back what that changed: whether it was enabled, and the
/// focus that Qt took from it. Null is fine; so is a widget that goes meanwhile.
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
/// before, and is dropped at the end. The window may go before.
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
/// that goes meanwhile would destroy it half built. It stays without a parent then.
class BuiltApart
{
public:
    explicit BuiltApart(QDialog* target);
    ~BuiltApart();
    BuiltApart(const BuiltApart&) = delete;
    BuiltApart& operator=(const BuiltApart&) = delete;

private:
    QDialog* dialog;
    QPointer<QWidget> parent;
};

/// How a request ended.
enum class Outcome
{
    Done,
    Refused, ///< by the platform or on the way to it
    Abandoned ///< the window was closed or destroyed, or the application quits: nobody waits for an answer
};

/// Runs \a request, which blocks in an event loop of its own, with the window of \a within Waiting. After
/// Outcome::Abandoned the caller may not exist any more.
/// \param what what the window is doing, for the user
Outcome callPlatform(QWidget* within, const QString& what, const std::function<bool()>& request);
