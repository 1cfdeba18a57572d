// SPDX-License-Identifier: MIT
#pragma once

#include "account/CloudAccountLogin.h"
#include "ui/BlockingCall.h"
#include "ui/MessageBoxes.h"

inline constexpr char errorTitle[] = "error";

/// The session's reason for refusing a request, and below it, where that is one of the module's own texts,
/// what helps.
template <class Window>
void tellReason(
    Window* window, QMessageBox::Icon icon = QMessageBox::Information, const char* title = promptTitle)
{
    const CloudAccountLogin* session = CloudAccountLogin::instance();
    const QString error = session->getLastError();
    const QString help = cloudFailureText(session->getLastFailure(), error);
    showBox(icon, window, Window::tr(title), error, QString(), help == error ? QString() : help);
}

/// The end of a dialog's request: told and accepted when it is \a outcome Done, the session's reason when it
/// was refused. \a dialog is not looked at when the request was abandoned.
template <class AccountDialog>
void conclude(AccountDialog* dialog, Outcome outcome, const QString& success)
{
    if (outcome == Outcome::Refused)
        tellReason(dialog, QMessageBox::Critical, errorTitle);
    if (outcome == Outcome::Done && inform(dialog, success))
        dialog->accept();
}
