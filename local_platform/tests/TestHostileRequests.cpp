// SPDX-License-Identifier: MIT
#include "PlatformUnderTest.h"

#include <QSslCipher>
#include <QSslConfiguration>
#include <QSslSocket>
#include <atomic>
#include <soci/soci.h>
#include <soci/sqlite3/soci-sqlite3.h>
#include <thread>
#include <vector>

/// What no well-behaved client sends, and starts that cannot succeed.
class TestHostileRequests : public QObject
{
    Q_OBJECT

private slots:
    void garbageIsAnswered_data()
    {
        QTest::addColumn<QByteArray>("request");
        QTest::addColumn<QByteArray>("status"); // of the first answer
        QTest::addColumn<QByteArray>("text"); // a part of it
        QTest::addColumn<bool>("goesOn"); // the connection does, with the next request
        const QByteArray client =
            "Host: x\r\nAuthorization: " + m_platform.asClient().authorization() + "\r\n";
        const QByteArray get = "GET /admin/mobile/x HTTP/1.1\r\n" + client;
        const QByteArray sign = "POST /auth/oauth/token?grant_type=password HTTP/1.1\r\n" + client;
        const QByteArray chunks = sign + "Transfer-Encoding: chunked\r\n\r\n";
        const auto post = [&](const QByteArray& path, const QByteArray& type, const QByteArray& body) {
            return "POST " + path + " HTTP/1.1\r\n" + client + "Content-Type: " + type
                + "\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body;
        };
        const auto form = [&](const FormFields& fields) {
            return post("/admin/api/user", multipartType(), multipart(fields));
        };
        const auto part = [&](const QByteArray& head) {
            return post("/admin/api/user", multipartType(), multipart({}, head + "\r\n\r\nx"));
        };
        const QByteArray noPhone = "not a phone number";
        const QByteArray unclear = "cannot be understood";
        const QByteArray malformed = "cut short or is malformed";
        const QByteArray missing = "is missing";
        const struct
        {
            const char* name;
            QByteArray request;
            int status;
            QByteArray text;
            bool goesOn;
        } rows[]{
            {"no HTTP", "\x16\x03\x01 hello\r\n\r\n", 400, unclear, false},
            {"a path upwards", "GET /../../etc/passwd HTTP/1.1\r\n" + client + "\r\n", 404, "nothing", true},
            {"bad escapes", "GET /admin/mobile/%zz%4 HTTP/1.1\r\n" + client + "\r\n", 400, noPhone, true},
            {"an address with its server", "GET http://y/admin/mobile/x HTTP/1.1\r\n" + client + "\r\n", 400,
                noPhone, true},
            {"an address without a slash", "GET admin HTTP/1.1\r\n" + client + "\r\n", 400, unclear, false},
            {"another method", "TRACE / HTTP/1.1\r\n" + client + "\r\n", 501, "", false},
            {"another version", "GET / HTTP/2.0\r\n" + client + "\r\n", 505, "", false},
            {"an old version", "GET /admin/mobile/x HTTP/1.0\r\n\r\n", 400, noPhone, false},
            {"no host", "GET / HTTP/1.1\r\n\r\n", 400, "host", false},
            {"two hosts", get + "Host: y\r\n\r\n", 400, "host", false},
            {"an empty line before it", "\r\n" + get + "\r\n", 400, noPhone, true},

            {"a long address", "GET /" + QByteArray(100000, 'x'), 414, "too long", false},
            {"a head that just fits", get + "X: " + QByteArray(65000, 'x') + "\r\n\r\n", 400, noPhone, true},
            {"a long head", get + "X: " + QByteArray(70000, 'x'), 431, "too long", false},
            {"many headers", get + QByteArray("X: y\r\n").repeated(200), 431, "too many", false},

            {"a bare line feed", get + "X: y\n\r\n", 400, unclear, false},
            {"a bare carriage return", get + "X: y\rz\r\n\r\n", 400, unclear, false},
            {"a zero byte", get + QByteArray("X: \0\r\n\r\n", 8), 400, unclear, false},
            {"a folded header", get + "X: y\r\n z\r\n\r\n", 400, unclear, false},
            {"a space before the colon", sign + "Content-Length : 1\r\n\r\n", 400, unclear, false},
            {"chunks and a length", sign + "Transfer-Encoding: chunked\r\nContent-Length: 5\r\n\r\n0\r\n\r\n",
                400, unclear, false},
            {"a length and chunks", sign + "Content-Length: 5\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n\r\n",
                400, unclear, false},
            {"two lengths", sign + "Content-Length: 1\r\nContent-Length: 2\r\n\r\nxx", 400, unclear, false},
            {"a length below zero", sign + "Content-Length: -1\r\n\r\n", 400, unclear, false},
            {"a length beyond 64 bits", sign + "Content-Length: 18446744073709551617\r\n\r\nx", 400, unclear,
                false},
            {"packed chunks", sign + "Transfer-Encoding: gzip, chunked\r\n\r\n0\r\n\r\n", 501, "encoding",
                false},
            {"an unknown encoding", sign + "Transfer-Encoding: xchunked\r\n\r\n0\r\n\r\n", 501, "encoding",
                false},
            {"chunks of an old version", "POST / HTTP/1.0\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n\r\n",
                400, unclear, false},
            {"a body with a GET",
                get + "Content-Length: " + QByteArray::number(get.size() + 2) + "\r\n\r\n" + get + "\r\n",
                400, noPhone, true},
            {"no answer's body", "HEAD /admin/mobile/x HTTP/1.1\r\n" + client + "\r\n", 404, "", true},

            {"chunks and a trailer", chunks + "5;a=\"b\"\r\nhello\r\n0\r\nX: y\r\n\r\n", 400, missing, true},
            {"no chunks", chunks + "nonsense\r\n\r\n", 400, malformed, false},
            {"a chunk's size in C", chunks + "0x1\r\nx\r\n0\r\n\r\n", 400, malformed, false},
            {"a chunk beyond 64 bits", chunks + "10000000000000001\r\nx\r\n0\r\n\r\n", 400, malformed, false},
            {"a longer chunk than said", chunks + "1\r\nxx\r\n0\r\n\r\n", 400, malformed, false},
            {"a long chunk extension", chunks + "1;" + QByteArray(100000, 'x'), 400, malformed, false},
            {"many chunk extensions",
                chunks + QByteArray("1;" + QByteArray(2000, 'x') + "\r\nx\r\n").repeated(20), 400, malformed,
                false},

            {"a packed body", post("/admin/api/user", multipartType() + "\r\nContent-Encoding: gzip", "x"),
                415, "not packed", false},
            {"another expectation", sign + "Expect: y\r\nContent-Length: 1\r\n\r\nx", 417, "", false},
            {"a large body announced", sign + "Expect: 100-continue\r\nContent-Length: 99999999999\r\n\r\n",
                413, "too large", false},
            {"an announced body", sign + "Expect: 100-continue\r\nContent-Length: 5\r\n\r\nhello", 400,
                missing, true},

            {"a large text", post("/auth/oauth/token?grant_type=password", "x/y", QByteArray(1 << 20, 'x')),
                413, "too large", true},
            {"many fields", form(FormFields(5000, {"name", "value"})), 400, "too many fields", true},
            {"a long field", form({{"username", QByteArray(1 << 20, 'x')}}), 400, "too long", true},
            {"long fields", form(FormFields(30, {"username", QByteArray(60000, 'x')})), 400, "too long",
                true},
            {"a zero in a text", form({{"phone", QByteArray("1\0002", 3)}, {"username", "u"}}), 400,
                "not valid UTF-8", true},
            {"a form of no bytes", post("/admin/api/user", multipartType(), ""), 400, malformed, true},
            {"a form without a part", post("/admin/api/user", multipartType(), "x"), 400, malformed, true},
            {"a part without a name", part("X: y"), 400, malformed, true},
            {"a part of two names", part("Content-Disposition: form-data; name=\"a\"; name=\"b\""), 400,
                malformed, true},
            {"a name without an end", part("Content-Disposition: form-data; name=\"a"), 400, malformed, true},
            {"a long part head", part("X: " + QByteArray(100000, ';')), 400, malformed, true},
            {"a part that has all but a delimiter",
                post(
                    "/admin/api/user", multipartType(), QByteArray("\r\n--boundary_of_test").repeated(50000)),
                400, malformed, true},
        };
        for (const auto& row : rows)
            QTest::newRow(row.name) << row.request << QByteArray::number(row.status) << row.text
                                    << row.goesOn;
    }
    void garbageIsAnswered()
    {
        QFETCH(QByteArray, request);
        QFETCH(QByteArray, status);
        QFETCH(QByteArray, text);
        QFETCH(bool, goesOn);
        QTcpSocket socket;
        QVERIFY(m_platform.connectTo(socket));
        // Behind each, a request that must be answered as a second one, or not at all.
        socket.write(request + "GET /admin/mobile/next HTTP/1.1\r\nHost: x\r\nConnection: close\r\n\r\n");
        const QByteArray replies = toTheEnd(socket);
        const int next = replies.indexOf("HTTP/1.1 ", 1);
        const QByteArray reply = replies.mid(0, next);
        QVERIFY2(reply.startsWith("HTTP/1.1 " + status + ' '), replies.left(300));
        QVERIFY2(reply.contains(text) && reply.contains(text.isEmpty() ? "" : "\"msg\":\""), reply);
        QCOMPARE(next >= 0, goesOn);
        QVERIFY2(!goesOn || replies.mid(next).contains("This is not a phone number"), replies);
        QCOMPARE(replies.count("HTTP/1.1 "), goesOn ? 2 : 1);
    }

