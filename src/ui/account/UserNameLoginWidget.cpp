// SPDX-License-Identifier: MIT
#include "ui/account/UserNameLoginWidget.h"

#include "crypto/AccountCipher.h"
#include "net/BuildConstants.h"
#include "ui/account/FieldGrid.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QCompleter>
#include <QLineEdit>

namespace {

constexpr int mostAccounts = 5;
constexpr char shownProperty[] = "shown";

QString enciphered(const QString& password)
{
    return aesEncryptText(password, accountCipherKey(), accountCipherKey());
}

QString deciphered(const QString& password)
{
    return aesDecryptText(password, accountCipherKey(), accountCipherKey());
}

bool isSet(const QString& flag)
{
    return flag == QLatin1String("true");
}

void prependAtMost(QStringList& list, const QString& text)
{
    list.prepend(text);
    if (list.size() > mostAccounts)
        list.removeLast();
}

void moveToFront(QStringList& list, int index, const QString& text)
{
    if (index < list.size())
        list.removeAt(index);
    list.prepend(text);
}

} // namespace

UserNameLoginWidget::UserNameLoginWidget(QWidget* parent)
    : QWidget(parent)
    , userName(new QComboBox(this))
    , password(new QLineEdit(this))
    , eye(password->addAction(QIcon(), QLineEdit::TrailingPosition))
    , remember(new QCheckBox(tr("Remember the password"), this))
{
    userName->setEditable(true);
    // Enter is for the dialog's button, not for a new entry.
    userName->setInsertPolicy(QComboBox::NoInsert);
    // Names that differ in letter case are different accounts.
    userName->completer()->setCaseSensitivity(Qt::CaseSensitive);
    // A long name must not widen the dialog.
    userName->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    eye->setText(tr("Show or hide the password")); // its name for a screen reader, and its tool tip
    showPassword(false);

    auto* grid = new FieldGrid(this);
    grid->addField(tr("Phone number/email") + ':', userName);
    grid->addField(tr("Password") + ':', password);
    grid->addWidget(remember, grid->rowCount(), 1);
    grid->setRowStretch(grid->rowCount(), 1);

    loadRememberedAccounts();

    connect(userName, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
        &UserNameLoginWidget::_userNameIndexChanged);
    connect(userName, &QComboBox::currentTextChanged, this, &UserNameLoginWidget::_userNameChanged);
    connect(remember, &QCheckBox::stateChanged, this, &UserNameLoginWidget::_checkBoxClicked);
    connect(eye, &QAction::triggered, this, &UserNameLoginWidget::_passwordWatch);
}

QLineEdit* UserNameLoginWidget::userNameField() const
{
    return userName->lineEdit();
}

void UserNameLoginWidget::loadRememberedAccounts()
{
    readAccountFile(accounts);
    userName->addItems(accounts.userNames);
    for (QString& entry : accounts.passwords)
        entry = deciphered(entry);

    currentUserName = accounts.userNames.value(0);
    currentPassword = accounts.passwords.value(0);
    currentFlag = accounts.rememberFlags.value(0);
    if (!isSet(currentFlag))
        return;
    remember->setChecked(true);
    userName->setCurrentText(currentUserName);
    password->setText(currentPassword);
}

void UserNameLoginWidget::saveRememberedAccount()
{
    if (!passwordsEnciphered) {
        for (QString& entry : accounts.passwords)
            entry = enciphered(entry);
        passwordsEnciphered = true;
    }
    currentUserName = userName->currentText();
    currentPassword = password->text();

    // The password is kept whatever the flag says; the flag decides whether it is filled in again.
    if (accounts.userNames.contains(currentUserName)) {
        for (int i = 0; i < accounts.userNames.size(); ++i) {
            if (accounts.userNames.at(i) != currentUserName)
                continue;
            currentPassword = enciphered(currentPassword);
            moveToFront(accounts.userNames, i, currentUserName);
            moveToFront(accounts.passwords, i, currentPassword);
            moveToFront(accounts.rememberFlags, i, currentFlag);
        }
    } else if (!currentUserName.isEmpty()) {
        prependAtMost(accounts.userNames, currentUserName);
        prependAtMost(accounts.passwords, enciphered(currentPassword));
        prependAtMost(accounts.rememberFlags, currentFlag);
    }
    currentPassword.clear();
    writeAccountFile(accounts);
}

void UserNameLoginWidget::_userNameIndexChanged(int index)
{
    if (index >= accounts.passwords.size())
        return;
    currentPassword = accounts.passwords.value(index);
    currentFlag = accounts.rememberFlags.value(index);
    const bool fill = isSet(currentFlag);
    remember->setChecked(fill);
    password->setText(fill ? currentPassword : QString());
}

void UserNameLoginWidget::_userNameChanged(const QString&)
{
    const int index = userName->currentIndex();
    // The first account's password goes as well: what is being typed is another name.
    const bool fill = index > 0 && isSet(accounts.rememberFlags.value(index));
    password->setText(fill ? accounts.passwords.value(index) : QString());
}

void UserNameLoginWidget::_checkBoxClicked(int)
{
    currentFlag = remember->isChecked() ? QStringLiteral("true") : QStringLiteral("false");
}

void UserNameLoginWidget::_passwordWatch()
{
    showPassword(!eye->property(shownProperty).toBool());
}

void UserNameLoginWidget::showPassword(bool shown)
{
    eye->setProperty(shownProperty, shown);
    eye->setIcon(QIcon(shown ? QStringLiteral(":/tav_cloud_platform_sdk/Resources/eye.png")
                             : QStringLiteral(":/tav_cloud_platform_sdk/Resources/closed_eye.png")));
    password->setEchoMode(shown ? QLineEdit::Normal : QLineEdit::Password);
}
