// SPDX-License-Identifier: MIT
#include "PlatformUnderTest.h"

#include <QTcpSocket>
#include <atomic>
#include <thread>
#include <vector>

/// What no well-behaved client sends, and starts that cannot succeed.
class TestHostileRequests : public QObject
{
    Q_OBJECT

private slots:
    void garbageIsAnsweredOrDropped_data();
    void garbageIsAnsweredOrDropped();
    void refusedFormIsReadToItsEnd();
    void manyClientsAtOnce();
    void startsThatCannotSucceed_data();
    void startsThatCannotSucceed();
    void stopsWhenAsked();
    void outboxElsewhere();

private:
    bool open(QTcpSocket& socket) const;
    /// The reply to its last brace: every reply here is an envelope.
    QByteArray exchange(QTcpSocket& socket, const QByteArray& request) const;

    PlatformUnderTest m_platform;
};

bool TestHostileRequests::open(QTcpSocket& socket) const
{
    socket.connectToHost("127.0.0.1", static_cast<quint16>(m_platform.port()));
    return socket.waitForConnected();
}

QByteArray TestHostileRequests::exchange(QTcpSocket& socket, const QByteArray& request) const
{
    socket.write(request);
    QByteArray reply;
    while (!reply.endsWith('}') && socket.waitForReadyRead(20000))
        reply += socket.readAll();
    return reply;
}

void TestHostileRequests::garbageIsAnsweredOrDropped_data()
{
    QTest::addColumn<QByteArray>("request");
    QTest::addColumn<QByteArray>("status"); ///< empty: any, even no answer

    const QByteArray client = "Host: x\r\nConnection: close\r\n"
                              "Authorization: "
        + m_platform.asClient().authorization() + "\r\n";
    const auto post = [&](const QByteArray& path, const QByteArray& type, const QByteArray& body) {
        return "POST " + path + " HTTP/1.1\r\n" + client + "Content-Type: " + type
            + "\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body;
    };
    const QByteArray sign = "/auth/oauth/token?grant_type=password";
    const QByteArray registration = "/admin/api/user";
    FormFields manyFields(5000, {"name", "value"});
    FormFields longField = {{"username", QByteArray(1 << 20, 'x')}};
    QByteArray manyHeaders;
    for (int i = 0; i < 5000; ++i)
        manyHeaders += "X-" + QByteArray::number(i) + ": y\r\n";

    QTest::newRow("no HTTP") << QByteArray("\x16\x03\x01 hello\r\n\r\n") << QByteArray("400");
    QTest::newRow("zeros") << QByteArray(3000, '\0') + "\r\n\r\n" << QByteArray();
    QTest::newRow("unknown path") << "GET /nothing HTTP/1.1\r\n" + client + "\r\n" << QByteArray("404");
    QTest::newRow("root") << "GET / HTTP/1.1\r\n" + client + "\r\n" << QByteArray("404");
    QTest::newRow("climbing path") << "GET /../../etc/passwd HTTP/1.1\r\n" + client + "\r\n"
                                   << QByteArray("404");
    QTest::newRow("line break in path") << "GET /a%0d%0aX:y HTTP/1.1\r\n" + client + "\r\n"
                                        << QByteArray("404");
    QTest::newRow("broken percent") << "GET /admin/mobile/%zz%4 HTTP/1.1\r\n" + client + "\r\n"
                                    << QByteArray("400");
    QTest::newRow("long path") << "GET /" + QByteArray(100000, 'x') + " HTTP/1.1\r\n" + client + "\r\n"
                               << QByteArray("414");
    QTest::newRow("just too short for that") << "GET /" + QByteArray(8000, 'x') + " HTTP/1.1\r\n" + client
            + "\r\n" << QByteArray("404");
    QTest::newRow("long header") << "GET / HTTP/1.1\r\nX: " + QByteArray(100000, 'x') + "\r\n\r\n"
                                 << QByteArray();
    QTest::newRow("many headers") << "GET / HTTP/1.1\r\n" + manyHeaders + client + "\r\n"
                                  << QByteArray("404");
    QTest::newRow("wrong method") << "PUT " + sign + " HTTP/1.1\r\n" + client + "Content-Length: 0\r\n\r\n"
                                  << QByteArray("404");
    QTest::newRow("POST without length") << "POST " + sign + " HTTP/1.1\r\n" + client + "\r\n"
                                         << QByteArray("400");
    QTest::newRow("bad chunk") << "POST " + sign + " HTTP/1.1\r\n" + client
            + "Transfer-Encoding: chunked\r\n\r\nnonsense\r\n\r\n"
                               << QByteArray("400");
    QTest::newRow("bad length") << "POST " + sign + " HTTP/1.1\r\n" + client + "Content-Length: -1\r\n\r\n"
                                << QByteArray();
    QTest::newRow("long form") << post(sign, "application/x-www-form-urlencoded", QByteArray(1 << 20, 'x'))
                               << QByteArray("413");
    QTest::newRow("binary form") << post(
        sign, "application/x-www-form-urlencoded", "username=\xff\x00&password=\xfe")
                                 << QByteArray("400");
    QTest::newRow("many fields") << post(registration, multipartType(), multipart(manyFields))
                                 << QByteArray("400");
    QTest::newRow("long field") << post(registration, multipartType(), multipart(longField))
                                << QByteArray("400");
    QTest::newRow("zero in a field") << post(
        registration, multipartType(), multipart({{"phone", QByteArray("1\0002", 3)}, {"username", "u"}}))
                                     << QByteArray("400");
    QTest::newRow("part without a header")
        << post(registration, multipartType(), "--boundary_of_tests\r\n\r\nx\r\n--boundary_of_tests--\r\n")
        << QByteArray("400");
    QTest::newRow("long part header") << post(registration, multipartType(),
        "--boundary_of_tests\r\nContent-Disposition: form-data; name=\"" + QByteArray(200000, 'x')
            + "\"\r\n\r\nx\r\n--boundary_of_tests--\r\n")
                                      << QByteArray("400");
    QTest::newRow("gzip that is none") << post(registration, multipartType() + "\r\nContent-Encoding: gzip",
        "nonsense") << QByteArray("400");
}

