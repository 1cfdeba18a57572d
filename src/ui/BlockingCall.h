// SPDX-License-Identifier: MIT
#pragma once

#include <QPointer>
#include <QWidget>

#include <functional>

class QAbstractButton;

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

/// How a request ended.
enum class Outcome
{
    Done,
    Refused, ///< by the platform or on the way to it
    Abandoned ///< the window was closed or destroyed, or the application quits: nobody waits for an answer
};

/// Runs \a request, which blocks in an event loop of its own, where the user can see that it runs: everything
/// in the window of \a pressed is disabled, so that neither a second request nor another text can come
/// between, and the cursor says wait. What the user pressed meanwhile was meant for the window as it was
/// before, and is dropped. After Outcome::Abandoned the caller may not exist any more.
Outcome callPlatform(QAbstractButton* pressed, const std::function<bool()>& request);
