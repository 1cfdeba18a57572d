// SPDX-License-Identifier: MIT
#pragma once

#include "ui/BlockingCall.h"
#include "ui/MessageBoxes.h"

/// The steps that the slots of the cloud space dialogs share. Where one of them is false, the slot ends: the
/// window may not exist any more.

inline constexpr char failureTitle[] = "Error";

/// What did not work. False when \a window was closed or destroyed meanwhile.
/// \param button the text of the box's button; empty for Qt's own OK
template <class Window>
bool fail(Window* window, const QString& text, const QString& button = QString())
{
    return showBox(QMessageBox::Critical, window, Window::tr(failureTitle), text, button);
}

/// Whether the user wants what \a question asks.
template <class Window>
bool confirm(Window* window, const QString& question)
{
    return askBox(QMessageBox::Question, window, Window::tr(promptTitle), question);
}

/// Runs \a request with \a window Waiting for \a what. Whether it was done; when it was refused, says
/// \a complaint.
template <class Window>
bool performed(Window* window, const QString& what, const std::function<bool()>& request,
    const QString& complaint, const QString& button = QString())
{
    const Outcome outcome = callPlatform(window, what, request);
    if (outcome == Outcome::Refused)
        fail(window, complaint, button);
    return outcome == Outcome::Done;
}
