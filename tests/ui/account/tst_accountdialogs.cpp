// SPDX-License-Identifier: MIT
#include "DialogFixture.h"

#include "ui/FieldGrid.h"
#include "ui/account/AccountFile.h"
#include "ui/account/DlgLoginCloundPlatform.h"
#include "ui/account/DlgLogoutCloundPlatform.h"
#include "ui/account/DlgRegisterR2V.h"
#include "ui/account/DlgResetPassword.h"

#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QTabWidget>
#include <QTest>

namespace {

const QByteArray tokens =
    R"({"code":0,"access_token":"A","refresh_token":"R","user_info":{"username":"<i>u</i>"}})";
const QByteArray refusal = R"({"code":1,"msg":"<b>不</b>"})";
const QByteArray helloEnciphered = "MB+o8xg7mCBZ5F7ajwRQ4w==";
const QString phone = "13800000000";

enum KindIndex
{
    ByCode,
    ByPassword,
    Registration,
    Reset
};

/// One of the pages with a request of its own, and what makes it whole.
struct Kind
{
    const char* row;
    std::function<QDialog*(QWidget*)> make;
    QByteArray codeByPhone; ///< empty where no code can be asked for
    QByteArray codeByMail;
    QString title;
    QString proceed;
    QString leave;
    QString hint; ///< in the password field
    Texts filled;
    QStringList reachedNext; ///< by the Tab key, after the fields
    QByteArray target;
    ExpectedBox refused;
    QString success;
};

QDialog* login(QWidget* parent, Tab tab)
{
    auto* dialog = new DlgLoginCloundPlatform(parent);
    dialog->findChild<QTabWidget*>()->setCurrentIndex(tab);
    return dialog;
}

const ExpectedBox errorBox{QMessageBox::Critical, "error", "<b>不</b>"};
const ExpectedBox promptBox{QMessageBox::Information, "Prompt", "<b>不</b>"};

const QVector<Kind> kinds{
    {"login by code", [](QWidget* parent) { return login(parent, CodeTab); }, "/admin/mobile/",
        "/admin/mail/", "Login", "Login", "Exit", "", {{account, phone}, {code, "1"}}, {askForCode},
        "/auth/mobile/token/sms?mobile=SMS@13800000000&code=1&grant_type=mobile", errorBox,
        "login successfully!"},
    {"login by password", [](QWidget* parent) { return login(parent, PasswordTab); }, "", "", "Login",
        "Login", "Exit", "", {{account, "li.hua"}, {word, "hello"}},
        {"Show or hide the password", "Remember the password"}, "/auth/oauth/token?grant_type=password",
        errorBox, "login successfully!"},
    {"registration", [](QWidget* parent) { return new DlgRegisterR2V(parent); }, "/admin/mobile/",
        "/admin/mail/", "User registration", "User registration", "Cancel", "6-24位数字和英文字母组合",
        {{"User name", "n"}, {word, "hello"}, {account, phone}, {code, "1"}}, {askForCode}, "/admin/api/user",
        promptBox, "Account registration successfully!"},
    {"reset", [](QWidget* parent) { return new DlgResetPassword(parent); }, "/admin/mobile/reset/",
        "/admin/mail/reset/", "Reset password", "Reset", "Exit", "6-24 digits and English letter combination",
        {{account, phone}, {"New password", "hello"}, {code, "1"}}, {askForCode}, "/admin/api/user/resetpw",
        errorBox, "Password reset successfully!"},
};

void kindRows()
{
    QTest::addColumn<int>("index");
    for (int i = 0; i < kinds.size(); ++i)
        QTest::newRow(kinds[i].row) << i;
}

/// A button of a filled page, and the request that it makes.
struct Request
{
    QString button;
    QByteArray method;
    QByteArray target;
};

QVector<Request> requestsOf(const Kind& kind)
{
    QVector<Request> requests{{kind.proceed, "POST", kind.target}};
    if (!kind.codeByPhone.isEmpty())
        requests.append({askForCode, "GET", kind.codeByPhone + phone.toLatin1()});
    return requests;
}

QTestData& newRow(int index, const QString& rest)
{
    return QTest::newRow(qPrintable(QString("%1, %2").arg(kinds[index].row, rest))) << index;
}

} // namespace

