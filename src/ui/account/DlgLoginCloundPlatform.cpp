// SPDX-License-Identifier: MIT
#include "ui/account/DlgLoginCloundPlatform.h"

#include "account/CloudAccountLogin.h"
#include "core/Screen.h"
#include "ui/FocusMark.h"
#include "ui/ScopedDialog.h"
#include "ui/Steps.h"
#include "ui/account/DlgRegisterR2V.h"
#include "ui/account/DlgResetPassword.h"
#include "ui/account/PhoneLoginWidget.h"
#include "ui/account/UserNameLoginWidget.h"

#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QShowEvent>
#include <QTabWidget>
#include <QVBoxLayout>

using namespace tav;

namespace {

enum Tab
{
    PhoneTab,
    PasswordTab
};

/// A button that looks like a link.
class LinkButton : public QPushButton
{
public:
    LinkButton(const QString& text, QWidget* parent)
        : QPushButton(text, parent)
    {
        QFont underlined = font();
        underlined.setUnderline(true);
        setFont(underlined);
        setFlat(true);
        new FocusMark(this); // the style sheet leaves a focused button without one
        takeColour();
        parent->installEventFilter(this);
    }

    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::PaletteChange)
            takeColour();
        return false;
    }

private:
    /// Plain blue cannot be read on a dark window. The parent's palette decides, which shows through; the
    /// style sheet changes the button's own.
    void takeColour()
    {
        const bool dark = parentWidget()->palette().color(QPalette::Window).lightness() < 128;
        setStyleSheet(QStringLiteral("background:transparent;color:%1;margin:0;padding:0;")
                          .arg(dark ? "lightskyblue" : "blue"));
    }
};

} // namespace

DlgLoginCloundPlatform::DlgLoginCloundPlatform(QWidget* parent)
    : Dialog(parent)
    , tabs(new QTabWidget(this))
    , phonePage(new PhoneLoginWidget)
    , passwordPage(new UserNameLoginWidget)
{
    setWindowTitle(tr("Login"));
    setMinimumSize(int(dpi_scaled(350.0)), int(dpi_scaled(240.0)));

    tabs->addTab(phonePage, tr("Login by verification"));
    tabs->addTab(passwordPage, tr("Login by password"));

    auto* registerButton = new LinkButton(tr("User registration"), this);
    auto* forgottenButton = new LinkButton(tr("Forget the password"), this);
    auto* loginButton = new QPushButton(tr("Login"));
    auto* exitButton = new QPushButton(tr("Exit"));
    loginButton->setDefault(true);

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(registerButton);
    buttons->addWidget(forgottenButton);
    buttons->addStretch();
    buttons->addWidget(loginButton);
    buttons->addWidget(exitButton);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(tabs);
    layout->addLayout(buttons);
    phonePage->accountField()->setFocus();
    if (passwordPage->hasRememberedAccounts())
        tabs->setCurrentIndex(PasswordTab);

    connect(registerButton, &QPushButton::clicked, this, &DlgLoginCloundPlatform::_register);
    connect(forgottenButton, &QPushButton::clicked, this, &DlgLoginCloundPlatform::_retrievePassword);
    connect(loginButton, &QPushButton::clicked, this, &DlgLoginCloundPlatform::_login);
    connect(exitButton, &QPushButton::clicked, this, &QDialog::reject);
    connect(this, &QDialog::accepted, phonePage->codeField(), &QLineEdit::clear); // a code is valid once
}

void DlgLoginCloundPlatform::showEvent(QShowEvent* event)
{
    // Once fonts and style are known: no smaller than the texts need, whatever the language.
    setMinimumSize(minimumSize().expandedTo(layout()->totalMinimumSize()));
    if (!event->spontaneous()) {
        passwordPage->fillInRemembered();
        if (tabs->currentIndex() == PasswordTab)
            passwordPage->offerName();
    }
    Dialog::showEvent(event);
}

/// The host may keep the dialog and show it again.
void DlgLoginCloundPlatform::hideEvent(QHideEvent* event)
{
    if (!event->spontaneous())
        passwordPage->forgetPassword();
    Dialog::hideEvent(event);
}

void DlgLoginCloundPlatform::_register()
{
    ScopedDialog<DlgRegisterR2V> dialog(this);
    if (dialog.accepted())
        goOnWithPassword(dialog->registeredName());
}

void DlgLoginCloundPlatform::_retrievePassword()
{
    ScopedDialog<DlgResetPassword> dialog(this);
    if (dialog.accepted())
        goOnWithPassword(dialog->account());
}

void DlgLoginCloundPlatform::goOnWithPassword(const QString& userName)
{
    tabs->setCurrentIndex(PasswordTab);
    passwordPage->askForPassword(userName);
}

void DlgLoginCloundPlatform::_login()
{
    if (tabs->currentIndex() == PhoneTab)
        loginByCode();
    else if (tabs->currentIndex() == PasswordTab)
        loginByPassword();
}

void DlgLoginCloundPlatform::loginByCode()
{
    QLineEdit* account = phonePage->accountField();
    QLineEdit* code = phonePage->codeField();
    if (!requireText(this, account, tr("The phone number cannot be empty!"))
        || !requireText(this, code, tr("verification code must be filled!")))
        return;
    const Answer answer = ask(this, tr("Signing in..."),
        [account = account->text().toLocal8Bit(), code = code->text().toLocal8Bit()](
            CloudAccountLogin& session) {
            return session.phoneLoginAccount(account.constData(), code.constData());
        });
    conclude(this, answer, tr("login successfully!"));
}

void DlgLoginCloundPlatform::loginByPassword()
{
    if (!requireText(this, passwordPage->userNameField(), tr("Username can not be empty!"))
        || !requireText(this, passwordPage->passwordField(), tr("password can not be blank!")))
        return;
    const QString userName = passwordPage->userNameField()->text();
    QString password = passwordPage->passwordField()->text();
    const QPointer<UserNameLoginWidget> page(passwordPage);
    bool signedIn = false;
    const Answer answer = ask(this, tr("Signing in..."), [&](CloudAccountLogin& session) {
        signedIn =
            session.userLoginAccount(userName.toLocal8Bit().constData(), password.toLocal8Bit().constData());
        return signedIn;
    });
    // Also when the dialog was closed meanwhile: the user has signed in with it.
    if (signedIn && page)
        page->saveRememberedAccount(userName, password);
    password.clear(); // before the box, which may stay open for long
    conclude(this, answer, tr("login successfully!"));
}
