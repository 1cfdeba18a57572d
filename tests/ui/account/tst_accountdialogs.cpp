// SPDX-License-Identifier: MIT
#include "DialogFixture.h"

#include "support/MultipartForm.h"
#include "ui/account/DlgLoginCloundPlatform.h"
#include "ui/account/DlgLogoutCloundPlatform.h"
#include "ui/account/DlgRegisterR2V.h"
#include "ui/account/DlgResetPassword.h"

#include <QApplication>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QTest>

namespace {

const QByteArray tokens = R"({"access_token":"A","refresh_token":"R","user_info":{"username":"<i>u</i>"}})";

/// One of the dialogs in which a code can be asked for, and a whole request in it.
struct Kind
{
    const char* row;
    std::function<QDialog*(QWidget*)> make;
    QByteArray codeByPhone;
    QByteArray codeByMail;
    QString proceed;
    Texts filled;
    QByteArray target;
};

const QVector<Kind> kinds{
    {"login", [](QWidget* parent) { return new DlgLoginCloundPlatform(parent); }, "/admin/mobile/",
        "/admin/mail/", "Login", {{account, "13800000000"}, {code, "1"}},
        "/auth/mobile/token/sms?mobile=SMS@13800000000&code=1&grant_type=mobile"},
    {"registration", [](QWidget* parent) { return new DlgRegisterR2V(parent); }, "/admin/mobile/",
        "/admin/mail/", "User registration",
        {{"User name", "n"}, {"Password", "p"}, {account, "13800000000"}, {code, "1"}}, "/admin/api/user"},
    {"reset", [](QWidget* parent) { return new DlgResetPassword(parent); }, "/admin/mobile/reset/",
        "/admin/mail/reset/", "Reset", {{account, "13800000000"}, {"New password", "p"}, {code, "1"}},
        "/admin/api/user/resetpw"},
};

void kindRows()
{
    QTest::addColumn<int>("index");
    for (int i = 0; i < kinds.size(); ++i)
        QTest::newRow(kinds[i].row) << i;
}

/// How a wait may end other than with an answer that somebody still waits for.
struct Ending
{
    const char* row;
    std::function<void(QWidget* parent, QDialog* dialog)> happen;
    bool dialogStays;
};

const QVector<Ending> endings{
    {"closed", [](QWidget*, QDialog* dialog) { dialog->close(); }, true},
    {"rejected", [](QWidget*, QDialog* dialog) { dialog->reject(); }, true},
    {"destroyed", [](QWidget*, QDialog* dialog) { delete dialog; }, false},
    {"destroyed with its parent", [](QWidget* parent, QDialog*) { delete parent; }, false},
};

QByteArray answer(bool success)
{
    return success ? R"({"code":0})" : R"({"code":1,"msg":"no"})";
}

QMap<QByteArray, QByteArray> formFields(const RecordedRequest& request)
{
    QString fault;
    QMap<QByteArray, QByteArray> fields;
    for (const FormPart& part : parseForm(request, fault)) {
        const int begin = part.head.indexOf("name=\"") + 6;
        fields.insert(part.head.mid(begin, part.head.indexOf('"', begin) - begin), part.body);
    }
    return fault.isEmpty() ? fields : QMap<QByteArray, QByteArray>{{"fault", fault.toUtf8()}};
}

} // namespace

Q_DECLARE_METATYPE(std::function<QDialog*()>)

class TestAccountDialogs : public DialogTest
{
    Q_OBJECT

private slots:
    void sayWhatTheyAreFor_data()
    {
        QTest::addColumn<std::function<QDialog*()>>("make");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QStringList>("labels");
        QTest::addColumn<QStringList>("buttons");
        QTest::addColumn<QString>("hint");
        const auto row = [](const char* name, const std::function<QDialog*()>& make, const QString& title,
                             const QStringList& labels, const QStringList& buttons, const QString& hint) {
            QTest::newRow(name) << make << title << labels << buttons << hint;
        };
        row(
            "registration", [] { return new DlgRegisterR2V; }, "User registration",
            {"User name", "Password", account, code}, {askForCode, "User registration", "Cancel"},
            QString::fromUtf8("6-24位数字和英文字母组合"));
        row(
            "reset", [] { return new DlgResetPassword; }, "Reset password", {account, "New password", code},
            {askForCode, "Reset", "Exit"}, "6-24 digits and English letter combination");
        row(
            "logout", [] { return new DlgLogoutCloundPlatform; }, "User login status",
            {"User name", "", "State", "Logged-in"}, {"Logout", "Close Window"}, "");
    }

