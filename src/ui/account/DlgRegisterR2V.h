// SPDX-License-Identifier: MIT
#pragma once

#include "toolkit/Dialog.h"
#include "ui/account/VerificationCode.h"

/// Registers an account with the platform, without signing in. Accepted when the platform has made the
/// account.
class DlgRegisterR2V : public Dialog
{
    Q_OBJECT

public:
    explicit DlgRegisterR2V(QWidget* parent = nullptr);

    /// What to sign in with after a registration. The platform names an account by its e-mail address if it
    /// has one, whatever name was given.
    QString registeredName() const;

private slots:
    void _updateTimeOut();
    void _slotGetVerifyCode();
    void _slotRegister();

private:
    bool isComplete();

    QLineEdit* userName;
    QLineEdit* password;
    tav::VerificationCode verification;
};