    void anAnnouncedBodyIsAskedForWhereItIsWanted()
    {
        const QByteArray announced =
            " HTTP/1.1\r\nHost: x\r\nExpect: 100-continue\r\nContent-Length: 5\r\n\r\n";
        QTcpSocket wanted;
        QVERIFY(m_platform.connectTo(wanted));
        wanted.write("POST /auth/oauth/token?grant_type=x" + announced);
        const QByteArray told = "HTTP/1.1 100 Continue\r\n\r\n";
        QTRY_VERIFY(wanted.bytesAvailable() >= told.size());
        QCOMPARE(wanted.readAll(), told);
        QVERIFY(exchange(wanted, "hello").startsWith("HTTP/1.1 400 "));

        QTcpSocket unwanted;
        QVERIFY(m_platform.connectTo(unwanted));
        unwanted.write("POST /project/x" + announced);
        QVERIFY(toTheEnd(unwanted).startsWith("HTTP/1.1 401 "));
    }

    void slowClientsAreCut()
    {
        PlatformUnderTest platform({"--head-time-limit", "1", "--stall-time-limit", "1"});
        const QByteArray start =
            "POST /auth/oauth/token?grant_type=x HTTP/1.1\r\nHost: x\r\nContent-Length: 9\r\n";
        const std::pair<QByteArray, QByteArray> beginnings[]{
            {"", ""},
            {"GET / HT", "408"},
            {start, "408"},
            {start + "\r\nhell", "408"},
        };
        for (const auto& [beginning, status] : beginnings) {
            QTcpSocket socket;
            QVERIFY(platform.connectTo(socket));
            socket.write(beginning);
            const QByteArray reply = toTheEnd(socket);
            QCOMPARE(socket.state(), QAbstractSocket::UnconnectedState);
            QCOMPARE(reply.mid(9, 3), status);
        }
    }