    void sayWhatTheyAreFor()
    {
        QFETCH(std::function<QDialog*()>, make);
        QFETCH(QString, title);
        QFETCH(QStringList, labels);
        QFETCH(QStringList, buttons);
        QFETCH(QString, hint);
        const std::unique_ptr<QDialog> dialog(make());
        bringUp(*dialog);
        QCOMPARE(dialog->windowTitle(), title);
        QStringList shown;
        for (const QLabel* label : dialog->findChildren<QLabel*>()) {
            shown.append(label->text());
            QVERIFY2(!labels.contains(label->text()) || label->buddy() || label->text() == "Logged-in"
                    || label->text().isEmpty(),
                qPrintable(label->text()));
        }
        shown.sort();
        labels.sort();
        QCOMPARE(shown, labels);
        for (const QString& text : buttons)
            QVERIFY2(button(*dialog, text), qPrintable(text));
        QCOMPARE(dialog->findChildren<QPushButton*>().size(), buttons.size());
        for (const QLineEdit* edit : dialog->findChildren<QLineEdit*>()) {
            const bool secret = edit->accessibleName().contains("assword");
            QCOMPARE(edit->echoMode(), secret ? QLineEdit::Password : QLineEdit::Normal);
            QCOMPARE(edit->placeholderText(), secret ? hint : QString());
        }
        QVERIFY(button(*dialog, buttons.at(buttons.size() - 2))->isDefault());

        press(*dialog, buttons.last());
        QVERIFY(!dialog->isVisible());
        bringUp(*dialog);
        QTest::keyClick(dialog.get(), Qt::Key_Escape);
        QVERIFY(!dialog->isVisible());
        QCOMPARE(dialog->result(), int(QDialog::Rejected));
    }

    void tabGoesWhereTheEyeGoes_data() { kindRows(); }

    void tabGoesWhereTheEyeGoes()
    {
        QFETCH(int, index);
        const Kind& kind = kinds[index];
        const std::unique_ptr<QDialog> dialog(kind.make(nullptr));
        bringUp(*dialog);
        QCOMPARE(dialog->focusWidget()->accessibleName(), kind.filled.first().first);
        for (const auto& [name, text] : kind.filled) {
            QCOMPARE(dialog->focusWidget()->accessibleName(), name);
            QTest::keyClick(dialog->focusWidget(), Qt::Key_Tab);
        }
        QCOMPARE(qobject_cast<QPushButton*>(dialog->focusWidget()), button(*dialog, askForCode));
    }

    void checkInOrder_data()
    {
        QTest::addColumn<int>("index");
        QTest::addColumn<QStringList>("texts");
        QTest::addColumn<QString>("complaint");
        const auto row = [](int index, const char* name, const QStringList& texts, const QString& complaint) {
            QTest::addRow("%s, %s", kinds[index].row, name) << index << texts << complaint;
        };
        const QString noName = "Username can not be empty!";
        const QString noAccount = "The phone number cannot be empty!";
        const QString noWord = "password can not be blank!";
        const QString noCode = "verification code must be filled!";
        const QString chinese = "The password cannot have Chinese characters!";
        row(0, "nothing", {"", ""}, noAccount);
        row(0, "no code", {"x", ""}, noCode);
        row(1, "nothing", {"", "", "", ""}, noName);
        row(1, "no password", {"n", "", "", ""}, noWord);
        row(1, "first of the range", {"n", QString("a") + QChar(0x4e00), "", ""}, chinese);
        row(1, "last of the range", {"n", QChar(0x9fa5) + QString("a"), "", ""}, chinese);
        row(1, "before the range", {"n", QChar(0x4dff), "", ""}, noAccount);
        row(1, "after the range", {"n", QChar(0x9fa6), "", ""}, noAccount);
        row(1, "no code", {"n", "p", "1", ""}, noCode);
        row(2, "nothing", {"", "", ""}, noAccount);
        row(2, "no password", {"1", "", ""}, noWord);
        row(2, "no code", {"1", "p", ""}, noCode);
    }

