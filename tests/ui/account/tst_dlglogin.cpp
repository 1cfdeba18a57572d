// SPDX-License-Identifier: MIT
#include "DialogFixture.h"

#include "core/Screen.h"
#include "crypto/AccountCipher.h"
#include "net/BuildConstants.h"
#include "ui/account/AccountFile.h"
#include "ui/account/DlgLoginCloundPlatform.h"
#include "ui/account/DlgRegisterR2V.h"
#include "ui/account/DlgResetPassword.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFile>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QTest>
#include <QToolButton>

namespace {

const QByteArray passwordTarget = "/auth/oauth/token?grant_type=password";
const QByteArray tokens = R"({"access_token":"A","refresh_token":"R","user_info":{"username":"u"}})";

QString enciphered(const QString& text)
{
    return aesEncryptText(text, accountCipherKey(), accountCipherKey());
}

QStringList enciphered(QStringList texts)
{
    for (QString& text : texts)
        text = enciphered(text);
    return texts;
}

RememberedAccounts stored()
{
    RememberedAccounts accounts;
    readAccountFile(accounts);
    return accounts;
}

QComboBox& userNames(const DlgLoginCloundPlatform& dialog)
{
    return *dialog.findChild<QComboBox*>();
}

QCheckBox& rememberBox(const DlgLoginCloundPlatform& dialog)
{
    return *dialog.findChild<QCheckBox*>();
}

QString password(const DlgLoginCloundPlatform& dialog)
{
    return field(dialog, word)->text();
}

} // namespace

class TestDlgLogin : public DialogTest
{
    Q_OBJECT

private slots:
    void isBuiltAsItsUsersKnowIt()
    {
        DlgLoginCloundPlatform dialog;
        QCOMPARE(dialog.windowTitle(), QString("Login"));
        QCOMPARE(dialog.minimumSize(), QSize(int(dpi_scaled(350.0)), int(dpi_scaled(240.0))));
        bringUp(dialog);
        QVERIFY(dialog.isModal() && !(dialog.windowFlags() & Qt::WindowContextHelpButtonHint));
        const auto* tabs = dialog.findChild<QTabWidget*>();
        QCOMPARE(tabs->count(), 2);
        QCOMPARE(tabs->currentIndex(), 0);
        QCOMPARE(tabs->tabText(0), QString("Login by verification"));
        QCOMPARE(tabs->tabText(1), QString("Login by password"));
        for (const char* text : {"User registration", "Forget the password"}) {
            const QPushButton* link = button(dialog, text);
            QVERIFY(link && link->isFlat() && link->font().underline());
            QCOMPARE(link->styleSheet(), QString("background:transparent;color:blue;margin:0;padding:0;"));
        }
        QVERIFY(button(dialog, "Login")->isDefault());
        press(dialog, "Exit");
        QVERIFY(!dialog.isVisible());
        QCOMPARE(dialog.result(), int(QDialog::Rejected));
    }

    void complainsOfTheFirstEmptyField_data()
    {
        QTest::addColumn<int>("tab");
        QTest::addColumn<bool>("firstFilled");
        QTest::addColumn<QString>("complaint");
        QTest::newRow("no account") << int(CodeTab) << false << "The phone number cannot be empty!";
        QTest::newRow("no code") << int(CodeTab) << true << "verification code must be filled!";
        QTest::newRow("no name") << int(PasswordTab) << false << "Username can not be empty!";
        QTest::newRow("no password") << int(PasswordTab) << true << "password can not be blank!";
    }

    void complainsOfTheFirstEmptyField()
    {
        QFETCH(int, tab);
        QFETCH(bool, firstFilled);
        QFETCH(QString, complaint);
        DlgLoginCloundPlatform dialog;
        bringUp(dialog);
        openTab(dialog, Tab(tab));
        if (firstFilled)
            type(dialog, account, "x");
        fixture->boxes().expectPrompt(complaint);
        press(dialog, "Login");
        QVERIFY(dialog.isVisible());
        const QString second = tab == CodeTab ? code : word;
        QCOMPARE(dialog.focusWidget()->accessibleName(), firstFilled ? second : account);
    }

