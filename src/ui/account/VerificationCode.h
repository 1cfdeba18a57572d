// SPDX-License-Identifier: MIT
#pragma once

#include "ui/Steps.h"

#include <QString>

class CloudAccountLogin;
class QLineEdit;
class QPushButton;
class QTimer;

namespace tav {

/// Whether \a address is an e-mail address; otherwise it is a phone number.
inline bool isMail(const QString& address)
{
    return address.contains(QLatin1Char('@'));
}

/// What the login page, the registration and the reset of a password have in common: fields for a phone
/// number or e-mail address and for the code that the platform sends there, the button that asks for the
/// code, and the countdown in that button until it may be asked for again. The widgets and timers belong to
/// the owner.
class VerificationCode
{
public:
    using Operation = bool (CloudAccountLogin::*)(const char*);

    VerificationCode(QWidget* owner, const QString& buttonText);

    /// Asks the platform for a code, by e-mail when there is an "@" in the account, else by phone.
    Answer request(Operation byPhone, Operation byMail) const;

    void startCountdown();
    /// Shows the whole seconds left, or ends the countdown. Call it at every timeout of the tick timer.
    void updateCountdown();

    QLineEdit* const account;
    QLineEdit* const code;
    QPushButton* const button;
    QTimer* const tick;

private:
    QTimer* const countdown;
    const QString idleText;
};

} // namespace tav
