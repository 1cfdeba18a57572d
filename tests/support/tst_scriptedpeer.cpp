// SPDX-License-Identifier: MIT
#include "MultipartForm.h"
#include "ScriptedPeer.h"

#include <QTest>
#include <QUrl>

#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {
/// Sends \a bytes as a bare client, so that nothing but the peer decides what is seen, and takes everything
/// until the peer ends the connection or is silent for a while.
QByteArray exchange(const QString& address, const QByteArray& bytes)
{
    const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in to{};
    to.sin_family = AF_INET;
    to.sin_port = htons(quint16(QUrl(address).port()));
    to.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    QByteArray seen;
    bool open = ::connect(fd, reinterpret_cast<sockaddr*>(&to), sizeof to) == 0;
    ::send(fd, bytes.constData(), size_t(bytes.size()), MSG_NOSIGNAL);
    char piece[1000];
    pollfd watched{fd, POLLIN, 0};
    while (open && ::poll(&watched, 1, 200) == 1) {
        const ssize_t got = ::recv(fd, piece, sizeof piece, 0);
        open = got > 0;
        seen.append(piece, int(qMax<ssize_t>(got, 0)));
    }
    ::close(fd);
    return seen;
}

const QByteArray post =
    "POST /a?b=%20 HTTP/1.1\r\nHost: here\r\nX-Twice: 1\r\nx-twice:2\r\nContent-Length: 5\r\n\r\nab\r\nc";
} // namespace

class TestScriptedPeer : public QObject
{
    Q_OBJECT

private slots:
    void recordsEveryByte()
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
        QCOMPARE(requests[0].values("X-TWICE"), QList<QByteArray>({"1", "2"}));
        QVERIFY(requests[0].header("X-Twice").isNull());
        QCOMPARE(requests[1].body, QByteArray("ab"));
        QVERIFY(requests[0].complete && !requests[1].complete);
    }

    void complains()
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
        for (const auto& [script, sent, complaints] : cases) {
            ScriptedPeer peer;
            for (const QByteArray& line : script)
                peer.expect(line.split(' ')[0], line.split(' ')[1], behaviour::closeAfter("x"));
            for (const QByteArray& line : sent)
                exchange(peer.address(), line + " HTTP/1.1\r\n\r\n");
            QCOMPARE(peer.finish(), complaints);
        }
    }

    void beginsAnew()
    {
        ScriptedPeer peer;
        peer.expect("GET", "/a", behaviour::closeAfter());
        peer.expect("GET", "/lost", behaviour::closeAfter());
        exchange(peer.address(), "GET /other HTTP/1.1\r\n\r\n");
        QCOMPARE(peer.reset(), QStringList({"GET /other came instead of GET /a", "never came: GET /lost"}));
        QVERIFY(peer.requests().isEmpty());
        peer.expect("GET", "/b", behaviour::answer("{}"));
        QCOMPARE(exchange(peer.address(), "GET /b HTTP/1.1\r\n\r\n"), behaviour::response("{}"));
        QCOMPARE(peer.requests().size(), 1);
        QCOMPARE(peer.finish(), QStringList());
    }

    void refusesFormsThatAreNotWhole()
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
};

QTEST_GUILESS_MAIN(TestScriptedPeer)
#include "tst_scriptedpeer.moc"
