// SPDX-License-Identifier: MIT
#include "ui/account/DlgLoginCloundPlatform.h"

#include "account/CloudAccountLogin.h"
#include "core/Screen.h"
#include "ui/ScopedDialog.h"
#include "ui/account/Conclusion.h"
#include "ui/account/DlgRegisterR2V.h"
#include "ui/account/DlgResetPassword.h"
#include "ui/account/PhoneLoginWidget.h"
#include "ui/account/UserNameLoginWidget.h"

#include <QHBoxLayout>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <QTabWidget>
#include <QVBoxLayout>

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
    explicit LinkButton(const QString& text)
        : QPushButton(text)
    {
        QFont underlined = font();
        underlined.setUnderline(true);
        setFont(underlined);
        // Plain blue cannot be read on a dark window.
        const bool dark = palette().color(QPalette::Window).lightness() < 128;
        setStyleSheet(QStringLiteral("background:transparent;color:%1;margin:0;padding:0;")
                          .arg(dark ? "lightskyblue" : "blue"));
        setFlat(true);
    }

protected:
    /// The style sheet leaves a focused button without a mark.
    void paintEvent(QPaintEvent* event) override
    {
        QPushButton::paintEvent(event);
        if (!hasFocus())
            return;
        QPainter painter(this);
        painter.setPen(QPen(palette().color(QPalette::Highlight), 1, Qt::DotLine));
        painter.drawRect(rect().adjusted(0, 0, -1, -1));
    }
};

} // namespace

DlgLoginCloundPlatform::DlgLoginCloundPlatform(QWidget* parent)
    : Dialog(parent)
    , tabs(new QTabWidget(this))
    , phonePage(new PhoneLoginWidget)
    , passwordPage(new UserNameLoginWidget)
    , loginButton(new QPushButton(tr("Login")))
{
    setWindowTitle(tr("Login"));
    setMinimumSize(int(dpi_scaled(350.0)), int(dpi_scaled(240.0)));

    tabs->addTab(phonePage, tr("Login by verification"));
    tabs->addTab(passwordPage, tr("Login by password"));

    auto* registerButton = new LinkButton(tr("User registration"));
    auto* forgottenButton = new LinkButton(tr("Forget the password"));
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

    connect(registerButton, &QPushButton::clicked, this, &DlgLoginCloundPlatform::_register);
    connect(forgottenButton, &QPushButton::clicked, this, &DlgLoginCloundPlatform::_retrievePassword);
    connect(loginButton, &QPushButton::clicked, this, &DlgLoginCloundPlatform::_login);
    connect(exitButton, &QPushButton::clicked, this, &QDialog::reject);
    // The host may keep the dialog; its password has done its work.
    connect(this, &QDialog::accepted, passwordPage->passwordField(), &QLineEdit::clear);
}

/// Once fonts and style are known: no smaller than the texts need, whatever the language.
void DlgLoginCloundPlatform::showEvent(QShowEvent* event)
{
    setMinimumSize(minimumSize().expandedTo(layout()->totalMinimumSize()));
    Dialog::showEvent(event);
}

void DlgLoginCloundPlatform::_register()
{
    if (ScopedDialog<DlgRegisterR2V>(this, QString()).accepted())
        tabs->setCurrentIndex(PasswordTab);
}

void DlgLoginCloundPlatform::_retrievePassword()
{
    if (ScopedDialog<DlgResetPassword>(this, QString()).accepted())
        tabs->setCurrentIndex(PasswordTab);
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
    if (!filled(this, account, tr("The phone number cannot be empty!"))
        || !filled(this, code, tr("verification code must be filled!")))
        return;
    const Outcome outcome = callPlatform(this, tr("Signing in..."),
        [account = account->text().toLocal8Bit(), code = code->text().toLocal8Bit()] {
            return CloudAccountLogin::instance()->phoneLoginAccount(account.constData(), code.constData());
        });
    conclude(this, outcome, tr("login successfully!"));
}

void DlgLoginCloundPlatform::loginByPassword()
{
    QLineEdit* userName = passwordPage->userNameField();
    QLineEdit* password = passwordPage->passwordField();
    if (!filled(this, userName, tr("Username can not be empty!"))
        || !filled(this, password, tr("password can not be blank!")))
        return;
    const QPointer<UserNameLoginWidget> page(passwordPage);
    bool signedIn = false;
    const Outcome outcome = callPlatform(this, tr("Signing in..."),
        [&signedIn, name = userName->text().toLocal8Bit(), word = password->text().toLocal8Bit()] {
            signedIn = CloudAccountLogin::instance()->userLoginAccount(name.constData(), word.constData());
            return signedIn;
        });
    // Also when the dialog was closed meanwhile: the user has signed in with it.
    if (signedIn && page)
        page->saveRememberedAccount();
    conclude(this, outcome, tr("login successfully!"));
}
