// SPDX-License-Identifier: MIT
#pragma once

#include "account/CloudAccountLogin.h"
#include "ui/BlockingCall.h"
#include "ui/MessageBoxes.h"

inline constexpr char errorTitle[] = "error";

/// How a request of the session ended, and why it was refused.
struct SessionAnswer
{
    Outcome outcome;
    QString error; ///< the session's last error
    QString help; ///< what helps, where that is one of the module's own texts
};

/// Runs \a request with the window of \a within Waiting for \a what. The reason is taken at once: a timer of
/// the host may use the session before the wait has ended.
inline SessionAnswer askSession(
    QWidget* within, const QString& what, const std::function<bool(CloudAccountLogin&)>& request)
{
    SessionAnswer answer{};
    answer.outcome = callPlatform(within, what, [&] {
        CloudAccountLogin* session = CloudAccountLogin::instance();
        const bool done = request(*session);
        answer.error = session->getLastError();
        answer.help = cloudFailureText(session->getLastFailure(), answer.error);
        return done;
    });
    if (answer.help == answer.error)
        answer.help.clear();
    return answer;
}

/// Says why a request was refused.
template <class Window>
void tellReason(Window* window, const SessionAnswer& answer,
    QMessageBox::Icon icon = QMessageBox::Information, const char* title = promptTitle)
{
    showBox(icon, window, Window::tr(title), answer.error, QString(), answer.help);
}

/// The end of a dialog's request: told and accepted when it was done, told why when it was refused. \a dialog
/// is not looked at when the request was abandoned.
template <class AccountDialog>
void conclude(AccountDialog* dialog, const SessionAnswer& answer, const QString& doneText)
{
    if (answer.outcome == Outcome::Refused)
        tellReason(dialog, answer, QMessageBox::Critical, errorTitle);
    if (answer.outcome == Outcome::Done && inform(dialog, doneText))
        dialog->accept();
}