class TestAccountDialogs : public DialogTest
{
    Q_OBJECT

private slots:
    void canBeLeft_data() { kindRows(); }

    void canBeLeft()
    {
        QFETCH(int, index);
        const Kind& kind = kinds[index];
        const std::unique_ptr<QDialog> dialog(kind.make(nullptr));
        bringUp(*dialog);
        QCOMPARE(dialog->windowTitle(), kind.title);
        QVERIFY(dialog->isModal() && button(*dialog, kind.proceed)->isDefault());
        fillIn(*dialog, kind.filled);
        press(*dialog, kind.leave);
        QVERIFY(!dialog->isVisible());
        bringUp(*dialog);
        for (const auto& [name, text] : kind.filled) {
            const bool secret = name.contains("assword");
            QCOMPARE(field(*dialog, name)->echoMode(), secret ? QLineEdit::Password : QLineEdit::Normal);
            QCOMPARE(field(*dialog, name)->placeholderText(), secret ? kind.hint : QString());
            // Nobody can show a registration again.
            if (index != Registration)
                QCOMPARE(field(*dialog, name)->text(), secret ? QString() : text);
        }
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
        QStringList expected;
        for (const auto& entry : kind.filled)
            expected.append(entry.first);
        expected += kind.reachedNext;
        field(*dialog, expected.first())->setFocus();
        for (const QString& name : expected) {
            const auto* button = qobject_cast<QAbstractButton*>(dialog->focusWidget());
            QCOMPARE(button ? button->text() : dialog->focusWidget()->accessibleName(), name);
            QTest::keyClick(dialog->focusWidget(), Qt::Key_Tab);
        }
    }

    void fieldsHaveRoom()
    {
        QDialog dialog;
        auto* grid = new FieldGrid;
        auto* plain = new QLineEdit;
        auto* hinted = new QLineEdit;
        auto* box = new QComboBox;
        auto* beside = new QLineEdit;
        box->setEditable(true);
        hinted->setPlaceholderText(QString(40, 'n'));
        grid->addField("a", plain);
        grid->addField("b", box);
        grid->addField("c", beside, new QPushButton);
        layOut(&dialog, grid, new QPushButton, nullptr);
        bringUp(dialog);
        const auto isRoomFor = [](QLineEdit* edit, const QString& text) {
            edit->setText(text);
            edit->grab();
            return edit->cursorPositionAt({0, edit->height() / 2}) == 0; // not scrolled to its end
        };
        QVERIFY(isRoomFor(plain, "wang.xiaoming@example.com.cn"));
        QVERIFY(isRoomFor(box->lineEdit(), "wang.xiaoming@example.com.cn"));
        QVERIFY(isRoomFor(beside, "12345678"));
        grid->addField("d", hinted);
        QVERIFY(isRoomFor(hinted, hinted->placeholderText()));
    }

    void checkInOrder_data()
    {
        QTest::addColumn<int>("index");
        QTest::addColumn<QStringList>("texts");
        QTest::addColumn<QString>("complaint");
        QTest::addColumn<QString>("focus");
        const auto row = [](KindIndex index, const QStringList& texts, const QString& complaint,
                             const QString& focus) {
            newRow(index, texts.join('|')) << texts << complaint << focus;
        };
        const QString noName = "Username can not be empty!";
        const QString noAccount = "The phone number cannot be empty!";
        const QString noWord = "password can not be blank!";
        const QString noCode = "verification code must be filled!";
        const QString chinese = "The password cannot have Chinese characters!";
        row(ByCode, {"", "1"}, noAccount, account);
        row(ByCode, {"x", ""}, noCode, code);
        row(ByPassword, {"", "p"}, noName, account);
        row(ByPassword, {"n", ""}, noWord, word);
        row(Registration, {"", "", "", ""}, noName, "User name");
        row(Registration, {"n", "", "1", "1"}, noWord, word);
        row(Registration, {"n", QString("a") + QChar(0x4e00), "", ""}, chinese, {});
        row(Registration, {"n", QChar(0x9fa5) + QString("a"), "", ""}, chinese, {});
        row(Registration, {"n", QChar(0x4dff), "", ""}, noAccount, account);
        row(Registration, {"n", QChar(0x9fa6), "", ""}, noAccount, account);
        row(Registration, {"n", "p", "1", ""}, noCode, code);
        row(Reset, {"", "", ""}, noAccount, account);
        row(Reset, {"1", "", ""}, noWord, "New password");
        row(Reset, {"1", "p", ""}, noCode, code);
    }

