// SPDX-License-Identifier: MIT
// Transfers between the client and the local platform over a line that fails.
#include "PlatformUnderTest.h"
#include "cloud/CloudFileManger.h"
#include "net/CloudTransferJob.h"
#include "net/Runners.h"
#include "support/Line.h"

#include <QDir>

namespace {

const QByteArray content = pattern(2 << 20);
const QByteArray old = "the old file";

} // namespace

class TestLineFaults : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(QDir::setCurrent(folder.path()));
        write("in.dgn", content);
        write("changed.dgn", content.toBase64());
        platform = std::make_unique<PlatformUnderTest>();
        line = std::make_unique<Line>(std::uint16_t(platform->port()), LineSettings());
        const Client alice = platform->signedIn("alice");
        const QByteArray project = addProject(alice, "Bridge", "Soft");
        client = std::make_unique<CloudFileManger>(QStringLiteral("http://127.0.0.1:%1").arg(line->port()),
            QString(alice.authorization()).section(' ', 1), "", "Soft", QStringList(), "", "P", QString());
        client->setProjectID(project);
        QVERIFY(client->BackupCloudProFile("in.dgn"));
    }

    void cleanup() { line->set({}); }

    void aCutUploadLeavesTheOldBackup()
    {
        for (int tenth = 1; tenth < 10; ++tenth) {
            LineSettings cut;
            cut.cutAfter = content.size() * tenth / 10;
            line->set(cut);
            const int before = line->connections();
            QVERIFY(!client->BackupCloudProFile("changed.dgn"));
            QCOMPARE(client->getLastFailure(), CloudFailure::Unusable);
            QCOMPARE(line->connections(), before + 1);
            line->set({});
            QVERIFY(client->DownloadCloudProFile(client->getProjectId(), "out.dgn"));
            QVERIFY2(read("out.dgn") == content, qPrintable(QString::number(tenth)));
        }
    }

    void aCutDownloadLeavesTheOldFileOrGoesOn()
    {
        for (int tenth = 1; tenth < 10; ++tenth) {
            LineSettings cut; // every connection, the ones for the rest too
            cut.cutAfter = content.size() * tenth / 10;
            line->set(cut);
            write("out.dgn", old);
            client->setTransferOptions({});
            QVERIFY(!client->DownloadCloudProFile(client->getProjectId(), "out.dgn"));
            QVERIFY(read("out.dgn") == old);

            client->setTransferOptions(patience(60000));
            QVERIFY(client->DownloadCloudProFile(client->getProjectId(), "out.dgn"));
            QVERIFY2(read("out.dgn") == content, qPrintable(QString::number(tenth)));
            QCOMPARE(QDir().entryList({"out*"}, QDir::Files | QDir::Hidden), QStringList("out.dgn"));
        }
    }

    void aStalledTransferEndsByTheLimit()
    {
        LineSettings stall;
        stall.stallAfter = content.size() / 2;
        line->set(stall);
        write("out.dgn", old);
        client->setTransferOptions(patience(1000));
        QVERIFY(!client->DownloadCloudProFile(client->getProjectId(), "out.dgn"));
        QCOMPARE(client->getLastFailure(), CloudFailure::TimedOut);
        QVERIFY(read("out.dgn") == old);
        QVERIFY(!client->BackupCloudProFile("changed.dgn"));
        QCOMPARE(client->getLastFailure(), CloudFailure::TimedOut);
    }

    void aDownloadOutlivesTheRestartOfThePlatform()
    {
        LineSettings slow;
        slow.bitsPerSecond = 40e6;
        line->set(slow);
        client->setTransferOptions(patience(60000));
        const std::unique_ptr<CloudTransferJob> job(
            client->backupDownloadJob(client->getProjectId(), "out.dgn"));
        bool restarted = false;
        connect(job.get(), &CloudTransferJob::progressed, this, [&](const CloudTransferProgress& progress) {
            if (restarted || progress.bytesDone < content.size() / 10 || !job->isRunning())
                return;
            restarted = true;
            platform->kill();
            platform->restart();
            line->setServer(std::uint16_t(platform->port()));
        });
        QSignalSpy finished(job.get(), &CloudTransferJob::finished);
        job->start();
        QVERIFY(finished.wait(60000));
        QCOMPARE(job->failure(), CloudFailure::None);
        QVERIFY(read("out.dgn") == content);
        QVERIFY(restarted);
    }

private:
    static CloudTransferOptions patience(int limitMs)
    {
        CloudTransferOptions options;
        options.limit = CloudTransferOptions::Limit::LastByte;
        options.limitMs = limitMs;
        options.continueDownloads = true;
        return options;
    }

    QTemporaryDir folder;
    std::unique_ptr<PlatformUnderTest> platform;
    std::unique_ptr<Line> line;
    std::unique_ptr<CloudFileManger> client;
};

QTEST_GUILESS_MAIN(TestLineFaults)
#include "tst_linefaults.moc"
