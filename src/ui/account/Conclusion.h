// SPDX-License-Identifier: MIT
#pragma once

#include "account/CloudAccountLogin.h"
#include "ui/BlockingCall.h"
#include "ui/MessageBoxes.h"

inline constexpr char errorTitle[] = "error";

/// The session's reason for refusing a request.
template <class Window>
void tellReason(
    Window* window, QMessageBox::Icon icon = QMessageBox::Information, const char* title = promptTitle)
{
    showBox(icon, window, Window::tr(title), CloudAccountLogin::instance()->getLastError());
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
