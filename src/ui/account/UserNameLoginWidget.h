// SPDX-License-Identifier: MIT
#pragma once

#include "ui/account/RememberedAccounts.h"

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

    /// Puts the account in front of those in the account file: for a sign-in that succeeded.
    void saveRememberedAccount(const QString& name, const QString& clearPassword);

    /// Whether somebody signed in with a password before.
    bool remembersSomebody() const;
    /// The user may go on with the name that is there, or type another one over it.
    void offerName();
    /// Leads the user on to the password of \a name, an account with a new password. Without a name, of the
    /// one that is there.
    void askForPassword(const QString& name);

    /// Fills in the password of the remembered account that is chosen, unless there is one in the field.
    void fillInRemembered();
    /// Leaves no password in clear behind.
    void forgetPassword();

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

    tav::RememberedAccounts accounts;
    QString currentFlag;
    bool forgotten = false; // the password field was emptied when the dialog was hidden
};
