// SPDX-License-Identifier: MIT
#include "PlatformUnderTest.h"

#include <QTcpSocket>
#include <atomic>
#include <soci/soci.h>
#include <soci/sqlite3/soci-sqlite3.h>
#include <thread>

namespace {

const QByteArray uploadPath = "/project/cloudProjectBackup/upload";
const QByteArray filePart = "Content-Disposition: form-data; name=\"file\"; filename=\"a\"\r\n\r\n";
const QByteArray downloadPath = "/project/cloudProjectBackup/downloadProject?projectId=";
const QByteArray sharedPath = "/project/cloudProjectShare/download?logicalId=";

Answer backUp(const Client& client, const QByteArray& project, const QByteArray& content)
{
    return client.upload(uploadPath, {{"projectId", project}}, "survey.dat", content);
}

} // namespace

class TestProjects : public QObject
{
    Q_OBJECT

private slots:
    void listingIsByOwnerAndSoftware()
    {
        const Client alice = m_platform.signedIn("alice");
        const Client bob = m_platform.signedIn("bob");
        const QByteArray first = addProject(alice, "Vermessung \xc3\xbc", "List+Soft");
        const QByteArray second = addProject(alice, "\xe6\xb5\x8b\xe9\x87\x8f", "List+Soft");
        addProject(alice, "other", "OtherSoft");
        addProject(bob, "his", "List+Soft");

        const Answer answer = alice.get("/project/cloudProjectBackup/getProjectList?sourceClient=List+Soft");
        QCOMPARE(answer.count(), 2);
        QCOMPARE(idText(answer.item(0).value("id")), first);
        QCOMPARE(answer.item(0).value("projectTitle").toString(), QString::fromUtf8("Vermessung ü"));
        QCOMPARE(idText(answer.item(1).value("id")), second);
        QVERIFY(
            alice.get("/project/cloudProjectBackup/getProjectList?sourceClient=Nothing").data().isArray());
    }

    void refusedUploadsLeaveNothing()
    {
        const Client alice = m_platform.signedIn("alice");
        const QByteArray id = addProject(alice);
        QVERIFY(backUp(alice, id, "old").ok());
        const QStringList before = m_platform.storedFiles();

        const FormFields project = {{"projectId", id}};
        const QString malformed = "The request was cut short or is malformed";
        const QByteArray file = filePart + "x";
        const QByteArray two = file + "\r\n--boundary_of_tests\r\n" + file;
        const struct
        {
            int status;
            QString msg;
            QByteArray body;
            QByteArray type = multipartType();
        } uploads[]{
            {400, "The uploaded file is empty", multipart(project, filePart)},
            {400, "An upload holds one file", multipart(project, two)},
            {400, "The field projectId is missing", multipart({}, file)},
            {404, "所选项目不存在", multipart({{"projectId", "1;drop table users"}}, file)},
            {413, "The file is too large; at most 20000000 bytes are taken",
                multipart(project, file + QByteArray(20000000, 'x'))},
            {413, "The request is too large; at most 90527064 bytes are taken",
                multipart(project, file + QByteArray(110000000, 'x'))},
            {400, malformed, multipart(project, file).chopped(6)},
            {400, malformed, multipart(project, file), "multipart/form-data"},
        };
        for (const auto& [status, msg, body, type] : uploads) {
            const Answer answer = alice.post(uploadPath, body, type);
            QCOMPARE(answer.msg(), msg);
            QCOMPARE(answer.status, status);
            QVERIFY(answer.code() != 0);
            QCOMPARE(m_platform.storedFiles(), before);
        }
        QCOMPARE(alice.get(downloadPath + id).body, QByteArray("old"));
    }

    void cutUploadKeepsTheOldBackup()
    {
        const Client alice = m_platform.signedIn("alice");
        const QByteArray project = addProject(alice);
        QVERIFY(backUp(alice, project, "old").ok());
        const QStringList before = m_platform.storedFiles();

        const QByteArray body = multipart({{"projectId", project}}, filePart + QByteArray(500000, 'n'));
        const QByteArray size = QByteArray::number(body.size(), 16);
        for (const QByteArray& start : {"Content-Length: " + QByteArray::number(body.size()) + "\r\n\r\n",
                 "Transfer-Encoding: chunked\r\n\r\n" + size + "\r\n"}) {
            QTcpSocket socket;
            socket.connectToHost("127.0.0.1", static_cast<quint16>(m_platform.port()));
            QVERIFY(socket.waitForConnected());
            socket.write("POST " + uploadPath + " HTTP/1.1\r\nHost: x\r\nAuthorization: "
                + alice.authorization() + "\r\nContent-Type: " + multipartType() + "\r\n" + start);
            socket.write(body.left(400000));
            while (socket.bytesToWrite() > 0)
                QVERIFY(socket.waitForBytesWritten());
            QTRY_VERIFY2(m_platform.storedFiles().size() > before.size(), "the upload is on its way");
            socket.abort();
            QTRY_COMPARE(m_platform.storedFiles(), before);
            QCOMPARE(alice.get(downloadPath + project).body, QByteArray("old"));
        }
    }

