// SPDX-License-Identifier: MIT
#include "ui/account/UserNameLoginWidget.h"

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

using namespace tav;

namespace {

constexpr char shownProperty[] = "shown";

/// Ignores the mouse wheel, which could change the account unnoticed.
class NameBox : public QComboBox
{
public:
    using QComboBox::QComboBox;

protected:
    void wheelEvent(QWheelEvent* event) override { event->ignore(); }
};

/// Stops key presses on a button inside a text field, which Qt would pass on to the field.
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
    // No completion to another name that begins like the one typed: the password is sent to this one.
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

bool UserNameLoginWidget::hasRememberedAccounts() const
{
    return !accounts.userNames().isEmpty();
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
    password->setText(QString()); // a remembered one is out of date
    password->setFocus();
}

void UserNameLoginWidget::loadRememberedAccounts()
{
    accounts.load();
    userName->addItems(accounts.userNames());
    currentFlag = accounts.flagOf(0);
    if (!accounts.isFilledIn(0))
        return;
    remember->setChecked(true);
    userName->setCurrentText(accounts.userNames().value(0));
    password->setText(accounts.passwordOf(0));
}

void UserNameLoginWidget::saveRememberedAccount(const QString& name, const QString& clearPassword)
{
    accounts.putInFront(name, clearPassword, currentFlag);
    accounts.save();

    // The dialog may be shown again: an index in the box must be that of the account.
    const QSignalBlocker quiet(userName);
    userName->clear();
    userName->addItems(accounts.userNames());
}

void UserNameLoginWidget::fillInRemembered()
{
    const int index = userName->currentIndex();
    if (std::exchange(forgotten, false) && remember->isChecked()
        && userName->currentText() == accounts.userNames().value(index))
        password->setText(accounts.passwordOf(index));
}

void UserNameLoginWidget::forgetPassword()
{
    password->setText(QString()); // unlike clear(), this empties the undo history too
    showPassword(false);
    forgotten = true;
}

void UserNameLoginWidget::_userNameIndexChanged(int index)
{
    if (!accounts.hasPassword(index))
        return;
    currentFlag = accounts.flagOf(index);
    remember->setChecked(accounts.isFilledIn(index));
    password->setText(accounts.passwordOf(index));
}

void UserNameLoginWidget::_userNameChanged(const QString&)
{
    const int index = userName->currentIndex();
    // The first account's password is cleared too: another name is being typed.
    password->setText(index > 0 ? accounts.passwordOf(index) : QString());
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
