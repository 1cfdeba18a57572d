// SPDX-License-Identifier: MIT
#include "cloud/CloudFileManger.h"
#include "convert/CadConversion.h"
#include "net/CloudTransferJob.h"
#include "net/Runners.h"
#include "support/TestConstants.h"

#include <QApplication>
#include <QDir>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

#include <memory>

Q_DECLARE_METATYPE(Behaviour)

namespace {

using Stage = CloudTransferProgress::Stage;

const QByteArray content = pattern(3 << 20);
const QByteArray old = "the old file";
constexpr int half = 1 << 20;
const QByteArray ok = "HTTP/1.1 200 OK\r\n";
const QByteArray offer = "Accept-Ranges: bytes\r\nETag: \"v1\"\r\n";

QByteArray lengthLine(qint64 bytes)
{
    return "Content-Length: " + QByteArray::number(bytes) + "\r\n";
}

QByteArray soap(const QByteArray& text)
{
    return "<r><ConDgn2DwgResult>" + text.toBase64() + "</ConDgn2DwgResult></r>";
}

/// One of the transfers, in both faces.
struct Transfer
{
    const char* name;
    QByteArray method;
    QByteArray target;
    QByteArray reply;
    std::function<CloudTransferJob*(const CloudFileManger&)> job;
    std::function<bool(CloudFileManger&)> operation;
    QString filePath; ///< the job's, afterwards
};

const QVector<Transfer> transfers{
    {"backup", "POST", "/project/cloudProjectBackup/upload", R"({"code":0})",
        [](const CloudFileManger& c) { return c.backupJob("in.dgn"); },
        [](CloudFileManger& c) { return c.BackupCloudProFile("in.dgn"); }, "in.dgn"},
    {"share upload", "POST", "/project/cloudProjectShare/upload", R"({"code":0,"data":{"logicalId":42}})",
        [](const CloudFileManger& c) { return c.shareUploadJob("f", "1", "in.dgn"); },
        [](CloudFileManger& c) {
            int id = 0;
            return c.UploadCloudShareFile2("f", "1", "in.dgn", id) && id == 42;
        },
        "in.dgn"},
    {"backup download", "GET", "/project/cloudProjectBackup/downloadProject?projectId=9", content,
        [](const CloudFileManger& c) { return c.backupDownloadJob("9", "out.dwg"); },
        [](CloudFileManger& c) { return c.DownloadCloudProFile("9", "out.dwg"); }, "out.dwg"},
    {"share download", "GET", "/project/cloudProjectShare/download?logicalId=8", content,
        [](const CloudFileManger& c) { return c.shareDownloadJob("8", "out.dwg"); },
        [](CloudFileManger& c) { return c.DownloadCloudShareFile("8", "out.dwg"); }, "out.dwg"},
    {"conversion", "POST", "/NrvConRnx.asmx", soap(content),
        [](const CloudFileManger& c) { return dgn2DwgJob("in.dgn", "./x", c.getTransferOptions()); },
        [](CloudFileManger& c) {
            QString path = "in.dgn", error;
            return dgn2Dwg(path, error, "./x", c.getTransferOptions());
        },
        "in.dwg"},
};

/// Runs \a job to its end.
bool finishes(CloudTransferJob& job)
{
    bool done = false;
    QEventLoop loop;
    QObject::connect(&job, &CloudTransferJob::finished, &loop, [&](bool good) {
        done = good;
        loop.quit();
    });
    job.start();
    loop.exec();
    return done;
}

/// What is comparable of a request: all but the boundary.
QByteArray comparable(const RecordedRequest& request)
{
    const QByteArray type = request.header("Content-Type");
    const QByteArray boundary = type.mid(type.indexOf("boundary=") + 9);
    QByteArray raw = request.raw;
    return type.contains("boundary=") ? raw.replace(boundary, "boundary") : raw;
}

} // namespace

