// SPDX-License-Identifier: MIT
#include "Runners.h"
#include "TlsPeer.h"
#include "net/ReplyEnvelope.h"
#include "support/MultipartForm.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDir>
#include <QNetworkProxy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <sys/resource.h>
#include <unistd.h>

using namespace tav;

Q_DECLARE_METATYPE(Behaviour)

namespace {
const QByteArray object = R"({"code":0,"data":{"id":12345678901,"名":"值"},"list":[1,null]})";
const QByteArray soap = "<a><ConDgn2DwgResult>text</ConDgn2DwgResult></a>";

/// The reply with which \a runner succeeds.
Behaviour success(const Runner& runner)
{
    return behaviour::answer(runner.name == "httpPostSoap" ? soap : object);
}
constexpr double shortly = 250;

/// What the network stack adds to every request, and the caller's own; a header beyond these is a surprise.
const QSet<QByteArray> known{"host", "connection", "accept", "accept-encoding", "accept-language",
    "user-agent", "content-length", "content-type", "authorization", "x-number"};

/// How many files this process has open; each thread that waits for a reply has some.
int openFiles()
{
    return QDir("/proc/self/fd").entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot).size();
}
} // namespace

class TestHttpRunner : public QObject
{
    Q_OBJECT

private slots:
    void sendsWhatItIsTold()
    {
        const QByteArray body("a=1&b=%2B \r\n\0\xff", 15);
        const ResultMap fields{{"username", "u"}, {"smscode", 12}, {"phone", QString()}, {"b", "值&=%\r\nx"}};
        const QByteArray form =
            part("b", "值&=%\r\nx") + part("phone", "") + part("smscode", "12") + part("username", "u");
        const QByteArray type = "application/x-www-form-urlencoded";
        const QString file = folder.filePath(QStringLiteral("图 1.dwg"));
        const QByteArray content("line\r\n--\0\x80\xff", 11);
        write(file, content);

        const QVector<Runner> runners = allRunners(body, folder.filePath("wire"));
        const std::pair<Runner, QByteArray> rows[]{{runners[0], ""}, {runners[1], ""}, {runners[2], ""},
            {runners[3], type + body}, {posting({}), type}, {runners[4], type + body},
            {postingForm(fields, file), form + filePart("图 1.dwg", content)}, {puttingForm(fields), form},
            {runners[7], type + body}};
        for (const auto& [runner, sent] : rows) {
            ScriptedPeer peer;
            peer.expect(runner.method, "/p//q?a=1&b=x+y", success(runner));
            const HeaderMap headers{{"Authorization", "Bearer t/=+"}, {"X-Number", 42}};
            const CallResult call = resultOf(runner, peer.address() + "/p//q?a=1&b=x+y", headers);
            QVERIFY2(call.ok, runner.name);
            QCOMPARE(call.error, CallResult().error);

            const RecordedRequest request = peer.onlyRequest();
            QVERIFY2(request.complete, runner.name);
            QCOMPARE(request.header("Authorization"), QByteArray("Bearer t/=+"));
            QCOMPARE(request.header("X-Number"), QByteArray("42"));
            QCOMPARE(request.header("Host"), peer.address().mid(7).toUtf8());
            QCOMPARE(request.header("Content-Length"), QByteArray::number(request.body.size()));
            QCOMPARE(request.header("Accept-Encoding"), QByteArray("identity"));
            for (const auto& [name, value] : request.headers)
                QVERIFY2(known.contains(name.toLower()), name + ": " + value);
            QCOMPARE(contentOf(request), sent);
        }
    }

    void headersCannotBeInjected()
    {
        for (const QString evil : {"x\r\nX-Injected: 1\r\n", "x\nX-Injected: 1\n"}) {
            for (const HeaderMap& headers : {HeaderMap{{"Authorization", evil}},
                     HeaderMap{{"Content-Type", evil}}, HeaderMap{{evil.trimmed(), "1"}}}) {
                ScriptedPeer peer;
                peer.expect("POST", "/", behaviour::answer(object));
                resultOf(posting("a=1"), peer.address() + "/", headers);
                const QVector<RecordedRequest> requests = peer.requests();
                peer.finish(); // refusing to send such a header at all would be as good
                for (const RecordedRequest& request : requests) {
                    const QByteArray sent = request.raw.toLower().replace('\r', '\n');
                    QVERIFY2(!sent.contains("\nx-injected"), sent);
                    QCOMPARE(request.body, QByteArray("a=1"));
                }
            }
        }
    }

