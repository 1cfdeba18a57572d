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

    /// Puts an account that has signed in in front of those in the account file.
    void saveRememberedAccount(const QString& name, const QString& clearPassword);

    /// Whether any account signed in with a password before.
    bool hasRememberedAccounts() const;
    /// Focuses the name and selects it, so that the user may keep it or type over it.
    void offerName();
    /// Fills in \a name, an account with a new password, and focuses the empty password field. Without a
    /// name, the one that is there stays.
    void askForPassword(const QString& name);

    /// Fills in the password of the remembered account that is chosen, unless there is one in the field.
    void fillInRemembered();
    /// Empties the password field, so that no password stays in it in clear.
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
    bool forgotten = false; ///< the password field was emptied when the dialog was hidden
};
