// SPDX-License-Identifier: MIT
#pragma once

#include "account/CloudAccountLogin.h"
#include "cloud/CloudHandle.h"
#include "ui/BlockingCall.h"
#include "ui/MessageBoxes.h"

class CloudTransferJob;
class QDialog;
class QLineEdit;

/// \file
/// The steps of the dialogs' slots. When a step returns false the slot returns, without touching its window,
/// which may have been destroyed.

namespace tav {

class TransferDialog;

/// How a request ended, and why it was refused. The reasons are copied as soon as it ends: a timer of the
/// host may use the same session or client before the wait is over.
struct Answer
{
    Outcome outcome;
    QString error; ///< what getLastError() gave
    QString reason; ///< the same for the user, with what helps; a client's is empty when nothing failed
};

using SessionRequest = std::function<bool(CloudAccountLogin&)>;
using CloudRequest = std::function<bool(CloudFileManger&)>;

/// A transfer as the client offers it: blocking, and as a job.
struct Transfer
{
    CloudRequest request;
    std::function<CloudTransferJob*(const CloudFileManger&)> job;
};

/// Runs \a request with the window of \a within Waiting for \a what.
Answer ask(QWidget* within, const QString& what, const SessionRequest& request);
Answer ask(QWidget* within, const CloudHandle& client, const QString& what, const CloudRequest& request);

/// Whether the transfers of \a client are shown in a window of their own.
bool showsTransfers(const CloudHandle& client);
/// Does \a transfer in \a dialog, or, without one, as ask() does its request.
Answer carry(QWidget* within, const CloudHandle& client, const QString& what, const Transfer& transfer,
    TransferDialog* dialog);

/// Runs \a request and, when it was refused, shows \a complaint with the reason. True when it was done.
/// \param button as for fail()
bool perform(QWidget* window, const CloudHandle& client, const QString& what, const CloudRequest& request,
    const QString& complaint, const QString& button = QString());
/// The same of a transfer.
bool perform(QWidget* window, const CloudHandle& client, const QString& what, const Transfer& transfer,
    const QString& complaint, const QString& button = QString());

/// Shows guidance or a success.
/// \param button the text of the box's button; empty for Qt's own OK
/// \param more what helps to understand \a text, below it
bool inform(
    QWidget* window, const QString& text, const QString& button = QString(), const QString& more = QString());
/// Shows that the user cannot do something.
bool warn(QWidget* window, const QString& text);
/// Shows that something did not work.
/// \param reason why; empty where \a text says it
bool fail(QWidget* window, const QString& text, const QString& button = QString(),
    const QString& reason = QString());
/// Shows why a request of the session was refused; does nothing after any other end.
void explain(QWidget* window, const Answer& answer);

/// Ends a dialog of the session: shows \a success and accepts it, or shows the reason and leaves it open.
void conclude(QDialog* dialog, const Answer& answer, const QString& success);

/// Whether the user wants what \a question asks.
bool confirm(QWidget* window, const QString& question, const QString& more = QString());

/// Whether there is a text in \a field. If not, shows \a complaint and gives the field the focus.
bool requireText(QWidget* window, QLineEdit* field, const QString& complaint);

} // namespace tav
