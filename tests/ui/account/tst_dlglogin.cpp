// SPDX-License-Identifier: MIT
#include "DialogFixture.h"

#include "core/Screen.h"
#include "crypto/AccountCipher.h"
#include "net/BuildConstants.h"
#include "ui/account/AccountFile.h"
#include "ui/account/DlgLoginCloundPlatform.h"
#include "ui/account/DlgRegisterR2V.h"
#include "ui/account/DlgResetPassword.h"
#include "ui/account/PhoneLoginWidget.h"
#include "ui/account/UserNameLoginWidget.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFile>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QTabBar>
#include <QTabWidget>
#include <QTest>
#include <QToolButton>

namespace {

const QString name = "Phone number/email";
const QString code = "Verification";
const QString word = "Password";
const QString askForCode = "Obtaining verification code";
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

void openPasswordTab(const DlgLoginCloundPlatform& dialog)
{
    auto* bar = dialog.findChild<QTabBar*>();
    QTest::mouseClick(bar, Qt::LeftButton, {}, bar->tabRect(1).center());
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

/// Waits until a dialog of that class is in front and hands it to \a play.
template <class Dialog>
void whenInFront(QObject* context, const std::function<void(Dialog&)>& play)
{
    auto* timer = new QTimer(context);
    QObject::connect(timer, &QTimer::timeout, context, [timer, play] {
        auto* dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget());
        if (!dialog)
            return;
        timer->stop();
        play(*dialog);
    });
    timer->start(5);
}

} // namespace