    void signsIn_data()
    {
        QTest::addColumn<int>("tab");
        QTest::addColumn<QString>("user");
        QTest::addColumn<QByteArray>("target");
        QTest::addColumn<QByteArray>("body");
        const auto row = [](const char* name, Tab tab, const QString& user, const QByteArray& target,
                             const QByteArray& body) {
            QTest::newRow(name) << int(tab) << user << target << body;
        };
        const QByteArray sms = "/auth/mobile/token/sms?mobile=";
        row("by anything, unchecked", CodeTab, "12", sms + "SMS@12&code=hello&grant_type=mobile", "");
        row("by mail", CodeTab, "a@b.c", sms + "MAIL@a@b.c&code=hello&grant_type=mobile", "");
        row("by password", PasswordTab, "li.hua", passwordTarget,
            "username=li.hua&password=MB%2Bo8xg7mCBZ5F7ajwRQ4w%3D%3D&scope=server");
    }

    void signsIn()
    {
        QFETCH(int, tab);
        QFETCH(QString, user);
        QFETCH(QByteArray, target);
        QFETCH(QByteArray, body);
        DlgLoginCloundPlatform dialog;
        bringUp(dialog);
        openTab(dialog, Tab(tab));
        const QString secretField = tab == CodeTab ? code : word;
        fillIn(dialog, {{account, user}, {secretField, "hello"}});

        fixture->expect("POST", target, R"({"code":1,"msg":"<b>不</b>"})");
        fixture->boxes().expect({QMessageBox::Critical, "error", "<b>不</b>"});
        press(dialog, "Login");
        QVERIFY(dialog.isVisible());
        QVERIFY(!QFile::exists("AccountManage.bin"));

        // Enter, in either field, presses Login.
        fixture->expect("POST", target, R"({"code":1,"msg":"again"})");
        fixture->boxes().expect({QMessageBox::Critical, "error", "again"});
        field(dialog, account)->setFocus();
        QTest::keyClick(field(dialog, account), Qt::Key_Return);
        QCOMPARE(userNames(dialog).count(), 0); // and enters nothing into the list
        fixture->expect("POST", target, tokens);
        fixture->boxes().expectPrompt("login successfully!", [&] {
            QCOMPARE(QFile::exists("AccountManage.bin"), tab == PasswordTab);
            QVERIFY(dialog.isVisible());
        });
        QTest::keyClick(field(dialog, secretField), Qt::Key_Return);
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        QVERIFY(!dialog.isVisible());
        for (const RecordedRequest& request : fixture->requests())
            QCOMPARE(request.body, body);
    }

    void asksForACode_data()
    {
        QTest::addColumn<QString>("target");
        QTest::addColumn<QByteArray>("path");
        QTest::newRow("eleven digits") << "13800000000" << QByteArray("/admin/mobile/13800000000");
        QTest::newRow("eleven digits of another script")
            << QString(11, QChar(0x0663)) << "/admin/mobile/" + QByteArray("%D9%A3").repeated(11);
        QTest::newRow("an address") << "a@b.c" << QByteArray("/admin/mail/a@b.c");
        QTest::newRow("ten digits and a letter") << "1380000000a" << QByteArray();
        QTest::newRow("twelve digits") << "138000000001" << QByteArray();
        QTest::newRow("nothing") << "" << QByteArray();
    }

    void asksForACode()
    {
        QFETCH(QString, target);
        QFETCH(QByteArray, path);
        DlgLoginCloundPlatform dialog;
        bringUp(dialog);
        QPushButton* asking = button(dialog, askForCode);
        type(dialog, account, target);
        if (!path.isEmpty())
            fixture->expect("GET", path, R"({"code":0})");
        else
            fixture->boxes().expectPrompt(target.isEmpty() ? "The phone number cannot be empty!"
                                                           : "The format of the phone number is incorrect!");
        press(dialog, askForCode);
        QCOMPARE(dialog.findChild<QTimer*>("countdownTimer")->isActive(), !path.isEmpty());
        QCOMPARE(asking->isEnabled(), path.isEmpty());
    }

    void leadsToRegistrationAndReset_data()
    {
        QTest::addColumn<QString>("link");
        QTest::addColumn<int>("result");
        for (const int result : {QDialog::Accepted, QDialog::Rejected})
            for (const char* link : {"User registration", "Forget the password"})
                QTest::addRow("%s, %d", link, result) << link << result;
    }

