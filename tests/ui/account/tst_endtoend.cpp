// SPDX-License-Identifier: MIT
#include "DialogFixture.h"

#include "PlatformUnderTest.h"
#include "net/BuildConstants.h"
#include "support/TestConstants.h"
#include "ui/account/DlgLoginCloundPlatform.h"

#include <QFile>
#include <QLineEdit>
#include <QTest>

namespace {

const QString registration = "User registration";

} // namespace

/// The dialogs, the session and the transport against the real local platform.
class TestEndToEnd : public DialogTest
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        platform = std::make_unique<PlatformUnderTest>(QStringList{"--client-credential", clientCredential(),
            "--refresh-bearer", refreshBearer(), "--cipher-key", accountCipherKey()});
        // The session takes its address here, before the fixture sets that of its own peer.
        setPlatformAddress(QStringLiteral("http://127.0.0.1:%1").arg(platform->port()));
        session = CloudAccountLogin::instance();
        DialogTest::initTestCase();
    }
    void cleanupTestCase()
    {
        DialogTest::cleanupTestCase();
        QCOMPARE(platform->stop(), 0);
    }

    void registersByMailAndSignsIn()
    {
        const QString mail = "wang.fang@example.com";
        DlgLoginCloundPlatform dialog;
        bringUp(dialog);
        registerAccount(dialog, "not.asked.for", mail);
        type(dialog, word, "drawing+1");
        signIn(dialog, mail); // the platform names such an account by its address
        QVERIFY(QFile::remove("AccountManage.bin"));

        bringUp(dialog);
        openTab(dialog, CodeTab);
        type(dialog, account, mail);
        press(dialog, askForCode);
        type(dialog, code, platform->sentCode(mail));
        signIn(dialog, mail);
        QVERIFY(!QFile::exists("AccountManage.bin"));
    }

    void resetsThePassword()
    {
        DlgLoginCloundPlatform dialog;
        bringUp(dialog);
        follow(dialog, "Forget the password", [&](QDialog& reset) {
            type(reset, account, "13800000001");
            press(reset, askForCode);
            fillIn(reset, {{"New password", "compass 2"}, {code, platform->sentCode("13800000001")}});
            fixture->boxes().expectPrompt("Password reset successfully!");
            press(reset, "Reset");
        });
        type(dialog, word, "demo-alice-1");
        fixture->boxes().expect({QMessageBox::Critical, "error", "The user name or the password is wrong"});
        press(dialog, "Login");
        type(dialog, word, "compass 2");
        signIn(dialog, "alice");
    }

private:
    void registerAccount(const QDialog& login, const QString& name, const QString& address)
    {
        follow(login, registration, [&](QDialog& dialog) {
            fillIn(dialog, {{"User name", name}, {word, "drawing+1"}, {account, address}});
            press(dialog, askForCode);
            type(dialog, code, platform->sentCode(address));
            fixture->boxes().expectPrompt("Account registration successfully!");
            press(dialog, registration);
        });
    }

    /// With what is in the fields.
    void signIn(const QDialog& login, const QString& name)
    {
        fixture->boxes().expectPrompt("login successfully!");
        press(login, "Login");
        QCOMPARE(login.result(), int(QDialog::Accepted));
        QVERIFY(session->getLoginState());
        QCOMPARE(session->getUserName(), name);
    }

    std::unique_ptr<PlatformUnderTest> platform;
    CloudAccountLogin* session = nullptr;
};

QTEST_MAIN(TestEndToEnd)
#include "tst_endtoend.moc"
