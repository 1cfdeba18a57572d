// SPDX-License-Identifier: MIT
// Renders the dialogs in their main states, in both languages, into a folder:
//
//     QT_QPA_PLATFORM=offscreen QT_SCALE_FACTOR=2 tav-pictures FOLDER
//
// A scripted peer plays the platform, so the pictures are the same everywhere but for the fonts.
#include "Album.h"
#include "CloudSpacePictures.h"
#include "account/CloudAccountLogin.h"
#include "crypto/AccountCipher.h"
#include "net/BuildConstants.h"
#include "support/ScriptedPeer.h"
#include "support/TestConstants.h"
#include "ui/Translation.h"
#include "ui/account/AccountFile.h"
#include "ui/account/DlgLoginCloundPlatform.h"
#include "ui/account/DlgLogoutCloundPlatform.h"
#include "ui/account/DlgRegisterR2V.h"
#include "ui/account/DlgResetPassword.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QLibraryInfo>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QTranslator>

#include <cstdio>

using namespace tav;

namespace {

void fill(QWidget& window, const QStringList& texts)
{
    auto text = texts.begin();
    for (QLineEdit* field : window.findChildren<QLineEdit*>())
        if (field->isVisible() && text != texts.end())
            field->setText(*text++);
}

const QString account = QStringLiteral("drafter@example.com");
const QByteArray refusal = R"({"code":1,"msg":"Wrong verification code / 验证码错误"})";

void shootLogin(const Album& album, ScriptedPeer& peer)
{
    const auto tr = [](const char* text) { return DlgLoginCloundPlatform::tr(text); };
    QFile::remove("AccountManage.bin");
    {
        DlgLoginCloundPlatform dialog;
        album.shoot(dialog, "login-code-empty");
        album.shootBox(dialog, tr("Login"), "login-code-prompt");
        fill(dialog, {account, "4711"});
        album.shoot(dialog, "login-code-filled");
        peer.expect("POST",
            "/auth/mobile/token/sms?mobile=MAIL@drafter@example.com&code=4711&grant_type=mobile",
            behaviour::answer(refusal));
        album.shootBox(dialog, tr("Login"), "login-code-error");
        peer.expect("GET", "/admin/mail/drafter@example.com", behaviour::answer(R"({"code":0})"));
        album.press(dialog, QCoreApplication::translate("PhoneLoginWidget", "Obtaining verification code"));
        QTest::qWait(150);
        album.shoot(dialog, "login-code-counting");
    }
    DlgLoginCloundPlatform fresh;
    fresh.findChild<QTabWidget*>()->setCurrentIndex(1);
    album.shoot(fresh, "login-password-empty");
    for (QPushButton* button : fresh.findChildren<QPushButton*>())
        if (button->text() == tr("Forget the password"))
            button->setFocus(Qt::TabFocusReason);
    album.shoot(fresh, "login-link-focused");

    const auto enciphered = [](const char* word) {
        return aesEncryptText(word, accountCipherKey(), accountCipherKey());
    };
    writeAccountFile(
        {{"li.hua", "wang.fang"}, {enciphered("correct horse"), enciphered("b")}, {"true", "false"}});
    DlgLoginCloundPlatform remembered;
    album.shoot(remembered, "login-password-remembered");
    for (QAction* action : remembered.findChildren<QAction*>())
        if (action->property("shown").isValid())
            action->trigger();
    album.shoot(remembered, "login-password-shown");
}

void shootOthers(const Album& album, ScriptedPeer& peer)
{
    DlgRegisterR2V registration;
    album.shoot(registration, "register-empty");
    fill(registration, {"li.hua", "secret 1", account, "4711"});
    album.shoot(registration, "register-filled");
    peer.expect("POST", "/admin/api/user/mail/register", behaviour::answer(refusal));
    album.shootBox(registration, DlgRegisterR2V::tr("User registration"), "register-error");
    peer.expect("GET", "/admin/mail/drafter@example.com", behaviour::answer(R"({"code":0})"));
    album.press(registration, DlgRegisterR2V::tr("Obtaining verification code"));
    QTest::qWait(150);
    album.shoot(registration, "register-counting");

    DlgResetPassword reset;
    album.shoot(reset, "reset-empty");
    peer.expect("GET", "/admin/mail/reset/drafter@example.com", behaviour::answer(R"({"code":0})"));
    reset.findChild<QLineEdit*>()->setText(account);
    album.press(reset, DlgResetPassword::tr("Obtaining verification code"));
    QTest::qWait(150);
    album.shoot(reset, "reset-counting");
    fill(reset, {account, "4711", "secret 1"});
    peer.expect("POST", "/admin/api/user/resetpw", behaviour::answer(refusal));
    album.shootBox(reset, DlgResetPassword::tr("Reset"), "reset-error");

    peer.expect("POST", "/auth/oauth/token?grant_type=password",
        behaviour::answer(R"({"access_token":"A","refresh_token":"R","user_info":{"username":"li.hua"}})"));
    CloudAccountLogin::instance()->userLoginAccount("li.hua", "secret 1");
    DlgLogoutCloundPlatform logout;
    album.shoot(logout, "logout");
    peer.expect("POST", "/auth/oauth/check_token", behaviour::answer(R"({"user_info":{}})"));
    peer.expect(
        "DELETE", "/auth/token/logout", behaviour::answer(R"({"code":1,"msg":"Not now / 稍后再试"})"));
    album.shootBox(logout, DlgLogoutCloundPlatform::tr("Logout"), "logout-error");
}

QPalette darkPalette()
{
    QPalette palette;
    palette.setColor(QPalette::Window, QColor(0x2d, 0x30, 0x35));
    palette.setColor(QPalette::WindowText, Qt::white);
    palette.setColor(QPalette::Base, QColor(0x1e, 0x20, 0x24));
    palette.setColor(QPalette::Text, Qt::white);
    palette.setColor(QPalette::PlaceholderText, QColor(0x98, 0x9c, 0xa4));
    palette.setColor(QPalette::Button, QColor(0x3a, 0x3e, 0x45));
    palette.setColor(QPalette::ButtonText, Qt::white);
    palette.setColor(QPalette::Highlight, QColor(0x2f, 0x78, 0xc8));
    palette.setColor(QPalette::Disabled, QPalette::ButtonText, QColor(0x88, 0x8c, 0x94));
    return palette;
}

} // namespace