    void decodesReplies()
    {
        const std::pair<QByteArray, int> bad[]{
            {"[]", 200}, {"<html>{}</html>", 502}, {"{} {}", 200}, {"{\"a\":\"\xff\xfe\"}", 200},
            {"{\"a\":" + QByteArray(1000000, '['), 200},
            {"{\"a\":\"" + QByteArray(9 << 20, 'x') + "\"}", 200}, // larger than 8 MiB
        };
        for (const auto& [body, status] : bad) {
            const CallResult call = resultOf(posting("a=1"), behaviour::answer(body, status));
            QVERIFY2(call.failedWith(replyUnusable()), body.left(20));
        }
        const CallResult call = resultOf(posting("a=1"), behaviour::answer(object, 500));
        QVERIFY2(call.ok, qPrintable(call.error));
        QVERIFY(!call.reply.contains("earlier"));
        QCOMPARE(call.reply["data"].toMap()["id"].toString(), QString("12345678901"));
        QCOMPARE(call.reply["data"].toMap()[QStringLiteral("名")].toString(), QString("值"));
    }

    void everyFaultHasItsText_data()
    {
        QTest::addColumn<Runner>("runner");
        QTest::addColumn<Behaviour>("behave");
        QTest::addColumn<QString>("error");

        const QByteArray cut = "HTTP/1.1 200 OK\r\nContent-Length: 1000000\r\n\r\n{\"code\":0,";
        const QByteArray chunked = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n";
        const Behaviour drip = [cut](PeerConnection& c) {
            for (bool there = c.readHead() && c.readBody() && c.send(cut); there; there = c.send(" "))
                c.pause(20);
        };
        const struct
        {
            const char* name;
            Behaviour behave;
            QString error = replyUnusable();
        } faults[]{
            {"silent", behaviour::silent(), connectionTimedOut()},
            {"drip", drip, connectionTimedOut()},
            {"closed unread", behaviour::closeUnread()},
            {"closed", behaviour::closeAfter()},
            {"reset before the first byte", behaviour::resetAfter()},
            {"closed in the head", behaviour::closeAfter("HTTP/1.1 200 OK\r\nContent-")},
            {"reset in the body", behaviour::resetAfter(cut)},
            {"bad chunk length", behaviour::closeAfter(chunked + "xyz\r\n{}\r\n0\r\n\r\n")},
            {"cut chunk", behaviour::closeAfter(chunked + "5\r\n{\"a")},
            {"garbage", behaviour::closeAfter("\x16\x03\x01 not HTTP at all\r\n\r\n{}")},
            {"go on, then closed", behaviour::closeAfter("HTTP/1.1 100 Continue\r\n\r\n")},
            {"authentication wanted", behaviour::answer("", 401, "WWW-Authenticate: Basic realm=\"r\"\r\n")},
            {"try again", behaviour::answer("", 503, "Retry-After: 0\r\n")},
            {"redirect that keeps the method", behaviour::answer("", 307, "Location: /again\r\n")},
        };
        const QString file = folder.filePath("once.dwg");
        const QByteArray large(300000, 'l');
        write(file, large);
        const QVector<Runner> runners = allRunners("a=1", folder.filePath("faults"))
            + QVector<Runner>{posting({}), posting(large), postingForm({{"a", "1"}}, file)};
        for (int i = 0; i < runners.size(); ++i)
            for (const auto& [name, behave, error] : faults)
                QTest::addRow("%d: %s, %s", i, runners[i].name.constData(), name)
                    << runners[i] << behave << error;
    }

    /// The peer complains when a request is repeated.
    void everyFaultHasItsText()
    {
        QFETCH(Runner, runner);
        QFETCH(Behaviour, behave);
        QFETCH(QString, error);
        const CallResult call = resultOf(runner, behave, error == connectionTimedOut() ? shortly : 100000);
        QVERIFY2(call.failedWith(error), qPrintable(call.error));
        QVERIFY(!QFile::exists(folder.filePath("faults")));
    }