    void checkInOrder()
    {
        QFETCH(int, index);
        QFETCH(QStringList, texts);
        QFETCH(QString, complaint);
        const Kind& kind = kinds[index];
        const std::unique_ptr<QDialog> dialog(kind.make(nullptr));
        bringUp(*dialog);
        for (int i = 0; i < texts.size(); ++i)
            type(*dialog, kind.filled[i].first, texts[i]);
        fixture->boxes().expectPrompt(complaint);
        press(*dialog, kind.proceed);
        QVERIFY(dialog->isVisible() && button(*dialog, kind.proceed)->isEnabled());
    }

    void registers_data()
    {
        QTest::addColumn<QString>("target");
        QTest::addColumn<QByteArray>("path");
        QTest::addColumn<QList<QByteArray>>("fields");
        QTest::newRow("by phone") << "1x" << QByteArray("/admin/api/user")
                                  << QList<QByteArray>{"password", "phone", "smscode", "username"};
        QTest::newRow("by mail") << "a@b" << QByteArray("/admin/api/user/mail/register")
                                 << QList<QByteArray>{"mail", "mailCode", "password"};
    }

    void registers()
    {
        QFETCH(QString, target);
        QFETCH(QByteArray, path);
        QFETCH(QList<QByteArray>, fields);
        DlgRegisterR2V dialog;
        bringUp(dialog);
        fillIn(dialog, {{"User name", "n"}, {"Password", "hello"}, {account, target}, {code, "4711"}});
        fixture->expect("POST", path, R"({"code":1,"msg":"Duplicate entry"})");
        fixture->boxes().expectPrompt("The phone number is registered");
        press(dialog, "User registration");
        QVERIFY(dialog.isVisible() && button(dialog, "User registration")->isEnabled());

        fixture->expect("POST", path, answer(true));
        fixture->boxes().expectPrompt("Account registration successfully!");
        QTest::keyClick(field(dialog, code), Qt::Key_Return);
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        const QMap<QByteArray, QByteArray> sent = formFields(fixture->requests().value(1));
        QCOMPARE(sent.keys(), fields);
        QCOMPARE(sent.value("password"), QByteArray("MB+o8xg7mCBZ5F7ajwRQ4w=="));
        QCOMPARE(sent.value(fields.contains("mail") ? "mail" : "phone"), target.toUtf8());
    }

    void resets()
    {
        DlgResetPassword dialog;
        bringUp(dialog);
        // Chinese is no matter here.
        fillIn(dialog, {{account, "a@b"}, {"New password", QString::fromUtf8("中")}, {code, "4711"}});
        fixture->expect("POST", "/admin/api/user/resetpw", R"({"code":1,"msg":"no"})");
        fixture->boxes().expect({QMessageBox::Critical, "error", "no"});
        press(dialog, "Reset");
        QVERIFY(dialog.isVisible());
        fixture->expect("POST", "/admin/api/user/resetpw", answer(true));
        fixture->boxes().expectPrompt("Password reset successfully!");
        QTest::keyClick(field(dialog, code), Qt::Key_Return);
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        const QByteArray body = fixture->requests().value(1).body;
        QVERIFY(body.startsWith("phone=a@b&password=") && body.endsWith("&smscode=4711"));
    }

    void signsOut()
    {
        fixture->expect("POST", "/auth/oauth/token?grant_type=password", tokens);
        QVERIFY(CloudAccountLogin::instance()->userLoginAccount("u", "p"));
        DlgLogoutCloundPlatform dialog;
        bringUp(dialog);
        QStringList shown;
        for (const QLabel* label : dialog.findChildren<QLabel*>()) {
            shown.append(label->text());
            QVERIFY(label->text() != "<i>u</i>" || label->textFormat() == Qt::PlainText);
        }
        QVERIFY(shown.contains("<i>u</i>"));

        fixture->expect("POST", "/auth/oauth/check_token", R"({"user_info":{}})");
        fixture->expect("DELETE", "/auth/token/logout", answer(false));
        fixture->boxes().expect({QMessageBox::Critical, "error", "no"});
        press(dialog, "Logout");
        QVERIFY(dialog.isVisible());

        fixture->expect("POST", "/auth/oauth/check_token", R"({"user_info":{}})");
        fixture->expect("DELETE", "/auth/token/logout", answer(true));
        fixture->boxes().expectPrompt("exit successfully!");
        QTest::keyClick(&dialog, Qt::Key_Return);
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        QVERIFY(!CloudAccountLogin::instance()->getLoginState());
    }

