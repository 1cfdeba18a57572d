// SPDX-License-Identifier: MIT
#include "Runners.h"
#include "net/ReplyEnvelope.h"

#include <QApplication>
#include <QProgressDialog>
#include <QPushButton>
#include <QTest>
#include <QTimer>

Q_DECLARE_METATYPE(std::function<void()>)

namespace {
const QByteArray converted = "<ConDgn2DwgResult>text</ConDgn2DwgResult>";
} // namespace

class TestHttpSoap : public QObject
{
    Q_OBJECT

private slots:
    void takesTheResultElement_data()
    {
        QTest::addColumn<QByteArray>("reply");
        QTest::addColumn<QByteArray>("text"); // null: the reply is unusable

        const auto row = [](const char* name, const QByteArray& reply, const QByteArray& text) {
            QTest::newRow(name) << reply << text;
        };
        row("local encoding", "<ConDwg2DgnResult>图&lt;\n</ConDwg2DgnResult>", "图&lt;\n");
        row("nothing in it", "<x><ConDgn2DwgResult></ConDgn2DwgResult></x>", "");
        row("both names", "<ConDwg2DgnResult>b</ConDwg2DgnResult><ConDgn2DwgResult>a</ConDgn2DwgResult>",
            "a");
        row("the name once", "<x><ConDgn2DwgResult/></x>", QByteArray());
    }

    void takesTheResultElement()
    {
        QFETCH(QByteArray, reply);
        QFETCH(QByteArray, text);
        ScriptedPeer peer;
        peer.expect("POST", "/NrvConRnx.asmx", behaviour::answer(reply));
        const Outcome outcome = outcomeOf(postingSoap("<a/>"), peer.address() + "/NrvConRnx.asmx");
        if (text.isNull())
            QVERIFY(outcome.failedWith(replyUnusable()));
        else
            QVERIFY(outcome.ok && outcome.result["soap"].toByteArray() == text);
    }

    void showsABusyDialog()
    {
        bool seen = false;
        ScriptedPeer peer;
        peer.expect("POST", "/", answerAfter(converted, [&] {
            const auto* dialog = qobject_cast<QProgressDialog*>(QApplication::activeModalWidget());
            QVERIFY(dialog);
            QCOMPARE(dialog->windowTitle(), QString("Waiting"));
            QCOMPARE(dialog->labelText(), QString("read data..."));
            QVERIFY(dialog->isVisible() && dialog->windowFlags().testFlag(Qt::FramelessWindowHint));
            QVERIFY(dialog->minimum() == 0 && dialog->maximum() == 0);
            QVERIFY(dialog->findChildren<QPushButton*>().isEmpty());
            seen = true;
        }));
        QVERIFY(outcomeOf(postingSoap("<a/>"), peer.address() + "/").ok);
        QVERIFY(seen);
        QVERIFY(!QApplication::activeModalWidget() && QApplication::topLevelWidgets().isEmpty());
    }

    void anEndFromOutsideClosesTheDialog_data()
    {
        QTest::addColumn<double>("timeoutMs");
        QTest::addColumn<std::function<void()>>("end");
        const std::function<void()> nothing = [] {};
        QTest::newRow("Escape") << 100000.0 << std::function<void()>([] {
            QTest::keyClick(QApplication::activeModalWidget(), Qt::Key_Escape);
        });
        QTest::newRow("the time-out") << 300.0 << nothing;
        QTest::newRow("quitting") << 100000.0 << std::function<void()>(&QCoreApplication::quit);
    }

    void anEndFromOutsideClosesTheDialog()
    {
        QFETCH(double, timeoutMs);
        QFETCH(std::function<void()>, end);
        ScriptedPeer peer;
        peer.expect("POST", "/", [&](PeerConnection& c) {
            answerAfter(QByteArray(), end)(c);
            c.waitForClient();
        });
        Outcome outcome;
        QTimer::singleShot(0, [&] {
            outcome = outcomeOf(postingSoap("<a/>"), peer.address() + "/", {}, timeoutMs);
            QCoreApplication::quit();
        });
        QCoreApplication::exec();
        QVERIFY2(outcome.failedWith(connectionTimedOut()), qPrintable(outcome.error));
        QVERIFY(!QApplication::activeModalWidget());
    }

    void anotherThreadShowsNoDialog()
    {
        ScriptedPeer peer;
        bool dialog = true;
        peer.expect("POST", "/",
            answerAfter(converted, [&] { dialog = !QApplication::topLevelWidgets().isEmpty(); }));
        QVERIFY(inAnotherThread(postingSoap("<a/>"), peer.address() + "/").ok);
        QVERIFY(!dialog);
    }
};

QTEST_MAIN(TestHttpSoap)
#include "tst_httpsoap.moc"
