// SPDX-License-Identifier: MIT
#include "support/DialogFixture.h"

#include "ui/FieldGrid.h"
#include "ui/WindowNote.h"
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

using namespace tav;

namespace {

const QByteArray tokens =
    R"({"code":0,"access_token":"A","refresh_token":"R","user_info":{"username":"<i>u</i>"}})";
const QByteArray refusal = R"({"code":1,"msg":"<b>不</b>"})";
const QByteArray helloEnciphered = "MB+o8xg7mCBZ5F7ajwRQ4w==";
const QString phone = "13800000000";

enum PageIndex
{
    ByCode,
    ByPassword,
    Registration,
    Reset
};

/// One of the pages that send a request.
struct PageKind
{
    const char* row;
    std::function<QDialog*(QWidget*)> make;
    QByteArray codeByPhone; ///< path of the request for a code; empty where none can be asked for
    QByteArray codeByMail;
    QString title;
    QString proceed;
    QString leave;
    QString hint; ///< in the password field
    Texts filled; ///< all fields, with valid texts
    QStringList reachedNext; ///< by the Tab key, after the fields
    QByteArray target; ///< of the request
    QString waiting; ///< the window's note during the request
    ExpectedBox refused; ///< the box when there is no usable reply
    QString success;
};

QDialog* login(QWidget* parent, Tab tab)
{
    auto* dialog = new DlgLoginCloundPlatform(parent);
    dialog->findChild<QTabWidget*>()->setCurrentIndex(tab);
    return dialog;
}

const ExpectedBox errorBox{QMessageBox::Critical, "error", "返回值解析失败"};
const ExpectedBox promptBox{QMessageBox::Information, "Prompt", "返回值解析失败"};

const QVector<PageKind> pageKinds{
    {"login by code", [](QWidget* parent) { return login(parent, CodeTab); }, "/admin/mobile/",
        "/admin/mail/", "Login", "Login", "Exit", "", {{accountField, phone}, {codeField, "1"}}, {codeButton},
        "/auth/mobile/token/sms?mobile=SMS@13800000000&code=1&grant_type=mobile", "Signing in...", errorBox,
        "login successfully!"},
    {"login by password", [](QWidget* parent) { return login(parent, PasswordTab); }, "", "", "Login",
        "Login", "Exit", "", {{accountField, "li.hua"}, {passwordField, "hello"}},
        {"Show or hide the password", "Remember the password"}, "/auth/oauth/token?grant_type=password",
        "Signing in...", errorBox, "login successfully!"},
    {"registration", [](QWidget* parent) { return new DlgRegisterR2V(parent); }, "/admin/mobile/",
        "/admin/mail/", "User registration", "User registration", "Cancel", "6-24位数字和英文字母组合",
        {{"User name", "n"}, {passwordField, "hello"}, {accountField, phone}, {codeField, "1"}}, {codeButton},
        "/admin/api/user", "Registering...", promptBox, "Account registration successfully!"},
    {"reset", [](QWidget* parent) { return new DlgResetPassword(parent); }, "/admin/mobile/reset/",
        "/admin/mail/reset/", "Reset password", "Reset", "Exit", "6-24 digits and English letter combination",
        {{accountField, phone}, {"New password", "hello"}, {codeField, "1"}}, {codeButton},
        "/admin/api/user/resetpw", "Setting the new password...", errorBox, "Password reset successfully!"},
};

QTestData& newRow(PageIndex index, const QString& text)
{
    return QTest::newRow(qPrintable(QString("%1, %2").arg(pageKinds[index].row, text))) << int(index) << text;
}

/// One of the pages, in front.
struct Page
{
    explicit Page(int index)
        : kind(pageKinds[index])
        , dialog(kind.make(nullptr))
    {
        bringUp(*dialog);
    }
    ~Page() { delete dialog; }

    const PageKind& kind;
    const QPointer<QDialog> dialog;
};

} // namespace

class TestAccountDialogs : public DialogTest
{
    Q_OBJECT

private slots:
    void everyPageCanBeFilledInAndLeft_data()
    {
        QTest::addColumn<int>("index");
        for (int i = 0; i < pageKinds.size(); ++i)
            QTest::newRow(pageKinds[i].row) << i;
    }

