// SPDX-License-Identifier: MIT
#include "MultipartForm.h"
#include "ScriptedPeer.h"

#include <QTest>
#include <QUrl>

#include <cerrno>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

Q_DECLARE_METATYPE(Behaviour)

namespace {
struct Seen
{
    QByteArray bytes;
    bool reset = false;
    bool open = true;
};

/// A bare client, so that nothing but the peer decides what is seen.
class Socket
{
public:
    explicit Socket(const QString& address)
        : fd(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_in to{};
        to.sin_family = AF_INET;
        to.sin_port = htons(quint16(QUrl(address).port()));
        to.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        connected = ::connect(fd, reinterpret_cast<sockaddr*>(&to), sizeof to) == 0;
    }
    ~Socket() { ::close(fd); }
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;

    void send(const QByteArray& bytes) { ::send(fd, bytes.constData(), size_t(bytes.size()), MSG_NOSIGNAL); }

    /// Everything until the peer ends the connection or is silent for a while.
    Seen listen(int patienceMs = 200)
    {
        Seen seen;
        char piece[1000];
        pollfd watched{fd, POLLIN, 0};
        while (seen.open && ::poll(&watched, 1, patienceMs) == 1) {
            const ssize_t got = ::recv(fd, piece, sizeof piece, 0);
            seen.open = got > 0;
            seen.reset = got < 0 && errno == ECONNRESET;
            seen.bytes.append(piece, int(qMax<ssize_t>(got, 0)));
        }
        return seen;
    }

    bool connected = false;

private:
    int fd;
};

Seen exchange(const QString& address, const QByteArray& bytes)
{
    Socket socket(address);
    socket.send(bytes);
    return socket.listen();
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
        peer.expect("GET", "/", behaviour::silent());
        QCOMPARE(exchange(peer.address(), post).bytes, behaviour::response("{}"));
        exchange(peer.address(), "GET / HTTP/1.1\r\n\r\n");

        const QVector<RecordedRequest> requests = peer.requests();
        QCOMPARE(requests.size(), 2);
        QCOMPARE(requests[0].raw, post);
        QCOMPARE(requests[0].body, QByteArray("ab\r\nc"));
        QCOMPARE(requests[0].headers.value(1), qMakePair(QByteArray("X-Twice"), QByteArray("1")));
        QCOMPARE(requests[0].values("X-TWICE"), QList<QByteArray>({"1", "2"}));
        QVERIFY(requests[0].header("X-Twice").isNull());
        QVERIFY(requests[0].complete && requests[1].complete);
        QCOMPARE(peer.connections(), 2);
    }

    void recordsWhatCameInPart()
    {
        ScriptedPeer peer;
        peer.expect("POST", "/a?b=%20", behaviour::answer("{}"));
        Socket(peer.address()).send(post.chopped(3));
        const RecordedRequest request = peer.onlyRequest();
        QCOMPARE(request.body, QByteArray("ab"));
        QVERIFY(!request.complete);
    }

    void complains_data()
    {
        QTest::addColumn<QList<QByteArray>>("script");
        QTest::addColumn<QList<QByteArray>>("sent");
        QTest::addColumn<QStringList>("complaints");

        using Lines = QList<QByteArray>;
        QTest::newRow("in order") << Lines({"GET /a", "PUT /b"}) << Lines({"GET /a", "PUT /b"})
                                  << QStringList();
        QTest::newRow("missing") << Lines({"GET /a", "PUT /b"}) << Lines({"GET /a"})
                                 << QStringList("never came: PUT /b");
        QTest::newRow("unexpected") << Lines() << Lines({"GET /a"}) << QStringList("unexpected: GET /a");
        QTest::newRow("repeated") << Lines({"POST /a"}) << Lines({"POST /a", "POST /a"})
                                  << QStringList("unexpected: POST /a");
        QTest::newRow("target") << Lines({"GET /a"}) << Lines({"GET /a?"})
                                << QStringList("GET /a? came instead of GET /a");
    }

    void complains()
    {
        QFETCH(QList<QByteArray>, script);
        QFETCH(QList<QByteArray>, sent);
        ScriptedPeer peer;
        for (const QByteArray& line : script)
            peer.expect(line.split(' ')[0], line.split(' ')[1], behaviour::closeAfter("x"));
        for (const QByteArray& line : sent)
            exchange(peer.address(), line + " HTTP/1.1\r\n\r\n");
        QTEST(peer.finish(), "complaints");
    }

    void misbehaves_data()
    {
        QTest::addColumn<Behaviour>("behave");
        QTest::addColumn<QByteArray>("begin");
        QTest::addColumn<bool>("reset");
        QTest::addColumn<bool>("open");

        QTest::newRow("answer") << behaviour::answer("{}", 404) << QByteArray("HTTP/1.1 404 ") << false
                                << true;
        QTest::newRow("redirect") << behaviour::redirect("http://there/") << QByteArray("HTTP/1.1 302 ")
                                  << false << true;
        QTest::newRow("silent") << behaviour::silent() << QByteArray() << false << true;
        QTest::newRow("close") << behaviour::closeAfter() << QByteArray() << false << false;
        QTest::newRow("cut") << behaviour::closeAfter("HTTP") << QByteArray("HTTP") << false << false;
        QTest::newRow("reset") << behaviour::resetAfter() << QByteArray() << true << false;
        QTest::newRow("late reset") << behaviour::resetAfter("HTTP") << QByteArray("HTTP") << true << false;
        QTest::newRow("early") << behaviour::answerEarly("{}", 413, true) << QByteArray("HTTP/1.1 413 ")
                               << false << true;
    }

    void misbehaves()
    {
        QFETCH(Behaviour, behave);
        QFETCH(QByteArray, begin);
        ScriptedPeer peer;
        peer.expect("POST", "/a?b=%20", behave);
        const Seen seen = exchange(peer.address(), post);
        QVERIFY(begin.isEmpty() ? seen.bytes.isEmpty() : seen.bytes.startsWith(begin));
        QTEST(seen.reset, "reset");
        QTEST(seen.open, "open");
    }

    void parsesForms_data()
    {
        QTest::addColumn<QByteArray>("type");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<int>("parts");
        QTest::addColumn<bool>("good");

        const QByteArray type = "multipart/form-data; boundary=\"B\"";
        QTest::newRow("two") << type << QByteArray("--B\r\nA: 1\r\n\r\nx\r\n--B\r\nA: 2\r\n\r\n\r\n--B--\r\n")
                             << 2 << true;
        QTest::newRow("no quotes") << QByteArray("multipart/form-data; boundary=B") << QByteArray("--B--")
                                   << 0 << true;
        QTest::newRow("other type") << QByteArray("text/plain") << QByteArray("--B--\r\n") << 0 << false;
        QTest::newRow("preamble") << type << QByteArray("x--B--\r\n") << 0 << false;
        QTest::newRow("cut") << type << QByteArray("--B\r\nA: 1\r\n\r\nx") << 0 << false;
        QTest::newRow("more after it") << type << QByteArray("--B--\r\nmore") << 0 << false;
    }

    void parsesForms()
    {
        QFETCH(QByteArray, type);
        QFETCH(QByteArray, body);
        RecordedRequest request;
        request.headers = {{"Content-Type", type}};
        request.body = body;
        QString fault;
        const QVector<FormPart> parts = parseForm(request, fault);
        QTEST(parts.size(), "parts");
        QTEST(fault.isEmpty(), "good");
        if (parts.size() == 2)
            QVERIFY(parts[0].head == "A: 1" && parts[0].body == "x" && parts[1].body.isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestScriptedPeer)
#include "tst_scriptedpeer.moc"
