// SPDX-License-Identifier: MIT
#include "support/MessageBoxScript.h"

#include <QTest>

#include <memory>

class TestMessageBoxScript : public QObject
{
    Q_OBJECT

private slots:
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
};

QTEST_MAIN(TestMessageBoxScript)
#include "tst_messageboxscript.moc"
