// SPDX-License-Identifier: MIT
#include "Runners.h"
#include "net/ReplyEnvelope.h"

#include <QApplication>
#include <QProgressDialog>
#include <QPushButton>
#include <QTest>
#include <QTimer>

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
        row("DGN to DWG", "<x><ConDgn2DwgResult>a b</ConDgn2DwgResult></x>", "a b");
        row("DWG to DGN", "<x><ConDwg2DgnResult>AAEC/+==</ConDwg2DgnResult></x>", "AAEC/+==");
        row("local encoding", "<ConDwg2DgnResult>图&lt;\n</ConDwg2DgnResult>", "图&lt;\n");
        row("nothing in it", "<x><ConDgn2DwgResult></ConDgn2DwgResult></x>", "");
        row("both names", "<ConDwg2DgnResult>b</ConDwg2DgnResult><ConDgn2DwgResult>a</ConDgn2DwgResult>",
            "a");
        row("the name once", "<x><ConDgn2DwgResult/></x>", QByteArray());
        row("a fault", "<soap:Fault><faultstring>no</faultstring></soap:Fault>", QByteArray());
        row("large", "<ConDgn2DwgResult>" + QByteArray(20 << 20, 'A') + "</ConDgn2DwgResult>",
            QByteArray(20 << 20, 'A'));
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
        ScriptedPeer peer;
        peer.expect("POST", "/", answerAfter(600, converted));
        bool seen = false;
        QTimer::singleShot(200, [&] {
            const auto* dialog = qobject_cast<QProgressDialog*>(QApplication::activeModalWidget());
            QVERIFY(dialog);
            QCOMPARE(dialog->windowTitle(), QString("Waiting"));
            QCOMPARE(dialog->labelText(), QString("read data..."));
            QVERIFY(dialog->isVisible() && dialog->windowFlags().testFlag(Qt::FramelessWindowHint));
            QVERIFY(dialog->minimum() == 0 && dialog->maximum() == 0);
            QVERIFY(dialog->findChildren<QPushButton*>().isEmpty());
            seen = true;
        });
        QVERIFY(outcomeOf(postingSoap("<a/>"), peer.address() + "/").ok);
        QVERIFY(seen);
        QVERIFY(!QApplication::activeModalWidget() && QApplication::topLevelWidgets().isEmpty());
    }

    void dismissingTheDialogIsSafe()
    {
        ScriptedPeer peer;
        peer.expect("POST", "/", answerAfter(500, converted));
        QTimer::singleShot(150, [] {
            QVERIFY(QApplication::activeModalWidget());
            QTest::keyClick(QApplication::activeModalWidget(), Qt::Key_Escape);
        });
        const Outcome outcome = outcomeOf(postingSoap("<a/>"), peer.address() + "/");
        QVERIFY2(outcome.ok || outcome.failedWith(connectionTimedOut()), qPrintable(outcome.error));
    }

    void theTimeOutClosesTheDialog()
    {
        ScriptedPeer peer;
        peer.expect("POST", "/", behaviour::silent());
        QVERIFY(
            outcomeOf(postingSoap("<a/>"), peer.address() + "/", {}, 300).failedWith(connectionTimedOut()));
        QVERIFY(!QApplication::activeModalWidget());
    }

    void quittingClosesTheDialog()
    {
        ScriptedPeer peer;
        peer.expect("POST", "/", behaviour::silent());
        Outcome outcome;
        QTimer::singleShot(0, [&] {
            QTimer::singleShot(150, qApp, &QApplication::quit);
            outcome = outcomeOf(postingSoap("<a/>"), peer.address() + "/");
        });
        QApplication::exec();
        QVERIFY2(outcome.failedWith(connectionTimedOut()), qPrintable(outcome.error));
    }
};

QTEST_MAIN(TestHttpSoap)
#include "tst_httpsoap.moc"
