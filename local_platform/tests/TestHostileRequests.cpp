// SPDX-License-Identifier: MIT
#include "PlatformUnderTest.h"

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
    void garbageIsAnswered()
    {
        const QByteArray client = "Host: x\r\nConnection: close\r\nAuthorization: "
            + m_platform.asClient().authorization() + "\r\n";
        const auto post = [&](const QByteArray& path, const QByteArray& type, const QByteArray& body) {
            return "POST " + path + " HTTP/1.1\r\n" + client + "Content-Type: " + type
                + "\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body;
        };
        const auto form = [&](const FormFields& fields) {
            return post("/admin/api/user", multipartType(), multipart(fields));
        };
        const QByteArray sign = "/auth/oauth/token?grant_type=password";
        const std::tuple<QByteArray, QByteArray, QByteArray> requests[]{
            // status, part of the text
            {"\x16\x03\x01 hello\r\n\r\n", "400", ""},
            {"GET /../../etc/passwd HTTP/1.1\r\n" + client + "\r\n", "404", ""},
            {"GET /admin/mobile/%zz%4 HTTP/1.1\r\n" + client + "\r\n", "400", "not a phone number"},
            {"GET /" + QByteArray(100000, 'x') + " HTTP/1.1\r\n" + client + "\r\n", "414", ""},
            {"POST " + sign + " HTTP/1.1\r\n" + client + "Transfer-Encoding: chunked\r\n\r\nnonsense\r\n\r\n",
                "400", "malformed"},
            {post(sign, "application/x-www-form-urlencoded", QByteArray(1 << 20, 'x')), "413", "too large"},
            {form(FormFields(5000, {"name", "value"})), "400", "too many fields"},
            {form({{"username", QByteArray(1 << 20, 'x')}}), "400", "too long"},
            {form({{"phone", QByteArray("1\0002", 3)}, {"username", "u"}}), "400", "not valid UTF-8"},
            {post("/admin/api/user", multipartType() + "\r\nContent-Encoding: gzip", "nonsense"), "400", ""},
        };
        for (const auto& [request, status, text] : requests) {
            QTcpSocket socket;
            QVERIFY(m_platform.connectTo(socket));
            const QByteArray reply = exchange(socket, request);
            QVERIFY2(reply.startsWith("HTTP/1.1 " + status), reply.left(200));
            QVERIFY2(reply.contains("\"msg\":\"") && reply.contains(text), reply);
        }
        QVERIFY2(m_platform.signedIn("alice").get("cloudAddressBook/list").ok(), "the platform goes on");
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
        QTcpSocket idle;
        QVERIFY(platform.connectTo(idle));
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
