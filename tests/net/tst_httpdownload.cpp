// SPDX-License-Identifier: MIT
#include "Runners.h"
#include "net/ReplyEnvelope.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>

using namespace tav;

namespace {
const QByteArray old = "the old file";
constexpr double shortly = 250;
} // namespace

class TestHttpDownload : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        folder = std::make_unique<QTemporaryDir>();
        target = folder->filePath(QStringLiteral("备份.dwg"));
    }

    void writesTheBody()
    {
        const QByteArray large = pattern(9 << 20);
        const QByteArray hash = QCryptographicHash::hash(large, QCryptographicHash::Sha256).toBase64();
        QByteArray chunked = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n";
        for (int at = 0; at < large.size(); at += 1 << 20)
            chunked += "100000\r\n" + large.mid(at, 1 << 20) + "\r\n";
        const std::pair<QByteArray, QByteArray> replies[]{
            {behaviour::response("x"), "x"},
            {"HTTP/1.0 200 OK\r\n\r\n" + large, large}, // until the end of the connection
            {behaviour::response(large, 200, "Content-Digest: md5=:x:, sha-256=:" + hash + ":\r\n"), large},
            {behaviour::response(large, 200, "Digest: SHA-256=" + hash + "\r\n"), large},
            {chunked + "0\r\n\r\n", large},
        };
        for (const QByteArray& before : {QByteArray(), QByteArray(20 << 20, 'o')})
            for (const auto& [reply, body] : replies) {
                QFile::remove(target);
                if (!before.isEmpty())
                    write(target, before);
                ScriptedPeer peer;
                peer.expect("GET", "/d?projectId=1", behaviour::closeAfter(reply));
                const CallResult call = resultOf(downloading(target), peer.address() + "/d?projectId=1");
                QVERIFY2(call.ok, reply.left(100));
                QVERIFY2(read(target) == body, reply.left(100));
                QCOMPARE(call.reply, CallResult().reply);
                QCOMPARE(call.error, CallResult().error);
                QCOMPARE(files(), QStringList(QStringLiteral("备份.dwg")));
            }
    }

    void keepsTheOldFile()
    {
        const QByteArray ok = "HTTP/1.1 200 OK\r\n";
        const QByteArray half = ok + "Content-Length: 5000000\r\n\r\n" + pattern(2500000);
        const QByteArray chunks = "Transfer-Encoding: chunked";
        const auto promise = [&](const QByteArray& headers, const QByteArray& body = "sixty") {
            return behaviour::closeAfter(ok + headers + "\r\n\r\n" + body);
        };
        QVector<Behaviour> replies{behaviour::answerRaw(half), behaviour::closeAfter(half),
            promise("Content-Length: 5x"), promise("Content-Length: 5\r\nContent-Length: 6"),
            promise("Content-Length: 5\r\nContent-Length: 5"), promise("Transfer-Encoding: gzip"),
            promise("Content-Encoding: gzip"),
            promise("Transfer-Encoding: gzip, chunked", "5\r\nsixty\r\n0\r\n\r\n"),
            promise("Content-Digest: md5=:x:, sha-256=:AAAA:"), promise("Digest: SHA-256="),
            // Qt takes an invalid chunk size for the end: only the digest shows that something is missing.
            promise(chunks + "\r\nContent-Digest: sha-256=:AAAA:", "5\r\nsixty\r\nxyz\r\n"),
            behaviour::answer(""), behaviour::answer("moved", 302, "Location: /\r\n"),
            behaviour::answer("x", 206), behaviour::answer(R"({"code":1})", 404)};
        for (const QByteArray cut : {"3e", "0\r\n", "3e8\r\nx", "", "<html>"})
            replies.append(promise(chunks, "5\r\nsixty\r\n" + cut));
        for (int i = 0; i < replies.size(); ++i) {
            for (const bool existing : {true, false}) {
                if (existing)
                    write(target, old);
                const CallResult call = resultOf(downloading(target), replies[i], i == 0 ? shortly : 100000);
                const QString text = i == 0 ? connectionTimedOut() : replyUnusable();
                QVERIFY2(call.failedWith(text), qPrintable(QString::number(i) + call.error));
                QCOMPARE(read(target), existing ? old : QByteArray());
                QCOMPARE(files().size(), existing ? 1 : 0);
                QFile::remove(target);
            }
        }
    }

    void aFileThatCannotBeWrittenLeavesNoErrorText()
    {
        const QString plain = folder->filePath("plain");
        write(plain, old);
        const QString pipe = folder->filePath("pipe");
        QVERIFY(::mkfifo(QFile::encodeName(pipe), 0600) == 0);
        for (const QString& path :
            {folder->path(), plain + "/x.dwg", QString(), pipe, plain + QChar(QChar::Null) + "x"}) {
            const CallResult call = resultOf(downloading(path), behaviour::answer("body"));
            QVERIFY(call.failedWith(CallResult().error));
            QCOMPARE(files(), QStringList({"pipe", "plain"}));
            QVERIFY(!QFileInfo(pipe).isFile()); // it was not renamed over
            QCOMPARE(read(plain), old);
        }
    }

    void aFullDiskKeepsTheOldFile()
    {
        write(target, old);
        std::signal(SIGXFSZ, SIG_IGN);
        rlimit before{};
        ::getrlimit(RLIMIT_FSIZE, &before);
        const rlimit full{64 << 10, before.rlim_max}; // beyond it, writing fails as on a full disk
        for (const int size : {6 << 20, (64 << 10) + 1}) { // fails while writing, or at the last byte
            ::setrlimit(RLIMIT_FSIZE, &full);
            const CallResult call = resultOf(downloading(target), behaviour::answer(pattern(size)));
            ::setrlimit(RLIMIT_FSIZE, &before);
            QVERIFY2(call.failedWith(CallResult().error), qPrintable(call.error));
            QCOMPARE(read(target), old);
            QCOMPARE(files().size(), 1);
        }
    }

    void writesThroughALink()
    {
        const QString real = folder->filePath("real.dwg");
        write(real, old);
        QVERIFY(QFile::link(real, target));
        download("new");
        QVERIFY(QFileInfo(target).isSymLink());
        QCOMPARE(read(real), QByteArray("new"));
        QCOMPARE(files().size(), 2);
    }

    void keepsThePermissions()
    {
        const auto groupMayRead = [this] { return QFile::permissions(target).testFlag(QFile::ReadGroup); };
        const mode_t mask = ::umask(0027);
        download("new");
        ::umask(mask);
        QVERIFY(groupMayRead()); // a new file's are the process's default
        QVERIFY(!QFile::permissions(target).testFlag(QFile::ReadOther));
        QVERIFY(QFile::setPermissions(target, QFile::ReadOwner | QFile::WriteOwner));
        download("newer");
        QVERIFY(!groupMayRead());
    }

private:
    void download(const QByteArray& body)
    {
        QVERIFY(resultOf(downloading(target), behaviour::answer(body)).ok);
        QCOMPARE(read(target), body);
    }

    /// Everything in the folder, temporary files that were left behind included.
    QStringList files() const
    {
        return QDir(folder->path())
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    }

    std::unique_ptr<QTemporaryDir> folder;
    QString target;
};

QTEST_GUILESS_MAIN(TestHttpDownload)
#include "tst_httpdownload.moc"
