// SPDX-License-Identifier: MIT
#include "cloud/CloudHandle.h"
#include "net/CloudQuery.h"
#include "net/ReplyEnvelope.h"
#include "net/Runners.h"
#include "support/MultipartForm.h"
#include "support/PublicOperations.h"

#include <QTemporaryDir>
#include <QTest>

#include <functional>
#include <memory>
#include <thread>
#include <tuple>

using namespace tav;

namespace {
using Client = CloudFileManger;

const QByteArray adaptations = "/project//softwareAdaptationType/listSupportClient?sourceClient=Soft%201";
const QByteArray supports = "/project/softwareSupportType/list";
const QByteArray projects = "/project/cloudProjectBackup/getProjectList?sourceClient=Soft%201";

/// The out-arguments of the operations. None is empty at first, so that emptying one shows.
struct Results
{
    int logicalId = -1;
    QString text = "before";
    QMap<QString, QString> files{{"9", "before"}};
    QList<Client::CloudAddressBookInfo> friends{{"0", "before", "", "", ""}};
    QList<Client::CloudGroupInfo> groups{{"0", "before", "", ""}};
    QVector<Client::CloudGroupMemberInfo> members{{"0", "before", "", 7}};
};
Results out;

/// One operation of the client: what it sends, and what a success changes in the client and in \a out.
struct Operation
{
    const char* name;
    std::function<bool(Client&)> call;
    QByteArray method;
    QByteArray target;
    QByteArray content; ///< as contentOf() has it
    QByteArray success;
    QStringList effect; ///< lines of the state that come ("+") and go ("-")
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

/// Everything that an operation may change, a line each.
QStringList stateOf(const Client& client)
{
    QStringList state{"project " + client.getProjectId(), "logical id " + QString::number(out.logicalId),
        "text " + out.text, "saved " + read(inFolder("saved"))};
    const auto add = [&state](const QStringList& values) { state += values.join(','); };
    using Listed = QMap<QString, Client::ShareProjectInfo>;
    const auto addListed = [&add](const char* from, const Listed& listed) {
        for (auto p = listed.begin(); p != listed.end(); ++p)
            add({from, p.key(), p->id, p->projectTitle, p->sourceClient, p->targetClient, p->description});
    };
    addListed("own", client.getAllCloudProjects());
    const auto foreign = client.getForeignCloudProjects();
    for (auto source = foreign.begin(); source != foreign.end(); ++source) {
        add({"source", source.key()});
        addListed("foreign", *source);
    }
    for (auto file = out.files.begin(); file != out.files.end(); ++file)
        add({"file", file.key(), file.value()});
    for (const auto& f : out.friends)
        add({"friend", f.id, f.friendUser, f.friendPhone, f.friendRemark, f.friendUnit});
    for (const auto& g : out.groups)
        add({"group", g.id, g.groupName, g.createUser, g.inviteCode});
    for (const auto& m : out.members)
        add({"member", m.id, m.groupId, m.username, QString::number(m.adminFlag)});
    return state;
}

QStringList effectOf(const Operation& operation, Client& made, bool& good)
{
    out = Results();
    const QStringList before = stateOf(made);
    good = operation.call(made);
    QStringList effect;
    const QStringList after = stateOf(made);
    for (const QString& line : before)
        if (!after.contains(line))
            effect += '-' + line;
    for (const QString& line : after)
        if (!before.contains(line))
            effect += '+' + line;
    return effect;
}

const QVector<Operation> operations{
    {"AddCloudProInfo", [](Client& c) { return c.AddCloudProInfo("标题", "a \"b\"\r\nc"); }, "POST",
        "/project/cloudProjectInfo/add",
        part("description", "a \"b\"\r\nc") + part("projectTitle", "标题") + part("sourceClient", "Soft 1"),
        R"({"status":500,"data":17})", {"-project ", "+project 17"}, false, true},
    {"BackupCloudProFile", [](Client& c) { return c.BackupCloudProFile(inFolder("备份.dwg")); }, "POST",
        "/project/cloudProjectBackup/upload",
        part("projectId", "P1") + part("sourceClient", "Soft 1") + filePart("备份.dwg", "the file\r\n"),
        R"({"code":0})", {}, true},
    {"getAllCloudProjectBackup", [](Client& c) { return c.getAllCloudProjectBackup(); }, "GET", projects, {},
        R"({"code":200,"data":[
            {"id":"b","sourceClient":"S","projectTitle":"乙","description":"d","targetClient":"x"},
            {"id":12345678901,"sourceClient":5,"projectTitle":null}, {"id":"","sourceClient":""},
            {"id":1,"sourceClient":"S"}, {"id":"1","sourceClient":"T"}, {"sourceClient":"no id"},
            {"id":null,"sourceClient":"null id"}, {"id":2}, {"id":3,"sourceClient":null}, 1, "x", null, []]})",
        {"+own,,,,,,", "+own,1,1,,T,,", "+own,12345678901,12345678901,,5,,", "+own,b,b,乙,S,,"}},
    {"DownloadCloudProFile", [](Client& c) { return c.DownloadCloudProFile("另 7", inFolder("saved")); },
        "GET", "/project/cloudProjectBackup/downloadProject?projectId=%E5%8F%A6%207", {}, "the backup",
        {"-saved ", "+saved the backup"}, true, false, true},
    {"getSoftwareAdaptationType", [](Client& c) { return c.getSoftwareAdaptationType(); }, "GET", adaptations,
        {}, R"({"code":0,"data":[]})", {}, true},
    {"getSoftwareSupportType", [](Client& c) { return c.getSoftwareSupportType(); }, "GET", supports, {},
        R"({"data":null})", {}, true},
    {"updateSoftwareAdaptationType", [](Client& c) { return c.updateSoftwareAdaptationType("3", "Other"); },
        "POST", "/project/softwareAdaptationType/saveOrUpdate",
        part("sourceClient", "Soft 1") + part("supportTypeId", "3") + part("targetClient", "Other"),
        R"({"code":200})", {}},
    {"updateSoftwareSupportType",
        [](Client& c) { return c.updateSoftwareSupportType("t", "1", ".dwg", "图"); }, "POST",
        "/project/softwareAdaptationType/saveOrUpdate",
        part("sourceSoftwareNameEn", "Soft 1") + part("title", "t") + part("typeDescription", "图")
            + part("typeFlag", "1") + part("typeSuffix", ".dwg"),
        R"({})", {}},
    {"UploadCloudShareFile2",
        [](Client& c) { return c.UploadCloudShareFile2("1", "3", inFolder("备份.dwg"), out.logicalId); },
        "POST", "/project/cloudProjectShare/upload",
        part("projectId", "P1") + part("sourceClient", "Soft 1") + part("supportTypeId", "3")
            + part("typeFlag", "1") + filePart("备份.dwg", "the file\r\n"),
        R"({"code":0,"data":{"logicalId":12}})", {"-logical id -1", "+logical id 12"}, true},
    {"CloudShareAnonymous", [](Client& c) { return c.CloudShareAnonymous("1,2", out.text, 24); }, "POST",
        "/project/cloudProjectShare/toAnonymous",
        part("durationHours", "24") + part("logicalIds", "1,2") + part("projectId", "P1")
            + part("sourceClient", "Soft 1"),
        R"({"code":200,"data":7301})", {"-text before", "+text 7301"}, true},
    {"CloudShareToAccount", [](Client& c) { return c.CloudShareToAccount("甲,b", "1,2", -1); }, "POST",
        "/project/cloudProjectShare/toUSer",
        part("durationHours", "-1") + part("logicalIds", "1,2") + part("projectId", "P1")
            + part("sourceClient", "Soft 1") + part("userNames", "甲,b"),
        R"({"code":0,"data":{"logicalId":12}})", {}, true},
    {"CloudShareToGroup", [](Client& c) { return c.CloudShareToGroup("g", "1,2", 0); }, "POST",
        "/project/cloudProjectShare/toGroup",
        part("durationHours", "0") + part("groupId", "g") + part("logicalIds", "1,2")
            + part("projectId", "P1") + part("sourceClient", "Soft 1"),
        "{}", {}, true},
    {"ExtractByCode", [](Client& c) { return c.ExtractByCode("7301", "not sent"); }, "GET",
        "/project/cloudProjectShare/extractByCode?extractionCode=7301&sourceClient=Soft%201", {},
        R"({"code":0})", {}},
    {"DownloadCloudShareFile", [](Client& c) { return c.DownloadCloudShareFile("12", inFolder("saved")); },
        "GET", "/project/cloudProjectShare/download?logicalId=12", {}, R"({"code":1,"msg":"a file"})",
        {"-saved ", R"(+saved {"code":1,"msg":"a file"})"}, false, false, true},
    {"getShareProjectFromPlatform", [](Client& c) { return c.getShareProjectFromPlatform("乙"); }, "GET",
        "/project/cloudProjectShare/getProjectBySoftId?sourceClient=%E4%B9%99&targetClient=Soft%201", {},
        R"({"data":[{"id":2,"sourceClient":"A","projectTitle":"T","description":"d","targetClient":"x"},
            {"id":1,"sourceClient":"乙"},{"id":3},{"id":4,"sourceClient":null},{"sourceClient":"A"},5,null]})",
        {"+source,乙", "+foreign,1,1,,乙,Soft 1,", "+foreign,2,2,T,A,Soft 1,d"}},
    {"getShareProjectInfoById2",
        [](Client& c) { return c.getShareProjectInfoById2("Other", "P 9", out.files); }, "GET",
        "/project/cloudProjectShare/getByProject?projectId=P%209&sourceClient=Other", {},
        R"({"data":[{"id":5,"originalName":"a.dwg"},{"id":6},{"id":7,"originalName":null},
            {"originalName":"no id"}]})",
        {"+file,,no id", "+file,5,a.dwg"}},
    {"SearchAddressBookList", [](Client& c) { return c.SearchAddressBookList(out.friends); }, "GET",
        "/project/cloudAddressBook/list", {},
        R"({"code":0,"data":[{"id":2,"friendUser":"u","friendPhone":138,"friendRemark":"r","friendUnit":"单"},
            {"id":1,"friendUser":"v","friendPhone":""},{"id":3,"friendUser":"w"},
            {"id":4,"friendUser":null,"friendPhone":"1"}]})",
        {"+friend,2,u,138,r,单", "+friend,1,v,,,"}},
    {"AddToAddressBook", [](Client& c) { return c.AddToAddressBook("138", "备注", ""); }, "POST",
        "/project/cloudAddressBook/add",
        part("friendPhone", "138") + part("friendRemark", "备注") + part("friendUnit", ""), R"({"code":0})",
        {}},
    {"DelFromAddressBook", [](Client& c) { return c.DelFromAddressBook("2"); }, "DELETE",
        "/project/cloudAddressBook/delete?id=2", {}, R"({"code":0})", {}},
    {"CreateGroup", [](Client& c) { return c.CreateGroup("Te\"am\n组"); }, "POST",
        "/project/cloudProjectGroup/saveOrUpdate", "application/json{\"groupName\":\"Te\\\"am\\n组\"}",
        R"({"code":0})", {}},
    {"deleteGroup", [](Client& c) { return c.deleteGroup("g1"); }, "DELETE",
        "/project/cloudProjectGroup/delete?id=g1", {}, R"({"code":0})", {}},
    {"SearchGroup", [](Client& c) { return c.SearchGroup(out.groups); }, "GET",
        "/project/cloudProjectGroupUser/listUserGroups", {},
        R"({"data":[{"id":2,"groupName":"组","createUser":"u","inviteCode":"c"},
            {"id":1,"groupName":"n","createUser":"v"},{"id":3,"groupName":"n"},{"id":4,"createUser":"u"},
            {"id":null,"groupName":"n","createUser":"u"}]})",
        {"+group,2,组,u,c", "+group,1,n,v,"}},
    {"SearchGroupMember", [](Client& c) { return c.SearchGroupMember("2", out.members); }, "GET",
        "/project/cloudProjectGroupUser/listGroupUsers?groupId=2", {},
        R"({"data":[{"id":8,"groupId":2,"username":"u","adminFlag":-1},
            {"id":7,"groupId":2,"username":"v"},{"id":6,"groupId":2},{"id":5,"username":"w"},
            {"id":4,"groupId":2,"username":null},{"groupId":2,"username":"x"}]})",
        {"+member,8,2,u,-1", "+member,7,2,v,0"}},
    {"GetInviteCode", [](Client& c) { return c.GetInviteCode("2", out.text); }, "GET",
        "/project/cloudProjectGroupUser/getInviteCode?groupId=2", {}, R"({"code":0,"data":"AB12"})",
        {"-text before", "+text AB12"}},
    {"InviteToGroup", [](Client& c) { return c.InviteToGroup("AB12"); }, "POST",
        "/project/cloudProjectGroupUser/inviteToGroup", part("inviteCode", "AB12"), R"({"code":0})", {}},
    {"OutGroup", [](Client& c) { return c.OutGroup("2"); }, "GET",
        "/project/cloudProjectGroupUser/outGroup?groupId=2", {}, R"({"code":0})", {}},
    {"RemoveGroupMember", [](Client& c) { return c.RemoveGroupMember("2", "甲,b"); }, "DELETE",
        "/project/cloudProjectGroupUser/removeGroupMember?groupId=2&usernames=%E7%94%B2,b", {},
        R"({"code":0})", {}},
};

