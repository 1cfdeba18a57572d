// SPDX-License-Identifier: MIT
#include "MessageBoxScript.h"
#include "MultipartForm.h"
#include "ScriptedPeer.h"

#include <QHostAddress>
#include <QTcpSocket>
#include <QTest>
#include <QUrl>

#include <sys/socket.h>

namespace {
/// Sends \a bytes as a bare client, so that nothing but the peer decides what is seen, and takes everything
/// until the peer ends the connection.
QByteArray exchange(const QString& address, const QByteArray& bytes)
{
    QTcpSocket socket;
    socket.connectToHost(QHostAddress::LocalHost, quint16(QUrl(address).port()));
    socket.write(bytes);
    socket.waitForBytesWritten();
    ::shutdown(int(socket.socketDescriptor()), SHUT_WR);
    socket.waitForDisconnected();
    return socket.readAll();
}

const QByteArray post =
    "POST /a?b=%20 HTTP/1.1\r\nHost: here\r\nX-Twice: 1\r\nx-twice:2\r\nContent-Length: 5\r\n\r\nab\r\nc";
} // namespace

class TestTestSupport : public QObject
{
    Q_OBJECT

private slots:
    void peerRecordsEveryByte()
    {
        ScriptedPeer peer;
        peer.expect("POST", "/a?b=%20", behaviour::answer("{}"));
        peer.expect("POST", "/a?b=%20", behaviour::silent());
        QCOMPARE(exchange(peer.address(), post), behaviour::response("{}"));
        exchange(peer.address(), post.chopped(3));

        const QVector<RecordedRequest> requests = peer.requests();
        QCOMPARE(requests.size(), 2);
        QCOMPARE(requests[0].raw, post);
        QCOMPARE(requests[0].body, QByteArray("ab\r\nc"));
        QCOMPARE(requests[0].header("HOST"), QByteArray("here"));
        QVERIFY(requests[0].header("X-Twice").isNull());
        QCOMPARE(requests[1].body, QByteArray("ab"));
        QVERIFY(requests[0].complete && !requests[1].complete);
    }

    void peerComplainsOfWrongRequests()
    {
        const struct
        {
            QList<QByteArray> script;
            QList<QByteArray> sent;
            QStringList complaints;
        } cases[]{
            {{"GET /a", "PUT /b"}, {"GET /a"}, {"never came: PUT /b"}},
            {{"POST /a"}, {"POST /a", "POST /a"}, {"unexpected: POST /a"}},
            {{"GET /a"}, {"GET /a?"}, {"GET /a? came instead of GET /a"}},
        };
        ScriptedPeer peer;
        for (const auto& [script, sent, complaints] : cases) {
            for (const QByteArray& line : script)
                peer.expect(line.split(' ')[0], line.split(' ')[1], behaviour::closeAfter("x"));
            for (const QByteArray& line : sent)
                QVERIFY(!exchange(peer.address(), line + " HTTP/1.1\r\n\r\n").isEmpty());
            QCOMPARE(peer.requests().size(), sent.size());
            QCOMPARE(peer.reset(), complaints);
        }
        peer.expect("GET", "/a", behaviour::closeAfter());
        QCOMPARE(peer.finish(), QStringList("never came: GET /a"));
    }

    void formsThatAreNotWholeAreRefused()
    {
        const QPair<QByteArray, QByteArray> forms[]{
            {"text/plain", "--B--\r\n"},
            {"multipart/form-data; boundary=B", "x--B--\r\n"},
            {"multipart/form-data; boundary=B", "--B\r\nA: 1\r\n\r\nx"},
            {"multipart/form-data; boundary=B", "--B--\r\nmore"},
        };
        for (const auto& [type, body] : forms) {
            RecordedRequest request;
            request.headers = {{"Content-Type", type}};
            request.body = body;
            QString fault;
            QVERIFY(parseForm(request, fault).isEmpty());
            QVERIFY2(!fault.isEmpty(), body);
        }
    }

    void scriptComplainsOfEveryDifference()
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

    void scriptComplainsOfMarkup()
    {
        MessageBoxScript script;
        script.expectPrompt("<b>x</b>");
        QMessageBox::information(nullptr, "Prompt", "<b>x</b>");
        QCOMPARE(script.finish(), QStringList("text is \"x\", not \"<b>x</b>\""));
    }

    void scriptComplainsOfTooManyAndTooFew()
    {
        MessageBoxScript script;
        QMessageBox::information(nullptr, "t", "extra");
        script.expectPrompt("missing");
        QCOMPARE(script.finish(), QStringList({"unexpected: \"extra\"", "never came: \"missing\""}));
    }
};

QTEST_MAIN(TestTestSupport)
#include "tst_testsupport.moc"
