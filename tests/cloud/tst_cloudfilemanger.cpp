// SPDX-License-Identifier: MIT
#include "cloud/CloudFileManger.h"
#include "net/ReplyEnvelope.h"
#include "support/MultipartForm.h"
#include "support/PublicOperations.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <functional>
#include <memory>

namespace {
using Client = CloudFileManger;

const QByteArray adaptations = "/project//softwareAdaptationType/listSupportClient?sourceClient=Soft%201";
const QByteArray supports = "/project/softwareSupportType/list";
const QByteArray projects = "/project/cloudProjectBackup/getProjectList?sourceClient=Soft%201";

using Field = QPair<QByteArray, QByteArray>;

/// One operation of the client: what it sends, and what a success makes of the client.
struct Operation
{
    const char* name;
    std::function<bool(Client&)> call;
    QByteArray method;
    QByteArray target;
    QVector<Field> form; ///< as it goes over the wire; the file comes last
    QByteArray success;
    std::function<bool(const Client&)> effect;
    /// Sends nothing while the client has no project.
    bool needsProject = false;
    /// Decides by "code" alone.
    bool judgesItself = false;
    /// Its reply is a file and not an envelope.
    bool isDownload = false;
};

QString inFolder(const QString& name)
{
    static const QTemporaryDir folder;
    return folder.filePath(name);
}

QByteArray read(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool unchanged(const Client& client)
{
    return client.getProjectId() == "P1" && client.getAllCloudProjects().isEmpty();
}

const QVector<Operation> operations{
    {"AddCloudProInfo", [](Client& c) { return c.AddCloudProInfo("标题", "a \"b\"\r\nc"); }, "POST",
        "/project/cloudProjectInfo/add",
        {{"description", "a \"b\"\r\nc"}, {"projectTitle", "标题"}, {"sourceClient", "Soft 1"}},
        R"({"code":0,"data":17})", [](const Client& c) { return c.getProjectId() == "17"; }, false, true},
    {"BackupCloudProFile", [](Client& c) { return c.BackupCloudProFile(inFolder("备份.dwg")); }, "POST",
        "/project/cloudProjectBackup/upload",
        {{"projectId", "P1"}, {"sourceClient", "Soft 1"}, {"备份.dwg", "the file\r\n"}}, R"({"code":0})",
        unchanged, true},
    {"getAllCloudProjectBackup", [](Client& c) { return c.getAllCloudProjectBackup(); }, "GET", projects, {},
        R"({"code":200,"data":[{"id":1,"sourceClient":"Soft 1","projectTitle":"T"}]})",
        [](const Client& c) { return c.getAllCloudProjects().keys() == QStringList("1"); }},
    {"DownloadCloudProFile", [](Client& c) { return c.DownloadCloudProFile("另 7", inFolder("saved")); },
        "GET", "/project/cloudProjectBackup/downloadProject?projectId=%E5%8F%A6%207", {}, "the backup",
        [](const Client& c) { return unchanged(c) && read(inFolder("saved")) == "the backup"; }, true, false,
        true},
    {"getSoftwareAdaptationType", [](Client& c) { return c.getSoftwareAdaptationType(); }, "GET", adaptations,
        {}, R"({"code":0,"data":[]})", unchanged, true},
    {"getSoftwareSupportType", [](Client& c) { return c.getSoftwareSupportType(); }, "GET", supports, {},
        R"({"data":null})", unchanged, true},
    {"updateSoftwareAdaptationType", [](Client& c) { return c.updateSoftwareAdaptationType("3", "Other"); },
        "POST", "/project/softwareAdaptationType/saveOrUpdate",
        {{"sourceClient", "Soft 1"}, {"supportTypeId", "3"}, {"targetClient", "Other"}}, R"({"code":200})",
        unchanged},
    {"updateSoftwareSupportType",
        [](Client& c) { return c.updateSoftwareSupportType("t", "1", ".dwg", "图"); }, "POST",
        "/project/softwareAdaptationType/saveOrUpdate",
        {{"sourceSoftwareNameEn", "Soft 1"}, {"title", "t"}, {"typeDescription", "图"}, {"typeFlag", "1"},
            {"typeSuffix", ".dwg"}},
        R"({})", unchanged},
};

/// A client on \a peer; with a project it is made without one first, so that it sends nothing.
Client client(const ScriptedPeer& peer, const QString& project = QStringLiteral("P1"))
{
    Client made(peer.address(), "tok/en+=", "third", "Soft 1", {"A", "B"}, ".bak", "Project 1", QString());
    made.setProjectID(project);
    return made;
}

Client listed(const QByteArray& data)
{
    ScriptedPeer peer;
    Client made = client(peer);
    peer.expect("GET", projects, behaviour::answer(R"({"code":0,"data":)" + data + "}"));
    if (!made.getAllCloudProjectBackup())
        QTest::qFail("The listing failed", __FILE__, __LINE__);
    return made;
}
} // namespace

class TestCloudFileManger : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QFile file(inFolder("备份.dwg"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("the file\r\n");
    }

    void everyOperationHasARow()
    {
        QStringList missing = publicOperations("cloud/CloudFileManger.h");
        QVERIFY(missing.size() >= 8);
        for (const Operation& operation : operations)
            missing.removeAll(operation.name);
        QVERIFY2(missing.isEmpty(), qPrintable(missing.join(' ')));
    }

    void sends_data() { rows(); }

    void sends()
    {
        QFETCH(int, index);
        const Operation& operation = operations[index];
        ScriptedPeer peer;
        Client made = client(peer);
        peer.expect(operation.method, operation.target, behaviour::answer(operation.success));
        QVERIFY2(operation.call(made), qPrintable(made.getLastError()));
        QCOMPARE(made.getLastError(), QString());
        QVERIFY(operation.effect(made));

        const RecordedRequest request = peer.onlyRequest();
        QCOMPARE(request.header("Authorization"), QByteArray("Bearer tok/en+="));
        if (operation.method == "GET") {
            QVERIFY(request.body.isEmpty() && request.values("Content-Type").isEmpty());
            return;
        }
        QString fault;
        QVector<Field> form;
        for (const FormPart& part : parseForm(request, fault))
            form.append({part.head, part.body});
        QVERIFY2(fault.isEmpty(), qPrintable(fault));
        QVector<Field> wanted = operation.form;
        for (auto& [head, body] : wanted)
            head = head == "备份.dwg" ? fileHead(head) : fieldHead(head);
        QCOMPARE(form, wanted);
    }

    void failsWithTheReason_data() { rows(); }

    void failsWithTheReason()
    {
        QFETCH(int, index);
        const Operation& operation = operations[index];
        const auto unless = [&](bool exception, const QString& text) {
            return operation.isDownload ? replyUnusable() : exception ? QStringLiteral("m") : text;
        };
        const struct
        {
            Behaviour behave;
            QString text;
        } failures[]{
            {behaviour::answer(R"({"code":1,"msg":"m"})", 400), unless(true, "m")},
            {behaviour::answer(R"({"code":401,"msg":"m"})", 401),
                unless(operation.judgesItself, "网络错误:401(m)")},
            {behaviour::answer(R"({"code":500,"msg":"m"})", 500), unless(true, "m")},
            {behaviour::answer(R"({"code":7,"msg":"m"})", 503), unless(true, "m")},
            {behaviour::answer("[]", 400), replyUnusable()},
            {behaviour::answer("<html>", 502), replyUnusable()},
            {behaviour::answer(""), replyUnusable()},
            {behaviour::closeAfter("HTTP/1.1 200 OK\r\nContent-Length: 99\r\n\r\n{"), replyUnusable()},
        };
        for (const auto& [behave, text] : failures) {
            ScriptedPeer peer;
            Client made = client(peer);
            peer.expect(operation.method, operation.target, behave);
            QVERIFY(!operation.call(made));
            QCOMPARE(made.getLastError(), text);
            QVERIFY(unchanged(made));
        }
    }

    void needsAProject_data() { rows(); }

    void needsAProject()
    {
        QFETCH(int, index);
        const Operation& operation = operations[index];
        ScriptedPeer peer;
        Client made = client(peer, QString());
        peer.expect("GET", projects, behaviour::answer(R"({"code":1,"msg":"earlier"})"));
        QVERIFY(!made.getAllCloudProjectBackup());
        if (!operation.needsProject)
            peer.expect(operation.method, operation.target, behaviour::answer(operation.success));
        QCOMPARE(operation.call(made), !operation.needsProject);
        QCOMPARE(made.getLastError(), operation.needsProject ? QString("earlier") : QString());
    }

    void mayBeDestroyedMeanwhile_data() { rows(); }

    void mayBeDestroyedMeanwhile()
    {
        QFETCH(int, index);
        const Operation& operation = operations[index];
        ScriptedPeer peer;
        auto made = std::make_unique<Client>(client(peer));
        peer.expect(operation.method, operation.target, [&](PeerConnection& c) {
            if (c.readHead() && c.readBody()) {
                c.pause(150);
                c.send(behaviour::response(operation.success));
            }
        });
        QTimer::singleShot(50, [&] { made.reset(); });
        operation.call(*made); // its result is nobody's any more
        QVERIFY(!made);
    }

    void asksForTheTablesWhenMade_data()
    {
        QTest::addColumn<QByteArray>("adaptation");
        QTest::addColumn<QByteArray>("support");
        QTest::addColumn<QString>("error");

        const QByteArray good = R"({"code":0})";
        const QByteArray bad = R"({"code":1,"msg":"m"})";
        QTest::newRow("both answer") << good << good << QString();
        QTest::newRow("the first fails") << bad << good << QString();
        QTest::newRow("the second fails") << good << bad << QString("m");
        QTest::newRow("the second is unusable") << bad << QByteArray("[]") << replyUnusable();
    }

    void asksForTheTablesWhenMade()
    {
        QFETCH(QByteArray, adaptation);
        QFETCH(QByteArray, support);
        ScriptedPeer peer;
        peer.expect("GET", adaptations, behaviour::answer(adaptation));
        peer.expect("GET", supports, behaviour::answer(support));
        const Client made(peer.address(), "t", "third", "Soft 1", {"A", "B"}, ".bak", "Project 1", "P1");
        QTEST(made.getLastError(), "error");
        QCOMPARE(made.getProjectId(), QString("P1"));
        QCOMPARE(made.getProjectName(), QString("Project 1"));
        QCOMPARE(made.getSoftName(), QString("Soft 1"));
        QCOMPARE(made.getShareSourceSoft(), QStringList({"A", "B"}));
        QVERIFY(made.getAllCloudProjects().isEmpty() && made.getForeignCloudProjects().isEmpty());
    }

    void listsProjects_data()
    {
        QTest::addColumn<QByteArray>("data");
        QTest::addColumn<QStringList>("projects"); // key, id, title, source client of each

        const auto row = [](const char* name, const QByteArray& data, const QStringList& expected) {
            QTest::newRow(name) << data << expected;
        };
        row("two", R"([{"id":"b","sourceClient":"S","projectTitle":"乙","description":"d","targetClient":"x"},
                       {"id":"a","sourceClient":"S","projectTitle":"甲"}])",
            {"a,a,甲,S", "b,b,乙,S"});
        row("a number as id", R"([{"id":12345678901,"sourceClient":5}])", {"12345678901,12345678901,,5"});
        row("without a title",
            R"([{"id":1,"sourceClient":"S"},{"id":2,"sourceClient":"S","projectTitle":null}])",
            {"1,1,,S", "2,2,,S"});
        row("without an id", R"([{"sourceClient":"S"},{"id":null,"sourceClient":"S"}])", {});
        row("without a source", R"([{"id":1},{"id":2,"sourceClient":null},{"id":3,"sourceClient":"S"}])",
            {"3,3,,S"});
        row("empty texts are present", R"([{"id":"","sourceClient":""}])", {",,,"});
        row("twice the same", R"([{"id":1,"sourceClient":"S"},{"id":"1","sourceClient":"T"}])", {"1,1,,T"});
        row("no objects", R"([1,"x",null,[],{"id":1,"sourceClient":"S"}])", {"1,1,,S"});
        row("empty", "[]", {});
        row("null", "null", {});
        row("an object", R"({"id":1,"sourceClient":"S"})", {});
    }

    void listsProjects()
    {
        QFETCH(QByteArray, data);
        const Client made = listed(data);
        QStringList seen;
        const auto all = made.getAllCloudProjects();
        for (auto project = all.begin(); project != all.end(); ++project) {
            seen.append(
                QStringList({project.key(), project->id, project->projectTitle, project->sourceClient})
                    .join(','));
            QVERIFY(project->targetClient.isEmpty() && project->description.isEmpty());
        }
        QTEST(seen, "projects");
    }

    void aListingReplacesTheOneBefore_data()
    {
        QTest::addColumn<QByteArray>("reply");
        QTest::addColumn<QStringList>("ids");
        QTest::newRow("another") << QByteArray(R"({"data":[{"id":2,"sourceClient":"S"}]})")
                                 << QStringList("2");
        QTest::newRow("empty") << QByteArray(R"({"code":0,"data":[]})") << QStringList();
        QTest::newRow("without data") << QByteArray(R"({"code":0})") << QStringList();
        QTest::newRow("refused") << QByteArray(R"({"code":1,"data":[]})") << QStringList("1");
        QTest::newRow("unusable") << QByteArray("[]") << QStringList("1");
    }

    void aListingReplacesTheOneBefore()
    {
        QFETCH(QByteArray, reply);
        ScriptedPeer peer;
        Client made = client(peer);
        peer.expect("GET", projects, behaviour::answer(R"({"data":[{"id":1,"sourceClient":"S"}]})"));
        peer.expect("GET", projects, behaviour::answer(reply));
        QVERIFY(made.getAllCloudProjectBackup());
        made.getAllCloudProjectBackup();
        QTEST(QStringList(made.getAllCloudProjects().keys()), "ids");
    }

    void creatingDecidesByCodeAlone_data()
    {
        QTest::addColumn<QByteArray>("reply");
        QTest::addColumn<QString>("id");
        QTest::addColumn<QString>("error");

        QTest::newRow("text id") << QByteArray(R"({"code":0,"data":"x-1"})") << QString("x-1") << QString();
        QTest::newRow("no code") << QByteArray(R"({"data":5})") << QString("5") << QString();
        QTest::newRow("status only") << QByteArray(R"({"status":500,"data":5})") << QString("5") << QString();
        QTest::newRow("code 200") << QByteArray(R"({"code":200,"data":5,"msg":"m"})") << QString("P1")
                                  << QString("m");
        QTest::newRow("code 404") << QByteArray(R"({"code":404,"msg":"m"})") << QString("P1") << QString("m");
        QTest::newRow("no data") << QByteArray(R"({"code":0})") << QString() << QString();
    }

    void creatingDecidesByCodeAlone()
    {
        QFETCH(QByteArray, reply);
        QFETCH(QString, error);
        ScriptedPeer peer;
        Client made = client(peer);
        peer.expect("POST", "/project/cloudProjectInfo/add", behaviour::answer(reply));
        QCOMPARE(made.AddCloudProInfo("t", "d"), error.isEmpty());
        QTEST(made.getProjectId(), "id");
        QCOMPARE(made.getLastError(), error);
    }

    void theNewProjectIsBackedUp()
    {
        ScriptedPeer peer;
        Client made = client(peer, QString());
        peer.expect("POST", "/project/cloudProjectInfo/add", behaviour::answer(R"({"code":0,"data":99})"));
        peer.expect("POST", "/project/cloudProjectBackup/upload", behaviour::answer("{}"));
        QVERIFY(made.AddCloudProInfo("t", "d") && made.BackupCloudProFile(inFolder("备份.dwg")));
        QString fault;
        QCOMPARE(parseForm(peer.requests().value(1), fault).value(0).body, QByteArray("99"));
    }

    void aTargetThatCannotBeWrittenHasNoText()
    {
        ScriptedPeer peer;
        Client made = client(peer);
        peer.expect(
            "GET", "/project/cloudProjectBackup/downloadProject?projectId=1", behaviour::answer("body"));
        QVERIFY(!made.DownloadCloudProFile("1", inFolder("missing/file")));
        QCOMPARE(made.getLastError(), QString());
    }

    void copiesAreIndependent()
    {
        const Client original = listed(R"([{"id":1,"sourceClient":"S"}])");
        Client copy = original;
        QCOMPARE(copy.getAllCloudProjects().keys(), QStringList("1"));
        QCOMPARE(copy.getProjectId(), QString("P1"));
        copy.setProjectID("P2");
        QCOMPARE(original.getProjectId(), QString("P1"));

        ScriptedPeer peer;
        Client assigned = client(peer, "P3");
        peer.expect("GET", supports, behaviour::answer(R"({"code":1,"msg":"m"})"));
        QVERIFY(!assigned.getSoftwareSupportType());
        const Client failed = assigned;
        QCOMPARE(failed.getLastError(), QString("m"));
        assigned = original;
        QCOMPARE(assigned.getLastError(), QString());
        QCOMPARE(assigned.getAllCloudProjects().keys(), QStringList("1"));
        QCOMPARE(assigned.getProjectName() + assigned.getSoftName(), QString("Project 1Soft 1"));
        QCOMPARE(assigned.getShareSourceSoft(), QStringList({"A", "B"}));
        QCOMPARE(failed.getProjectId(), QString("P3"));
    }

private:
    static void rows()
    {
        QTest::addColumn<int>("index");
        for (int i = 0; i < operations.size(); ++i)
            QTest::newRow(operations[i].name) << i;
    }
};

QTEST_GUILESS_MAIN(TestCloudFileManger)
#include "tst_cloudfilemanger.moc"
