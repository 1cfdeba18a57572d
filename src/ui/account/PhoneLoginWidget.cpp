// SPDX-License-Identifier: MIT
#include "ui/account/PhoneLoginWidget.h"

#include "ui/FieldGrid.h"
#include "ui/Steps.h"

#include <QLineEdit>
#include <QPushButton>
#include <QTimer>

#include <algorithm>

using namespace tav;

namespace {

bool isPhoneNumber(const QString& text)
{
    return text.size() == 11 && std::all_of(text.begin(), text.end(), [](QChar c) { return c.isDigit(); });
}

} // namespace

PhoneLoginWidget::PhoneLoginWidget(QWidget* parent)
    : QWidget(parent)
    , verification(this, tr("Obtaining verification code"))
{
    auto* grid = new FieldGrid(this);
    grid->addField(tr("Phone number/email") + ':', verification.account);
    grid->addField(tr("Verification") + ':', verification.code, verification.button);
    grid->setRowStretch(grid->rowCount(), 1);

    connect(verification.tick, &QTimer::timeout, this, &PhoneLoginWidget::_updateTimeOut);
    connect(verification.button, &QPushButton::clicked, this, &PhoneLoginWidget::_slotGetVerifyCode);
    // These slots do not exist. Qt's warnings of that are part of how the page behaves.
    connect(verification.account, SIGNAL(textChanged(const QString&)), this,
        SLOT(_phoneNumChanged(const QString&)));
    connect(
        verification.code, SIGNAL(textChanged(const QString&)), this, SLOT(_captchaChanged(const QString&)));
}

void PhoneLoginWidget::_updateTimeOut()
{
    verification.updateCountdown();
}

void PhoneLoginWidget::_slotGetVerifyCode()
{
    if (!requireText(this, verification.account, tr("The phone number cannot be empty!")))
        return;
    const QString account = verification.account->text();
    if (!isMail(account) && !isPhoneNumber(account)) {
        inform(this, tr("The format of the phone number is incorrect!"));
        return;
    }
    const QPointer<PhoneLoginWidget> self(this);
    const Answer answer =
        verification.request(&CloudAccountLogin::mobileVerify, &CloudAccountLogin::emailVerify);
    explain(this, answer);
    if (self)
        verification.startCountdown();
}
