// SPDX-License-Identifier: MIT
#include "PlatformUnderTest.h"

#include <atomic>
#include <thread>

namespace {

const QByteArray uploadPath = "/project/cloudProjectBackup/upload";
const QByteArray filePart = "Content-Disposition: form-data; name=\"file\"; filename=\"a\"\r\n\r\n";
const QByteArray listPath = "cloudProjectBackup/getProjectList?sourceClient=";
const QByteArray downloadPath = "cloudProjectBackup/downloadProject?projectId=";
const QByteArray sharedPath = "cloudProjectShare/download?logicalId=";

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
        const QByteArray first = addProject(m_alice, "Vermessung ü", "List+Soft");
        const QByteArray second = addProject(m_alice, "测量", "List+Soft");
        addProject(m_alice, "other", "OtherSoft");
        addProject(m_platform.signedIn("bob"), "his", "List+Soft");

        const Answer list = m_alice.get(listPath + "List+Soft");
        QCOMPARE(list.items("id"), (QByteArrayList{first, second}));
        QCOMPARE(list.items("projectTitle"), (QByteArrayList{"Vermessung ü", "测量"}));
        QVERIFY(m_alice.get(listPath + "Nothing").json().value("data").isArray());
    }

    void refusedUploadsLeaveNothing()
    {
        const QByteArray id = addProject(m_alice);
        QCOMPARE(m_alice.get(downloadPath + id).status, 404);
        QCOMPARE(m_alice.get(downloadPath + id).msg(), QByteArray("The project has no backup yet"));
        QVERIFY(backUp(m_alice, id, "old").ok());
        const QStringList before = m_platform.storedFiles();

        const FormFields project = {{"projectId", id}};
        const QByteArray malformed = "The request was cut short or is malformed";
        const QByteArray file = filePart + "x";
        const QByteArray two = file + "\r\n--boundary_of_tests\r\n" + file;
        const struct
        {
            int status;
            QByteArray msg;
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
            const Answer answer = m_alice.post(uploadPath, body, type);
            QCOMPARE(answer.msg(), msg);
            QCOMPARE(answer.status, status);
            QVERIFY(answer.code() != 0);
            QCOMPARE(m_platform.storedFiles(), before);
        }

        // Nor do those whose client goes while they come in.
        const QByteArray body = multipart(project, filePart + QByteArray(500000, 'n'));
        const QByteArray chunk = QByteArray::number(body.size(), 16) + "\r\n";
        for (const QByteArray& start : {"Content-Length: " + QByteArray::number(body.size()) + "\r\n\r\n",
                 "Transfer-Encoding: chunked\r\n\r\n" + chunk}) {
            QTcpSocket socket;
            QVERIFY(m_platform.connectTo(socket));
            socket.write("POST " + uploadPath
                + " HTTP/1.1\r\nHost: x\r\nAuthorization: " + m_alice.authorization()
                + "\r\nContent-Type: " + multipartType() + "\r\n" + start + body.left(400000));
            while (socket.bytesToWrite() > 0)
                QVERIFY(socket.waitForBytesWritten());
            QTRY_VERIFY2(m_platform.storedFiles().size() > before.size(), "the upload is on its way");
            socket.abort();
            QTRY_COMPARE(m_platform.storedFiles(), before);
        }
        QCOMPARE(m_alice.get(downloadPath + id).body, QByteArray("old"));
    }

    void readersMeetOneBackupOrTheOther()
    {
        const QByteArray project = addProject(m_alice);
        const QByteArray versions[] = {QByteArray(300000, 'a'), QByteArray(200000, 'b')};
        QVERIFY(backUp(m_alice, project, versions[0]).ok());
        const int files = m_platform.storedFiles().size();
        bool written = true;
        std::thread writer([&] {
            for (int i = 1; i <= 20; ++i)
                written = backUp(m_alice, project, versions[i % 2]).ok() && written;
        });
        bool whole = true;
        for (int i = 0; i < 40; ++i) {
            const QByteArray body = m_alice.get(downloadPath + project).body;
            whole = (body == versions[0] || body == versions[1]) && whole;
        }
        writer.join();
        QVERIFY(written && whole);
        QCOMPARE(m_platform.storedFiles().size(), files);
    }

    void downloadsCarryTheDigestOfWhatWasStored()
    {
        PlatformUnderTest platform;
        const Client alice = platform.signedIn("alice");
        const QByteArray first = "first" + QByteArray(3000000, 'x');
        const QByteArray project = addProject(alice);
        QVERIFY(backUp(alice, project, first).ok());
        const QByteArray shared = uploadSharedFile(alice, project, "x.dwg", first);

        const auto overwrite = [&](const QByteArray& content) {
            for (const QString& name : platform.storedFiles()) {
                QFile file(platform.data() + "/files/" + name);
                QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
            }
        };
        const auto check = [&](const QByteArray& body, const QByteArray& digested) {
            const QByteArray sha256 =
                QCryptographicHash::hash(digested, QCryptographicHash::Sha256).toBase64();
            for (const QByteArray& path : {downloadPath + project, sharedPath + shared}) {
                const Client owner = platform.signedIn("alice");
                const Answer whole = owner.get(path);
                QVERIFY2(whole.body == body, path);
                QCOMPARE(whole.contentDigest, "sha-256=:" + sha256 + ":");
                QCOMPARE(whole.digest, "sha-256=" + sha256);
                const QByteArray size = QByteArray::number(body.size());
                const QByteArray end = QByteArray::number(body.size() - 1);
                const struct
                {
                    QByteArray range;
                    QByteArray ofFile; // If-Range
                    int status;
                    QByteArray part; // of the file
                    QByteArray told; // where it is
                } rows[]{
                    {"bytes=1-2", "", 206, body.mid(1, 2), "bytes 1-2/" + size},
                    {"bytes=1-2", '"' + sha256 + '"', 206, body.mid(1, 2), "bytes 1-2/" + size},
                    {"bytes=1-2", "\"another\"", 200, body, ""},
                    {"bytes=1-", "", 206, body.mid(1), "bytes 1-" + end + '/' + size},
                    {"bytes=1-18446744073709551616", "", 206, body.mid(1), "bytes 1-" + end + '/' + size},
                    {"bytes=-1", "", 206, body.right(1), "bytes " + end + '-' + end + '/' + size},
                    {"bytes=-" + size + '0', "", 206, body, "bytes 0-" + end + '/' + size},
                    {"bytes=" + size + '-', "", 416, "", "bytes */" + size},
                    {"bytes=18446744073709551616-", "", 416, "", "bytes */" + size},
                    {"bytes=-0", "", 416, "", "bytes */" + size},
                    {"bytes=0-0,2-2", "", 200, body, ""},
                    {"bytes=2-1", "", 200, body, ""},
                    {"bytes=-", "", 200, body, ""},
                    {"lines=1-2", "", 200, body, ""},
                };
                for (const auto& row : rows) {
                    const Answer part = owner.get(path, {{"Range", row.range}, {"If-Range", row.ofFile}});
                    QCOMPARE(part.status, row.status);
                    QCOMPARE(part.contentRange, row.told);
                    QVERIFY2(part.status == 416 || part.body == row.part, row.range);
                    QCOMPARE(part.contentDigest.isEmpty(), part.status != 200);
                    QCOMPARE(part.digest, part.status == 416 ? "" : "sha-256=" + sha256);
                }
            }
        };
        check(first, first);
        overwrite("damaged");
        check("damaged", first);
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
            for (const QByteArray& project : again.get(listPath + "SoftA").items("id"))
                downloadable += again.get(downloadPath + project).status == 200 ? 1 : 0;
            QCOMPARE(platform.storedFiles().size(), downloadable);
        }
    }

    void softwareTables()
    {
        const FormFields type = {{"sourceSoftwareNameEn", "SoftT"}, {"typeDescription", "D"},
            {"typeFlag", "7"}, {"typeSuffix", "dgn"}};
        const FormFields adaptation = {
            {"sourceClient", "SoftT"}, {"supportTypeId", "7"}, {"targetClient", "SoftU"}};
        for (const FormFields& saved : {type + FormFields{{"title", "first"}}, adaptation,
                 type + FormFields{{"title", "second"}}, adaptation})
            QVERIFY(m_alice.postForm("softwareAdaptationType/saveOrUpdate", saved).ok());
        QCOMPARE(m_alice.get("softwareSupportType/list").items("title"), QByteArrayList{"second"});
        QCOMPARE(m_alice.get("/project//softwareAdaptationType/listSupportClient?sourceClient=SoftT")
                     .items("targetClient"),
            QByteArrayList{"SoftU"});
    }

private:
    PlatformUnderTest m_platform{{"--max-file-size", "20000000"}};
    const Client m_alice = m_platform.signedIn("alice");
};

QTEST_GUILESS_MAIN(TestProjects)
#include "TestProjects.moc"
