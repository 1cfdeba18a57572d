// SPDX-License-Identifier: MIT
#include "AccountText.h"
#include "DialogFixture.h"

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
    QString waiting; ///< what stands in the window during that
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
        "/auth/mobile/token/sms?mobile=SMS@13800000000&code=1&grant_type=mobile", "Signing in...", errorBox,
        "login successfully!"},
    {"login by password", [](QWidget* parent) { return login(parent, PasswordTab); }, "", "", "Login",
        "Login", "Exit", "", {{account, "li.hua"}, {word, "hello"}},
        {"Show or hide the password", "Remember the password"}, "/auth/oauth/token?grant_type=password",
        "Signing in...", errorBox, "login successfully!"},
    {"registration", [](QWidget* parent) { return new DlgRegisterR2V(parent); }, "/admin/mobile/",
        "/admin/mail/", "User registration", "User registration", "Cancel", "6-24位数字和英文字母组合",
        {{"User name", "n"}, {word, "hello"}, {account, phone}, {code, "1"}}, {askForCode}, "/admin/api/user",
        "Registering...", promptBox, "Account registration successfully!"},
    {"reset", [](QWidget* parent) { return new DlgResetPassword(parent); }, "/admin/mobile/reset/",
        "/admin/mail/reset/", "Reset password", "Reset", "Exit", "6-24 digits and English letter combination",
        {{account, phone}, {"New password", "hello"}, {code, "1"}}, {askForCode}, "/admin/api/user/resetpw",
        "Setting the new password...", errorBox, "Password reset successfully!"},
};

void kindRows()
{
    QTest::addColumn<int>("index");
    for (int i = 0; i < kinds.size(); ++i)
        QTest::newRow(kinds[i].row) << i;
}

QTestData& newRow(int index, const QString& rest)
{
    return QTest::newRow(qPrintable(QString("%1, %2").arg(kinds[index].row, rest))) << index;
}

/// One of them in front of its user.
struct Page
{
    explicit Page(int index)
        : kind(kinds[index])
        , dialog(kind.make(nullptr))
    {
        bringUp(*dialog);
    }
    ~Page() { delete dialog; }

    void fill() const { fillIn(*dialog, kind.filled); }

    const Kind& kind;
    const QPointer<QDialog> dialog;
};

} // namespace

class TestAccountDialogs : public DialogTest
{
    Q_OBJECT

private slots:
    void canBeFilledAndLeft_data() { kindRows(); }

