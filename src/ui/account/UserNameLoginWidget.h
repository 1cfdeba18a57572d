// SPDX-License-Identifier: MIT
#pragma once

#include "ui/account/AccountFile.h"

#include <QWidget>

class QAction;
class QCheckBox;
class QComboBox;
class QLineEdit;

/// The page for signing in with user name and password, and the accounts that did so before.
class UserNameLoginWidget : public QWidget
{
    Q_OBJECT

public:
    explicit UserNameLoginWidget(QWidget* parent = nullptr);

    QLineEdit* userNameField() const;
    QLineEdit* passwordField() const { return password; }

    /// Puts the account of the fields in front of those in the account file: for a sign-in that succeeded.
    void saveRememberedAccount();

private slots:
    void _userNameIndexChanged(int index);
    void _userNameChanged(const QString& text);
    void _checkBoxClicked(int state);
    void _passwordWatch();

private:
    void loadRememberedAccounts();
    void showPassword(bool shown);

    QComboBox* userName;
    QLineEdit* password;
    QAction* eye;
    QCheckBox* remember;

    RememberedAccounts accounts;
    /// Between loading and saving they are in clear.
    bool passwordsEnciphered = false;
    QString currentFlag;
    QString currentUserName;
    QString currentPassword;
};
