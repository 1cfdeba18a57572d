// SPDX-License-Identifier: MIT
#include "ui/Steps.h"

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

} // namespace

Answer ask(QWidget* within, const QString& what, const SessionRequest& request)
{
    return askFor(within, what, CloudAccountLogin::instance(), request);
}

Answer ask(QWidget* within, const CloudHandle& client, const QString& what, const CloudRequest& request)
{
    return askFor(within, what, client, request);
}

bool perform(QWidget* window, const CloudHandle& client, const QString& what, const CloudRequest& request,
    const QString& complaint, const QString& button)
{
    const Answer answer = ask(window, client, what, request);
    if (answer.outcome == Outcome::Refused)
        fail(window, complaint, button, answer.reason);
    return answer.outcome == Outcome::Done;
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
