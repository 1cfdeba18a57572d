// SPDX-License-Identifier: MIT
#include "PlatformUnderTest.h"

/// Every endpoint behind a token, called with no token, with a wrong one, and by a second account with the
/// first one's ids: the answer must be the one that ids get which do not exist at all.
class TestAccessRules : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        const Client alice = m_platform.signedIn("alice");
        const QByteArray project = addProject(alice);
        QVERIFY(
            alice.upload("/project/cloudProjectBackup/upload", {{"projectId", project}}, "a", "backup").ok());
        const QByteArray group = addGroup(alice, "Team");
        QVERIFY(alice.get("/project/cloudProjectGroupUser/getInviteCode?groupId=" + group).ok());
        const FormFields friends = {{"friendPhone", "carol"}, {"friendRemark", "r"}, {"friendUnit", "u"}};
        QVERIFY(alice.postForm("/project/cloudAddressBook/add", friends).ok());
        const QByteArray member = idText(
            alice.get("/project/cloudProjectGroupUser/listGroupUsers?groupId=" + group).item(0).value("id"));
        m_aliceIds = {{"{project}", project}, {"{file}", uploadSharedFile(alice, project, "x", "shared")},
            {"{group}", group}, {"{member}", member},
            {"{friend}", idText(alice.get("/project/cloudAddressBook/list").item(0).value("id"))}};
        for (const QByteArray& id : qAsConst(m_aliceIds))
            QVERIFY(id.toInt() > 0);
        m_aliceState = stateOfAlice();
    }

    void refusesStrangers_data() { endpoints(); }

    void refusesStrangers()
    {
        const int files = m_platform.storedFiles().size();
        for (const QByteArray authorization : {"", "Bearer ", "Bearer nonsense", "Bearer tav-local-refresh",
                 "Basic dGF2LWxvY2FsOnRhdi1sb2NhbC1zZWNyZXQ="}) {
            const Answer answer = call(Client(m_platform.port(), authorization), m_aliceIds);
            QCOMPARE(answer.status, 401);
            QCOMPARE(answer.msg(), QString("Token失效"));
        }
        QCOMPARE(m_platform.storedFiles().size(), files);

        QFETCH(QString, msg);
        const Client bob = m_platform.signedIn("bob");
        const Answer answer = call(bob, m_aliceIds);
        if (msg.isEmpty()) {
            QVERIFY2(answer.ok(), answer.body);
            QVERIFY2(!answer.body.contains("alice") && !answer.body.contains("Survey"), answer.body);
            return;
        }
        QVERIFY(answer.status >= 400);
        QCOMPARE(answer.msg(), msg);
        QMap<QByteArray, QByteArray> nobodys = m_aliceIds;
        for (QByteArray& id : nobodys)
            id = "987654";
        QCOMPARE(answer.body, call(bob, nobodys).body);
    }

    void nothingWasChanged() { QCOMPARE(stateOfAlice(), m_aliceState); }