    void canBeFilledAndLeft()
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
        // Tab goes where the eye goes.
        field(dialog, names.first())->setFocus();
        for (const QString& name : names + page.kind.reachedNext) {
            const auto* button = qobject_cast<QAbstractButton*>(dialog.focusWidget());
            QCOMPARE(button ? button->text() : dialog.focusWidget()->accessibleName(), name);
            QTest::keyClick(dialog.focusWidget(), Qt::Key_Tab);
        }
        page.fill();
        press(dialog, page.kind.leave);
        QVERIFY(!dialog.isVisible());
        bringUp(dialog);
        for (const auto& [name, text] : page.kind.filled)
            if (index != Registration) // nobody can show it again
                QCOMPARE(field(dialog, name)->text(), name.contains("assword") ? QString() : text);
        QTest::keyClick(&dialog, Qt::Key_Escape);
        QVERIFY(!dialog.isVisible());
        QCOMPARE(dialog.result(), int(QDialog::Rejected));
    }

    void fieldsHaveRoom()
    {
        QDialog dialog;
        auto* grid = new FieldGrid;
        auto* box = new QComboBox;
        box->setEditable(true);
        auto* hinted = new QLineEdit;
        hinted->setPlaceholderText(QString(40, 'n'));
        const QString address = "wang.xiaoming@example.com.cn";
        layOut(&dialog, grid, new QPushButton, nullptr);
        bringUp(dialog);
        const auto isRoomFor = [&](const QString& text, QLineEdit* edit, QWidget* content, QWidget* beside) {
            grid->addField("a", content, beside);
            dialog.adjustSize();
            edit->setText(text);
            edit->grab();
            return edit->cursorPositionAt({0, edit->height() / 2}) == 0; // not scrolled to its end
        };
        auto* plain = new QLineEdit;
        auto* beside = new QLineEdit;
        QVERIFY(isRoomFor("12345678", beside, beside, new QPushButton));
        QVERIFY(isRoomFor(address, plain, plain, nullptr));
        QVERIFY(isRoomFor(address, box->lineEdit(), box, nullptr));
        QVERIFY(isRoomFor(hinted->placeholderText(), hinted, hinted, nullptr));
    }

    void checkInOrder_data()
    {
        QTest::addColumn<int>("index");
        QTest::addColumn<QString>("texts");
        QTest::addColumn<QString>("complaint");
        const auto row = [](KindIndex index, const QString& texts, const QString& complaint) {
            newRow(index, texts) << texts << complaint;
        };
        const QString noName = "Username can not be empty!";
        const QString noAccount = "The phone number cannot be empty!";
        const QString noWord = "password can not be blank!";
        const QString noCode = "verification code must be filled!";
        const QString chinese = "The password cannot have Chinese characters!";
        row(ByCode, "|1", noAccount);
        row(ByCode, "x|", noCode);
        row(ByCode, "x| ", noCode);
        row(ByPassword, "|p", noName);
        row(ByPassword, "n|", noWord);
        row(Registration, "|||", noName);
        row(Registration, "n||1|1", noWord);
        row(Registration, QString::fromUtf8("n|a\u4e00||"), chinese);
        row(Registration, QString::fromUtf8("n|\u9fa5a||"), chinese);
        row(Registration, QString::fromUtf8("n|\u4dff||"), noAccount);
        row(Registration, QString::fromUtf8("n|\u9fa6||"), noAccount);
        row(Registration, "n|p|1|", noCode);
        row(Reset, "||", noAccount);
        row(Reset, "1||", noWord);
        row(Reset, "1|p|", noCode);
    }

    void checkInOrder()
    {
        QFETCH(int, index);
        QFETCH(QString, texts);
        QFETCH(QString, complaint);
        const Page page(index);
        const QStringList typed = texts.split('|');
        QString empty; // the first
        for (int i = typed.size() - 1; i >= 0; --i) {
            type(*page.dialog, page.kind.filled[i].first, typed[i]);
            if (typed[i].trimmed().isEmpty())
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

    void askThePlatform_data()
    {
        QTest::addColumn<int>("index");
        QTest::addColumn<QString>("who");
        QTest::addColumn<QByteArray>("target");
        QTest::addColumn<QByteArrayList>("sent");
        const auto row = [](KindIndex index, const QString& who, const QByteArray& target,
                             const QByteArrayList& sent) { newRow(index, who) << who << target << sent; };
        const auto part = [](const QByteArray& name, const QByteArray& value) {
            return "name=\"" + name + "\"\r\n\r\n" + value + "\r\n";
        };
        const QByteArray sms = "/auth/mobile/token/sms?mobile=";
        const QByteArray secret = helloEnciphered.toPercentEncoding();
        const QByteArray secretPart = part("password", helloEnciphered);
        row(ByCode, "12", sms + "SMS@12&code=1&grant_type=mobile", {});
        row(ByCode, "a@b", sms + "MAIL@a@b&code=1&grant_type=mobile", {});
        row(ByPassword, "li.hua", kinds[ByPassword].target, {"username=li.hua&password=" + secret});
        row(Registration, "1x", "/admin/api/user",
            {part("username", "n"), secretPart, part("phone", "1x"), part("smscode", "1")});
        row(Registration, "a@b", "/admin/api/user/mail/register",
            {secretPart, part("mail", "a@b"), part("mailCode", "1")});
        row(Reset, "a@b", "/admin/api/user/resetpw", {"phone=a@b&password=" + secret + "&smscode=1"});
    }

    void askThePlatform()
    {
        QFETCH(int, index);
        QFETCH(QString, who);
        QFETCH(QByteArray, target);
        QFETCH(QByteArrayList, sent);
        const Page page(index);
        QDialog& dialog = *page.dialog;
        for (const auto& [name, text] : page.kind.filled)
            type(dialog, name, name == account ? who : text);

        // Enter, in any field, presses the button.
        for (const auto& [name, text] : page.kind.filled) {
            const bool last = name == page.kind.filled.last().first;
            fixture->expectAndHold("POST", target, last ? tokens : refusal,
                [&] { QCOMPARE(dialog.findChild<WindowNote*>()->text(), page.kind.waiting); });
            if (last)
                fixture->boxes().expectPrompt(page.kind.success, [&] {
                    QVERIFY(dialog.isVisible());
                    QCOMPARE(QFile::exists("AccountManage.bin"), index == ByPassword);
                });
            else
                fixture->boxes().expect(page.kind.refused);
            QVERIFY(dialog.isVisible() && button(dialog, page.kind.proceed)->isEnabled());
            QVERIFY(!QFile::exists("AccountManage.bin"));
            field(dialog, name)->setFocus();
            if (name == code) { // with what comes along when it is copied from a message
                QApplication::clipboard()->setText(QString::fromUtf8(" \n1\u00a0\u200b\r\n"));
                QTest::keyClick(field(dialog, name), Qt::Key_A, Qt::ControlModifier);
                QTest::keyClick(field(dialog, name), Qt::Key_V, Qt::ControlModifier);
            }
            QTest::keyClick(field(dialog, name), Qt::Key_Return);
        }
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        bringUp(dialog);
        QVERIFY(index != ByCode || field(dialog, code)->text().isEmpty()); // it is used up
        for (const RecordedRequest& request : fixture->requests())
            for (const QByteArray& part : sent)
                QVERIFY2(request.body.contains(part), request.body.constData());
    }

    void saysWhatHelps()
    {
        const Page page(Reset);
        fillIn(*page.dialog, page.kind.filled);
        ExpectedBox box{QMessageBox::Critical, "error", "返回值解析失败"};
        box.look = [] {
            const auto* shown = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            QCOMPARE(shown->informativeText(), cloudFailureText(CloudFailure::Unusable, QString()));
        };
        fixture->expect("POST", page.kind.target, "[]");
        fixture->boxes().expect(box);
        press(*page.dialog, page.kind.proceed);
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
        row(ByCode, QString(11, QChar(0x0663)), "/admin/mobile/" + QByteArray("%D9%A3").repeated(11));
        row(ByCode, "1380000000a", "");
        row(ByCode, "138000000001", "");
        for (const KindIndex index : {ByCode, Registration, Reset}) {
            const QString number = index == ByCode ? phone : "12a";
            row(index, "", "");
            row(index, "a@b", kinds[index].codeByMail + "a@b");
            row(index, number, kinds[index].codeByPhone + number.toLatin1());
        }
    }

    void askForCodes()
    {
        QFETCH(int, index);
        QFETCH(QString, text);
        QFETCH(QByteArray, path);
        for (const bool granted : {true, false}) {
            const Page page(index);
            auto* countdown = page.dialog->findChild<QTimer*>("countdownTimer");
            type(*page.dialog, account, text);
            // The login counts once there is an answer, the others at once.
            const auto look = [&] { QCOMPARE(countdown->isActive(), index != ByCode); };
            const auto waits = [&] {
                look();
                QCOMPARE(
                    page.dialog->findChild<WindowNote*>()->text(), QString("Obtaining verification code..."));
            };
            if (path.isEmpty())
                fixture->boxes().expectPrompt(text.isEmpty()
                        ? "The phone number cannot be empty!"
                        : "The format of the phone number is incorrect!");
            else
                fixture->expectAndHold("GET", path, granted ? tokens : refusal, waits);
            if (!path.isEmpty() && !granted)
                fixture->boxes().expectPrompt("<b>不</b>", look);
            const QPushButton* asking = button(*page.dialog, askForCode); // which may soon count
            press(*page.dialog, askForCode);
            QCOMPARE(countdown->isActive(), !path.isEmpty()); // after a refusal as well
            QCOMPARE(asking->isEnabled(), path.isEmpty());
        }
    }

    void countDown()
    {
        for (const KindIndex index : {ByCode, Registration, Reset}) {
            const Page page(index);
            auto* tick = page.dialog->findChild<QTimer*>("tickTimer");
            auto* countdown = page.dialog->findChild<QTimer*>("countdownTimer");
            QPushButton* asking = button(*page.dialog, askForCode);
            type(*page.dialog, account, phone);
            fixture->expect("GET", page.kind.codeByPhone + phone.toLatin1(), tokens);
            asking->setFocus();
            press(*page.dialog, askForCode);
            QCOMPARE(tick->interval(), 100);
            QCOMPARE(countdown->interval(), 120000);
            QVERIFY(tick->isActive() && countdown->isActive() && !asking->isEnabled());
            QCOMPARE(page.dialog->focusWidget()->accessibleName(), code);
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
};

QTEST_MAIN(TestAccountDialogs)
#include "tst_accountdialogs.moc"