    void everyPageCanBeFilledInAndLeft()
    {
        QFETCH(int, index);
        const Page page(index);
        QDialog& dialog = *page.dialog;
        QCOMPARE(dialog.windowTitle(), page.kind.title);
        QVERIFY(dialog.isModal() && button(dialog, page.kind.proceed)->isDefault());
        QStringList names;
        for (const auto& [name, text] : page.kind.filled) {
            const bool secret = name.contains("assword");
            QCOMPARE(field(dialog, name)->echoMode(), secret ? QLineEdit::Password : QLineEdit::Normal);
            QCOMPARE(field(dialog, name)->placeholderText(), secret ? page.kind.hint : QString());
            names.append(name);
        }
        // The Tab key goes from field to field as they are read.
        field(dialog, names.first())->setFocus();
        for (const QString& name : names + page.kind.reachedNext) {
            const auto* button = qobject_cast<QAbstractButton*>(dialog.focusWidget());
            QCOMPARE(button ? button->text() : dialog.focusWidget()->accessibleName(), name);
            QTest::keyClick(dialog.focusWidget(), Qt::Key_Tab);
        }
        fillIn(dialog, page.kind.filled);
        press(dialog, page.kind.leave);
        QVERIFY(!dialog.isVisible());
        bringUp(dialog);
        for (const auto& [name, text] : page.kind.filled)
            if (index != Registration) // it is never shown again
                QCOMPARE(field(dialog, name)->text(), name.contains("assword") ? QString() : text);
        QTest::keyClick(&dialog, Qt::Key_Escape);
        QVERIFY(!dialog.isVisible());
        QCOMPARE(dialog.result(), int(QDialog::Rejected));
    }

    void fieldsHaveRoomForTheirTexts()
    {
        QDialog dialog;
        auto* grid = new FieldGrid;
        auto* box = new QComboBox;
        box->setEditable(true);
        auto* hinted = new QLineEdit;
        hinted->setPlaceholderText(QString(40, 'n'));
        auto* narrow = new QLineEdit;
        layOut(&dialog, grid, new QPushButton, nullptr);
        bringUp(dialog);
        const auto isRoomFor = [&](const QString& text, QLineEdit* edit, QWidget* content, QWidget* beside) {
            grid->addField("a", content, beside);
            dialog.adjustSize();
            edit->setText(text);
            edit->grab();
            return edit->cursorPositionAt({0, edit->height() / 2}) == 0; // not scrolled to its end
        };
        QVERIFY(isRoomFor("12345678", narrow, narrow, new QPushButton));
        QVERIFY(isRoomFor("wang.xiaoming@example.com.cn", box->lineEdit(), box, nullptr));
        QVERIFY(isRoomFor(hinted->placeholderText(), hinted, hinted, nullptr));
    }

    void missingTextsAreReportedInOrder_data()
    {
        QTest::addColumn<int>("index");
        QTest::addColumn<QString>("texts");
        QTest::addColumn<QString>("complaint");
        const QString noName = "Username can not be empty!";
        const QString noAccount = "The phone number cannot be empty!";
        const QString noWord = "password can not be blank!";
        const QString noCode = "verification code must be filled!";
        const QString chinese = "The password cannot have Chinese characters!";
        newRow(ByCode, "|1") << noAccount;
        newRow(ByCode, "x|") << noCode;
        newRow(ByPassword, "|p") << noName;
        newRow(ByPassword, "n|") << noWord;
        newRow(Registration, "|||") << noName;
        newRow(Registration, "n||1|1") << noWord;
        newRow(Registration, QString::fromUtf8("n|a\u4e00||")) << chinese;
        newRow(Registration, QString::fromUtf8("n|\u9fa5a||")) << chinese;
        newRow(Registration, QString::fromUtf8("n|\u4dff||")) << noAccount;
        newRow(Registration, QString::fromUtf8("n|\u9fa6||")) << noAccount;
        newRow(Registration, "n|p|1|") << noCode;
        newRow(Reset, "||") << noAccount;
        newRow(Reset, "1||") << noWord;
        newRow(Reset, "1|p|") << noCode;
    }

