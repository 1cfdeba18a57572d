// SPDX-License-Identifier: MIT
#include "Runners.h"
#include "net/ReplyEnvelope.h"
#include "support/MultipartForm.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

using Change = std::function<void()>;
Q_DECLARE_METATYPE(Change)

namespace {
/// More than the buffers of a loopback connection take in.
constexpr int size = 24 << 20;
} // namespace

class TestHttpUpload : public QObject
{
    Q_OBJECT

private slots:
    void streamsTheFile()
    {
        for (const int length : {0, 1, 16384, 65537, size}) {
            const QByteArray content = pattern(length, 'a');
            write(path(), content);
            ScriptedPeer peer;
            peer.expect("POST", "/up", behaviour::answer("{}"));
            QVERIFY(upload(peer).ok);
            QCOMPARE(filePart(peer).head, fileHead("drawing.dwg"));
            QVERIFY2(filePart(peer).body == content, QByteArray::number(length));
        }
    }

    void changesMeanwhile_data()
    {
        QTest::addColumn<Change>("change");
        QTest::addColumn<bool>("good");

        const QString file = path();
        const Change truncate = [file] { QFile::resize(file, 1 << 20); };
        const Change grow = [file] { QFile::resize(file, size + 100000); };
        const Change replace = [file] {
            write(file + ".new", pattern(size / 2, 'b'));
            ::rename(QFile::encodeName(file + ".new"), QFile::encodeName(file));
        };
        const Change rewrite = [file] {
            QFile open(file);
            if (open.open(QIODevice::ReadWrite))
                open.write(pattern(size, 'b'));
        };
        QTest::newRow("truncated") << truncate << false;
        QTest::newRow("grown") << grow << true;
        QTest::newRow("replaced") << replace << true;
        QTest::newRow("rewritten in place") << rewrite << true;
    }

    void changesMeanwhile()
    {
        QFETCH(Change, change);
        QFETCH(bool, good);
        write(path(), pattern(size, 'a'));
        ScriptedPeer peer;
        peer.expect("POST", "/up", behaviour::stallInBody(change, R"({"code":0})"));
        const Outcome outcome = upload(peer);
        QVERIFY2(good ? outcome.ok : outcome.failedWith(replyUnusable()), qPrintable(outcome.error));

        const RecordedRequest request = peer.onlyRequest();
        QCOMPARE(request.complete, good);
        const int begin = request.body.indexOf("\r\n\r\n", request.body.indexOf("name=\"file\"")) + 4;
        const QByteArray one = pattern(size, 'a');
        const QByteArray other = pattern(size, 'b');
        const QByteArray sent = request.body.mid(begin, size);
        for (int at = 0; at < sent.size(); ++at)
            if (sent[at] != one[at] && sent[at] != other[at])
                QFAIL("byte " + QByteArray::number(at) + " is not the file's");
    }

    void withoutAFileToRead()
    {
        QDir(folder.path()).mkdir("folder");
        ::mkfifo(QFile::encodeName(folder.filePath("pipe")), 0600); // nobody fills it
        for (const char* name : {"missing.dwg", "folder", "pipe"}) {
            ScriptedPeer peer;
            peer.expect("POST", "/up", behaviour::answer(R"({"code":1,"msg":"empty"})"));
            const Outcome outcome =
                outcomeOf(postingForm({{"projectId", "1"}}, folder.filePath(name)), peer.address() + "/up");
            QVERIFY(outcome.ok);
            QCOMPARE(outcome.result["msg"].toString(), QString("empty"));
            QCOMPARE(filePart(peer).head, fileHead(name));
            QCOMPARE(filePart(peer).body, QByteArray());
        }
    }

    void namesInjectNothing_data()
    {
        QTest::addColumn<QString>("name");
        for (const char* name : {"a\"; filename=\"b", "a\r\nX-Injected: 1\r\n\r\nbody", "a\nb\\\"c\\"})
            QTest::newRow(QByteArray(name).toPercentEncoding()) << QString(name);
        QTest::newRow("line separators") << QStringLiteral("a\u2028b\u0085c\u010d\u010a");
    }

    void namesInjectNothing()
    {
        QFETCH(QString, name);
        write(folder.filePath(name), "content");
        ScriptedPeer peer;
        peer.expect("POST", "/up", behaviour::answer("{}"));
        QVERIFY(
            outcomeOf(postingForm({{"projectId", "1"}}, folder.filePath(name)), peer.address() + "/up").ok);
        const FormPart part = filePart(peer);
        QCOMPARE(part.body, QByteArray("content"));
        QVERIFY2(!part.head.contains('\n') && !part.head.contains('\r'), part.head);
        const QByteArray begin = fieldHead("file") + "; filename=\"";
        QVERIFY2(part.head.startsWith(begin) && part.head.endsWith('"'), part.head);
        QVERIFY2(!part.head.mid(begin.size()).chopped(1).contains('"'), part.head);
    }

    void fieldsInjectNothing()
    {
        ScriptedPeer peer;
        peer.expect("POST", "/up", behaviour::answer("{}"));
        QVERIFY(outcomeOf(postingForm({{"a\"\r\nX-Injected: 1\r\n\r\n", "v"}}), peer.address() + "/up").ok);
        QString fault;
        const QVector<FormPart> parts = parseForm(peer.onlyRequest(), fault);
        QVERIFY2(fault.isEmpty() && parts.size() == 1, qPrintable(fault));
        QVERIFY2(!parts[0].head.contains('\n') && parts[0].head.count('"') == 2, parts[0].head);
        QCOMPARE(parts[0].body, QByteArray("v"));
    }

    void aPeerThatStopsReadingTimesOut()
    {
        write(path(), pattern(size, 'a'));
        ScriptedPeer peer;
        peer.expect("POST", "/up", [](PeerConnection& c) {
            if (c.readHead() && c.readBody(1000))
                c.waitForClient();
        });
        QVERIFY(upload(peer, 300).failedWith(connectionTimedOut()));
    }

    void aPeerThatHasHadEnoughEndsIt()
    {
        write(path(), pattern(size, 'a'));
        ScriptedPeer peer;
        peer.expect("POST", "/up", behaviour::answerEarly(R"({"code":1,"msg":"too large"})", 413, false));
        upload(peer); // the answer may be lost with the connection: that it ends, after one sending, is the
                      // promise
        QVERIFY(!peer.onlyRequest().complete);
    }

private:
    QString path() const { return folder.filePath("drawing.dwg"); }

    Outcome upload(ScriptedPeer& peer, double timeoutMs = 100000) const
    {
        return outcomeOf(postingForm({{"projectId", "1"}}, path()), peer.address() + "/up", {}, timeoutMs);
    }

    static FormPart filePart(ScriptedPeer& peer)
    {
        QString fault;
        const QVector<FormPart> parts = parseForm(peer.onlyRequest(), fault);
        if (!fault.isEmpty() || parts.size() != 2 || parts[0].head != fieldHead("projectId"))
            return {"not the form that was asked for: " + fault.toUtf8(), {}};
        return parts[1];
    }

    QTemporaryDir folder;
};

QTEST_GUILESS_MAIN(TestHttpUpload)
#include "tst_httpupload.moc"
