// SPDX-License-Identifier: MIT
#include "Runners.h"
#include "net/ReplyEnvelope.h"
#include "support/MultipartForm.h"

#include <QCoreApplication>
#include <QDir>
#include <QNetworkProxy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <sys/resource.h>
#include <unistd.h>

Q_DECLARE_METATYPE(Behaviour)

namespace {
const QByteArray object = R"({"code":0,"data":{"id":12345678901,"名":"值"},"list":[1,null]})";
const QByteArray soap = "<a><ConDgn2DwgResult>text</ConDgn2DwgResult></a>";
constexpr double shortly = 250;

/// What the network stack adds to every request; a header beyond these and the caller's own is a surprise.
const QSet<QByteArray> usual{"host", "connection", "accept", "accept-encoding", "accept-language",
    "user-agent", "content-length", "content-type"};

/// The threads of network access managers that are there.
int requestThreads()
{
    int threads = 0;
    const QDir tasks("/proc/self/task");
    for (const QString& task : tasks.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        QFile name(tasks.filePath(task + "/comm"));
        threads += name.open(QIODevice::ReadOnly) && name.readAll().startsWith("QNetwork");
    }
    return threads;
}

int openFiles()
{
    return QDir("/proc/self/fd").entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot).size();
}
} // namespace

class TestHttpRunner : public QObject
{
    Q_OBJECT

private slots:
    void sendsWhatItIsTold_data()
    {
        QTest::addColumn<Runner>("runner");
        QTest::addColumn<HeaderMap>("headers");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QByteArray>("contentType");

        const HeaderMap bearer{{"Authorization", "Bearer t/=+"}, {"X-Number", 42}};
        HeaderMap typed = bearer;
        typed["Content-Type"] = "text/xml; charset=utf-8";
        const QByteArray body("a=1&b=%2B \r\n\0\xff", 15);
        const QByteArray form = "application/x-www-form-urlencoded";

        const QVector<Runner> runners = allRunners(body, folder.filePath("wire"));
        QTest::newRow("httpGet") << runners[0] << bearer << QByteArray() << QByteArray();
        QTest::newRow("httpGetToFile") << runners[1] << bearer << QByteArray() << QByteArray();
        QTest::newRow("httpDelete") << runners[2] << bearer << QByteArray() << QByteArray();
        QTest::newRow("httpPost") << runners[3] << bearer << body << form;
        QTest::newRow("httpPost of nothing, typed")
            << posting({}) << typed << QByteArray() << QByteArray("text/xml; charset=utf-8");
        QTest::newRow("httpPut") << runners[4] << bearer << body << form;
        QTest::newRow("httpPostSoap") << runners[7] << typed << body << QByteArray("text/xml; charset=utf-8");
    }

    void sendsWhatItIsTold()
    {
        QFETCH(Runner, runner);
        QFETCH(HeaderMap, headers);
        ScriptedPeer peer;
        peer.expect(runner.method, "/p//q?a=1&b=x+y",
            behaviour::answer(runner.name == "httpPostSoap" ? soap : object));
        const Outcome outcome = outcomeOf(runner, peer.address() + "/p//q?a=1&b=x+y", headers);
        QVERIFY2(outcome.ok, qPrintable(outcome.error));
        QCOMPARE(outcome.error, Outcome().error);

        const RecordedRequest request = peer.onlyRequest();
        QVERIFY(request.complete);
        QTEST(request.body, "body");
        QTEST(request.header("Content-Type"), "contentType");
        QCOMPARE(request.header("Host"), peer.address().mid(7).toUtf8());
        QCOMPARE(request.header("Content-Length"), QByteArray::number(request.body.size()));
        QCOMPARE(request.header("Accept-Encoding"), QByteArray("identity"));
        QSet<QByteArray> known = usual;
        for (auto header = headers.begin(); header != headers.end(); ++header) {
            known.insert(header.key().toLower().toUtf8());
            if (header.key().toLower() != "content-type")
                QCOMPARE(
                    request.values(header.key().toUtf8()), QList<QByteArray>({header->toString().toUtf8()}));
        }
        for (const auto& [name, value] : request.headers)
            QVERIFY2(known.contains(name.toLower()), name + ": " + value);
    }