    void replacement()
    {
        const Client alice = m_platform.signedIn("alice");
        const QByteArray project = addProject(alice);
        const Answer missing = alice.get(downloadPath + project);
        QCOMPARE(missing.status, 404);
        QCOMPARE(missing.msg(), QString("The project has no backup yet"));

        // Readers meet one backup or the other, never a mixture, while a writer replaces them.
        const QByteArray versions[] = {QByteArray(300000, 'a'), QByteArray(200000, 'b')};
        QVERIFY(backUp(alice, project, versions[0]).ok());
        const int files = m_platform.storedFiles().size();
        bool written = true;
        std::thread writer([&] {
            for (int i = 1; i <= 20; ++i)
                written = backUp(alice, project, versions[i % 2]).ok() && written;
        });
        bool whole = true;
        for (int i = 0; i < 40; ++i) {
            const QByteArray body = alice.get(downloadPath + project).body;
            whole = (body == versions[0] || body == versions[1]) && whole;
        }
        writer.join();
        QVERIFY(written);
        QVERIFY(whole);
        QCOMPARE(m_platform.storedFiles().size(), files);
    }

    void downloadsCarryTheDigestOfWhatWasStored()
    {
        PlatformUnderTest platform;
        QByteArray project;
        QByteArray shared;
        const auto overwrite = [&](const QByteArray& content) {
            for (const QString& name : platform.storedFiles()) {
                QFile file(platform.data() + "/files/" + name);
                QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
            }
        };
        const auto check = [&](const QByteArray& body, const QByteArray& digested) {
            const QByteArray sha256 =
                QCryptographicHash::hash(digested, QCryptographicHash::Sha256).toBase64();
            const Client alice = platform.signedIn("alice");
            for (const QByteArray& path : {downloadPath + project, sharedPath + shared}) {
                const Answer whole = alice.get(path);
                QVERIFY2(whole.body == body, path);
                QCOMPARE(whole.contentDigest, "sha-256=:" + sha256 + ":");
                QCOMPARE(whole.digest, "sha-256=" + sha256);
                const Answer part = alice.get(path, {{"Range", "bytes=1-2"}});
                QCOMPARE(part.body, body.mid(1, 2));
                QCOMPARE(part.contentDigest, QByteArray());
                QCOMPARE(part.digest, "sha-256=" + sha256);
            }
        };

        const QByteArray first = "first" + QByteArray(3000000, 'x');
        const QByteArray second = "second" + QByteArray(3000000, 'y');
        const Client alice = platform.signedIn("alice");
        project = addProject(alice);
        QVERIFY(backUp(alice, project, first).ok());
        shared = uploadSharedFile(alice, project, "x.dwg", first);
        check(first, first);
        overwrite("damaged");
        check("damaged", first);

        QCOMPARE(platform.stop(), 0);
        for (const char* table : {"backups", "shared_files"})
            soci::session(soci::sqlite3, "db=" + platform.data().toStdString() + "/platform.sqlite")
                << std::string("alter table ") + table + " drop column sha256";
        overwrite(second);
        platform.restart();
        check(second, second);
        overwrite("damaged");
        check("damaged", second);
    }

    void whatWasAcknowledgedOutlivesAKill()
    {
        PlatformUnderTest platform;
        for (int round = 0; round < 3; ++round) {
            const Client alice = platform.signedIn("alice");
            std::atomic<int> acknowledged{0};
            QVector<QByteArray> projects;
            std::thread uploading([&] {
                for (int i = 1; i <= 1000; ++i) {
                    const QByteArray project = addProject(alice, "kill");
                    if (!backUp(alice, project, project + QByteArray(200000, 'x')).ok())
                        return;
                    projects.append(project);
                    ++acknowledged;
                }
            });
            QTRY_VERIFY(acknowledged >= 5);
            platform.kill();
            uploading.join();

            platform.restart();
            const Client again = platform.signedIn("alice");
            for (const QByteArray& project : qAsConst(projects))
                QVERIFY(again.get(downloadPath + project).body == project + QByteArray(200000, 'x'));
            // Nothing half-done is left: each file belongs to a backup that can be downloaded.
            int downloadable = 0;
            const Answer list = again.get("/project/cloudProjectBackup/getProjectList?sourceClient=SoftA");
            for (const auto& item : list.data().toArray())
                downloadable +=
                    again.get(downloadPath + idText(item.toObject().value("id"))).status == 200 ? 1 : 0;
            QCOMPARE(platform.storedFiles().size(), downloadable);
        }
    }

    void softwareTables()
    {
        const Client alice = m_platform.signedIn("alice");
        const FormFields type = {{"sourceSoftwareNameEn", "SoftT"}, {"typeDescription", "D"},
            {"typeFlag", "7"}, {"typeSuffix", "dgn"}};
        const FormFields adaptation = {
            {"sourceClient", "SoftT"}, {"supportTypeId", "7"}, {"targetClient", "SoftU"}};
        for (const FormFields& saved : {type + FormFields{{"title", "first"}}, adaptation,
                 type + FormFields{{"title", "second"}}, adaptation})
            QVERIFY(alice.postForm("/project/softwareAdaptationType/saveOrUpdate", saved).ok());

        const Answer support = alice.get("/project/softwareSupportType/list");
        QCOMPARE(support.count(), 1);
        QCOMPARE(support.item(0).value("title").toString(), QString("second"));
        const Answer accepted =
            alice.get("/project//softwareAdaptationType/listSupportClient?sourceClient=SoftT");
        QCOMPARE(accepted.count(), 1);
        QCOMPARE(accepted.item(0).value("targetClient").toString(), QString("SoftU"));
    }

private:
    PlatformUnderTest m_platform{{"--max-file-size", "20000000"}};
};

QTEST_GUILESS_MAIN(TestProjects)
#include "TestProjects.moc"