private:
    void endpoints()
    {
        QTest::addColumn<QByteArray>("method");
        QTest::addColumn<QByteArray>("path");
        QTest::addColumn<FormFields>("fields");
        QTest::addColumn<QString>("msg"); ///< empty: the endpoint takes no ids

        const QString noProject = "所选项目不存在";
        const auto row = [](const QByteArray& method, const QByteArray& path, const QString& msg = {},
                             const FormFields& fields = {}) {
            QTest::newRow(path.constData()) << method << "/project/" + path << fields << msg;
        };
        const FormFields share = {{"projectId", "{project}"}, {"durationHours", "2"},
            {"logicalIds", "{file}"}, {"userNames", "bob"}, {"groupId", "{group}"}};

        row("POST", "cloudProjectInfo/add", {},
            {{"sourceClient", "S"}, {"projectTitle", "T"}, {"description", ""}});
        row("UPLOAD", "cloudProjectBackup/upload", noProject, {{"projectId", "{project}"}});
        row("GET", "cloudProjectBackup/getProjectList?sourceClient=SoftB");
        row("GET", "cloudProjectBackup/downloadProject?projectId={project}", noProject);
        row("UPLOAD", "cloudProjectShare/upload", noProject,
            {{"projectId", "{project}"}, {"supportTypeId", "1"}, {"typeFlag", "1"}});
        row("POST", "cloudProjectShare/toAnonymous", noProject, share);
        row("POST", "cloudProjectShare/toUSer", noProject, share);
        row("POST", "cloudProjectShare/toGroup", "The group does not exist", share);
        row("GET", "cloudProjectShare/extractByCode?extractionCode=X",
            "The extraction code is wrong or has expired");
        row("GET", "cloudProjectShare/download?logicalId={file}", "The file does not exist");
        row("GET", "cloudProjectShare/getProjectBySoftId?sourceClient=SoftA&targetClient=SoftA");
        row("GET", "cloudProjectShare/getByProject?projectId={project}&sourceClient=SoftA", noProject);
        row("GET", "cloudAddressBook/list");
        row("POST", "cloudAddressBook/add", {},
            {{"friendPhone", "carol"}, {"friendRemark", ""}, {"friendUnit", ""}});
        row("DELETE", "cloudAddressBook/delete?id={friend}", "The friend does not exist");
        row("JSON", "cloudProjectGroup/saveOrUpdate", "The group does not exist",
            {{"", R"({"id":{group},"groupName":"taken over"})"}});
        row("DELETE", "cloudProjectGroup/delete?id={group}", "The group does not exist");
        row("GET", "cloudProjectGroupUser/listUserGroups");
        row("GET", "cloudProjectGroupUser/listGroupUsers?groupId={group}", "The group does not exist");
        row("GET", "cloudProjectGroupUser/getInviteCode?groupId={group}", "The group does not exist");
        row("POST", "cloudProjectGroupUser/inviteToGroup", "The invitation code is wrong",
            {{"inviteCode", ""}});
        row("GET", "cloudProjectGroupUser/outGroup?groupId={group}", "The group does not exist");
        row("DELETE", "cloudProjectGroupUser/removeGroupMember?groupId={group}&usernames=alice,{member}",
            "The group does not exist");
        row("GET", "/softwareAdaptationType/listSupportClient?sourceClient=SoftA");
        row("GET", "softwareSupportType/list");
        row("POST", "softwareAdaptationType/saveOrUpdate", {},
            {{"sourceClient", "S"}, {"supportTypeId", "1"}, {"targetClient", "T"}});
    }

    Answer call(const Client& client, const QMap<QByteArray, QByteArray>& ids) const
    {
        QFETCH(QByteArray, method);
        QFETCH(QByteArray, path);
        QFETCH(FormFields, fields);
        for (auto id = ids.begin(); id != ids.end(); ++id) {
            path.replace(id.key(), id.value());
            for (auto& field : fields)
                field.second.replace(id.key(), id.value());
        }
        if (method == "GET")
            return client.get(path);
        if (method == "DELETE")
            return client.del(path);
        if (method == "UPLOAD")
            return client.upload(path, fields, "x.dat", "bob was here");
        if (method == "JSON")
            return client.post(path, fields.first().second, "application/json");
        return client.postForm(path, fields);
    }

    QByteArray stateOfAlice() const
    {
        const Client alice = m_platform.signedIn("alice");
        QByteArray state;
        for (const QByteArray path : {"/project/cloudProjectBackup/getProjectList?sourceClient=SoftA",
                 "/project/cloudProjectBackup/downloadProject?projectId={project}",
                 "/project/cloudProjectShare/getByProject?projectId={project}&sourceClient=SoftA",
                 "/project/cloudProjectShare/download?logicalId={file}", "/project/cloudAddressBook/list",
                 "/project/cloudProjectGroupUser/listUserGroups",
                 "/project/cloudProjectGroupUser/listGroupUsers?groupId={group}"}) {
            QByteArray filled = path;
            for (auto id = m_aliceIds.begin(); id != m_aliceIds.end(); ++id)
                filled.replace(id.key(), id.value());
            state += alice.get(filled).body + '\n';
        }
        return state;
    }

    PlatformUnderTest m_platform;
    QMap<QByteArray, QByteArray> m_aliceIds; ///< by the placeholder in the rows
    QByteArray m_aliceState;
};

QTEST_GUILESS_MAIN(TestAccessRules)
#include "TestAccessRules.moc"
