// SPDX-License-Identifier: MIT
#pragma once

#include "toolkit/Dialog.h"
#include "ui/account/VerificationCode.h"

/// Registers an account with the platform. Accepted when the platform has made it; nobody is signed in then.
class DlgRegisterR2V : public Dialog
{
    Q_OBJECT

public:
    explicit DlgRegisterR2V(QWidget* parent = nullptr);

private slots:
    void _updateTimeOut();
    void _slotGetVerifyCode();
    void _slotRegister();

private:
    bool isComplete();

    QLineEdit* userName;
    QLineEdit* password;
    VerificationCode verification;
};