    void missingTextsAreReportedInOrder()
    {
        QFETCH(int, index);
        QFETCH(QString, texts);
        QFETCH(QString, complaint);
        const Page page(index);
        const QStringList typed = texts.split('|');
        QString empty; // the first empty field
        for (int i = typed.size() - 1; i >= 0; --i) {
            type(*page.dialog, page.kind.filled[i].first, typed[i]);
            if (typed[i].isEmpty())
                empty = page.kind.filled[i].first;
        }
        QPushButton* proceed = button(*page.dialog, page.kind.proceed);
        fixture->boxes().expectPrompt(
            complaint, [&] { QCOMPARE(proceed->isEnabled(), index != Registration); });
        press(*page.dialog, page.kind.proceed);
        QVERIFY(page.dialog->isVisible() && proceed->isEnabled());
        if (!complaint.contains("Chinese"))
            QCOMPARE(page.dialog->focusWidget()->accessibleName(), empty);
    }

    void whatWasTypedIsSent_data()
    {
        QTest::addColumn<int>("index");
        QTest::addColumn<QString>("who");
        QTest::addColumn<QByteArray>("target");
        QTest::addColumn<QByteArrayList>("sent");
        const auto part = [](const QByteArray& name, const QByteArray& value) {
            return "name=\"" + name + "\"\r\n\r\n" + value + "\r\n";
        };
        const QByteArray sms = "/auth/mobile/token/sms?mobile=";
        const QByteArray secret = helloEnciphered.toPercentEncoding();
        const QByteArray secretPart = part("password", helloEnciphered);
        newRow(ByCode, "12") << sms + "SMS@12&code=1&grant_type=mobile" << QByteArrayList();
        newRow(ByCode, "a@b") << sms + "MAIL@a@b&code=1&grant_type=mobile" << QByteArrayList();
        newRow(ByPassword, "li.hua") << pageKinds[ByPassword].target
                                     << QByteArrayList{"username=li.hua&password=" + secret};
        newRow(Registration, "1x") << pageKinds[Registration].target
                                   << QByteArrayList{part("username", "n"), secretPart, part("phone", "1x"),
                                          part("smscode", "1")};
        newRow(Registration, "a@b") << QByteArray("/admin/api/user/mail/register")
                                    << QByteArrayList{secretPart, part("mail", "a@b"), part("mailCode", "1")};
        newRow(Reset, "a@b") << pageKinds[Reset].target
                             << QByteArrayList{"phone=a@b&password=" + secret + "&smscode=1"};
    }