    void checkInOrder()
    {
        QFETCH(int, index);
        QFETCH(QStringList, texts);
        QFETCH(QString, complaint);
        QFETCH(QString, focus);
        const Kind& kind = kinds[index];
        const std::unique_ptr<QDialog> dialog(kind.make(nullptr));
        bringUp(*dialog);
        for (int i = texts.size() - 1; i >= 0; --i)
            type(*dialog, kind.filled[i].first, texts[i]);
        fixture->boxes().expectPrompt(complaint);
        press(*dialog, kind.proceed);
        QVERIFY(dialog->isVisible() && button(*dialog, kind.proceed)->isEnabled());
        if (!focus.isEmpty())
            QCOMPARE(dialog->focusWidget()->accessibleName(), focus);
    }

    void askThePlatform_data()
    {
        QTest::addColumn<int>("index");
        QTest::addColumn<QString>("who");
        QTest::addColumn<QByteArray>("target");
        QTest::addColumn<QList<QByteArray>>("sent");
        const auto row = [](KindIndex index, const QString& who, const QByteArray& target,
                             const QList<QByteArray>& sent) { newRow(index, who) << who << target << sent; };
        const auto formField = [](const QByteArray& name, const QByteArray& value) {
            return "name=\"" + name + "\"\r\n\r\n" + value + "\r\n";
        };
        const QByteArray sms = "/auth/mobile/token/sms?mobile=";
        row(ByCode, "12", sms + "SMS@12&code=1&grant_type=mobile", {});
        row(ByCode, "a@b", sms + "MAIL@a@b&code=1&grant_type=mobile", {});
        row(ByPassword, "li.hua", kinds[ByPassword].target,
            {"username=li.hua&password=" + helloEnciphered.toPercentEncoding()});
        const QByteArray secret = formField("password", helloEnciphered);
        row(Registration, "1x", "/admin/api/user",
            {formField("username", "n"), secret, formField("phone", "1x"), formField("smscode", "1")});
        row(Registration, "a@b", "/admin/api/user/mail/register",
            {secret, formField("mail", "a@b"), formField("mailCode", "1")});
        row(Reset, "a@b", "/admin/api/user/resetpw",
            {"phone=a@b&password=" + helloEnciphered.toPercentEncoding() + "&smscode=1"});
    }

    void askThePlatform()
    {
        QFETCH(int, index);
        QFETCH(QString, who);
        QFETCH(QByteArray, target);
        QFETCH(QList<QByteArray>, sent);
        const Kind& kind = kinds[index];
        const std::unique_ptr<QDialog> dialog(kind.make(nullptr));
        bringUp(*dialog);
        for (const auto& [name, text] : kind.filled)
            type(*dialog, name, name == account ? who : text);

        // Enter, in any field, presses the button.
        for (const auto& [name, text] : kind.filled) {
            const bool last = name == kind.filled.last().first;
            fixture->expect("POST", target, last ? tokens : refusal);
            if (last)
                fixture->boxes().expectPrompt(kind.success, [&] {
                    QVERIFY(dialog->isVisible());
                    QCOMPARE(QFile::exists("AccountManage.bin"), index == ByPassword);
                });
            else
                fixture->boxes().expect(kind.refused);
            QVERIFY(dialog->isVisible() && button(*dialog, kind.proceed)->isEnabled());
            QVERIFY(!QFile::exists("AccountManage.bin"));
            field(*dialog, name)->setFocus();
            if (name == code) { // with what comes along when it is copied from a message
                QApplication::clipboard()->setText(QString::fromUtf8(" \n1\u00a0\r\n"));
                QTest::keyClick(field(*dialog, name), Qt::Key_A, Qt::ControlModifier);
                QTest::keyClick(field(*dialog, name), Qt::Key_V, Qt::ControlModifier);
            }
            QTest::keyClick(field(*dialog, name), Qt::Key_Return);
        }
        QCOMPARE(dialog->result(), int(QDialog::Accepted));
        for (const RecordedRequest& request : fixture->requests())
            for (const QByteArray& part : sent)
                QVERIFY2(request.body.contains(part), request.body.constData());
    }

