// SPDX-License-Identifier: MIT
#pragma once

#include "account/CloudAccountLogin.h"
#include "cloud/CloudHandle.h"
#include "ui/BlockingCall.h"
#include "ui/MessageBoxes.h"

class QDialog;
class QLineEdit;

namespace tav {

/// The steps of the dialogs' slots: check, ask, tell, go on. Where one of them is false, the slot ends: the
/// window may have been destroyed.

/// How a request ended, and why it was refused. The reasons are taken at once: a timer of the host may use
/// the same session or client before the wait has ended.
struct Answer
{
    Outcome outcome;
    QString error; ///< what getLastError() gave
    QString reason; ///< the same for the user, with what helps; a client's is empty when nothing failed
};

using SessionRequest = std::function<bool(CloudAccountLogin&)>;
using CloudRequest = std::function<bool(CloudFileManger&)>;

/// Runs \a request with the window of \a within Waiting for \a what.
Answer ask(QWidget* within, const QString& what, const SessionRequest& request);
Answer ask(QWidget* within, const CloudHandle& client, const QString& what, const CloudRequest& request);

/// Asks, and says \a complaint and why when it was refused. Whether it was done.
/// \param button as for fail()
bool perform(QWidget* window, const CloudHandle& client, const QString& what, const CloudRequest& request,
    const QString& complaint, const QString& button = QString());

/// Guidance or success.
/// \param button the text of the box's button; empty for Qt's own OK
/// \param more what helps to understand \a text, below it
bool inform(
    QWidget* window, const QString& text, const QString& button = QString(), const QString& more = QString());
/// What the user cannot do.
bool warn(QWidget* window, const QString& text);
/// What did not work.
/// \param reason why; empty where the text says so
bool fail(QWidget* window, const QString& text, const QString& button = QString(),
    const QString& reason = QString());
/// Why the session was refused something; nothing when it was not.
void explain(QWidget* window, const Answer& answer);

/// The end of a dialog of the session: it says \a success and is accepted, or says why not and stays.
void conclude(QDialog* dialog, const Answer& answer, const QString& success);

/// Whether the user wants what \a question asks.
bool confirm(QWidget* window, const QString& question, const QString& more = QString());

/// Whether there is a text in \a field. When not, says \a complaint and leads the user there.
bool requireText(QWidget* window, QLineEdit* field, const QString& complaint);

} // namespace tav