    void askForCodes_data()
    {
        QTest::addColumn<int>("index");
        QTest::addColumn<QString>("text");
        for (int i = 0; i < kinds.size(); ++i)
            QTest::addRow("%s, by mail", kinds[i].row) << i << "a@b";
        for (int i = 1; i < kinds.size(); ++i)
            QTest::addRow("%s, by anything else", kinds[i].row) << i << "12a";
    }

    void askForCodes()
    {
        QFETCH(int, index);
        QFETCH(QString, text);
        const bool countsAtOnce = index > 0; // the login waits for the answer
        for (const bool granted : {true, false}) {
            const std::unique_ptr<QDialog> dialog(kinds[index].make(nullptr));
            bringUp(*dialog);
            auto* countdown = dialog->findChild<QTimer*>("countdownTimer");
            fixture->boxes().expectPrompt("The phone number cannot be empty!");
            press(*dialog, askForCode);
            QVERIFY(!countdown->isActive());

            type(*dialog, account, text);
            const QByteArray path = text.contains('@') ? kinds[index].codeByMail : kinds[index].codeByPhone;
            const auto look = [&] { QCOMPARE(countdown->isActive(), countsAtOnce); };
            fixture->expectAndHold("GET", path + text.toUtf8(), answer(granted), look);
            if (!granted)
                fixture->boxes().expectPrompt("no", look);
            press(*dialog, askForCode);
            QVERIFY(countdown->isActive()); // after a refusal as well
        }
    }

    void countDown_data() { kindRows(); }

    void countDown()
    {
        QFETCH(int, index);
        const std::unique_ptr<QDialog> dialog(kinds[index].make(nullptr));
        bringUp(*dialog);
        auto* tick = dialog->findChild<QTimer*>("tickTimer");
        auto* countdown = dialog->findChild<QTimer*>("countdownTimer");
        QPushButton* asking = button(*dialog, askForCode);
        type(*dialog, account, "13800000000");
        fixture->expect("GET", kinds[index].codeByPhone + "13800000000", answer(true));
        asking->setFocus();
        press(*dialog, askForCode);
        QCOMPARE(tick->interval(), 100);
        QCOMPARE(countdown->interval(), 120000);
        QVERIFY(tick->isActive() && countdown->isActive() && !asking->isEnabled());
        QCOMPARE(dialog->focusWidget()->accessibleName(), code);
        QTRY_VERIFY(QRegularExpression("^1[01]\\d s$").match(asking->text()).hasMatch());

        // The rest without waiting for it: the countdown is what is left of its timer.
        const auto tickAt = [&](int milliseconds) {
            countdown->start(milliseconds);
            QMetaObject::invokeMethod(tick, "timeout");
        };
        tickAt(1999);
        QCOMPARE(asking->text(), QString("1 s"));
        QVERIFY(!asking->isEnabled() && tick->isActive());
        tickAt(999);
        QCOMPARE(asking->text(), askForCode);
        QVERIFY(asking->isEnabled() && !tick->isActive() && !countdown->isActive());
    }

    void aRunningRequestIsSeenAndAlone_data() { kindRows(); }