int main(int argc, char* argv[])
{
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    const QString inQt = QLibraryInfo::location(QLibraryInfo::TranslationsPath);
#else
    const QString inQt = QLibraryInfo::path(QLibraryInfo::TranslationsPath);
#endif
    QApplication application(argc, argv);
    if (application.arguments().size() != 2) {
        std::fputs("Usage: tav-pictures FOLDER\n", stderr);
        return 2;
    }
    QApplication::setStyle("fusion");
    const QString folder = QDir(application.arguments().at(1)).absolutePath();
    QDir().mkpath(folder);
    // The account file is in the working directory.
    const QTemporaryDir scratch;
    QDir::setCurrent(scratch.path());

    ScriptedPeer peer;
    setPlatformAddress(peer.address());
    QTranslator buttons;
    const QPalette light = QApplication::palette();
    for (const QLocale& language : {QLocale("en_US"), QLocale("zh_CN")}) {
        installCloudPlatformTranslation(language);
        // Not all machines have Qt's own catalogues; the boxes' buttons are then English.
        if (buttons.load(language, "qtbase", "_", inQt))
            QCoreApplication::installTranslator(&buttons);
        for (const bool dark : {false, true}) {
            QApplication::setPalette(dark ? darkPalette() : light);
            const Album album(folder, language.name().left(2) + (dark ? "-dark-" : "-"));
            shootLogin(album, peer);
            shootOthers(album, peer);
            shootCloudSpace(album, peer);
        }
    }
    const QStringList wrong = peer.finish();
    std::fputs(qPrintable(wrong.join('\n')), stderr);
    return wrong.isEmpty() ? 0 : 1;
}