    /// If the reading does not end, the network access manager's thread lives for as long as the peer sends.
    void anEndlessReplyEndsWithTheCall()
    {
        const QByteArray head = "HTTP/1.1 200 OK\r\n";
        const QByteArray chunked = head + "Transfer-Encoding: chunked\r\n\r\n";
        const QPair<QByteArray, QByteArray> floods[]{
            {head, "X: y\r\n"}, {head + "X: ", "y"}, {"", "HTTP/1.1 100 Continue\r\n\r\n"},
            {chunked, "1\r\nx\r\n"}, {chunked + "1;", "x"}, // a chunk's extension
        };
        resultOf(posting({}), behaviour::closeAfter()); // the first call opens files that stay open
        for (const auto& [beginning, drop] : floods) {
            const QByteArray flood = drop.repeated(10000);
            ScriptedPeer peer;
            peer.expect("POST", "/", [&, begin = beginning](PeerConnection& c) {
                for (bool more = c.readHead() && c.send(begin); more;)
                    more = c.send(flood);
            });
            const int files = openFiles();
            const CallResult call = resultOf(posting({}), peer.address() + "/", {}, shortly);
            QVERIFY2(call.failedWith(connectionTimedOut()), beginning + drop);
            QTRY_COMPARE(openFiles(), files);
        }
    }

    void anUnreachablePlatformHasItsText()
    {
        for (const QString& address : {ScriptedPeer::refusedAddress(), QString(),
                 QString("gopher://127.0.0.1"), QString("http://127.0.0.1:99999")})
            for (const Runner& runner : allRunners("a=1", folder.filePath("refused")))
                QVERIFY2(resultOf(runner, address + "/").failedWith(replyUnusable()), runner.name);
    }

    void goesThroughAProxyWithItsPassword()
    {
        for (const Runner& runner : allRunners("a=1", folder.filePath("proxied"))) {
            ScriptedPeer proxy;
            proxy.expect(runner.method, "http://platform.example/x", success(runner));
            QNetworkProxy::setApplicationProxy({QNetworkProxy::HttpProxy, "127.0.0.1",
                quint16(QUrl(proxy.address()).port()), "user", "word"});
            const bool ok = resultOf(runner, "http://platform.example/x").ok;
            QNetworkProxy::setApplicationProxy(QNetworkProxy::NoProxy);
            QVERIFY2(ok, runner.name);
            QCOMPARE(proxy.onlyRequest().header("Proxy-Authorization"), QByteArray("Basic dXNlcjp3b3Jk"));
        }
    }

    void followsNoRedirect()
    {
        ScriptedPeer elsewhere; // fails the test when any request comes
        const QByteArray there = "Location: " + elsewhere.address().toUtf8() + "/\r\n";
        for (const int status : {301, 302, 303, 307, 308}) {
            for (const Runner& runner : allRunners("a=1", folder.filePath("redirected"))) {
                const bool ok = resultOf(runner, behaviour::answer(object, status, there)).ok;
                QCOMPARE(ok, runner.name != "httpGetToFile" && runner.name != "httpPostSoap");
            }
        }
    }

    void anAnswerBeforeTheBodyCounts()
    {
        const auto answerAtOnce = [](PeerConnection& c) {
            if (c.readHead() && c.send(behaviour::response(object, 413)))
                c.readBody();
        };
        const CallResult call = resultOf(posting(QByteArray(8 << 20, 'x')), answerAtOnce);
        QVERIFY2(call.ok, qPrintable(call.error));
    }