    void sendsForms_data()
    {
        QTest::addColumn<Runner>("runner");
        QTest::addColumn<QList<QByteArray>>("heads");
        QTest::addColumn<QList<QByteArray>>("bodies");

        const QString file = folder.filePath(QStringLiteral("图 1.dwg"));
        const QByteArray content("line\r\n--\0\x80\xff", 11);
        write(file, content);

        const ResultMap fields{
            {"username", "u"}, {"smscode", 12}, {"phone", QString()}, {"password", "值&=%\r\nx"}};
        const QList<QByteArray> heads{
            fieldHead("password"), fieldHead("phone"), fieldHead("smscode"), fieldHead("username")};
        const QList<QByteArray> bodies{"值&=%\r\nx", "", "12", "u"};
        QTest::newRow("POST") << postingForm(fields) << heads << bodies;
        QTest::newRow("PUT") << puttingForm(fields) << heads << bodies;
        QTest::newRow("POST with a file")
            << postingForm(fields, file) << heads + QList<QByteArray>{fileHead("图 1.dwg")}
            << bodies + QList<QByteArray>{content};
    }

    void sendsForms()
    {
        QFETCH(Runner, runner);
        ScriptedPeer peer;
        peer.expect(runner.method, "/form", behaviour::answer(object));
        QVERIFY(outcomeOf(runner, peer.address() + "/form", {{"Authorization", "Bearer t"}}).ok);

        const RecordedRequest request = peer.onlyRequest();
        QCOMPARE(request.header("Authorization"), QByteArray("Bearer t"));
        QString fault;
        QList<QByteArray> heads;
        QList<QByteArray> bodies;
        for (const FormPart& part : parseForm(request, fault)) {
            heads.append(part.head);
            bodies.append(part.body);
        }
        QVERIFY2(fault.isEmpty(), qPrintable(fault));
        QTEST(heads, "heads");
        QTEST(bodies, "bodies");
    }

    void parsesAddressesTolerantly()
    {
        ScriptedPeer peer;
        peer.expect("GET", "/a%20b?x=%E4%B8%AD%20%22&y=%2B+&z=%0D%0AX:", behaviour::answer(object));
        QVERIFY(outcomeOf({"httpGet", "GET", httpGet}, peer.address() + "/a b?x=中 \"&y=%2B+&z=%0D%0AX:").ok);
    }

    void headersCannotBeInjected()
    {
        for (const QString lineBreak : {"\r\n", "\n"}) {
            const QString evil = "x" + lineBreak + "X-Injected: 1";
            for (const HeaderMap& headers : {HeaderMap{{"Authorization", evil + lineBreak}},
                     HeaderMap{{"Content-Type", evil + lineBreak}}, HeaderMap{{evil, "1"}}}) {
                ScriptedPeer peer;
                peer.expect("POST", "/", behaviour::answer(object));
                outcomeOf(posting("a=1"), peer.address() + "/", headers);
                peer.finish(); // refusing to send such a header at all would be as good
                for (const RecordedRequest& request : peer.requests()) {
                    const QByteArray sent = request.raw.toLower().replace('\r', '\n');
                    QVERIFY2(!sent.contains("\nx-injected"), sent);
                    QCOMPARE(request.body, QByteArray("a=1"));
                }
            }
        }
    }