    void oneAddressHasOnlySoManyConnections()
    {
        PlatformUnderTest platform({"--max-connections-per-address", "2"});
        QTcpSocket sockets[3];
        for (QTcpSocket& socket : sockets)
            QVERIFY(platform.connectTo(socket));
        const QByteArray reply = toTheEnd(sockets[2]);
        QVERIFY2(reply.startsWith("HTTP/1.1 503 ") && reply.contains("Retry-After: "), reply);
        QCOMPARE(platform.as().from("127.0.0.2").get("/x").status, 404);
        sockets[0].disconnectFromHost();
        bool isThere = false;
        QTRY_VERIFY(isThere = isThere || platform.as().get("/x").status == 404);
    }

    void refusedFormIsReadToItsEnd()
    {
        // Nothing of the first request on a connection may be taken for the second.
        const QByteArray body = multipart({},
            "Content-Disposition: form-data; name=\"file\"; filename=\"a\"\r\n\r\nGET /evil HTTP/1.1\r\n\r\n"
                + QByteArray(300000, 'x'));
        QTcpSocket socket;
        QVERIFY(m_platform.connectTo(socket));
        const QByteArray refused = exchange(socket,
            "POST /project/cloudProjectBackup/upload HTTP/1.1\r\nHost: x\r\nContent-Type: " + multipartType()
                + "\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body);
        QVERIFY2(refused.contains("Token失效"), refused);
        const QByteArray next = exchange(socket, "GET /admin/mobile/abc HTTP/1.1\r\nHost: x\r\n\r\n");
        QVERIFY2(next.contains("This is not a phone number"), next);
    }

    void tlsIsForwardSecret()
    {
        QTemporaryDir folder;
        const QString certificate = folder.filePath("certificate");
        const QString key = folder.filePath("key");
        QCOMPARE(QProcess::execute("openssl",
                     {"req", "-x509", "-newkey", "rsa:2048", "-nodes", "-subj", "/CN=x", "-keyout", key,
                         "-out", certificate}),
            0);
        PlatformUnderTest platform({"--tls-certificate", certificate, "--tls-key", key});
        const std::tuple<QSsl::SslProtocol, QString, bool> offers[]{
            {QSsl::TlsV1_2, "AES128-GCM-SHA256", false},
            {QSsl::TlsV1_2, "ECDHE-RSA-AES128-SHA256", false},
            {QSsl::TlsV1_2, "ECDHE-RSA-AES128-GCM-SHA256", true},
            {QSsl::TlsV1_3, "TLS_AES_128_GCM_SHA256", true},
        };
        for (const auto& [protocol, cipher, isTaken] : offers) {
            QSslSocket socket;
            QSslConfiguration offer = socket.sslConfiguration();
            offer.setProtocol(protocol);
            offer.setCiphers({QSslCipher(cipher)});
            offer.setPeerVerifyMode(QSslSocket::VerifyNone);
            socket.setSslConfiguration(offer);
            socket.connectToHostEncrypted("127.0.0.1", quint16(platform.port()));
            QVERIFY2(socket.waitForEncrypted() == isTaken, qPrintable(cipher + ": " + socket.errorString()));
            if (isTaken)
                QVERIFY(exchange(socket, "GET /admin/mobile/x HTTP/1.1\r\nHost: x\r\n\r\n")
                            .contains("not a phone number"));
        }
    }

    void manyClientsAtOnce()
    {
        const QByteArray path = "cloudProjectShare/download?logicalId=";
        std::atomic<int> good{0};
        std::vector<std::thread> clients(200);
        for (int i = 0; i < 200; ++i)
            clients[i] = std::thread([&, i] {
                const Client client = m_platform.signedIn("alice");
                const QByteArray content = QByteArray::number(i) + QByteArray(100000, 'x');
                const QByteArray file = uploadSharedFile(client, addProject(client), "x.dwg", content);
                good += client.get(path + file).body == content;
            });
        for (std::thread& client : clients)
            client.join();
        QCOMPARE(good.load(), 200);
    }

    void startsThatCannotSucceed()
    {
        const QString any = "127.0.0.1:0";
        const QString own = "127.0.0.1:" + QString::number(m_platform.port());
        const QString data = m_platform.data();
        const QString other = data + "/another";
        const QString none = data + "/lock";
        const std::pair<QStringList, QString> starts[]{
            {{"--listen", own, "--data", other}, "Cannot listen at " + own},
            {{"--listen", any, "--data", data}, "in use by another platform"},
            {{"--listen", any, "--data", other, "--tls-certificate", none, "--tls-key", none},
                "TLS certificate"},
            {{"--listen", "0.0.0.0:0", "--data", other}, "plain HTTP"},
            {{"--listen", "[::]:0", "--data", other, "--demo-accounts"}, "passwords of the demo accounts"},
            {{"--listen", "0.0.0.0:0", "--data", other}, "is the published one"},
            {{"--config", config("cipher-key=short")}, "16 bytes"},
            {{"--client-credential", "Basic x"}, "Everybody on this machine"},
            {{"--token-lifetime", "0"}, "--token-lifetime"},
            {{"--nonsense"}, "--nonsense"},
        };
        for (const auto& [options, reason] : starts) {
            QProcess process;
            process.start(PlatformUnderTest::program(), options);
            QVERIFY(process.waitForFinished(20000));
            QCOMPARE(process.exitStatus(), QProcess::NormalExit);
            QVERIFY(process.exitCode() != 0);
            QCOMPARE(process.readAllStandardOutput(), QByteArray());
            const QString said = QString::fromLocal8Bit(process.readAllStandardError());
            QVERIFY2(said.contains(reason), qPrintable(said));
        }
    }

    void theLogHoldsNoValueAndNoForgedLine()
    {
        PlatformUnderTest platform({"--log-level", "trace"});
        QVERIFY(platform.as().get("/admin/mobile/13911112222").ok());
        const QByteArray code = platform.sentCode("13911112222");
        soci::session(soci::sqlite3, "db=" + platform.data().toStdString() + "/platform.sqlite")
            << "alter table users rename to gone";
        const FormFields form = {
            {"username", "dora"}, {"password", "c2VjcmV0"}, {"phone", "13911112222"}, {"smscode", code}};
        QCOMPARE(platform.asClient().postForm("/admin/api/user", form).status, 500);
        platform.as().get("/nothing%0Aforged%C2%85forged%E2%80%A8forged");
        platform.stop();
        const QByteArray log = platform.log();
        QVERIFY2(log.contains("no such table: main.users") || log.contains("no such table: users"), log);
        QVERIFY2(log.contains("/nothing\\x0aforged\\xc2"), log);
        for (const QByteArray& secret :
            {code, QByteArray("c2VjcmV0"), QByteArray("$argon2"), QByteArray("\nforged")})
            QVERIFY2(!log.contains(secret), log);
    }

    void stopsWhenAsked()
    {
        PlatformUnderTest platform;
        const QByteArray post =
            "POST /auth/oauth/token?grant_type=x HTTP/1.1\r\nHost: x\r\nContent-Length: 9\r\n";
        QTcpSocket sockets[300];
        for (int i = 0; i < 300; ++i) {
            QVERIFY(platform.connectTo(sockets[i]));
            sockets[i].write(i < 100 ? QByteArray() : i < 200 ? post : post + "\r\nhell");
            QVERIFY(sockets[i].bytesToWrite() == 0 || sockets[i].waitForBytesWritten());
        }
        QCOMPARE(platform.stop(), 0);
    }

private:
    QString config(const QByteArray& content) const
    {
        QFile file(m_platform.data() + "/outbox/config");
        file.open(QIODevice::WriteOnly);
        file.write(content);
        return file.fileName();
    }

    /// All that comes until the platform ends the connection.
    static QByteArray toTheEnd(QTcpSocket& socket)
    {
        QByteArray all;
        while (socket.state() != QAbstractSocket::UnconnectedState && socket.waitForReadyRead(20000))
            all += socket.readAll();
        return all + socket.readAll();
    }

    /// The reply to its last brace: every reply here is an envelope.
    QByteArray exchange(QTcpSocket& socket, const QByteArray& request) const
    {
        socket.write(request);
        QByteArray reply;
        while (!reply.endsWith('}') && socket.waitForReadyRead(20000))
            reply += socket.readAll();
        return reply;
    }

    PlatformUnderTest m_platform;
};

QTEST_GUILESS_MAIN(TestHostileRequests)
#include "TestHostileRequests.moc"
