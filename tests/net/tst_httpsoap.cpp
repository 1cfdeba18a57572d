// SPDX-License-Identifier: MIT
#include "Runners.h"
#include "net/ReplyEnvelope.h"

#include <QApplication>
#include <QProgressDialog>
#include <QPushButton>
#include <QTest>
#include <QTimer>

namespace {
const QByteArray converted = "<ConDwg2DgnResult>图&lt;\n</ConDwg2DgnResult>";
} // namespace

class TestHttpSoap : public QObject
{
    Q_OBJECT

private slots:
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
        const Outcome outcome = outcomeOf(postingSoap("<a/>"), peer.address() + "/");
        QVERIFY(outcome.ok && seen);
        QCOMPARE(outcome.result["soap"].toByteArray(), QByteArray("图&lt;\n")); // local encoding
        QVERIFY(!QApplication::activeModalWidget() && QApplication::topLevelWidgets().isEmpty());
    }

    void anEndFromOutsideClosesTheDialog()
    {
        const std::pair<double, std::function<void()>> ends[]{
            {100000, [] { QTest::keyClick(QApplication::activeModalWidget(), Qt::Key_Escape); }},
            {300, [] {}}, // the time-out
            {100000, &QCoreApplication::quit},
        };
        for (const auto& [timeoutMs, end] : ends) {
            ScriptedPeer peer;
            peer.expect("POST", "/", [end = end](PeerConnection& c) {
                answerAfter(QByteArray(), end)(c);
                c.waitForClient();
            });
            Outcome outcome;
            QTimer::singleShot(0, [&, timeoutMs = timeoutMs] {
                outcome = outcomeOf(postingSoap("<a/>"), peer.address() + "/", {}, timeoutMs);
                QCoreApplication::quit();
            });
            QCoreApplication::exec();
            QVERIFY2(outcome.failedWith(connectionTimedOut()), qPrintable(outcome.error));
            QVERIFY(!QApplication::activeModalWidget());
        }
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
