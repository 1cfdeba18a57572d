// SPDX-License-Identifier: MIT
#include "support/MessageBoxScript.h"

#include <QTest>

#include <memory>

class TestMessageBoxScript : public QObject
{
    Q_OBJECT

private slots:
    void answersWhatComes()
    {
        MessageBoxScript script;
        int looked = 0;
        script.expectPrompt("one", [&] { ++looked; });
        script.expect({QMessageBox::Question, "Q", "two", QMessageBox::Ok | QMessageBox::Cancel,
            QMessageBox::Cancel, [&] { ++looked; }});
        QCOMPARE(QMessageBox::information(nullptr, "Prompt", "one"), QMessageBox::Ok);
        QCOMPARE(QMessageBox::question(nullptr, "Q", "two", QMessageBox::Ok | QMessageBox::Cancel),
            QMessageBox::Cancel);
        QCOMPARE(looked, 2);
        QCOMPARE(script.finish(), QStringList());
    }

    void complainsOfEveryDifference()
    {
        const auto complaint = [](const ExpectedBox& expected) {
            MessageBoxScript script;
            script.expect(expected);
            QMessageBox::warning(nullptr, "t", "x");
            return script.finish().join("; ").section(' ', 0, 0);
        };
        QCOMPARE(complaint({QMessageBox::Critical, "t", "x"}), QString("icon"));
        QCOMPARE(complaint({QMessageBox::Warning, "T", "x"}), QString("title"));
        QCOMPARE(complaint({QMessageBox::Warning, "t", "X"}), QString("text"));
        QCOMPARE(complaint({QMessageBox::Warning, "t", "x", QMessageBox::Ok | QMessageBox::Cancel}),
            QString("buttons"));
        QCOMPARE(complaint({QMessageBox::Warning, "t", "x", QMessageBox::Ok, QMessageBox::Ok, {}, {"Ok"}}),
            QString("buttons'"));
        QCOMPARE(complaint({QMessageBox::Warning, "t", "x", QMessageBox::Ok, QMessageBox::Ok, {}, {"OK"}}),
            QString());
    }

    void complainsOfMarkup()
    {
        MessageBoxScript script;
        script.expectPrompt("<b>x</b>");
        QMessageBox::information(nullptr, "Prompt", "<b>x</b>");
        QCOMPARE(script.finish(), QStringList("text is \"x\", not \"<b>x</b>\""));
    }

    void complainsOfTooManyAndTooFew()
    {
        MessageBoxScript script;
        QMessageBox::information(nullptr, "t", "extra");
        script.expectPrompt("missing");
        QCOMPARE(script.finish(), QStringList({"unexpected: \"extra\"", "never came: \"missing\""}));
    }

    void letsABoxGoWithItsParent()
    {
        MessageBoxScript script;
        auto* parent = new QWidget;
        auto* box = new QMessageBox(QMessageBox::Information, "Prompt", "x", QMessageBox::Ok, parent);
        script.expectPrompt("x", [&] { delete parent; });
        QCOMPARE(box->exec(), int(QDialog::Rejected));
        QCOMPARE(script.finish(), QStringList());
    }
};

QTEST_MAIN(TestMessageBoxScript)
#include "tst_messageboxscript.moc"