    void decodesReplies_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<bool>("good");
        QTest::addColumn<int>("status");
        const auto row = [](const char* name, const QByteArray& body, bool good, int status = 200) {
            QTest::newRow(name) << body << good << status;
        };
        row("object", object, true);
        row("object with 500", object, true, 500);
        row("array", "[]", false);
        row("HTML", "<html>{}</html>", false, 502);
        row("more after the object", "{} {}", false);
        row("invalid UTF-8", "{\"a\":\"\xff\xfe\"}", false);
        row("very deep, cut", "{\"a\":" + QByteArray(1000000, '['), false);
        row("larger than 8 MiB", "{\"a\":\"" + QByteArray(9 << 20, 'x') + "\"}", false);
    }

    void decodesReplies()
    {
        QFETCH(QByteArray, body);
        QFETCH(bool, good);
        QFETCH(int, status);
        ScriptedPeer peer;
        peer.expect("POST", "/", behaviour::answer(body, status));
        const Outcome outcome = outcomeOf(posting("a=1"), peer.address() + "/");
        if (!good) {
            QVERIFY(outcome.failedWith(replyUnusable()));
            return;
        }
        QVERIFY2(outcome.ok, qPrintable(outcome.error));
        QVERIFY(!outcome.result.contains("earlier"));
        QCOMPARE(outcome.result["data"].toMap()["id"].toString(), QString("12345678901"));
        QCOMPARE(outcome.result["data"].toMap()[QStringLiteral("名")].toString(), QString("值"));
    }

    void faultsHaveTheirText_data()
    {
        QTest::addColumn<Runner>("runner");
        QTest::addColumn<Behaviour>("behave");
        QTest::addColumn<QString>("error");

        const QByteArray cut = "HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\n{\"code\":0,";
        const QByteArray chunked = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n";
        const struct
        {
            const char* name;
            Behaviour behave;
            QString error;
        } faults[]{
            {"silent", behaviour::silent(), connectionTimedOut()},
            {"drip", behaviour::drip(), connectionTimedOut()},
            {"closed unread", behaviour::closeUnread(), replyUnusable()},
            {"reset before the first byte", behaviour::resetAfter(), replyUnusable()},
            {"closed in the head", behaviour::closeAfter("HTTP/1.1 200 OK\r\nContent-"), replyUnusable()},
            {"reset in the body", behaviour::resetAfter(cut), replyUnusable()},
            {"bad chunk length", behaviour::closeAfter(chunked + "xyz\r\n{}\r\n0\r\n\r\n"), replyUnusable()},
            {"cut chunk", behaviour::closeAfter(chunked + "5\r\n{\"a"), replyUnusable()},
            {"garbage", behaviour::closeAfter("\x16\x03\x01 not HTTP at all\r\n\r\n{}"), replyUnusable()},
            {"redirect without a body", behaviour::redirect("http://127.0.0.1:1/elsewhere"), replyUnusable()},
            {"empty body", behaviour::answer(""), replyUnusable()},
        };
        for (const Runner& runner : allRunners("a=1", folder.filePath("faults")))
            for (const auto& [name, behave, error] : faults)
                QTest::newRow(runner.name + ", " + name) << runner << behave << error;
    }

    void faultsHaveTheirText()
    {
        QFETCH(Runner, runner);
        QFETCH(Behaviour, behave);
        QFETCH(QString, error);
        QFile::remove(folder.filePath("faults"));
        ScriptedPeer peer;
        peer.expect(runner.method, "/", behave);
        const Outcome outcome =
            outcomeOf(runner, peer.address() + "/", {}, error == connectionTimedOut() ? shortly : 100000);
        QVERIFY2(outcome.failedWith(error), qPrintable(outcome.error));
        QVERIFY(!QFile::exists(folder.filePath("faults")));
    }

    void aFloodEndsWithTheCall_data()
    {
        QTest::addColumn<QByteArray>("beginning");
        QTest::addColumn<QByteArray>("flood");
        const QByteArray head = "HTTP/1.1 200 OK\r\n";
        QTest::newRow("headers") << head << QByteArray("X: y\r\n");
        QTest::newRow("one header") << head + "X: " << QByteArray("y");
        QTest::newRow("interim replies") << QByteArray() << QByteArray("HTTP/1.1 100 Continue\r\n\r\n");
        QTest::newRow("chunks of one byte") << head + "Transfer-Encoding: chunked\r\n\r\n"
                                            << QByteArray("1\r\nx\r\n");
        QTest::newRow("a chunk's extension")
            << head + "Transfer-Encoding: chunked\r\n\r\n1;" << QByteArray("x");
    }

    /// Otherwise the network access manager's thread lives for as long as the peer sends.
    void aFloodEndsWithTheCall()
    {
        QFETCH(QByteArray, beginning);
        QFETCH(QByteArray, flood);
        flood = flood.repeated(10000);
        ScriptedPeer peer;
        peer.expect("GET", "/", [=](PeerConnection& c) {
            c.readHead();
            for (bool more = c.send(beginning); more;)
                more = c.send(flood);
        });
        QVERIFY(outcomeOf({"httpGet", "GET", httpGet}, peer.address() + "/", {}, shortly)
                    .failedWith(connectionTimedOut()));
        QTRY_COMPARE(requestThreads(), 0);
    }

    void unreachableHasItsText()
    {
        for (const QString& address : {ScriptedPeer::refusedAddress(), QString(),
                 QString("gopher://127.0.0.1"), QString("http://127.0.0.1:99999")})
            for (const Runner& runner : allRunners("a=1", folder.filePath("refused")))
                QVERIFY2(outcomeOf(runner, address + "/").failedWith(replyUnusable()), runner.name);
    }

    void sendsOnceWhateverHappens_data()
    {
        QTest::addColumn<Runner>("runner");
        QTest::addColumn<Behaviour>("behave");

        const QString file = folder.filePath("once.dwg");
        write(file, QByteArray(300000, 'f'));
        const QVector<QPair<QByteArray, Runner>> senders{
            {"GET", {"httpGet", "GET", httpGet}},
            {"download", downloading(folder.filePath("once.saved"))},
            {"DELETE", {"httpDelete", "DELETE", httpDelete}},
            {"POST", posting("a=1")},
            {"empty POST", posting({})},
            {"large POST", posting(QByteArray(300000, 'p'))},
            {"PUT", putting("a=1")},
            {"POST form", postingForm({{"a", "1"}})},
            {"POST file", postingForm({{"a", "1"}}, file)},
            {"PUT form", puttingForm({{"a", "1"}})},
            {"SOAP", postingSoap("<a/>")},
        };
        const QVector<QPair<QByteArray, Behaviour>> ends{
            {"closed unread", behaviour::closeUnread()},
            {"closed", behaviour::closeAfter()},
            {"reset", behaviour::resetAfter()},
            {"garbage", behaviour::closeAfter("garbage\r\n\r\n")},
            {"reset in the body", behaviour::resetAfter("HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\n{")},
            {"go on, then closed", behaviour::closeAfter("HTTP/1.1 100 Continue\r\n\r\n")},
            {"authentication wanted", behaviour::answer("", 401, "WWW-Authenticate: Basic realm=\"r\"\r\n")},
            {"try again", behaviour::answer("", 503, "Retry-After: 0\r\n")},
            {"redirect that keeps the method", behaviour::answer("", 307, "Location: /again\r\n")},
        };
        for (const auto& [name, runner] : senders)
            for (const auto& [end, behave] : ends)
                QTest::newRow(name + ", " + end) << runner << behave;
    }

    void sendsOnceWhateverHappens()
    {
        QFETCH(Runner, runner);
        QFETCH(Behaviour, behave);
        ScriptedPeer peer;
        peer.expect(runner.method, "/", behave);
        const Outcome outcome = outcomeOf(runner, peer.address() + "/", {}, 3000);
        QVERIFY(!outcome.ok);
        QCOMPARE(outcome.result, Outcome().result);
        peer.onlyRequest(); // a second connection without a byte over it would do no harm
    }

    void goesThroughAProxyWithItsPassword()
    {
        for (const Runner& runner : allRunners("a=1", folder.filePath("proxied"))) {
            ScriptedPeer proxy;
            proxy.expect(runner.method, "http://platform.example/x",
                behaviour::answer(runner.name == "httpPostSoap" ? soap : object));
            QNetworkProxy::setApplicationProxy({QNetworkProxy::HttpProxy, "127.0.0.1",
                quint16(QUrl(proxy.address()).port()), "user", "word"});
            const bool ok = outcomeOf(runner, "http://platform.example/x").ok;
            QNetworkProxy::setApplicationProxy(QNetworkProxy::NoProxy);
            QVERIFY2(ok, runner.name);
            QCOMPARE(proxy.onlyRequest().header("Proxy-Authorization"), QByteArray("Basic dXNlcjp3b3Jk"));
        }
    }

    void followsNoRedirect()
    {
        ScriptedPeer elsewhere;
        const QByteArray there = "Location: " + elsewhere.address().toUtf8() + "/\r\n";
        for (const int status : {301, 302, 303, 307, 308}) {
            for (const Runner& runner : allRunners("a=1", folder.filePath("redirected"))) {
                ScriptedPeer peer;
                peer.expect(runner.method, "/", behaviour::answer(object, status, there));
                const bool ok = outcomeOf(runner, peer.address() + "/", {{"Authorization", "Bearer t"}}).ok;
                QCOMPARE(ok, runner.name != "httpGetToFile" && runner.name != "httpPostSoap");
            }
        }
        elsewhere.settle();
        QCOMPARE(elsewhere.connections(), 0);
    }

    void anAnswerBeforeTheBodyCounts()
    {
        ScriptedPeer peer;
        peer.expect("POST", "/", behaviour::answerEarly(object, 413, true));
        const Outcome outcome = outcomeOf(posting(QByteArray(8 << 20, 'x')), peer.address() + "/");
        QVERIFY2(outcome.ok, qPrintable(outcome.error));
    }

    void quittingEndsTheWait()
    {
        int calls = 0;
        for (const bool before : {false, true}) {
            for (const Runner& runner : allRunners("a=1", folder.filePath("quit"))) {
                QTimer::singleShot(0, [&] {
                    ScriptedPeer peer;
                    peer.expect(runner.method, "/", [](PeerConnection& c) { c.waitForClient(); });
                    if (before)
                        QCoreApplication::exit(3);
                    else
                        QTimer::singleShot(50, [] { QCoreApplication::exit(3); });
                    const Outcome outcome = outcomeOf(runner, peer.address() + "/");
                    peer.finish(); // what is quitting need not send at all
                    calls += outcome.failedWith(connectionTimedOut()) ? 1 : 0;
                });
                QCOMPARE(QCoreApplication::exec(), 3);
            }
        }
        QCOMPARE(calls, 16);
    }

    void nothingPilesUpInsideOneEvent()
    {
        ScriptedPeer peer;
        constexpr int calls = 50;
        const auto call = [&](int times) {
            for (int i = 0; i < times; ++i) {
                peer.expect("POST", "/", behaviour::answer(object));
                QVERIFY(outcomeOf(posting("a=1"), peer.address() + "/").ok);
            }
            peer.settle();
        };
        int moreFiles = calls;
        QTimer::singleShot(0, [&] {
            call(2);
            const int files = openFiles();
            call(calls);
            moreFiles = openFiles() - files; // a thread that stays has some of its own
            QCoreApplication::quit();
        });
        QCoreApplication::exec();
        QVERIFY2(moreFiles < 5, QByteArray::number(moreFiles));
    }

    /// For want of files an event loop of GLib ends the process.
    void failsWithoutFilesToOpen()
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
            failed += outcomeOf(posting("a=1"), "http://127.0.0.1:1/").failedWith(replyUnusable());
            ::close(taken.takeLast());
        }
        for (const int file : qAsConst(taken))
            ::close(file);
        ::setrlimit(RLIMIT_NOFILE, &before);
        QCOMPARE(failed, 4);
        ScriptedPeer peer;
        peer.expect("POST", "/", behaviour::answer(object));
        QVERIFY(outcomeOf(posting("a=1"), peer.address() + "/").ok);
    }

    void requestsMayNest()
    {
        ScriptedPeer outer;
        ScriptedPeer inner;
        inner.expect("POST", "/", behaviour::answer("{}"));
        Outcome nested;
        outer.expect(
            "POST", "/", answerAfter("{}", [&] { nested = outcomeOf(posting("b"), inner.address() + "/"); }));
        QVERIFY(outcomeOf(posting("a"), outer.address() + "/").ok);
        QVERIFY(nested.ok);
    }

    void anyThreadMayCall()
    {
        for (const Runner& runner : allRunners("a=1", folder.filePath("thread"))) {
            ScriptedPeer peer;
            peer.expect(runner.method, "/", behaviour::silent());
            QVERIFY2(inAnotherThread(runner, peer.address() + "/", shortly).failedWith(connectionTimedOut()),
                runner.name);
            peer.settle();
            peer.expect(runner.method, "/", behaviour::answer(runner.name == "httpPostSoap" ? soap : object));
            QVERIFY2(inAnotherThread(runner, peer.address() + "/").ok, runner.name);
        }
    }

private:
    QTemporaryDir folder;
};

QTEST_GUILESS_MAIN(TestHttpRunner)
#include "tst_httprunner.moc"