class TestDlgLogin : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { fixture = std::make_unique<DialogFixture>(); }
    void cleanupTestCase() { fixture.reset(); }
    void init() { fixture->begin(); }
    void cleanup() { fixture->end(); }

    void isBuiltAsItsUsersKnowIt()
    {
        DlgLoginCloundPlatform dialog;
        QCOMPARE(dialog.windowTitle(), QString("Login"));
        QCOMPARE(dialog.minimumSize(), QSize(int(dpi_scaled(350.0)), int(dpi_scaled(240.0))));
        bringUp(dialog);
        QVERIFY(dialog.isModal());
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

    void isNoSmallerThanItsTexts()
    {
        DlgLoginCloundPlatform dialog;
        QFont large = dialog.font();
        large.setPointSize(24);
        dialog.setFont(large);
        bringUp(dialog);
        dialog.resize(1, 1);
        for (const QPushButton* shown : dialog.findChildren<QPushButton*>())
            if (shown->isVisible())
                QVERIFY2(shown->width() >= shown->sizeHint().width(), qPrintable(shown->text()));
    }

    void warnsOfSlotsThatAreNotThere()
    {
        for (const char* slot : {"_phoneNumChanged", "_captchaChanged"})
            QTest::ignoreMessage(QtWarningMsg,
                QRegularExpression(QStringLiteral("No such slot PhoneLoginWidget::%1\\(").arg(slot)));
        const PhoneLoginWidget page;
    }

    void tabGoesWhereTheEyeGoes()
    {
        DlgLoginCloundPlatform dialog;
        bringUp(dialog);
        const auto round = [&dialog] {
            QStringList names;
            for (int i = 0; i < 8; ++i) {
                const QWidget* focused = dialog.focusWidget();
                const auto* pressable = qobject_cast<const QAbstractButton*>(focused);
                names.append(pressable ? pressable->text() : focused->accessibleName());
                QTest::keyClick(dialog.focusWidget(), Qt::Key_Tab);
            }
            return names;
        };
        const QStringList links{"User registration", "Forget the password", "Login", "Exit", ""};
        QCOMPARE(round(), QStringList({name, code, askForCode}) + links);
        openPasswordTab(dialog);
        dialog.findChild<QComboBox*>()->setFocus();
        QCOMPARE(round(), QStringList({name, word, "Remember the password"}) + links);
    }

    void checksInOrder_data()
    {
        QTest::addColumn<int>("tab");
        QTest::addColumn<QString>("first");
        QTest::addColumn<QString>("second");
        QTest::addColumn<QString>("complaint");
        QTest::addColumn<bool>("firstIsWrong");
        QTest::newRow("no account, no code") << 0 << ""
                                             << ""
                                             << "The phone number cannot be empty!" << true;
        QTest::newRow("no account") << 0 << ""
                                    << "1"
                                    << "The phone number cannot be empty!" << true;
        QTest::newRow("no code") << 0 << "x"
                                 << ""
                                 << "verification code must be filled!" << false;
        QTest::newRow("no name, no password") << 1 << ""
                                              << ""
                                              << "Username can not be empty!" << true;
        QTest::newRow("no name") << 1 << ""
                                 << "p"
                                 << "Username can not be empty!" << true;
        QTest::newRow("no password") << 1 << "n"
                                     << ""
                                     << "password can not be blank!" << false;
    }

    void checksInOrder()
    {
        QFETCH(int, tab);
        QFETCH(QString, first);
        QFETCH(QString, second);
        QFETCH(QString, complaint);
        QFETCH(bool, firstIsWrong);
        DlgLoginCloundPlatform dialog;
        bringUp(dialog);
        const QString secondField = tab == 0 ? code : word;
        if (tab == 1)
            openPasswordTab(dialog);
        fillIn(dialog, {{name, first}, {secondField, second}});
        fixture->boxes().expectPrompt(complaint);
        press(dialog, "Login");
        QVERIFY(dialog.isVisible());
        QCOMPARE(dialog.focusWidget()->accessibleName(), firstIsWrong ? name : secondField);
    }

    void signsIn_data()
    {
        QTest::addColumn<int>("tab");
        QTest::addColumn<QString>("account");
        QTest::addColumn<QString>("secret");
        QTest::addColumn<QByteArray>("target");
        QTest::addColumn<QByteArray>("body");
        const QByteArray sms = "/auth/mobile/token/sms?mobile=";
        QTest::newRow("by phone") << 0 << "13800000000"
                                  << "4711" << sms + "SMS@13800000000&code=4711&grant_type=mobile"
                                  << QByteArray();
        QTest::newRow("by anything else, unchecked")
            << 0 << "12"
            << "x" << sms + "SMS@12&code=x&grant_type=mobile" << QByteArray();
        QTest::newRow("by mail") << 0 << "a@b.c"
                                 << "4711" << sms + "MAIL@a@b.c&code=4711&grant_type=mobile" << QByteArray();
        QTest::newRow("by password")
            << 1 << QString::fromUtf8("li.hua") << "hello" << passwordTarget
            << QByteArray("username=li.hua&password=MB%2Bo8xg7mCBZ5F7ajwRQ4w%3D%3D&scope=server");
    }

    void signsIn()
    {
        QFETCH(int, tab);
        QFETCH(QString, account);
        QFETCH(QString, secret);
        QFETCH(QByteArray, target);
        QFETCH(QByteArray, body);
        DlgLoginCloundPlatform dialog;
        bringUp(dialog);
        if (tab == 1)
            openPasswordTab(dialog);
        const QString secretField = tab == 0 ? code : word;
        fillIn(dialog, {{name, account}, {secretField, secret}});

        fixture->expect("POST", target, R"({"code":1,"msg":"<b>不</b>"})");
        fixture->boxes().expect({QMessageBox::Critical, "error", "<b>不</b>"});
        press(dialog, "Login");
        QVERIFY(dialog.isVisible());
        QVERIFY(!QFile::exists("AccountManage.bin"));

        // Enter, in either field, presses Login.
        fixture->expect("POST", target, R"({"code":1,"msg":"again"})");
        fixture->boxes().expect({QMessageBox::Critical, "error", "again"});
        field(dialog, name)->setFocus();
        QTest::keyClick(field(dialog, name), Qt::Key_Return);
        QCOMPARE(userNames(dialog).count(), 0); // and enters nothing into the list
        fixture->expect("POST", target, tokens);
        fixture->boxes().expectPrompt("login successfully!", [&] {
            QCOMPARE(QFile::exists("AccountManage.bin"), tab == 1);
            QCOMPARE(dialog.isVisible(), true);
        });
        QTest::keyClick(field(dialog, secretField), Qt::Key_Return);
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        QVERIFY(!dialog.isVisible());
        for (const RecordedRequest& request : fixture->requests())
            QCOMPARE(request.body, body);
    }

    void asksForACode_data()
    {
        QTest::addColumn<QString>("account");
        QTest::addColumn<QByteArray>("target");
        QTest::newRow("eleven digits") << "13800000000" << QByteArray("/admin/mobile/13800000000");
        QTest::newRow("eleven digits of another script")
            << QString(11, QChar(0x0663)) << "/admin/mobile/" + QByteArray("%D9%A3").repeated(11);
        QTest::newRow("an address") << "a@b.c" << QByteArray("/admin/mail/a@b.c");
        QTest::newRow("an at sign") << "@" << QByteArray("/admin/mail/@");
        QTest::newRow("ten digits") << "1380000000" << QByteArray();
        QTest::newRow("ten digits and a letter") << "1380000000a" << QByteArray();
        QTest::newRow("twelve digits") << "138000000001" << QByteArray();
    }

    void asksForACode()
    {
        QFETCH(QString, account);
        QFETCH(QByteArray, target);
        for (const bool granted : {true, false}) {
            DlgLoginCloundPlatform dialog;
            bringUp(dialog);
            QPushButton* asking = button(dialog, askForCode);
            field(dialog, name)->setText(account);
            if (target.isEmpty())
                fixture->boxes().expectPrompt("The format of the phone number is incorrect!");
            else
                fixture->expect("GET", target, granted ? R"({"code":0})" : R"({"code":1,"msg":"not now"})");
            if (!target.isEmpty() && !granted)
                fixture->boxes().expectPrompt("not now");
            press(dialog, askForCode);
            // A refusal counts down as well; a number that was never asked about does not.
            QCOMPARE(dialog.findChild<QTimer*>("countdownTimer")->isActive(), !target.isEmpty());
            QCOMPARE(asking->isEnabled(), target.isEmpty());
            QCOMPARE(fixture->requests().isEmpty(), target.isEmpty());
        }
    }

    void asksForNoCodeOfNobody()
    {
        DlgLoginCloundPlatform dialog;
        bringUp(dialog);
        fixture->boxes().expectPrompt("The phone number cannot be empty!");
        press(dialog, askForCode);
        QVERIFY(!dialog.findChild<QTimer*>("countdownTimer")->isActive());
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
        const auto play = [&](QDialog& sub) {
            opened = &sub;
            QCOMPARE(sub.parentWidget(), &dialog);
            sub.done(result);
        };
        if (link == "User registration")
            whenInFront<DlgRegisterR2V>(&dialog, play);
        else
            whenInFront<DlgResetPassword>(&dialog, play);
        press(dialog, link);
        QVERIFY(!opened && dialog.findChildren<QDialog*>().isEmpty());
        QCOMPARE(dialog.findChild<QTabWidget*>()->currentIndex(), result == QDialog::Accepted ? 1 : 0);
    }

    void goesWithItsParentUnderASubDialog()
    {
        auto* parent = new QWidget;
        const QPointer<DlgLoginCloundPlatform> dialog(new DlgLoginCloundPlatform(parent));
        bringUp(*dialog);
        whenInFront<DlgRegisterR2V>(qApp, [&](QDialog&) { delete parent; });
        press(*dialog, "User registration");
        QVERIFY(!dialog);
    }

    void showsThePasswordOnDemand()
    {
        DlgLoginCloundPlatform dialog;
        bringUp(dialog);
        openPasswordTab(dialog);
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
        openPasswordTab(dialog);
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
        openPasswordTab(dialog);
        QLineEdit* edit = field(dialog, name);
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
        openPasswordTab(dialog);
        for (const int index : {2, 0, 1, -1}) {
            userNames(dialog).setCurrentIndex(index);
            QCOMPARE(password(dialog), QString());
        }
        type(dialog, name, "c");
        signInWith(dialog, "c", "new");
        QCOMPARE(stored().userNames, QStringList({"c", "a", "b"}));
        QCOMPARE(stored().passwords, enciphered(QStringList{"new", "one"}));
    }

    void remembersWhoSignedIn_data()
    {
        QTest::addColumn<QStringList>("names");
        QTest::addColumn<QStringList>("namesAfter");
        QTest::addColumn<QStringList>("passwordsAfter");
        QTest::addColumn<QStringList>("flagsAfter");
        const auto f = [](int count) { return QStringList(QVector<QString>(count, "false").toList()); };
        QTest::newRow("the first ever") << QStringList() << QStringList{"N"} << QStringList{"new"} << f(1);
        QTest::newRow("a second") << QStringList{"a"} << QStringList{"N", "a"} << QStringList{"new", "0"}
                                  << f(2);
        QTest::newRow("a sixth drops the oldest")
            << QStringList{"a", "b", "c", "d", "e"} << QStringList{"N", "a", "b", "c", "d"}
            << QStringList{"new", "0", "1", "2", "3"} << f(5);
        QTest::newRow("one that is known goes to the front")
            << QStringList{"a", "b", "N", "d"} << QStringList{"N", "a", "b", "d"}
            << QStringList{"new", "0", "1", "3"} << f(4);
        QTest::newRow("letter case makes another account")
            << QStringList{"n"} << QStringList{"N", "n"} << QStringList{"new", "0"} << f(2);
    }

    void remembersWhoSignedIn()
    {
        QFETCH(QStringList, names);
        QFETCH(QStringList, namesAfter);
        QFETCH(QStringList, passwordsAfter);
        QFETCH(QStringList, flagsAfter);
        RememberedAccounts before{names, {}, {}};
        for (int i = 0; i < names.size(); ++i) {
            before.passwords.append(enciphered(QString::number(i)));
            before.rememberFlags.append("false");
        }
        writeAccountFile(before);
        DlgLoginCloundPlatform dialog;
        bringUp(dialog);
        openPasswordTab(dialog);
        signInWith(dialog, "N", "new");
        QCOMPARE(stored().userNames, namesAfter);
        QCOMPARE(stored().passwords, enciphered(passwordsAfter));
        if (names.isEmpty())
            QVERIFY(stored().rememberFlags.value(0).isNull() && stored().rememberFlags.size() == 1);
        else
            QCOMPARE(stored().rememberFlags, flagsAfter);
    }

    void remembersWhatTheBoxSaid()
    {
        for (const int clicks : {1, 2}) {
            QFile::remove("AccountManage.bin");
            DlgLoginCloundPlatform dialog;
            bringUp(dialog);
            openPasswordTab(dialog);
            for (int i = 0; i < clicks; ++i)
                QTest::mouseClick(
                    &rememberBox(dialog), Qt::LeftButton, {}, QPoint(8, rememberBox(dialog).height() / 2));
            signInWith(dialog, "n", "p");
            QCOMPARE(stored().rememberFlags, QStringList(clicks == 1 ? "true" : "false"));
            QCOMPARE(stored().passwords, QStringList(enciphered("p"))); // kept either way
        }
    }

    void onlyAPasswordIsRemembered()
    {
        writeAccountFile({{"a"}, {enciphered("one")}, {"true"}});
        DlgLoginCloundPlatform dialog;
        bringUp(dialog);
        fillIn(dialog, {{name, "a@b.c"}, {code, "1"}});
        fixture->expect("POST", "/auth/mobile/token/sms?mobile=MAIL@a@b.c&code=1&grant_type=mobile", tokens);
        fixture->boxes().expectPrompt("login successfully!");
        press(dialog, "Login");
        QCOMPARE(stored().userNames, QStringList("a"));
    }

    void aSecondSignInEnciphersNothingTwice()
    {
        writeAccountFile({{"a"}, {enciphered("one")}, {"true"}});
        DlgLoginCloundPlatform dialog;
        for (const char* who : {"b", "c"}) {
            bringUp(dialog);
            openPasswordTab(dialog);
            signInWith(dialog, who, who);
        }
        QCOMPARE(stored().userNames, QStringList({"c", "b", "a"}));
        QCOMPARE(stored().passwords, enciphered(QStringList{"c", "b", "one"}));
    }

private:
    void signInWith(DlgLoginCloundPlatform& dialog, const QString& who, const QString& secret)
    {
        type(dialog, name, who);
        type(dialog, word, secret);
        fixture->expect("POST", passwordTarget, tokens);
        fixture->boxes().expectPrompt("login successfully!");
        press(dialog, "Login");
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
    }

    std::unique_ptr<DialogFixture> fixture;
};

QTEST_MAIN(TestDlgLogin)
#include "tst_dlglogin.moc"
