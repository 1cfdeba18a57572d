// SPDX-License-Identifier: MIT
#pragma once

#include "ui/account/VerificationCode.h"

#include <QWidget>

/// The page for signing in with a code that the platform sends to a phone number or an e-mail address.
class PhoneLoginWidget : public QWidget
{
    Q_OBJECT

public:
    explicit PhoneLoginWidget(QWidget* parent = nullptr);

    QLineEdit* accountField() const { return verification.account; }
    QLineEdit* codeField() const { return verification.code; }

private slots:
    void _updateTimeOut();
    void _slotGetVerifyCode();

private:
    tav::VerificationCode verification;
};