    void signsOut()
    {
        fixture->expect("POST", "/auth/oauth/token?grant_type=password", tokens);
        QVERIFY(CloudAccountLogin::instance()->userLoginAccount("u", "p"));
        DlgLogoutCloundPlatform dialog;
        bringUp(dialog);
        QCOMPARE(dialog.windowTitle(), QString("User login status"));
        QMap<QString, Qt::TextFormat> labels;
        for (const QLabel* label : dialog.findChildren<QLabel*>())
            labels.insert(label->text(), label->textFormat());
        QCOMPARE(labels.keys(), QStringList({"<i>u</i>", "Logged-in", "State", "User name"}));
        QCOMPARE(labels.value("<i>u</i>"), Qt::PlainText);

        fixture->expect("POST", "/auth/oauth/check_token", R"({"user_info":{}})");
        fixture->expect("DELETE", "/auth/token/logout", refusal);
        fixture->boxes().expect(errorBox);
        press(dialog, "Logout");
        QVERIFY(dialog.isVisible());

        fixture->expect("POST", "/auth/oauth/check_token", R"({"user_info":{}})");
        fixture->expect("DELETE", "/auth/token/logout", tokens);
        fixture->boxes().expectPrompt("exit successfully!");
        QTest::keyClick(&dialog, Qt::Key_Return);
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        QVERIFY(!CloudAccountLogin::instance()->getLoginState());
        bringUp(dialog);
        press(dialog, "Close Window");
        QCOMPARE(dialog.result(), int(QDialog::Rejected));
    }

    void askForCodes_data()
    {
        QTest::addColumn<int>("index");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QByteArray>("path"); // empty for a text that is refused at once
        const auto row = [](KindIndex index, const QString& text, const QByteArray& path) {
            newRow(index, text) << text << path;
        };
        row(ByCode, phone, "/admin/mobile/13800000000");
        row(ByCode, QString(11, QChar(0x0663)), "/admin/mobile/" + QByteArray("%D9%A3").repeated(11));
        row(ByCode, "1380000000a", "");
        row(ByCode, "138000000001", "");
        for (const KindIndex index : {ByCode, Registration, Reset}) {
            row(index, "", "");
            row(index, "a@b", kinds[index].codeByMail + "a@b");
        }
        for (const KindIndex index : {Registration, Reset})
            row(index, "12a", kinds[index].codeByPhone + "12a");
    }

    void askForCodes()
    {
        QFETCH(int, index);
        QFETCH(QString, text);
        QFETCH(QByteArray, path);
        for (const bool granted : {true, false}) {
            const std::unique_ptr<QDialog> dialog(kinds[index].make(nullptr));
            bringUp(*dialog);
            auto* countdown = dialog->findChild<QTimer*>("countdownTimer");
            type(*dialog, account, text);
            // The login counts once there is an answer, the others at once.
            const auto look = [&] { QCOMPARE(countdown->isActive(), index != ByCode); };
            if (path.isEmpty())
                fixture->boxes().expectPrompt(text.isEmpty()
                        ? "The phone number cannot be empty!"
                        : "The format of the phone number is incorrect!");
            else
                fixture->expectAndHold("GET", path, granted ? tokens : refusal, look);
            if (!path.isEmpty() && !granted)
                fixture->boxes().expectPrompt("<b>不</b>", look);
            press(*dialog, askForCode);
            QCOMPARE(countdown->isActive(), !path.isEmpty()); // after a refusal as well
            QCOMPARE(button(*dialog, askForCode)->isEnabled(), path.isEmpty());
        }
    }

