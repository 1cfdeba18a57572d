// SPDX-License-Identifier: MIT
#include "Runners.h"
#include "net/ReplyEnvelope.h"
#include "support/MultipartForm.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

using namespace tav;

namespace {
/// More than the buffers of a loopback connection hold.
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
            QCOMPARE(sentFile(peer).head, fileHead("drawing.dwg"));
            QVERIFY2(sentFile(peer).body == content, QByteArray::number(length));
        }
    }

    void sendsTheBytesOfTheFileOrFails()
    {
        const std::pair<std::function<void()>, bool> changes[]{
            {[this] { QFile::resize(path(), 1 << 20); }, false},
            {[this] { QFile::resize(path(), size + 100000); }, true},
            {[this] {
                 write(path() + ".new", pattern(size / 2, 'b'));
                 ::rename(QFile::encodeName(path() + ".new"), QFile::encodeName(path()));
             },
                true},
            {[this] {
                 QFile open(path()); // rewritten in place
                 if (open.open(QIODevice::ReadWrite))
                     open.write(pattern(size, 'b'));
             },
                true},
        };
        const QByteArray one = pattern(size, 'a');
        const QByteArray other = pattern(size, 'b');
        for (const auto& [change, good] : changes) {
            write(path(), one);
            ScriptedPeer peer;
            peer.expect("POST", "/up", [change = change](PeerConnection& c) {
                c.readHead();
                c.readBody(1000);
                c.pause(150); // until the connection's buffers are full
                change();
                if (c.readBody())
                    c.send(behaviour::response("{}"));
            });
            const CallResult call = upload(peer);
            QVERIFY2(good ? call.ok : call.failedWith(replyUnusable()), qPrintable(call.error));

            const RecordedRequest request = peer.onlyRequest();
            QCOMPARE(sentFile(peer).body.size(), good ? size : 0);
            const int begin = request.body.indexOf("\r\n\r\n", request.body.indexOf("name=\"file\"")) + 4;
            const QByteArray sent = request.body.mid(begin, size);
            for (int at = 0; at < sent.size(); ++at)
                if (sent[at] != one[at] && sent[at] != other[at])
                    QFAIL("byte " + QByteArray::number(at) + " is not the file's");
        }
    }

    void aFileThatCannotBeReadIsSentEmpty()
    {
        QDir(folder.path()).mkdir("folder");
        ::mkfifo(QFile::encodeName(folder.filePath("pipe")), 0600); // reading it would block
        for (const char* name : {"missing.dwg", "folder", "pipe"}) {
            ScriptedPeer peer;
            peer.expect("POST", "/up", behaviour::answer("{}"));
            QVERIFY(upload(peer, name).ok);
            QCOMPARE(sentFile(peer).head, fileHead(name));
            QCOMPARE(sentFile(peer).body, QByteArray());
        }
    }

    void namesCannotInjectHeaders()
    {
        for (const QString name : {"a\"; filename=\"b", "a\r\nX-Injected: 1\r\n\r\nbody", "a\nb\\\"c\\",
                 "a\u2028b\u0085c\u010d\u010a"}) {
            write(folder.filePath(name), "content");
            ScriptedPeer peer;
            peer.expect("POST", "/up", behaviour::answer("{}"));
            const Runner runner = postingForm({{name, "v"}}, folder.filePath(name));
            QVERIFY(resultOf(runner, peer.address() + "/up").ok);
            QString fault;
            const QVector<FormPart> parts = parseForm(peer.onlyRequest(), fault);
            QVERIFY2(fault.isEmpty() && parts.size() == 2, qPrintable(fault));
            QCOMPARE(parts[0].body + parts[1].body, QByteArray("vcontent"));
            for (const FormPart& part : parts)
                QVERIFY2(!part.head.contains('\n') && !part.head.contains('\r'), part.head);
            QCOMPARE(parts[0].head.count('"'), 2);
            QCOMPARE(parts[1].head.count('"'), 4);
            QVERIFY2(parts[1].head.startsWith(fieldHead("file") + "; filename=\""), parts[1].head);
        }
    }

    void aPeerThatStopsReadingTimesOut()
    {
        write(path(), pattern(size, 'a'));
        ScriptedPeer peer;
        peer.expect("POST", "/up", [](PeerConnection& c) {
            if (c.readHead() && c.readBody(1000))
                c.waitForClient();
        });
        QVERIFY(upload(peer, "drawing.dwg", 300).failedWith(connectionTimedOut()));
    }

private:
    QString path() const { return folder.filePath("drawing.dwg"); }

    CallResult upload(
        ScriptedPeer& peer, const QString& name = "drawing.dwg", double timeoutMs = 100000) const
    {
        const Runner runner = postingForm({{"projectId", "1"}}, folder.filePath(name));
        return resultOf(runner, peer.address() + "/up", {}, timeoutMs);
    }

    static FormPart sentFile(ScriptedPeer& peer)
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
