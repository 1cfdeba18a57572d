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
    takeNoBlanks(code);
    tick->setObjectName(QStringLiteral("tickTimer"));
    countdown->setObjectName(QStringLiteral("countdownTimer"));
    countdown->setSingleShot(true);
    // A coarse timer may be a second late, and would begin with 120 s.
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
    if (button->window()->focusWidget() == button) // also while a box has just been in front
        code->setFocus();
    // The shorter text of the countdown must not make the row jump.
    button->setMinimumWidth(button->sizeHint().width());
    // Not only at the first tick: until then another press would ask again.
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
