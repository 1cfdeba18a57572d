// SPDX-License-Identifier: MIT
#pragma once

#include "cloud/CloudHandle.h"
#include "ui/BlockingCall.h"
#include "ui/MessageBoxes.h"

/// The steps that the slots of the cloud space dialogs share. Where one of them is false, the slot ends: the
/// window may not exist any more.

inline constexpr char failureTitle[] = "Error";

using CloudRequest = std::function<bool(CloudFileManger&)>;

/// Runs \a request with \a window Waiting for \a what.
/// \param reason receives why it failed, for the user; empty when nothing did. It is taken at once: a timer
/// of the host may use the same client before the wait has ended.
inline Outcome askCloud(QWidget* window, const CloudHandle& client, const QString& what,
    const CloudRequest& request, QString& reason)
{
    return callPlatform(window, what, [&reason, &request, client] {
        const bool done = request(*client);
        reason = cloudFailureText(client->getLastFailure(), client->getLastError());
        return done;
    });
}

/// What did not work. False when \a window was closed or destroyed meanwhile.
/// \param button the text of the box's button; empty for Qt's own OK
/// \param reason why; empty where the text says so
template <class Window>
bool fail(
    Window* window, const QString& text, const QString& button = QString(), const QString& reason = QString())
{
    return showBox(QMessageBox::Critical, window, Window::tr(failureTitle), text, button, reason);
}

/// Whether the user wants what \a question asks.
template <class Window>
bool confirm(Window* window, const QString& question)
{
    return askBox(QMessageBox::Question, window, Window::tr(promptTitle), question);
}

/// Runs \a request with \a window Waiting for \a what. Whether it was done; when it was refused, says
/// \a complaint and why.
template <class Window>
bool performed(Window* window, CloudHandle client, const QString& what, const CloudRequest& request,
    const QString& complaint, const QString& button = QString())
{
    QString reason;
    const Outcome outcome = askCloud(window, client, what, request, reason);
    if (outcome == Outcome::Refused)
        fail(window, complaint, button, reason);
    return outcome == Outcome::Done;
}
