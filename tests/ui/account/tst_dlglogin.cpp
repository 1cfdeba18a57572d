// SPDX-License-Identifier: MIT
#include "AccountText.h"
#include "support/DialogFixture.h"

#include "ui/account/DlgLoginCloundPlatform.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QTest>
#include <QToolButton>
#include <QWheelEvent>

namespace {

const QString registration = "User registration";
const QByteArray tokens = R"({"access_token":"A","refresh_token":"R","user_info":{"username":"u"}})";

/// The dialog, in front.
class PasswordPage : public DlgLoginCloundPlatform
{
public:
    PasswordPage()
        : names(*findChild<QComboBox*>())
        , box(*findChild<QCheckBox*>())
    {
        bringUp(*this);
    }

    /// The name and the password in the fields.
    QString shown() const
    {
        return field(*this, accountField)->text() + ' ' + field(*this, passwordField)->text();
    }

    QComboBox& names;
    QCheckBox& box;
};

} // namespace

class TestDlgLogin : public DialogTest
{
    Q_OBJECT

private slots:
    void goesOnWithTheAccount_data()
    {
        QTest::addColumn<QString>("link");
        QTest::addColumn<Texts>("texts");
        QTest::addColumn<QString>("shown"); // empty for a dialog that is cancelled
        const QString forgotten = "Forget the password";
        QTest::newRow("registered by phone")
            << registration << Texts{{"User name", "n"}, {accountField, "1"}} << "n ";
        QTest::newRow("by mail") << registration << Texts{{"User name", "n"}, {accountField, "n@b"}}
                                 << "n@b ";
        QTest::newRow("one known before") << registration << Texts{{"User name", "b"}} << "b ";
        QTest::newRow("reset") << forgotten << Texts{{accountField, "1"}} << "1 ";
        QTest::newRow("nobody") << forgotten << Texts{} << "a ";
        QTest::newRow("no registration") << registration << Texts{{"User name", "n"}} << "";
        QTest::newRow("no reset") << forgotten << Texts{{accountField, "1"}} << "";
    }

    void goesOnWithTheAccount()
    {
        QFETCH(QString, link);
        QFETCH(Texts, texts);
        QFETCH(QString, shown);
        remember("a b|one two|true true");
        const PasswordPage dialog;
        openTab(dialog, CodeTab);
        follow(dialog, link, [&](QDialog& sub) {
            QCOMPARE(sub.parentWidget(), &dialog);
            fillIn(sub, texts);
            sub.done(shown.isEmpty() ? QDialog::Rejected : QDialog::Accepted);
        });
        QCOMPARE(
            dialog.findChild<QTabWidget*>()->currentIndex(), int(shown.isEmpty() ? CodeTab : PasswordTab));
        if (!shown.isEmpty())
            QCOMPARE(dialog.focusWidget(), field(dialog, passwordField));
        openTab(dialog, PasswordTab);
        QCOMPARE(dialog.shown(), shown.isEmpty() ? "a one" : shown);
        QCOMPARE(dialog.box.isChecked(), dialog.names.findText(dialog.names.currentText()) >= 0);
    }

    void linksFollowTheColoursOfTheWindow()
    {
        DlgLoginCloundPlatform dialog;
        bringUp(dialog);
        const QPushButton* link = button(dialog, registration);
        QVERIFY(link->isFlat() && link->font().underline());
        const QString sheet = "background:transparent;color:%1;margin:0;padding:0;";
        QCOMPARE(link->styleSheet(), sheet.arg("blue"));
        for (const Qt::GlobalColor window : {Qt::black, Qt::white}) {
            QPalette palette;
            palette.setColor(QPalette::Window, window);
            dialog.setPalette(palette);
            QCOMPARE(link->styleSheet(), sheet.arg(window == Qt::black ? "lightskyblue" : "blue"));
        }
    }

    void showsThePasswordOnDemand()
    {
        const PasswordPage dialog;
        openTab(dialog, PasswordTab);
        QLineEdit* edit = field(dialog, passwordField);
        const QAction* eye = edit->actions().first();
        auto* eyeButton = edit->findChild<QToolButton*>();
        const QImage plain = eyeButton->grab().toImage();
        eyeButton->setFocus();
        QVERIFY(eyeButton->grab().toImage() != plain); // it shows that it has the focus
        for (const bool shown : {false, true, false, true}) {
            QCOMPARE(eye->property("shown").toBool(), shown);
            QCOMPARE(edit->echoMode(), shown ? QLineEdit::Normal : QLineEdit::Password);
            const QIcon expected(shown ? ":/tav_cloud_platform_sdk/Resources/eye.png"
                                       : ":/tav_cloud_platform_sdk/Resources/closed_eye.png");
            QVERIFY(!expected.pixmap(16).isNull());
            QCOMPARE(eye->icon().pixmap(16).toImage(), expected.pixmap(16).toImage());
            QTest::keyClicks(eyeButton, "x"); // which is not for the field around it
            QVERIFY(edit->text().isEmpty());
            if (shown)
                QTest::keyClick(eyeButton, Qt::Key_Space);
            else
                QTest::mouseClick(eyeButton, Qt::LeftButton);
        }
    }