/// A client on \a peer; with a project it is made without one first, so that it sends nothing.
Client client(const ScriptedPeer& peer, bool withProject = true)
{
    Client made(peer.address(), "tok/en+=", "third", "Soft 1", {"A", "B"}, ".bak", "Project 1", QString());
    made.setProjectID(withProject ? "P1" : "");
    return made;
}
} // namespace

class TestCloudFileManger : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { write(inFolder("备份.dwg"), "the file\r\n"); }

    void init() { QFile::remove(inFolder("saved")); }

    void everyOperationHasARow()
    {
        QStringList missing = publicOperations("cloud/CloudFileManger.h");
        QVERIFY(missing.size() >= 27);
        for (const Operation& operation : operations)
            missing.removeAll(operation.name);
        QVERIFY2(missing.isEmpty(), qPrintable(missing.join(' ')));
    }

    void sendsItsRequestAndTakesTheReply_data() { rows(); }

    /// Meanwhile a timer of the host uses the same client without success, which must not change the result.
    void sendsItsRequestAndTakesTheReply()
    {
        QFETCH(int, index);
        const Operation& operation = operations[index];
        ScriptedPeer peer;
        Client made = client(peer, operation.needsProject);
        peer.expect("GET", projects, behaviour::answer(R"({"code":1,"msg":"earlier"})"));
        QVERIFY(!made.getAllCloudProjectBackup());
        peer.expect(operation.method, operation.target, behaviour::answerAfter(operation.success, [&made] {
            QCOMPARE(made.getLastError(), QString());
            QList<Client::CloudGroupInfo> groups;
            QVERIFY(!made.SearchGroup(groups));
            QCOMPARE(made.getLastError(), replyUnusable());
        }));
        peer.expect("GET", "/project/cloudProjectGroupUser/listUserGroups", behaviour::closeUnread());
        bool good = false;
        QCOMPARE(effectOf(operation, made, good), operation.effect);
        QVERIFY2(good, qPrintable(made.getLastError()));
        QCOMPARE(made.getLastError(), QString());
        QCOMPARE(made.getLastFailure(), CloudFailure::None);

        const RecordedRequest request = peer.requests().value(1);
        QCOMPARE(request.header("Authorization"), QByteArray("Bearer tok/en+="));
        QCOMPARE(contentOf(request), operation.content);
    }

    void failsWithTheReason_data() { rows(); }

    void failsWithTheReason()
    {
        QFETCH(int, index);
        const Operation& operation = operations[index];
        const QString signedOut = operation.judgesItself ? "m" : "网络错误:401(m)";
        struct Failure
        {
            Behaviour behave;
            QString text;
            CloudFailure kind;
        };
        const QVector<Failure> ofEnvelopes{
            {behaviour::answer(R"({"code":1,"msg":"m"})", 400), "m", CloudFailure::Refused},
            {behaviour::answer(R"({"code":401,"msg":"m"})", 401), signedOut, CloudFailure::SignedOut},
            {behaviour::answer(R"({"code":500,"msg":"Token失效!"})"), "Token失效!", CloudFailure::SignedOut},
            {behaviour::answer("<html>", 502), replyUnusable(), CloudFailure::Unusable},
        };
        const QVector<Failure> ofDownloads{
            {behaviour::answer(R"({"code":401,"msg":"m"})", 401), replyUnusable(), CloudFailure::SignedOut},
            {behaviour::answer(R"({"code":1})", 404), replyUnusable(), CloudFailure::Unavailable},
            {behaviour::answer(""), replyUnusable(), CloudFailure::Unusable},
        };
        for (const auto& [behave, text, kind] : operation.isDownload ? ofDownloads : ofEnvelopes) {
            ScriptedPeer peer;
            Client made = client(peer);
            peer.expect(operation.method, operation.target, behave);
            bool good = true;
            QCOMPARE(effectOf(operation, made, good), QStringList());
            QVERIFY(!good);
            QCOMPARE(made.getLastError(), text);
            QCOMPARE(made.getLastFailure(), kind);
        }
    }

    void valuesCanBeEscapedForAQuery()
    {
        ScriptedPeer peer;
        Client made = client(peer);
        peer.expect("GET", "/project/cloudProjectGroupUser/outGroup?groupId=1%232%263%2B4%255~%E5%9B%BE",
            behaviour::answer("{}"));
        QVERIFY(made.OutGroup(cloudQueryValue("1#2&3+4%5~图")));
    }

    void sendsNothingWithoutAProject()
    {
        ScriptedPeer peer;
        Client made = client(peer, false);
        peer.expect("GET", projects, behaviour::answer(R"({"code":1,"msg":"earlier"})"));
        QVERIFY(!made.getAllCloudProjectBackup());
        for (const Operation& operation : operations) {
            if (!operation.needsProject)
                continue;
            QVERIFY2(!operation.call(made), operation.name);
            QCOMPARE(made.getLastError(), QString("earlier"));
            QCOMPARE(made.getLastFailure(), CloudFailure::NoProject);
        }
    }

    void mayBeDestroyedMeanwhile()
    {
        for (const Operation& operation : operations) {
            for (const QByteArray& reply : {operation.success, QByteArray("[]"), QByteArray("")}) {
                ScriptedPeer peer;
                auto made = std::make_unique<Client>(client(peer));
                peer.expect(operation.method, operation.target,
                    behaviour::answerAfter(reply, [&made] { made.reset(); }));
                operation.call(*made);
                QVERIFY2(!made, operation.name);
            }
        }
    }

    void asksForTheTablesWhenMade()
    {
        const QByteArray bad = R"({"code":1,"msg":"m"})";
        for (const auto& [adaptation, support, error] :
            {std::tuple(bad, QByteArray("{}"), ""), std::tuple(QByteArray("{}"), bad, "m")}) {
            ScriptedPeer peer;
            peer.expect("GET", adaptations, behaviour::answer(adaptation));
            peer.expect("GET", supports, behaviour::answer(support));
            const Client made(peer.address(), "t", "third", "Soft 1", {"A", "B"}, ".bak", "Project 1", "P1");
            QCOMPARE(made.getLastError(), QString(error));
            QCOMPARE(made.getProjectId() + made.getProjectName() + made.getSoftName(),
                QString("P1Project 1Soft 1"));
            QCOMPARE(made.getShareSourceSoft(), QStringList({"A", "B"}));
            QVERIFY(made.getAllCloudProjects().isEmpty() && made.getForeignCloudProjects().isEmpty());
        }
    }

    void aListingReplacesTheOneBefore()
    {
        const QPair<QByteArray, QStringList> replies[]{
            {R"({"data":[{"id":2,"sourceClient":"S"}]})", {"2"}},
            {R"({"code":1,"data":[]})", {"2"}},
            {R"({"code":0})", {}},
        };
        ScriptedPeer peer;
        Client made = client(peer);
        for (const auto& [reply, ids] : replies) {
            peer.expect("GET", projects, behaviour::answer(reply));
            std::thread([&] { made.getAllCloudProjectBackup(); }).join(); // any thread may call
            QCOMPARE(QStringList(made.getAllCloudProjects().keys()), ids);
        }
    }

    void creatingDecidesByCodeAlone()
    {
        ScriptedPeer peer;
        Client made = client(peer);
        peer.expect("POST", "/project/cloudProjectInfo/add", behaviour::answer(R"({"code":200,"data":5})"));
        QVERIFY(!made.AddCloudProInfo("t", "d"));
        QCOMPARE(made.getProjectId(), QString("P1"));
        peer.expect("POST", "/project/cloudProjectInfo/add", behaviour::answer(R"({"code":0})"));
        QVERIFY(made.AddCloudProInfo("t", "d"));
        QCOMPARE(made.getProjectId(), QString());
    }

    void aTargetThatCannotBeWrittenLeavesNoErrorText()
    {
        ScriptedPeer peer;
        Client made = client(peer);
        peer.expect(
            "GET", "/project/cloudProjectBackup/downloadProject?projectId=1", behaviour::answer("body"));
        QVERIFY(!made.DownloadCloudProFile("1", inFolder("missing/file")));
        QCOMPARE(made.getLastError(), QString());
        QCOMPARE(made.getLastFailure(), CloudFailure::NotWritten);
    }

    void copiesAreIndependent()
    {
        ScriptedPeer peer;
        Client original = client(peer);
        peer.expect("GET", projects, behaviour::answer(R"({"data":[{"id":1,"sourceClient":"S"}]})"));
        QVERIFY(original.getAllCloudProjectBackup());
        Client copy = original;
        copy.setProjectID("P2");
        peer.expect("GET", supports, behaviour::answer(R"({"code":1,"msg":"m"})"));
        QVERIFY(!copy.getSoftwareSupportType());
        QCOMPARE(copy.getLastError(), QString("m"));
        QCOMPARE(original.getProjectId() + original.getLastError(), QString("P1"));

        copy = original;
        QCOMPARE(copy.getAllCloudProjects().keys(), QStringList("1"));
        QCOMPARE(copy.getProjectId() + copy.getLastError(), QString("P1"));

        // Unlike a copy, the handle that the module's dialogs work with shares the client's members.
        const CloudHandle handle = handleOn(&original);
        original.setProjectID("P3");
        QCOMPARE(handle->getProjectId(), QString("P3"));
        original = Client(peer.address(), "t", "", "Soft 2", {}, "", "", "");
        QCOMPARE(handle->getSoftName(), QString("Soft 2"));
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