    void leadsToRegistrationAndReset()
    {
        QFETCH(QString, link);
        QFETCH(int, result);
        DlgLoginCloundPlatform dialog;
        bringUp(dialog);
        QPointer<QDialog> opened;
        follow(dialog, link, [&](QDialog& sub) {
            opened = &sub;
            QCOMPARE(sub.parentWidget(), &dialog);
            const bool registers = qobject_cast<DlgRegisterR2V*>(&sub);
            QVERIFY(registers || qobject_cast<DlgResetPassword*>(&sub));
            QCOMPARE(registers, link == "User registration");
            sub.done(result);
        });
        QVERIFY(!opened && dialog.findChildren<QDialog*>().isEmpty());
        QCOMPARE(dialog.findChild<QTabWidget*>()->currentIndex(), result == QDialog::Accepted ? 1 : 0);
    }

    void goesWithItsParentUnderASubDialog()
    {
        auto* parent = new QWidget;
        const QPointer<DlgLoginCloundPlatform> dialog(new DlgLoginCloundPlatform(parent));
        bringUp(*dialog);
        follow(*dialog, "User registration", [&](QDialog&) { delete parent; });
        QVERIFY(!dialog);
    }

    void showsThePasswordOnDemand()
    {
        DlgLoginCloundPlatform dialog;
        bringUp(dialog);
        openTab(dialog, PasswordTab);
        QLineEdit* edit = field(dialog, word);
        const QAction* eye = edit->actions().first();
        auto* eyeButton = edit->findChild<QToolButton*>();
        for (const bool shown : {false, true, false}) {
            QCOMPARE(eye->property("shown").toBool(), shown);
            QCOMPARE(edit->echoMode(), shown ? QLineEdit::Normal : QLineEdit::Password);
            const QIcon expected(shown ? ":/tav_cloud_platform_sdk/Resources/eye.png"
                                       : ":/tav_cloud_platform_sdk/Resources/closed_eye.png");
            QVERIFY(!expected.pixmap(16).isNull());
            QCOMPARE(eye->icon().pixmap(16).toImage(), expected.pixmap(16).toImage());
            QTest::mouseClick(eyeButton, Qt::LeftButton);
        }
    }

    void fillsInTheLatestAccount_data()
    {
        QTest::addColumn<QStringList>("flags");
        QTest::addColumn<bool>("filled");
        QTest::newRow("set") << QStringList{"true", "false"} << true;
        QTest::newRow("set for the second only") << QStringList{"false", "true"} << false;
        QTest::newRow("never said") << QStringList{QString(), "true"} << false;
        QTest::newRow("missing") << QStringList() << false;
    }

    void fillsInTheLatestAccount()
    {
        QFETCH(QStringList, flags);
        QFETCH(bool, filled);
        writeAccountFile({{"first", "second"}, enciphered(QStringList{"one", "two"}), flags});
        DlgLoginCloundPlatform dialog;
        bringUp(dialog);
        openTab(dialog, PasswordTab);
        QCOMPARE(userNames(dialog).currentText(), QString("first"));
        QCOMPARE(userNames(dialog).count(), 2);
        QCOMPARE(password(dialog), filled ? QString("one") : QString());
        QCOMPARE(rememberBox(dialog).isChecked(), filled);
    }

    void followsTheChoiceOfAnAccount()
    {
        writeAccountFile(
            {{"a", "b", "c"}, enciphered(QStringList{"one", "two", "three"}), {"true", "false", "true"}});
        DlgLoginCloundPlatform dialog;
        bringUp(dialog);
        openTab(dialog, PasswordTab);
        QLineEdit* edit = field(dialog, account);
        edit->setFocus();
        QTest::keyClick(edit, Qt::Key_Down);
        QCOMPARE(edit->text() + password(dialog), QString("b"));
        QVERIFY(!rememberBox(dialog).isChecked());
        QTest::keyClick(edit, Qt::Key_Down);
        QCOMPARE(edit->text() + password(dialog), QString("cthree"));
        QVERIFY(rememberBox(dialog).isChecked());
        // Another name at a later account keeps that account's password ...
        QTest::keyClicks(edit, "x");
        QCOMPARE(edit->text() + password(dialog), QString("cxthree"));
        // ... and at the first account clears it.
        userNames(dialog).setCurrentIndex(0);
        QCOMPARE(edit->text() + password(dialog), QString("aone"));
        QTest::keyClicks(edit, "x");
        QCOMPARE(edit->text() + password(dialog), QString("ax"));
    }