    void aTlsReplyNeedsItsEnd()
    {
        trustTlsPeers();
        const Runner download = downloading(folder.filePath("tls"));
        const Runner post = posting({});
        const QByteArray head = "HTTP/1.1 200 OK\r\n";
        const QByteArray digest = QCryptographicHash::hash(object, QCryptographicHash::Sha256).toBase64();
        const QByteArray chunked = head + "Transfer-Encoding: chunked\r\n\r\n3\r\nxyz\r\n";
        const struct
        {
            Runner runner;
            QByteArray reply;
            QString error = QString(); // empty for none
            TlsPeer::End end = TlsPeer::End::Cut;
        } rows[]{
            {download, behaviour::response(object)},
            {download, chunked + "0\r\n\r\n"},
            {download, head + "Digest: SHA-256=" + digest + "\r\n\r\n" + object},
            {download, chunked, replyUnusable()},
            {download, head + "\r\n" + object, replyUnusable()},
            {post, head + "\r\n" + object},
            {post, head + "\r\n" + object, connectionTimedOut(), TlsPeer::End::Announced},
        };
        for (const auto& [runner, reply, error, end] : rows) {
            const TlsPeer peer(reply, end);
            const double timeoutMs = error == connectionTimedOut() ? shortly : 100000;
            const CallResult call = resultOf(runner, peer.address() + "/", {}, timeoutMs);
            QVERIFY2(error.isEmpty() ? call.ok : call.failedWith(error), reply + qPrintable(call.error));
        }
    }

    void quittingEndsTheWait()
    {
        const auto quit = [] { QCoreApplication::exit(3); };
        const Runner runner = posting("a=1");
        int calls = 0;
        for (const bool before : {false, true}) {
            QTimer::singleShot(0, [&] {
                ScriptedPeer peer;
                peer.expect(runner.method, "/", [](PeerConnection& c) { c.waitForClient(); });
                before ? quit() : QTimer::singleShot(50, quit);
                calls += resultOf(runner, peer.address() + "/").failedWith(connectionTimedOut());
                peer.finish(); // an application that quits need not send at all
            });
            QCOMPARE(QCoreApplication::exec(), 3);
        }
        QCOMPARE(calls, 2);
    }

    void manyCallsInOneEventLeaveNothingOpen()
    {
        ScriptedPeer peer;
        constexpr int calls = 50;
        const auto call = [&](int times) {
            for (int i = 0; i < times; ++i) {
                peer.expect("POST", "/", behaviour::answer(object));
                QVERIFY(resultOf(posting("a=1"), peer.address() + "/").ok);
            }
            peer.settle();
        };
        int moreFiles = calls;
        QTimer::singleShot(0, [&] {
            call(2);
            const int files = openFiles();
            call(calls);
            moreFiles = openFiles() - files;
            QCoreApplication::quit();
        });
        QCoreApplication::exec();
        QVERIFY2(moreFiles < 5, QByteArray::number(moreFiles));
    }

    /// Without file descriptors an event loop of GLib aborts the process.
    void failsWithoutFileDescriptors()
    {
        rlimit before{};
        ::getrlimit(RLIMIT_NOFILE, &before);
        const rlimit few{rlim_t(openFiles() + 16), before.rlim_max};
        ::setrlimit(RLIMIT_NOFILE, &few);
        QVector<int> taken;
        for (int file = ::dup(0); file >= 0; file = ::dup(0))
            taken.append(file);
        int failed = 0;
        for (int spare = 0; spare < 4; ++spare) {
            failed += resultOf(posting("a=1"), "http://127.0.0.1:1/").failedWith(replyUnusable());
            ::close(taken.takeLast());
        }
        for (const int file : qAsConst(taken))
            ::close(file);
        ::setrlimit(RLIMIT_NOFILE, &before);
        QCOMPARE(failed, 4);
        QVERIFY(resultOf(posting("a=1"), behaviour::answer(object)).ok);
    }

    void anyThreadMayCall()
    {
        for (const Runner& runner : allRunners("a=1", folder.filePath("thread"))) {
            ScriptedPeer peer;
            peer.expect(runner.method, "/", behaviour::silent());
            QVERIFY2(inAnotherThread(runner, peer.address() + "/", shortly).failedWith(connectionTimedOut()),
                runner.name);
            peer.settle();
            peer.expect(runner.method, "/", success(runner));
            QVERIFY2(inAnotherThread(runner, peer.address() + "/").ok, runner.name);
        }
    }

private:
    QTemporaryDir folder;
};

QTEST_GUILESS_MAIN(TestHttpRunner)
#include "tst_httprunner.moc"
