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

Q_DECLARE_METATYPE(Behaviour)

namespace {
const QByteArray old = "the old file";
constexpr double shortly = 250;

QByteArray read(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// Makes writing beyond some size fail, as a full disk does, for as long as it lives.
class FullDisk
{
public:
    explicit FullDisk(rlim_t size)
        : handler(std::signal(SIGXFSZ, SIG_IGN))
    {
        ::getrlimit(RLIMIT_FSIZE, &before);
        const rlimit small{size, before.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &small);
    }
    ~FullDisk()
    {
        ::setrlimit(RLIMIT_FSIZE, &before);
        std::signal(SIGXFSZ, handler);
    }

private:
    void (*handler)(int);
    rlimit before{};
};
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

    void writesTheBody_data()
    {
        QTest::addColumn<QByteArray>("reply");
        QTest::addColumn<QByteArray>("body");

        const QByteArray large = pattern(9 << 20);
        QTest::newRow("small") << behaviour::response("x") << QByteArray("x");
        QTest::newRow("large") << behaviour::response(large) << large;
        QTest::newRow("until the end of the connection")
            << QByteArray("HTTP/1.0 200 OK\r\n\r\n") + large << large;
        const QByteArray hash = QCryptographicHash::hash(large, QCryptographicHash::Sha256).toBase64();
        QTest::newRow("with its digest")
            << behaviour::response(large, 200, "Content-Digest: md5=:x:, sha-256=:" + hash + ":\r\n")
            << large;
        QTest::newRow("with an older digest")
            << behaviour::response(large, 200, "Digest: SHA-256=" + hash + "\r\n") << large;
        QByteArray chunked = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n";
        for (int at = 0; at < large.size(); at += 1 << 20)
            chunked += "100000\r\n" + large.mid(at, 1 << 20) + "\r\n";
        QTest::newRow("chunked") << chunked + "0\r\n\r\n" << large;
    }

    void writesTheBody()
    {
        QFETCH(QByteArray, reply);
        for (const bool replacing : {false, true}) {
            ScriptedPeer peer;
            peer.expect("GET", "/d?projectId=1", behaviour::closeAfter(reply));
            if (replacing)
                write(target, QByteArray(20 << 20, 'o'));
            ResultMap unused{{"earlier", true}};
            QString error = "earlier";
            QVERIFY(httpGetToFile(unused, error, peer.address() + "/d?projectId=1", target, {}, 100000));
            QTEST(read(target), "body");
            QCOMPARE(unused, ResultMap({{"earlier", true}}));
            QCOMPARE(error, QString("earlier"));
            QCOMPARE(files(), QStringList(QStringLiteral("备份.dwg")));
        }
    }

    void keepsTheOldFile_data()
    {
        QTest::addColumn<Behaviour>("behave");
        QTest::addColumn<QString>("error");

        const QByteArray head = "HTTP/1.1 200 OK\r\nContent-Length: 5000000\r\n\r\n";
        const QByteArray half = pattern(2500000);
        QTest::newRow("silent in the body") << behaviour::answerRaw(head + half) << connectionTimedOut();
        QTest::newRow("cut body") << behaviour::closeAfter(head + half) << replyUnusable();
        const auto promise = [&](const QByteArray& headers) {
            return behaviour::closeAfter("HTTP/1.1 200 OK\r\n" + headers + "\r\n\r\nsixty");
        };
        QTest::newRow("a length that is no number") << promise("Content-Length: 5x") << replyUnusable();
        QTest::newRow("two lengths") << promise("Content-Length: 5\r\nContent-Length: 6") << replyUnusable();
        QTest::newRow("one length twice")
            << promise("Content-Length: 5\r\nContent-Length: 5") << replyUnusable();
        QTest::newRow("packed to travel") << promise("Transfer-Encoding: gzip") << replyUnusable();
        QTest::newRow("packed chunks") << behaviour::closeAfter(
            "HTTP/1.1 200 OK\r\nTransfer-Encoding: gzip, chunked\r\n\r\n"
            "5\r\nsixty\r\n0\r\n\r\n") << replyUnusable();
        QTest::newRow("a digest of something else")
            << promise("Content-Digest: sha-256=:AAAA:") << replyUnusable();
        // Qt takes a size that is none for the last: only the digest tells.
        const QByteArray chunks = "Transfer-Encoding: chunked\r\n";
        QTest::newRow("a size that is none, and a digest") << behaviour::closeAfter(
            "HTTP/1.1 200 OK\r\n" + chunks + "Content-Digest: sha-256=:AAAA:\r\n\r\n5\r\nsixty\r\nxyz\r\n")
                                                           << replyUnusable();
        for (const QByteArray cut : {"5\r\nsixty\r\n3e", "5\r\nsixty\r\n0\r\n", "5\r\nsixty\r\n3e8\r\nx",
                 "5\r\nsixty\r\n", "5\r\nsixty\r\n<html>"})
            QTest::newRow("cut chunks: " + cut.toPercentEncoding())
                << behaviour::closeAfter("HTTP/1.1 200 OK\r\n" + chunks + "\r\n" + cut) << replyUnusable();
        QTest::newRow("empty body") << behaviour::answer("") << replyUnusable();
        QTest::newRow("redirect") << behaviour::redirect("http://127.0.0.1:1/", "moved") << replyUnusable();
        QTest::newRow("a part of it") << behaviour::answer("x", 206) << replyUnusable();
        QTest::newRow("404") << behaviour::answer(R"({"code":1})", 404) << replyUnusable();
    }

    void keepsTheOldFile()
    {
        QFETCH(Behaviour, behave);
        QFETCH(QString, error);
        for (const bool existing : {true, false}) {
            ScriptedPeer peer;
            peer.expect("GET", "/", behave);
            if (existing)
                write(target, old);
            const Outcome outcome = outcomeOf(downloading(target), peer.address() + "/", {},
                error == connectionTimedOut() ? shortly : 100000);
            QVERIFY2(outcome.failedWith(error), qPrintable(outcome.error));
            QCOMPARE(read(target), existing ? old : QByteArray());
            QCOMPARE(files().size(), existing ? 1 : 0);
            QFile::remove(target);
        }
    }

    void saysNothingOfAFileThatCannotBeWritten()
    {
        const QString plain = folder->filePath("plain");
        write(plain, old);
        const QString pipe = folder->filePath("pipe");
        QVERIFY(::mkfifo(QFile::encodeName(pipe), 0600) == 0);
        for (const QString& path :
            {folder->path(), plain + "/x.dwg", QString(), pipe, plain + QChar(QChar::Null) + "x"}) {
            ScriptedPeer peer;
            peer.expect("GET", "/", behaviour::answer("body"));
            QVERIFY(outcomeOf(downloading(path), peer.address() + "/").failedWith(Outcome().error));
            QCOMPARE(files(), QStringList({"pipe", "plain"}));
            QVERIFY(!QFileInfo(pipe).isFile()); // it was not renamed over
            QCOMPARE(read(plain), old);
        }
    }

    void aFullDiskKeepsTheOldFile()
    {
        write(target, old);
        for (const int size : {6 << 20, (64 << 10) + 1}) { // found while writing, and at the last byte
            ScriptedPeer peer;
            peer.expect("GET", "/", behaviour::closeAfter(behaviour::response(pattern(size))));
            Outcome outcome;
            {
                const FullDisk disk(64 << 10);
                outcome = outcomeOf(downloading(target), peer.address() + "/");
            }
            QVERIFY2(outcome.failedWith(Outcome().error), qPrintable(outcome.error));
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
        const auto modeOfTarget = [this] {
            struct stat status
            {
            };
            return ::stat(QFile::encodeName(target), &status) == 0 ? int(status.st_mode & 07777) : -1;
        };
        const mode_t mask = ::umask(0027);
        download("new");
        ::umask(mask);
        QCOMPARE(modeOfTarget(), 0640); // a new file's are the user's choice
        QVERIFY(::chmod(QFile::encodeName(target), 0600) == 0);
        download("newer");
        QCOMPARE(modeOfTarget(), 0600);
    }

private:
    void download(const QByteArray& body)
    {
        ScriptedPeer peer;
        peer.expect("GET", "/", behaviour::answer(body));
        QVERIFY(outcomeOf(downloading(target), peer.address() + "/").ok);
        QCOMPARE(read(target), body);
    }

    /// Everything in the folder: a temporary file that was left behind would be seen.
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
