// SPDX-License-Identifier: MIT
#include "ui/Steps.h"

#include "net/CloudTransferJob.h"
#include "ui/TransferDialog.h"

#include <QCoreApplication>
#include <QDialog>
#include <QLineEdit>

namespace tav {

namespace {

// One context for the titles, whichever window a box belongs to.
constexpr char promptTitle[] = QT_TRANSLATE_NOOP("MessageBoxes", "Prompt");
constexpr char failureTitle[] = QT_TRANSLATE_NOOP("MessageBoxes", "Error");
constexpr char sessionFailureTitle[] = QT_TRANSLATE_NOOP("MessageBoxes", "error");

QString translated(const char* title)
{
    return QCoreApplication::translate("MessageBoxes", title);
}

/// \param asked points to the session or the client
template <class Pointer, class Request>
Answer askFor(QWidget* within, const QString& what, const Pointer& asked, const Request& request)
{
    Answer answer{};
    // Holds its own copies: the window and all its members may be destroyed meanwhile.
    answer.outcome = callPlatform(within, what, [&answer, asked, &request] {
        const bool done = request(*asked);
        answer.error = asked->getLastError();
        answer.reason = cloudFailureText(asked->getLastFailure(), answer.error);
        return done;
    });
    return answer;
}

/// What to show below the error: nothing below the platform's own reason, advice below the module's texts.
QString helpOf(const Answer& answer)
{
    return answer.reason == answer.error ? QString() : answer.reason;
}

/// Whether it was done; else says \a complaint and why.
bool told(const Answer& answer, QWidget* window, const QString& complaint, const QString& button)
{
    if (answer.outcome == Outcome::Refused)
        fail(window, complaint, button, answer.reason);
    return answer.outcome == Outcome::Done;
}

} // namespace

Answer ask(QWidget* within, const QString& what, const SessionRequest& request)
{
    return askFor(within, what, CloudAccountLogin::instance(), request);
}

Answer ask(QWidget* within, const CloudHandle& client, const QString& what, const CloudRequest& request)
{
    return askFor(within, what, client, request);
}

bool showsTransfers(const CloudHandle& client)
{
    return client->getTransferOptions().limit == CloudTransferOptions::Limit::LastByte;
}

Answer carry(QWidget* within, const CloudHandle& client, const QString& what, const Transfer& transfer,
    TransferDialog* dialog)
{
    if (!dialog)
        return ask(within, client, what, transfer.request);
    const std::unique_ptr<CloudTransferJob> job(transfer.job(*client));
    Answer answer{};
    // The dialog says what the window is doing.
    answer.outcome = callPlatform(within, QString(), [&] {
        TransferDialog::run(dialog, *job, what);
        return job->failure() == CloudFailure::None;
    });
    answer.error = job->errorText();
    answer.reason = cloudFailureText(job->failure(), answer.error);
    if (answer.outcome == Outcome::Refused && job->failure() == CloudFailure::Cancelled)
        answer.outcome = Outcome::Cancelled;
    return answer;
}

bool perform(QWidget* window, const CloudHandle& client, const QString& what, const CloudRequest& request,
    const QString& complaint, const QString& button)
{
    return told(ask(window, client, what, request), window, complaint, button);
}

bool perform(QWidget* window, const CloudHandle& client, const QString& what, const Transfer& transfer,
    const QString& complaint, const QString& button)
{
    const QPointer<TransferDialog> dialog(
        showsTransfers(client) ? new TransferDialog(window->window()) : nullptr);
    const Answer answer = carry(window, client, what, transfer, dialog);
    delete dialog;
    return told(answer, window, complaint, button);
}

bool inform(QWidget* window, const QString& text, const QString& button, const QString& more)
{
    return showBox(QMessageBox::Information, window, translated(promptTitle), text, button, more);
}

bool warn(QWidget* window, const QString& text)
{
    return showBox(QMessageBox::Warning, window, translated(promptTitle), text);
}

bool fail(QWidget* window, const QString& text, const QString& button, const QString& reason)
{
    return showBox(QMessageBox::Critical, window, translated(failureTitle), text, button, reason);
}

void explain(QWidget* window, const Answer& answer)
{
    if (answer.outcome == Outcome::Refused)
        inform(window, answer.error, QString(), helpOf(answer));
}

void conclude(QDialog* dialog, const Answer& answer, const QString& success)
{
    if (answer.outcome == Outcome::Refused)
        showBox(QMessageBox::Critical, dialog, translated(sessionFailureTitle), answer.error, QString(),
            helpOf(answer));
    if (answer.outcome == Outcome::Done && inform(dialog, success))
        dialog->accept();
}

bool confirm(QWidget* window, const QString& question, const QString& more)
{
    return askBox(
        QMessageBox::Question, window, translated(promptTitle), question, QString(), QString(), more);
}

bool requireText(QWidget* window, QLineEdit* field, const QString& complaint)
{
    if (!field->text().isEmpty())
        return true;
    if (inform(window, complaint))
        field->setFocus();
    return false;
}

} // namespace tav
