// SPDX-License-Identifier: MIT
#include "ui/account/DlgRegisterR2V.h"

#include "ui/FieldGrid.h"
#include "ui/Steps.h"

#include <QLineEdit>
#include <QPushButton>
#include <QTimer>

#include <algorithm>

using namespace tav;

namespace {

bool hasChinese(const QString& text)
{
    return std::any_of(
        text.begin(), text.end(), [](QChar sign) { return sign >= u'\u4e00' && sign <= u'\u9fa5'; });
}

} // namespace

DlgRegisterR2V::DlgRegisterR2V(QWidget* parent)
    : Dialog(parent)
    , userName(new QLineEdit(this))
    , password(new QLineEdit(this))
    , verification(this, tr("Obtaining verification code"))
{
    setWindowTitle(tr("User registration"));
    password->setEchoMode(QLineEdit::Password);
    password->setPlaceholderText(tr("6-24位数字和英文字母组合"));
    auto* registerButton = new QPushButton(tr("User registration"), this);
    auto* cancelButton = new QPushButton(tr("Cancel"), this);

    auto* fields = new FieldGrid;
    fields->addField(tr("User name"), userName);
    fields->addField(tr("Password"), password);
    fields->addField(tr("Phone number/email"), verification.account);
    fields->addField(tr("Verification"), verification.code, verification.button);
    layOut(this, fields, registerButton, cancelButton);

    connect(verification.tick, &QTimer::timeout, this, &DlgRegisterR2V::_updateTimeOut);
    connect(verification.button, &QPushButton::clicked, this, &DlgRegisterR2V::_slotGetVerifyCode);
    connect(registerButton, &QPushButton::clicked, this, &DlgRegisterR2V::_slotRegister);
    connect(cancelButton, &QPushButton::clicked, this, &QDialog::reject);
}

QString DlgRegisterR2V::registeredName() const
{
    const QString account = verification.account->text();
    return isMail(account) ? account : userName->text();
}

void DlgRegisterR2V::_updateTimeOut()
{
    verification.updateCountdown();
}

void DlgRegisterR2V::_slotGetVerifyCode()
{
    if (!requireText(this, verification.account, tr("The phone number cannot be empty!")))
        return;
    verification.startCountdown();
    const Answer answer =
        verification.request(&CloudAccountLogin::mobileVerify, &CloudAccountLogin::emailVerify);
    explain(this, answer);
}

bool DlgRegisterR2V::isComplete()
{
    if (!requireText(this, userName, tr("Username can not be empty!"))
        || !requireText(this, password, tr("password can not be blank!")))
        return false;
    if (hasChinese(password->text())) {
        inform(this, tr("The password cannot have Chinese characters!"));
        return false;
    }
    return requireText(this, verification.account, tr("The phone number cannot be empty!"))
        && requireText(this, verification.code, tr("verification code must be filled!"));
}

void DlgRegisterR2V::_slotRegister()
{
    const DisabledWhile disabled(qobject_cast<QWidget*>(sender()));
    if (!isComplete())
        return;
    const QString account = verification.account->text();
    const auto operation =
        isMail(account) ? &CloudAccountLogin::registerUserByMail : &CloudAccountLogin::registerUser;
    const Answer answer = ask(this, tr("Registering..."),
        [operation, name = userName->text().toLocal8Bit(), word = password->text().toLocal8Bit(),
            target = account.toLocal8Bit(),
            code = verification.code->text().toLocal8Bit()](CloudAccountLogin& session) {
            return (session.*operation)(
                name.constData(), word.constData(), target.constData(), code.constData());
        });
    explain(this, answer);
    if (answer.outcome == Outcome::Done && inform(this, tr("Account registration successfully!")))
        accept();
}
