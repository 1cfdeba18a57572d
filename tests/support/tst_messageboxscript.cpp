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

    void complainsOfEveryDifference_data()
    {
        QTest::addColumn<int>("icon");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("buttons");
        QTest::addColumn<QString>("complaint");
        const int ok = QMessageBox::Ok;
        QTest::newRow("icon") << int(QMessageBox::Critical) << "t"
                              << "x" << ok << "icon";
        QTest::newRow("title") << int(QMessageBox::Warning) << "T"
                               << "x" << ok << "title";
        QTest::newRow("text") << int(QMessageBox::Warning) << "t"
                              << "X" << ok << "text";
        QTest::newRow("buttons") << int(QMessageBox::Warning) << "t"
                                 << "x" << (ok | QMessageBox::Cancel) << "buttons";
    }

    void complainsOfEveryDifference()
    {
        QFETCH(int, icon);
        QFETCH(QString, title);
        QFETCH(QString, text);
        QFETCH(int, buttons);
        QFETCH(QString, complaint);
        MessageBoxScript script;
        script.expect(
            {QMessageBox::Icon(icon), title, text, QMessageBox::StandardButtons(buttons), QMessageBox::Ok});
        QMessageBox::warning(nullptr, "t", "x");
        const QStringList wrong = script.finish();
        QCOMPARE(wrong.size(), 1);
        QVERIFY2(wrong.first().startsWith(complaint), qPrintable(wrong.first()));
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