void TestHostileRequests::garbageIsAnsweredOrDropped()
{
    QFETCH(QByteArray, request);
    QFETCH(QByteArray, status);
    QTcpSocket socket;
    QVERIFY(open(socket));
    if (status.isEmpty()) {
        socket.write(request);
        socket.waitForBytesWritten();
    } else {
        const QByteArray reply = exchange(socket, request);
        QVERIFY2(reply.startsWith("HTTP/1.1 " + status), reply.left(200));
        QVERIFY2(reply.contains("\"msg\":\""), reply);
    }
    QVERIFY2(m_platform.signedIn("alice").get("/project/cloudAddressBook/list").ok(), "the platform goes on");
}

void TestHostileRequests::refusedFormIsReadToItsEnd()
{
    // One connection, a refused upload, then a good request: nothing of the first may be taken for the
    // second.
    const QByteArray body = multipart({},
        "Content-Disposition: form-data; name=\"file\"; filename=\"a\"\r\n\r\nGET /evil HTTP/1.1\r\n\r\n"
            + QByteArray(300000, 'x'));
    QTcpSocket socket;
    QVERIFY(open(socket));
    const QByteArray refused = exchange(socket,
        "POST /project/cloudProjectBackup/upload HTTP/1.1\r\nHost: x\r\nContent-Type: " + multipartType()
            + "\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body);
    QVERIFY2(refused.contains("Token失效"), refused);
    const QByteArray next = exchange(socket, "GET /admin/mobile/abc HTTP/1.1\r\nHost: x\r\n\r\n");
    QVERIFY2(next.contains("This is not a phone number"), next);
}

void TestHostileRequests::manyClientsAtOnce()
{
    std::atomic<int> good{0};
    std::vector<std::thread> clients(200);
    for (int i = 0; i < 200; ++i)
        clients[i] = std::thread([&, i] {
            const Client client = m_platform.signedIn("alice");
            const QByteArray content = QByteArray::number(i) + QByteArray(100000, 'x');
            const QByteArray file = uploadSharedFile(client, addProject(client), "x.dwg", content);
            good +=
                client.get("/project/cloudProjectShare/download?logicalId=" + file).body == content ? 1 : 0;
        });
    for (std::thread& client : clients)
        client.join();
    QCOMPARE(good.load(), 200);
}

void TestHostileRequests::startsThatCannotSucceed_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QString>("reason");

    const QString own = "127.0.0.1:" + QString::number(m_platform.port());
    const QString data = m_platform.data() + "/another";
    QTest::newRow("port in use") << QStringList{"--listen", own, "--data", data} << "Cannot listen at " + own;
    QTest::newRow("no port") << QStringList{"--listen", "127.0.0.1", "--data", data}
                             << "Not an address to listen at";
    QTest::newRow("port too high") << QStringList{"--listen", "127.0.0.1:65536", "--data", data}
                                   << "Not an address to listen at";
    QTest::newRow("data in use") << QStringList{"--listen", "127.0.0.1:0", "--data", m_platform.data()}
                                 << "in use by another platform";
    QTest::newRow("data is a file") << QStringList{"--listen", "127.0.0.1:0", "--data",
        m_platform.data() + "/platform.sqlite"}
                                    << "platform.sqlite";
    QTest::newRow("no certificate") << QStringList{"--tls-certificate", "/nowhere", "--tls-key", "/nowhere"}
                                    << "/nowhere";
    QTest::newRow("certificate is none") << QStringList{"--listen", "127.0.0.1:0", "--data", data,
        "--tls-certificate", m_platform.data() + "/lock", "--tls-key", m_platform.data() + "/lock"}
                                         << "TLS certificate";
    QTest::newRow("short key") << QStringList{"--cipher-key", "short"} << "16 bytes";
    QTest::newRow("unknown option") << QStringList{"--nonsense"} << "--nonsense";
}

void TestHostileRequests::startsThatCannotSucceed()
{
    QFETCH(QStringList, options);
    QFETCH(QString, reason);
    QProcess process;
    process.start(PlatformUnderTest::program(), options);
    QVERIFY(process.waitForFinished(20000));
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QVERIFY(process.exitCode() != 0);
    QCOMPARE(process.readAllStandardOutput(), QByteArray());
    const QString said = QString::fromLocal8Bit(process.readAllStandardError());
    QVERIFY2(said.contains(reason), qPrintable(said));
}

void TestHostileRequests::stopsWhenAsked()
{
    PlatformUnderTest platform;
    QTcpSocket idle;
    idle.connectToHost("127.0.0.1", static_cast<quint16>(platform.port()));
    QVERIFY(idle.waitForConnected());
    QCOMPARE(platform.stop(), 0);
}

void TestHostileRequests::outboxElsewhere()
{
    QTemporaryDir outbox;
    PlatformUnderTest platform({"--outbox", outbox.path()});
    QVERIFY(Client(platform.port()).get("/admin/mobile/13800000001").ok());
    QCOMPARE(QDir(outbox.path()).entryList(QDir::Files).size(), 1);
}

QTEST_GUILESS_MAIN(TestHostileRequests)
#include "TestHostileRequests.moc"