    void whatWasTypedIsSent()
    {
        QFETCH(int, index);
        QFETCH(QString, who);
        QFETCH(QByteArray, target);
        QFETCH(QByteArrayList, sent);
        const Page page(index);
        QDialog& dialog = *page.dialog;
        for (const auto& [name, text] : page.kind.filled)
            type(dialog, name, name == accountField ? who : text);

        ExpectedBox refused = page.kind.refused;
        refused.look = [] {
            const auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            QCOMPARE(box->informativeText(), cloudFailureText(CloudFailure::Unusable, QString()));
        };
        // Enter, in any field, presses the button.
        for (const auto& [name, text] : page.kind.filled) {
            const bool last = name == page.kind.filled.last().first;
            fixture->expect("POST", target, last ? tokens : "[]",
                [&] { QCOMPARE(dialog.findChild<WindowNote*>()->text(), page.kind.waiting); });
            if (last)
                fixture->boxes().expectPrompt(page.kind.success, [&] {
                    QVERIFY(dialog.isVisible());
                    QCOMPARE(QFile::exists("AccountManage.bin"), index == ByPassword);
                });
            else
                fixture->boxes().expect(refused);
            QVERIFY(dialog.isVisible() && button(dialog, page.kind.proceed)->isEnabled());
            QVERIFY(!QFile::exists("AccountManage.bin"));
            field(dialog, name)->setFocus();
            if (name == codeField) { // with the white space that is copied from a message with it
                QApplication::clipboard()->setText(QString::fromUtf8(" \n1\u00a0\u200b\r\n"));
                QTest::keyClick(field(dialog, name), Qt::Key_A, Qt::ControlModifier);
                QTest::keyClick(field(dialog, name), Qt::Key_V, Qt::ControlModifier);
            }
            QTest::keyClick(field(dialog, name), Qt::Key_Return);
        }
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        bringUp(dialog);
        QVERIFY(index != ByCode || field(dialog, codeField)->text().isEmpty()); // a code is valid once
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
        QStringList texts;
        for (const QLabel* label : dialog.findChildren<QLabel*>())
            texts.append(label->text());
        texts.sort();
        QCOMPARE(texts, QStringList({"<i>u</i>", "Logged-in", "State", "User name"}));

        fixture->expect("POST", "/auth/oauth/check_token", R"({"user_info":{}})");
        fixture->expect("DELETE", "/auth/token/logout", refusal);
        fixture->boxes().expect({QMessageBox::Critical, "error", "<b>不</b>"});
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

    void aCodeIsRequestedAndCountedDown_data()
    {
        QTest::addColumn<int>("index");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QByteArray>("path"); // empty for a text that is refused at once
        newRow(ByCode, QString(11, QChar(0x0663))) << "/admin/mobile/" + QByteArray("%D9%A3").repeated(11);
        newRow(ByCode, "1380000000a") << QByteArray();
        newRow(ByCode, "138000000001") << QByteArray();
        for (const PageIndex index : {ByCode, Registration, Reset}) {
            const QString number = index == ByCode ? phone : "12a";
            newRow(index, "") << QByteArray();
            newRow(index, "a@b") << pageKinds[index].codeByMail + "a@b";
            newRow(index, number) << pageKinds[index].codeByPhone + number.toLatin1();
        }
    }

    void aCodeIsRequestedAndCountedDown()
    {
        QFETCH(int, index);
        QFETCH(QString, text);
        QFETCH(QByteArray, path);
        for (const bool granted : {true, false}) {
            const Page page(index);
            auto* tick = page.dialog->findChild<QTimer*>("tickTimer");
            auto* countdown = page.dialog->findChild<QTimer*>("countdownTimer");
            QPushButton* asking = button(*page.dialog, codeButton); // its text is the countdown later
            type(*page.dialog, accountField, text);
            asking->setFocus();
            if (path.isEmpty()) {
                fixture->boxes().expectPrompt(text.isEmpty()
                        ? "The phone number cannot be empty!"
                        : "The format of the phone number is incorrect!");
                press(*page.dialog, codeButton);
                QVERIFY(!countdown->isActive() && asking->isEnabled());
                continue;
            }
            // The login counts once there is an answer, the others at once.
            const auto look = [&] { QCOMPARE(countdown->isActive(), index != ByCode); };
            const auto waits = [&] {
                look();
                QCOMPARE(
                    page.dialog->findChild<WindowNote*>()->text(), QString("Obtaining verification code..."));
            };
            fixture->expect("GET", path, granted ? tokens : refusal, waits);
            if (!granted)
                fixture->boxes().expectPrompt("<b>不</b>", look);
            press(*page.dialog, codeButton);
            QCOMPARE(tick->interval(), 100);
            QCOMPARE(countdown->interval(), 120000);
            QVERIFY(tick->isActive() && countdown->isActive() && !asking->isEnabled());
            QCOMPARE(page.dialog->focusWidget()->accessibleName(), codeField);
            QTRY_VERIFY(QRegularExpression("^1[01]\\d s$").match(asking->text()).hasMatch());

            // Without waiting for the rest: the countdown shows the remaining time of its timer.
            const auto tickAt = [&](int milliseconds) {
                countdown->start(milliseconds);
                QMetaObject::invokeMethod(tick, "timeout");
            };
            tickAt(1999);
            QCOMPARE(asking->text(), QString("1 s"));
            QVERIFY(!asking->isEnabled() && tick->isActive());
            tickAt(999);
            QCOMPARE(asking->text(), codeButton);
            QVERIFY(asking->isEnabled() && !tick->isActive() && !countdown->isActive());
        }
    }
};

QTEST_MAIN(TestAccountDialogs)
#include "tst_accountdialogs.moc"
