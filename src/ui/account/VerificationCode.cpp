// SPDX-License-Identifier: MIT
#include "ui/account/VerificationCode.h"

#include "account/CloudAccountLogin.h"
#include "ui/FieldGrid.h"

#include <QLineEdit>
#include <QPushButton>
#include <QTimer>

namespace tav {

namespace {
constexpr int tickMs = 100;
constexpr int countdownMs = 120000;
} // namespace

VerificationCode::VerificationCode(QWidget* owner, const QString& buttonText)
    : account(new QLineEdit(owner))
    , code(new QLineEdit(owner))
    , button(new QPushButton(buttonText, owner))
    , tick(new QTimer(owner))
    , countdown(new QTimer(owner))
    , idleText(buttonText)
{
    removeBlanksFrom(code);
    tick->setObjectName(QStringLiteral("tickTimer"));
    countdown->setObjectName(QStringLiteral("countdownTimer"));
    countdown->setSingleShot(true);
    // A coarse timer may end later than it was told, and the countdown would begin above 119 s.
    countdown->setTimerType(Qt::PreciseTimer);
}

Answer VerificationCode::request(Operation byPhone, Operation byMail) const
{
    const QString text = account->text();
    const Operation operation = isMail(text) ? byMail : byPhone;
    return ask(
        button, idleText + "...", [operation, target = text.toLocal8Bit()](CloudAccountLogin& session) {
            return (session.*operation)(target.constData());
        });
}

void VerificationCode::startCountdown()
{
    if (button->window()->focusWidget() == button) // also right after a message box
        code->setFocus();
    // The shorter text of the countdown must not narrow the button.
    button->setMinimumWidth(button->sizeHint().width());
    // Now, not at the first tick: another press before it would send a second request.
    button->setEnabled(false);
    tick->start(tickMs);
    countdown->start(countdownMs);
}

void VerificationCode::updateCountdown()
{
    const int seconds = countdown->remainingTime() / 1000;
    button->setText(seconds > 0 ? QStringLiteral("%1 s").arg(seconds) : idleText);
    button->setEnabled(seconds <= 0);
    if (seconds > 0)
        return;
    tick->stop();
    countdown->stop();
}

} // namespace tav
