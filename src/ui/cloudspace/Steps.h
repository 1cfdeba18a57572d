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
inline Outcome askCloud(
    QWidget* window, const CloudHandle& client, const QString& what, const CloudRequest& request)
{
    return callPlatform(window, what, [client, &request] { return request(*client); });
}

/// Why the last request of \a client failed, for the user.
inline QString reasonOf(const CloudHandle& client)
{
    return cloudFailureText(client->getLastFailure(), client->getLastError());
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
    const Outcome outcome = askCloud(window, client, what, request);
    if (outcome == Outcome::Refused)
        fail(window, complaint, button, reasonOf(client));
    return outcome == Outcome::Done;
}
