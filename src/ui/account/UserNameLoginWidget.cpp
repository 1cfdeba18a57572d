// SPDX-License-Identifier: MIT
#include "ui/account/UserNameLoginWidget.h"

#include "crypto/AccountCipher.h"
#include "net/BuildConstants.h"
#include "ui/FieldGrid.h"
#include "ui/FocusMark.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QSignalBlocker>
#include <QToolButton>
#include <QWheelEvent>

namespace {

constexpr int mostAccounts = 5;
constexpr char shownProperty[] = "shown";

/// Who rolls the mouse wheel means what is below, and not another account.
class NameBox : public QComboBox
{
public:
    using QComboBox::QComboBox;

protected:
    void wheelEvent(QWheelEvent* event) override { event->ignore(); }
};

/// Keeps what is typed on a button within a text field from the field, to which Qt would pass it on.
class ButtonKeys : public QObject
{
public:
    using QObject::QObject;

    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() != QEvent::KeyPress)
            return false;
        switch (static_cast<QKeyEvent*>(event)->key()) {
        case Qt::Key_Space:
        case Qt::Key_Tab:
        case Qt::Key_Backtab:
        case Qt::Key_Return:
        case Qt::Key_Enter:
        case Qt::Key_Escape:
            return false;
        default:
            return true;
        }
    }
};

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
    , userName(new NameBox(this))
    , password(new QLineEdit(this))
    , eye(password->addAction(QIcon(), QLineEdit::TrailingPosition))
    , remember(new QCheckBox(tr("Remember the password"), this))
{
    userName->setEditable(true);
    // Enter is for the dialog's button, not for a new entry.
    userName->setInsertPolicy(QComboBox::NoInsert);
    // A name is the one that was typed, also when another begins with it: a password follows.
    userName->setCompleter(nullptr);
    // A long name must not widen the dialog.
    userName->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    eye->setText(tr("Show or hide the password")); // its name for a screen reader, and its tool tip
    auto* eyeButton = password->findChild<QToolButton*>();
    eyeButton->setFocusPolicy(Qt::TabFocus); // a click leaves the focus in the field
    new FocusMark(eyeButton);
    eyeButton->installEventFilter(new ButtonKeys(eyeButton));
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

bool UserNameLoginWidget::remembersSomebody() const
{
    return !accounts.userNames.isEmpty();
}

void UserNameLoginWidget::offerName()
{
    userName->setFocus();
    userName->lineEdit()->selectAll();
}

void UserNameLoginWidget::askForPassword(const QString& name)
{
    if (!name.isEmpty()) {
        userName->setCurrentIndex(userName->findText(name, Qt::MatchExactly | Qt::MatchCaseSensitive));
        userName->setEditText(name);
    }
    password->setText(QString()); // one that is remembered is an old one
    password->setFocus();
}

void UserNameLoginWidget::loadRememberedAccounts()
{
    readAccountFile(accounts);
    userName->addItems(accounts.userNames);
    currentFlag = accounts.rememberFlags.value(0);
    if (!isSet(currentFlag))
        return;
    remember->setChecked(true);
    userName->setCurrentText(accounts.userNames.value(0));
    password->setText(remembered(0));
}

void UserNameLoginWidget::saveRememberedAccount(const QString& name, const QString& clearPassword)
{
    // An entry that our key does not open is kept as what comes out of it.
    for (QString& entry : accounts.passwords)
        entry = enciphered(deciphered(entry));

    // The password is kept whatever the flag says; the flag decides whether it is filled in again.
    QString newPassword = clearPassword;
    if (accounts.userNames.contains(name)) {
        for (int i = 0; i < accounts.userNames.size(); ++i) {
            if (accounts.userNames.at(i) != name)
                continue;
            newPassword = enciphered(newPassword);
            moveToFront(accounts.userNames, i, name);
            moveToFront(accounts.passwords, i, newPassword);
            moveToFront(accounts.rememberFlags, i, currentFlag);
        }
    } else if (!name.isEmpty()) {
        prependAtMost(accounts.userNames, name);
        prependAtMost(accounts.passwords, enciphered(newPassword));
        prependAtMost(accounts.rememberFlags, currentFlag);
    }
    writeAccountFile(accounts);

    // The dialog may be shown again: what is chosen from the box must be the account at the same place.
    const QSignalBlocker quiet(userName);
    userName->clear();
    userName->addItems(accounts.userNames);
}

QString UserNameLoginWidget::remembered(int index) const
{
    return isSet(accounts.rememberFlags.value(index)) ? deciphered(accounts.passwords.value(index))
                                                      : QString();
}

void UserNameLoginWidget::fillInRemembered()
{
    const int index = userName->currentIndex();
    if (std::exchange(forgotten, false) && remember->isChecked()
        && userName->currentText() == accounts.userNames.value(index))
        password->setText(remembered(index));
}

void UserNameLoginWidget::forgetPassword()
{
    password->setText(QString()); // unlike clear(), this leaves nothing to undo either
    showPassword(false);
    forgotten = true;
}

void UserNameLoginWidget::_userNameIndexChanged(int index)
{
    if (index >= accounts.passwords.size())
        return;
    currentFlag = accounts.rememberFlags.value(index);
    remember->setChecked(isSet(currentFlag));
    password->setText(remembered(index));
}

void UserNameLoginWidget::_userNameChanged(const QString&)
{
    const int index = userName->currentIndex();
    // The first account's password goes as well: what is being typed is another name.
    password->setText(index > 0 ? remembered(index) : QString());
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