class TestTransfers : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        folder = std::make_unique<QTemporaryDir>();
        QVERIFY(QDir::setCurrent(folder->path()));
        write("in.dgn", content);
        peer = std::make_unique<ScriptedPeer>();
        setPlatformAddress(peer->address());
        client = std::make_unique<CloudFileManger>(
            peer->address(), "token", "", "Soft", QStringList(), "", "P", QString());
        client->setProjectID("7");
    }

    void jobsDoWhatTheirOperationsDo()
    {
        for (const Transfer& transfer : transfers) {
            peer->expect(transfer.method, transfer.target, behaviour::answer(transfer.reply));
            peer->expect(transfer.method, transfer.target, behaviour::answer(transfer.reply));
            QVERIFY2(transfer.operation(*client), transfer.name);
            const std::unique_ptr<CloudTransferJob> job(transfer.job(*client));
            QVERIFY2(finishes(*job) && !job->isRunning(), transfer.name);
            QCOMPARE(job->failure(), CloudFailure::None);
            QCOMPARE(QFileInfo(job->filePath()), QFileInfo(transfer.filePath));
            QCOMPARE(job->logicalId(), QByteArray(transfer.name) == "share upload" ? 42 : 0);
            QVERIFY2(read(transfer.filePath) == content, transfer.name);
            const QVector<RecordedRequest> requests = peer->requests();
            QVERIFY2(comparable(requests[requests.size() - 1]) == comparable(requests[requests.size() - 2]),
                transfer.name);
            job->start(); // nothing more
        }
    }

    void jobsEndInWhatTheirOperationsEndIn()
    {
        const std::tuple<Behaviour, CloudFailure, QString> rows[]{
            {behaviour::answer(R"({"code":401,"msg":"m"})"), CloudFailure::SignedOut,
                QStringLiteral("网络错误:401(m)")},
            {behaviour::closeAfter(), CloudFailure::Unusable, QStringLiteral("返回值解析失败")},
        };
        for (const auto& [behave, failure, error] : rows) {
            peer->expect(transfers[0].method, transfers[0].target, behave);
            const std::unique_ptr<CloudTransferJob> job(transfers[0].job(*client));
            QVERIFY(!finishes(*job));
            QCOMPARE(job->failure(), failure);
            QCOMPARE(job->errorText(), error);
            QVERIFY(client->getLastError().isEmpty());
        }
        client->setProjectID(QString());
        const std::unique_ptr<CloudTransferJob> job(transfers[0].job(*client));
        QVERIFY(!finishes(*job));
        QCOMPARE(job->failure(), CloudFailure::NoProject);
    }

    /// Each byte comes well within the limit, and all of them far beyond it.
    void theLimitCountsFromTheLastByte()
    {
        CloudTransferOptions options;
        options.limitMs = 4000;
        const Behaviour slow = [](PeerConnection& c) {
            bool there = c.readHead() && c.readBody() && c.send(ok + lengthLine(50));
            there = there && c.send("\r\n");
            for (int i = 0; i < 50 && there; ++i)
                there = c.pause(100) && c.send("x");
            c.waitForClient();
        };
        for (const auto limit :
            {CloudTransferOptions::Limit::LastByte, CloudTransferOptions::Limit::WholeExchange}) {
            options.limit = limit;
            client->setTransferOptions(options);
            const CloudFileManger copy(*client);
            peer->expect("GET", transfers[2].target, slow);
            const std::unique_ptr<CloudTransferJob> job(transfers[2].job(copy));
            const bool ofLastByte = limit == CloudTransferOptions::Limit::LastByte;
            QCOMPARE(finishes(*job), ofLastByte);
            QCOMPARE(job->failure(), ofLastByte ? CloudFailure::None : CloudFailure::TimedOut);
        }
        options.limit = CloudTransferOptions::Limit::LastByte;
        options.limitMs = 250;
        client->setTransferOptions(options);
        write("out.dwg", old);
        peer->expect("GET", transfers[2].target, behaviour::answerRaw(ok + lengthLine(50) + "\r\nhalf"));
        QVERIFY(!transfers[2].operation(*client));
        QCOMPARE(client->getLastFailure(), CloudFailure::TimedOut);
        QCOMPARE(read("out.dwg"), old);
    }

    void progressIsToldAndEndsTheTransfer_data()
    {
        QTest::addColumn<int>("which");
        QTest::addColumn<bool>("asJob");
        for (int i = 0; i < transfers.size(); ++i)
            for (const bool asJob : {false, true})
                QTest::addRow("%s, %s", transfers[i].name, asJob ? "job" : "operation") << i << asJob;
    }

    void progressIsToldAndEndsTheTransfer()
    {
        QFETCH(const int, which);
        QFETCH(const bool, asJob);
        const Transfer& transfer = transfers[which];
        const bool sends = transfer.method == "POST";
        CloudTransferProgress last;
        CloudTransferOptions options;
        options.limitMs = 100000;
        options.progress = [&](const CloudTransferProgress& progress) {
            last = progress;
            return progress.stage != (sends ? Stage::Waiting : Stage::Receiving);
        };
        client->setTransferOptions(options);
        write("out.dwg", old);
        peer->expect(transfer.method, transfer.target,
            sends ? behaviour::silent() : behaviour::answerRaw(ok + lengthLine(9 << 20) + "\r\n" + content));
        if (asJob) {
            const std::unique_ptr<CloudTransferJob> job(transfer.job(*client));
            int signalled = 0;
            QObject::connect(job.get(), &CloudTransferJob::progressed, [&] { ++signalled; });
            QVERIFY(!finishes(*job));
            QCOMPARE(job->failure(), CloudFailure::Cancelled);
            QVERIFY(job->errorText().isEmpty() && signalled > 0);
        } else {
            QVERIFY(!transfer.operation(*client));
            QCOMPARE(QByteArray(transfer.name) == "conversion" ? lastConversionFailure()
                                                               : client->getLastFailure(),
                CloudFailure::Cancelled);
            QVERIFY(client->getLastError().isEmpty());
        }
        QCOMPARE(QFileInfo(last.filePath).fileName(), QString(sends ? "in.dgn" : "out.dwg"));
        QVERIFY(sends ? last.bytesDone == last.bytesTotal && last.bytesTotal > content.size()
                      : last.bytesDone == content.size() && last.bytesTotal == 9 << 20);
        QCOMPARE(QDir().entryList(QDir::Files), QStringList({"in.dgn", "out.dwg"}));
        QCOMPARE(read("out.dwg"), old);
    }

    void aJobCanBeDestroyedInItsSlots()
    {
        for (const bool atEnd : {false, true}) {
            peer->expect("GET", transfers[2].target,
                atEnd ? behaviour::answer("x") : behaviour::answerRaw(ok + lengthLine(9) + "\r\nx"));
            auto* job = transfers[2].job(*client);
            QEventLoop loop;
            connect(job, &QObject::destroyed, &loop, &QEventLoop::quit);
            if (atEnd)
                connect(job, &CloudTransferJob::finished, [job] { delete job; });
            else
                connect(job, &CloudTransferJob::progressed, [job] { delete job; });
            job->start();
            loop.exec();
        }
    }

    void manyRunAtOnceInAnyThread()
    {
        constexpr int count = 8;
        for (int i = 0; i < count; ++i)
            peer->expect("GET", transfers[2].target, behaviour::answer(content));
        std::atomic<int> good{0};
        QThread thread;
        thread.start();
        int left = count;
        QEventLoop loop;
        for (int i = 0; i < count; ++i) {
            const CloudFileManger own(*client);
            auto* job = own.backupDownloadJob("9", QString::number(i));
            if (i % 2)
                job->moveToThread(&thread);
            connect(job, &CloudTransferJob::finished, job, [&good, job](bool done) {
                good += done;
                job->deleteLater();
            });
            connect(job, &QObject::destroyed, &loop, [&] {
                if (--left == 0)
                    loop.quit();
            });
            QMetaObject::invokeMethod(job, &CloudTransferJob::start, Qt::QueuedConnection);
        }
        loop.exec();
        thread.quit();
        thread.wait();
        QCOMPARE(int(good), count);
        for (int i = 0; i < count; ++i)
            QVERIFY(read(QString::number(i)) == content);
    }

    void aLostDownloadGoesOn_data()
    {
        QTest::addColumn<QByteArray>("first");
        QTest::addColumn<Behaviour>("second");
        QTest::addColumn<QByteArray>("result"); ///< empty: it fails
        const QByteArray begun = ok + offer + lengthLine(content.size()) + "\r\n" + content.left(half);
        // How much of what was sent has come is the client's to say.
        const auto part = [](const QByteArray& tag, int shift = 0, bool named = true) {
            return [=](PeerConnection& c) {
                if (!c.readHead())
                    return;
                const int from = c.request.header("Range").mid(6).chopped(1).toInt() + shift;
                const QByteArray range = QByteArray::number(from) + '-'
                    + QByteArray::number(content.size() - 1) + '/' + QByteArray::number(content.size());
                c.send(behaviour::response(content.mid(from), 206,
                    "ETag: " + tag + (named ? "\r\nContent-Range: bytes " + range : QByteArray()) + "\r\n"));
            };
        };
        const QByteArray other = "another drawing";
        const QByteArray fails;
        QTest::newRow("rest") << begun << Behaviour(part("\"v1\"")) << content;
        QTest::newRow("changed meanwhile") << begun << behaviour::answer(other) << other;
        QTest::newRow("rest of another") << begun << Behaviour(part("\"v2\"")) << fails;
        QTest::newRow("another part") << begun << Behaviour(part("\"v1\"", 8)) << fails;
        QTest::newRow("rest without a range") << begun << Behaviour(part("\"v1\"", 0, false)) << fails;
        QTest::newRow("signed out") << begun << behaviour::answer("{}", 401) << fails;
        for (const QByteArray& missing : {QByteArray("Accept-Ranges: bytes"), QByteArray("\"v1\"")}) {
            QByteArray without = begun;
            QTest::newRow("without " + missing)
                << without.replace(missing, missing[0] == '"' ? "W/\"v1\"" : "X: y") << Behaviour() << fails;
        }
    }

    void aLostDownloadGoesOn()
    {
        QFETCH(const QByteArray, first);
        QFETCH(const Behaviour, second);
        QFETCH(const QByteArray, result);
        CloudTransferOptions options;
        options.limitMs = 100000;
        options.continueDownloads = true;
        client->setTransferOptions(options);
        write("out.dwg", old);
        const Transfer& download = transfers[2];
        peer->expect("GET", download.target, behaviour::closeAfter(first));
        if (second) { // and does not answer at once
            peer->expect("GET", download.target, behaviour::answer("later", 503));
            peer->expect("GET", download.target, second);
        }
        QCOMPARE(download.operation(*client), !result.isEmpty());
        QVERIFY(read("out.dwg") == (result.isEmpty() ? old : result));
        QCOMPARE(QDir().entryList(QDir::Files | QDir::Hidden), QStringList({"in.dgn", "out.dwg"}));
        for (const RecordedRequest& request : peer->requests().mid(1)) {
            QVERIFY(request.header("Range").startsWith("bytes="));
            QCOMPARE(request.header("If-Range"), QByteArray("\"v1\""));
            QCOMPARE(request.header("Authorization"), QByteArray("Bearer token"));
        }
    }

    void cleanup()
    {
        client.reset();
        peer.reset();
        QDir::setCurrent(QDir::rootPath());
    }

private:
    std::unique_ptr<QTemporaryDir> folder;
    std::unique_ptr<ScriptedPeer> peer;
    std::unique_ptr<CloudFileManger> client;
};

QTEST_MAIN(TestTransfers)
#include "tst_transfers.moc"