    void aRunningRequestIsSeenAndAlone()
    {
        QFETCH(int, index);
        const Kind& kind = kinds[index];
        const std::unique_ptr<QDialog> dialog(kind.make(nullptr));
        bringUp(*dialog);
        fillIn(*dialog, kind.filled);
        for (const QString& text : {kind.proceed, askForCode}) {
            QPushButton* pressed = button(*dialog, text);
            const bool proceeding = text == kind.proceed;
            fixture->expectAndHold(proceeding ? "POST" : "GET",
                proceeding ? kind.target : kind.codeByPhone + "13800000000", answer(!proceeding), [&] {
                    QVERIFY(!pressed->isEnabled());
                    QVERIFY(QApplication::overrideCursor());
                    QCOMPARE(QApplication::overrideCursor()->shape(), Qt::WaitCursor);
                    QTest::mouseClick(pressed, Qt::LeftButton);
                    if (proceeding)
                        QTest::keyClick(field(*dialog, code), Qt::Key_Return);
                });
            if (proceeding && kind.proceed == "User registration")
                fixture->boxes().expectPrompt("no");
            else if (proceeding)
                fixture->boxes().expect({QMessageBox::Critical, "error", "no"});
            press(*dialog, text);
            QCoreApplication::processEvents();
            QVERIFY(!QApplication::overrideCursor());
            QCOMPARE(pressed->isEnabled(), proceeding);
            if (proceeding) // the focus is where the press put it
                QCOMPARE(dialog->focusWidget(), pressed);
        }
        QCOMPARE(fixture->requests().size(), 2);
    }

    void mayGoDuringTheWait_data()
    {
        QTest::addColumn<int>("index");
        QTest::addColumn<int>("ending");
        QTest::addColumn<bool>("success");
        for (int i = 0; i < kinds.size(); ++i)
            for (int j = 0; j < endings.size(); ++j)
                for (const bool success : {true, false})
                    QTest::addRow("%s %s, %d", kinds[i].row, endings[j].row, success) << i << j << success;
    }

    void mayGoDuringTheWait()
    {
        QFETCH(int, index);
        QFETCH(int, ending);
        QFETCH(bool, success);
        const Kind& kind = kinds[index];
        for (const QString& text : {kind.proceed, askForCode}) {
            const QPointer<QWidget> parent(new QWidget);
            const QPointer<QDialog> dialog(kind.make(parent));
            bringUp(*dialog);
            fillIn(*dialog, kind.filled);
            const bool proceeding = text == kind.proceed;
            fixture->expectAndHold(proceeding ? "POST" : "GET",
                proceeding ? kind.target : kind.codeByPhone + "13800000000", answer(success),
                [&] { endings[ending].happen(parent, dialog); });
            press(*dialog, text); // and no box comes up
            QCOMPARE(!dialog.isNull(), endings[ending].dialogStays);
            if (dialog)
                QCOMPARE(dialog->result(), int(QDialog::Rejected));
            delete parent;
        }
        QVERIFY(!QFile::exists("AccountManage.bin"));
    }

    void mayGoWithABoxInFront_data() { kindRows(); }

    void mayGoWithABoxInFront()
    {
        QFETCH(int, index);
        const Kind& kind = kinds[index];
        const QPointer<QWidget> parent(new QWidget);
        const QPointer<QDialog> dialog(kind.make(parent));
        bringUp(*dialog);
        fillIn(*dialog, kind.filled);
        fixture->expect("POST", kind.target, answer(true));
        const QString success = index == 0 ? "login successfully!"
            : index == 1                   ? "Account registration successfully!"
                                           : "Password reset successfully!";
        fixture->boxes().expectPrompt(success, [&] { delete parent; });
        press(*dialog, kind.proceed);
        QVERIFY(!dialog);
    }

    void theApplicationMayQuitDuringTheWait_data() { kindRows(); }

    void theApplicationMayQuitDuringTheWait()
    {
        QFETCH(int, index);
        const Kind& kind = kinds[index];
        const std::unique_ptr<QDialog> dialog(kind.make(nullptr));
        QTimer::singleShot(0, dialog.get(), [&] {
            bringUp(*dialog);
            fillIn(*dialog, kind.filled);
            fixture->expectAndHold("POST", kind.target, answer(true), [] { QCoreApplication::quit(); });
            press(*dialog, kind.proceed);
        });
        QCOMPARE(QCoreApplication::exec(), 0);
        QVERIFY(dialog->result() != QDialog::Accepted);
    }
};

QTEST_MAIN(TestAccountDialogs)
#include "tst_accountdialogs.moc"