    void opensWithTheLatestAccount()
    {
        for (const QString& flags : QStringList{"true false", "false true", ""}) {
            const bool filled = flags.startsWith("true");
            remember("first second|one two|" + flags);
            const PasswordPage dialog;
            QCOMPARE(dialog.shown(), QString(filled ? "first one" : "first "));
            QCOMPARE(dialog.names.count(), 2);
            QCOMPARE(dialog.box.isChecked(), filled);
            QTest::keyClicks(dialog.focusWidget(), "another"); // over the name that is there
            QCOMPARE(dialog.shown(), QString("another "));
        }
        remember("");
        DlgLoginCloundPlatform first;
        bringUp(first);
        QCOMPARE(first.findChild<QTabWidget*>()->currentIndex(), int(CodeTab));
        QTest::keyClicks(first.focusWidget(), "1");
        QCOMPARE(field(first, accountField)->text(), QString("1"));
        openTab(first, PasswordTab);
        fillIn(first, {{accountField, "N"}, {passwordField, "new"}});
        fixture->expect("POST", "/auth/oauth/token?grant_type=password", tokens, [&] { first.close(); });
        press(first, "Login");
        QCOMPARE(first.result(), int(QDialog::Rejected));
        QCOMPARE(remembered(), QString("N|new|-")); // signed in; the user never chose whether to fill it in
    }

    void followsTheChoiceOfAnAccount()
    {
        remember("a b c d|one two three|true false true");
        const PasswordPage dialog;
        QLineEdit* edit = field(dialog, accountField);
        edit->setFocus();
        QTest::keyClick(edit, Qt::Key_Down);
        QCOMPARE(dialog.shown(), QString("b "));
        QVERIFY(!dialog.box.isChecked());
        QTest::keyClick(edit, Qt::Key_Down);
        QCOMPARE(dialog.shown(), QString("c three"));
        QVERIFY(dialog.box.isChecked());
        // Another name at a later account keeps that account's password ...
        QTest::keyClicks(edit, "x");
        QCOMPARE(dialog.shown(), QString("cx three"));
        // ... unless it has none, which leaves the box alone ...
        QTest::keyClick(edit, Qt::Key_Down);
        QCOMPARE(dialog.shown(), QString("d "));
        QVERIFY(dialog.box.isChecked());
        // ... and at the first account clears it. The wheel changes nothing.
        dialog.names.setCurrentIndex(0);
        QWheelEvent turn(
            {9, 9}, edit->mapToGlobal(QPoint(9, 9)), {}, {0, -120}, {}, {}, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(&dialog.names, &turn); // as the field in it passes it on
        QCOMPARE(dialog.shown(), QString("a one"));
        QTest::keyClicks(edit, "x");
        QCOMPARE(dialog.shown(), QString("ax "));
    }

    /// Whatever is remembered, and however the user leaves the name, the name that was typed is sent.
    void signsInAsTyped()
    {
        for (const QByteArray& typed : QByteArrayList{"ann", "an", "Anna", "anna"})
            for (const int key : {0, int(Qt::Key_Tab), int(Qt::Key_Enter), int(Qt::Key_End)}) {
                remember("anna ANNA anne|1 2 3|true false true");
                PasswordPage dialog;
                type(dialog, accountField, typed);
                if (key == Qt::Key_Enter)
                    fixture->boxes().expectPrompt("password can not be blank!");
                if (key)
                    QTest::keyClick(field(dialog, accountField), Qt::Key(key));
                signInWith(dialog, {{passwordField, "mine"}});
                QVERIFY(fixture->requests().last().body.startsWith("username=" + typed + '&'));
                QVERIFY(remembered().startsWith(typed + ' ') && remembered().contains("|true "));
            }
    }

    /// A host may show a dialog again: it then has the remembered password and not the one that was typed.
    void canBeShownAgain()
    {
        remember("a b|one two|true true");
        PasswordPage dialog;
        type(dialog, passwordField, "typed");
        field(dialog, passwordField)->actions().first()->trigger();
        openTab(dialog, CodeTab);
        openTab(dialog, PasswordTab);
        QCOMPARE(dialog.shown(), QString("a typed"));
        press(dialog, "Exit");
        for (const QLineEdit* edit : dialog.findChildren<QLineEdit*>())
            QVERIFY(edit->text() != "typed" && edit->text() != "one");
        bringUp(dialog);
        QCOMPARE(dialog.shown(), QString("a one"));
        QCOMPARE(field(dialog, passwordField)->echoMode(), QLineEdit::Password);

        QTest::mouseClick(&dialog.box, Qt::LeftButton, {}, QPoint(8, dialog.box.height() / 2));
        press(dialog, "Exit");
        bringUp(dialog);
        QCOMPARE(dialog.shown(), QString("a "));
        QTest::keyClicks(dialog.focusWidget(), "x");
        QCOMPARE(dialog.shown(), QString("x "));
        signInWith(dialog, {{accountField, "c"}, {passwordField, "three"}});
        bringUp(dialog);
        QCOMPARE(dialog.shown(), QString("c ")); // not to be remembered
        dialog.names.setCurrentIndex(2);
        QCOMPARE(dialog.shown(), QString("b two"));
        signInWith(dialog, {{accountField, "c"}, {passwordField, "four"}});
        QCOMPARE(remembered(), QString("c a b|four one two|false true true"));
    }

private:
    void signInWith(DlgLoginCloundPlatform& dialog, const Texts& texts)
    {
        fillIn(dialog, texts);
        fixture->expect("POST", "/auth/oauth/token?grant_type=password", tokens);
        fixture->boxes().expectPrompt("login successfully!");
        press(dialog, "Login");
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
    }
};

QTEST_MAIN(TestDlgLogin)
#include "tst_dlglogin.moc"
