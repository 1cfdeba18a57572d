// SPDX-License-Identifier: MIT
#include "ui/account/DlgResetPassword.h"

#include "ui/FieldGrid.h"
#include "ui/Steps.h"
#include "ui/account/VerificationCode.h"

#include <QHideEvent>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>

using namespace tav;

DlgResetPassword::DlgResetPassword(QWidget* parent)
    : Dialog(parent)
    , verification(std::make_unique<VerificationCode>(this, tr("Obtaining verification code")))
    , password(new QLineEdit(this))
{
    setWindowTitle(tr("Reset password"));
    password->setEchoMode(QLineEdit::Password);
    password->setPlaceholderText(tr("6-24 digits and English letter combination"));
    auto* resetButton = new QPushButton(tr("Reset"), this);
    auto* exitButton = new QPushButton(tr("Exit"), this);

    auto* fields = new FieldGrid;
    fields->addField(tr("Phone number/email"), verification->account);
    fields->addField(tr("New password"), password);
    fields->addField(tr("Verification"), verification->code, verification->button);
    layOut(this, fields, resetButton, exitButton);
    setTabOrder(verification->account, password);
    setTabOrder(password, verification->code);

    connect(verification->tick, &QTimer::timeout, this, &DlgResetPassword::_updateTimeOut);
    connect(verification->button, &QPushButton::clicked, this, &DlgResetPassword::_slotGetVerifyCode);
    connect(resetButton, &QPushButton::clicked, this, &DlgResetPassword::_resetPassword);
    connect(exitButton, &QPushButton::clicked, this, &QDialog::reject);
}

DlgResetPassword::~DlgResetPassword() = default;

QString DlgResetPassword::account() const
{
    return verification->account->text();
}

/// The host may keep the dialog. Unlike clear(), setText() empties the undo history too.
void DlgResetPassword::hideEvent(QHideEvent* event)
{
    if (!event->spontaneous())
        password->setText(QString());
    Dialog::hideEvent(event);
}

void DlgResetPassword::_updateTimeOut()
{
    verification->updateCountdown();
}

void DlgResetPassword::_slotGetVerifyCode()
{
    if (!requireText(this, verification->account, tr("The phone number cannot be empty!")))
        return;
    verification->startCountdown();
    const Answer answer =
        verification->request(&CloudAccountLogin::mobileVerify2, &CloudAccountLogin::emailVerify2);
    explain(this, answer);
}

void DlgResetPassword::_resetPassword()
{
    if (!requireText(this, verification->account, tr("The phone number cannot be empty!"))
        || !requireText(this, password, tr("password can not be blank!"))
        || !requireText(this, verification->code, tr("verification code must be filled!")))
        return;
    const Answer answer = ask(this, tr("Setting the new password..."),
        [target = verification->account->text().toLocal8Bit(), word = password->text().toLocal8Bit(),
            code = verification->code->text().toLocal8Bit()](CloudAccountLogin& session) {
            return session.resetPassword(target.constData(), word.constData(), code.constData());
        });
    conclude(this, answer, tr("Password reset successfully!"));
}