    void survivesListsOfUnequalLength()
    {
        writeAccountFile({{"a", "b", "c"}, {enciphered("one")}, {}});
        DlgLoginCloundPlatform dialog;
        bringUp(dialog);
        openTab(dialog, PasswordTab);
        for (const int index : {2, 0, 1, -1}) {
            userNames(dialog).setCurrentIndex(index);
            QCOMPARE(password(dialog), QString());
        }
        type(dialog, account, "c");
        signInWith(dialog, "c", "new");
        QCOMPARE(stored().userNames, QStringList({"c", "a", "b"}));
        QCOMPARE(stored().passwords, enciphered(QStringList{"new", "one"}));
    }

    void remembersWhoSignedIn_data()
    {
        QTest::addColumn<QStringList>("names");
        QTest::addColumn<QStringList>("namesAfter");
        QTest::addColumn<QStringList>("passwordsAfter");
        const auto row = [](const char* name, const QString& names, const QString& namesAfter,
                             const QString& passwordsAfter) {
            QTest::newRow(name) << names.split(' ', Qt::SkipEmptyParts) << namesAfter.split(' ')
                                << passwordsAfter.split(' ');
        };
        row("the first ever", "", "N", "new");
        row("a sixth drops the oldest", "a b c d e", "N a b c d", "new 0 1 2 3");
        row("one that is known goes to the front", "a b N d", "N a b d", "new 0 1 3");
        row("letter case makes another account", "n", "N n", "new 0");
    }

    void remembersWhoSignedIn()
    {
        QFETCH(QStringList, names);
        QFETCH(QStringList, namesAfter);
        QFETCH(QStringList, passwordsAfter);
        RememberedAccounts before{names, {}, {}};
        for (int i = 0; i < names.size(); ++i) {
            before.passwords.append(enciphered(QString::number(i)));
            before.rememberFlags.append("false");
        }
        writeAccountFile(before);
        DlgLoginCloundPlatform dialog;
        bringUp(dialog);
        openTab(dialog, PasswordTab);
        signInWith(dialog, "N", "new");
        QCOMPARE(stored().userNames, namesAfter);
        QCOMPARE(stored().passwords, enciphered(passwordsAfter));
        QCOMPARE(stored().rememberFlags.size(), namesAfter.size());
        QCOMPARE(stored().rememberFlags.first().isNull(), names.isEmpty()); // nobody has said anything yet
    }

    void remembersWhatTheBoxSaid()
    {
        for (const int clicks : {1, 2}) {
            QFile::remove("AccountManage.bin");
            DlgLoginCloundPlatform dialog;
            bringUp(dialog);
            openTab(dialog, PasswordTab);
            for (int i = 0; i < clicks; ++i)
                QTest::mouseClick(
                    &rememberBox(dialog), Qt::LeftButton, {}, QPoint(8, rememberBox(dialog).height() / 2));
            signInWith(dialog, "n", "p");
            QCOMPARE(stored().rememberFlags, QStringList(clicks == 1 ? "true" : "false"));
            QCOMPARE(stored().passwords, QStringList(enciphered("p"))); // kept either way
        }
    }

    void aSecondSignInEnciphersNothingTwice()
    {
        writeAccountFile({{"a"}, {enciphered("one")}, {"true"}});
        DlgLoginCloundPlatform dialog;
        for (const char* who : {"b", "c"}) {
            bringUp(dialog);
            openTab(dialog, PasswordTab);
            signInWith(dialog, who, who);
        }
        QCOMPARE(stored().userNames, QStringList({"c", "b", "a"}));
        QCOMPARE(stored().passwords, enciphered(QStringList{"c", "b", "one"}));
    }

private:
    void signInWith(DlgLoginCloundPlatform& dialog, const QString& who, const QString& secret)
    {
        type(dialog, account, who);
        type(dialog, word, secret);
        fixture->expect("POST", passwordTarget, tokens);
        fixture->boxes().expectPrompt("login successfully!");
        press(dialog, "Login");
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
    }
};

QTEST_MAIN(TestDlgLogin)
#include "tst_dlglogin.moc"