    void countDown()
    {
        for (const KindIndex index : {ByCode, Registration, Reset}) {
            const std::unique_ptr<QDialog> dialog(kinds[index].make(nullptr));
            bringUp(*dialog);
            auto* tick = dialog->findChild<QTimer*>("tickTimer");
            auto* countdown = dialog->findChild<QTimer*>("countdownTimer");
            QPushButton* asking = button(*dialog, askForCode);
            type(*dialog, account, phone);
            fixture->expect("GET", kinds[index].codeByPhone + phone.toLatin1(), tokens);
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
    }

    void aRunningRequestIsSeenAndAlone_data() { kindRows(); }

    void aRunningRequestIsSeenAndAlone()
    {
        QFETCH(int, index);
        const Kind& kind = kinds[index];
        const std::unique_ptr<QDialog> dialog(kind.make(nullptr));
        bringUp(*dialog);
        fillIn(*dialog, kind.filled);
        for (const Request& request : requestsOf(kind)) {
            QPushButton* pressed = button(*dialog, request.button);
            const bool proceeding = request.button == kind.proceed;
            fixture->expectAndHold(request.method, request.target, proceeding ? refusal : tokens, [&] {
                QVERIFY(!pressed->isEnabled());
                QVERIFY(QApplication::overrideCursor());
                QCOMPARE(QApplication::overrideCursor()->shape(), Qt::WaitCursor);
                QTest::mouseClick(pressed, Qt::LeftButton);
                QTest::keyClick(field(*dialog, account), Qt::Key_Return);
            });
            if (proceeding)
                fixture->boxes().expect(kind.refused);
            press(*dialog, request.button);
            QCoreApplication::processEvents();
            QVERIFY(!QApplication::overrideCursor());
            QCOMPARE(pressed->isEnabled(), proceeding);
            if (proceeding) // the focus is where the press put it
                QCOMPARE(dialog->focusWidget(), pressed);
        }
        QCOMPARE(fixture->requests().size(), requestsOf(kind).size());
    }

    void mayGoDuringTheWait_data()
    {
        QTest::addColumn<int>("index");
        QTest::addColumn<QString>("ending");
        QTest::addColumn<bool>("success");
        for (int i = 0; i < kinds.size(); ++i)
            for (const char* ending : {"closed", "destroyed", "destroyed with its parent"})
                for (const bool success : {true, false})
                    newRow(i, QString("%1, %2").arg(ending).arg(success)) << ending << success;
    }

    void mayGoDuringTheWait()
    {
        QFETCH(int, index);
        QFETCH(QString, ending);
        QFETCH(bool, success);
        const Kind& kind = kinds[index];
        const bool stays = ending == "closed";
        for (const Request& request : requestsOf(kind)) {
            const QPointer<QWidget> parent(new QWidget);
            const QPointer<QDialog> dialog(kind.make(parent));
            bringUp(*dialog);
            fillIn(*dialog, kind.filled);
            fixture->expectAndHold(request.method, request.target, success ? tokens : refusal, [&] {
                if (stays)
                    dialog->close();
                else
                    delete (ending == "destroyed" ? dialog.data() : parent.data());
            });
            press(*dialog, request.button); // and no box comes up
            QCOMPARE(!dialog.isNull(), stays);
            if (dialog)
                QCOMPARE(dialog->result(), int(QDialog::Rejected));
            delete parent;
        }
        // Who has signed in is remembered, although nobody looks any more.
        const bool remembered = index == ByPassword && success && stays;
        RememberedAccounts stored;
        readAccountFile(stored);
        QCOMPARE(stored.passwords, remembered ? QStringList(helloEnciphered) : QStringList());
    }

    void mayGoWithABoxInFront()
    {
        for (const Kind& kind : kinds) {
            const QPointer<QWidget> parent(new QWidget);
            const QPointer<QDialog> dialog(kind.make(parent));
            bringUp(*dialog);
            fillIn(*dialog, kind.filled);
            fixture->expect("POST", kind.target, tokens);
            fixture->boxes().expectPrompt(kind.success, [&] { delete parent; });
            press(*dialog, kind.proceed);
            QVERIFY2(!dialog, kind.row);
        }
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
            fixture->expectAndHold("POST", kind.target, tokens, [] { QCoreApplication::quit(); });
            press(*dialog, kind.proceed);
        });
        QCOMPARE(QCoreApplication::exec(), 0);
        QVERIFY(dialog->result() != QDialog::Accepted);
    }
};

QTEST_MAIN(TestAccountDialogs)
#include "tst_accountdialogs.moc"
