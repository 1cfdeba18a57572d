// SPDX-License-Identifier: MIT
#include "Runners.h"
#include "net/ReplyEnvelope.h"
#include "support/Robot.h"

#include <QApplication>
#include <QLineEdit>
#include <QProgressDialog>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

using namespace tav;

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
        peer.expect("POST", "/", behaviour::answerAfter(converted, [&] {
            const auto* dialog = qobject_cast<QProgressDialog*>(QApplication::activeModalWidget());
            QVERIFY(dialog);
            QCOMPARE(dialog->windowTitle(), QString("Waiting"));
            QCOMPARE(dialog->labelText(), QString("read data..."));
            QVERIFY(dialog->isVisible() && dialog->windowFlags().testFlag(Qt::FramelessWindowHint));
            QVERIFY(dialog->minimum() == 0 && dialog->maximum() == 0);
            QVERIFY(dialog->findChildren<QPushButton*>().isEmpty());
            seen = true;
        }));
        const CallResult call = resultOf(postingSoap("<a/>"), peer.address() + "/");
        QVERIFY(call.ok && seen);
        QCOMPARE(call.reply["soap"].toByteArray(), QByteArray("图&lt;\n")); // local encoding
        QVERIFY(!QApplication::activeModalWidget() && QApplication::topLevelWidgets().isEmpty());
    }

    void inputDuringTheCallComesAfterIt()
    {
        QLineEdit line;
        line.show();
        robot::waitForFront(line);
        const auto type = [] { robot::queueKey(Qt::Key_A, "a"); };
        QVERIFY(resultOf(posting({}), behaviour::answerAfter("{}", type)).ok);
        QCOMPARE(line.text(), QString());
        QVERIFY(robot::waitUntil([&line] { return line.text() == "a"; }));
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
                behaviour::answerAfter(QByteArray(), end)(c);
                c.waitForClient();
            });
            CallResult call;
            const QSignalSpy lastWindow(qApp, &QGuiApplication::lastWindowClosed);
            QTimer::singleShot(0, [&, timeoutMs = timeoutMs] {
                call = resultOf(postingSoap("<a/>"), peer.address() + "/", {}, timeoutMs);
                QCoreApplication::quit();
            });
            QCoreApplication::exec();
            QVERIFY2(call.failedWith(connectionTimedOut()), qPrintable(call.error));
            QVERIFY(!QApplication::activeModalWidget() && lastWindow.isEmpty());
        }
    }

    void anotherThreadShowsNoDialog()
    {
        ScriptedPeer peer;
        bool dialog = true;
        peer.expect("POST", "/",
            behaviour::answerAfter(converted, [&] { dialog = !QApplication::topLevelWidgets().isEmpty(); }));
        QVERIFY(inAnotherThread(postingSoap("<a/>"), peer.address() + "/").ok);
        QVERIFY(!dialog);
    }
};

QTEST_MAIN(TestHttpSoap)
#include "tst_httpsoap.moc"
