// SPDX-License-Identifier: MIT
#include "PlatformUnderTest.h"

#include <soci/soci.h>
#include <soci/sqlite3/soci-sqlite3.h>

/// Every endpoint behind a token, called with no token, with a wrong one, and by a second account with the
/// first one's ids: the answer must be the one that ids get which do not exist at all.
class TestAccessRules : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        const QByteArray project = addProject(m_alice);
        const QByteArray group = addGroup(m_alice, "Team");
        QVERIFY(m_alice.upload("cloudProjectBackup/upload", {{"projectId", project}}, "a", "backup").ok());
        QVERIFY(m_alice.get("cloudProjectGroupUser/getInviteCode?groupId=" + group).ok());
        const FormFields carol = {{"friendPhone", "carol"}, {"friendRemark", "r"}, {"friendUnit", "u"}};
        QVERIFY(m_alice.postForm("cloudAddressBook/add", carol).ok());
        m_aliceIds = {{"{project}", project}, {"{group}", group},
            {"{file}", uploadSharedFile(m_alice, project, "x", "shared")},
            {"{member}", m_alice.get("cloudProjectGroupUser/listGroupUsers?groupId=" + group).items("id")[0]},
            {"{friend}", m_alice.get("cloudAddressBook/list").items("id")[0]}};
        for (const QByteArray& id : qAsConst(m_aliceIds))
            QVERIFY(id.toInt() > 0);
        m_aliceState = stateOfAlice();
    }

    void refusesStrangers_data()
    {
        QTest::addColumn<QByteArray>("method");
        QTest::addColumn<QByteArray>("path");
        QTest::addColumn<FormFields>("fields");
        QTest::addColumn<QByteArray>("msg"); ///< empty: the endpoint takes no ids

        const QByteArray noProject = "所选项目不存在";
        const QByteArray noGroup = "The group does not exist";
        const auto row = [](const QByteArray& method, const QByteArray& path, const QByteArray& msg = {},
                             const FormFields& fields = {}) {
            QTest::newRow(path.constData()) << method << path << fields << msg;
        };
        const FormFields project = {{"sourceClient", "S"}, {"projectTitle", "T"}, {"description", ""}};
        const FormFields file = {{"projectId", "{project}"}, {"supportTypeId", "1"}, {"typeFlag", "1"}};
        const FormFields share = {{"projectId", "{project}"}, {"durationHours", "2"},
            {"logicalIds", "{file}"}, {"userNames", "bob"}, {"groupId", "{group}"}};
        const FormFields carol = {{"friendPhone", "carol"}, {"friendRemark", ""}, {"friendUnit", ""}};
        const FormFields adaptation = {{"sourceClient", "S"}, {"supportTypeId", "1"}, {"targetClient", "T"}};

        row("POST", "cloudProjectInfo/add", {}, project);
        row("UPLOAD", "cloudProjectBackup/upload", noProject, file);
        row("GET", "cloudProjectBackup/getProjectList?sourceClient=SoftB");
        row("GET", "cloudProjectBackup/downloadProject?projectId={project}", noProject);
        row("UPLOAD", "cloudProjectShare/upload", noProject, file);
        row("POST", "cloudProjectShare/toAnonymous", noProject, share);
        row("POST", "cloudProjectShare/toUSer", noProject, share);
        row("POST", "cloudProjectShare/toGroup", noGroup, share);
        row("GET", "cloudProjectShare/extractByCode?extractionCode=X",
            "The extraction code is wrong or has expired");
        row("GET", "cloudProjectShare/download?logicalId={file}", "The file does not exist");
        row("GET", "cloudProjectShare/getProjectBySoftId?sourceClient=SoftA&targetClient=SoftA");
        row("GET", "cloudProjectShare/getByProject?projectId={project}&sourceClient=SoftA", noProject);
        row("GET", "cloudAddressBook/list");
        row("POST", "cloudAddressBook/add", {}, carol);
        row("DELETE", "cloudAddressBook/delete?id={friend}", "The friend does not exist");
        row("JSON", "cloudProjectGroup/saveOrUpdate", noGroup, {{"", R"({"id":{group},"groupName":"his"})"}});
        row("DELETE", "cloudProjectGroup/delete?id={group}", noGroup);
        row("GET", "cloudProjectGroupUser/listUserGroups");
        row("GET", "cloudProjectGroupUser/listGroupUsers?groupId={group}", noGroup);
        row("GET", "cloudProjectGroupUser/getInviteCode?groupId={group}", noGroup);
        row("POST", "cloudProjectGroupUser/inviteToGroup", "The invitation code is wrong",
            {{"inviteCode", ""}});
        row("GET", "cloudProjectGroupUser/outGroup?groupId={group}", noGroup);
        row("DELETE", "cloudProjectGroupUser/removeGroupMember?groupId={group}&usernames=alice,{member}",
            noGroup);
        row("GET", "/project//softwareAdaptationType/listSupportClient?sourceClient=SoftA");
        row("GET", "softwareSupportType/list");
        row("POST", "softwareAdaptationType/saveOrUpdate", {}, adaptation);
    }

    void refusesStrangers()
    {
        const int files = m_platform.storedFiles().size();
        for (const QByteArray authorization : {"", "Bearer ", "Bearer nonsense", "Bearer tav-local-refresh",
                 "Basic dGF2LWxvY2FsOnRhdi1sb2NhbC1zZWNyZXQ="}) {
            const Answer answer = call(m_platform.as(authorization), m_aliceIds);
            QCOMPARE(answer.status, 401);
            QCOMPARE(answer.msg(), QByteArray("Token失效"));
        }
        QCOMPARE(m_platform.storedFiles().size(), files);

        QFETCH(QByteArray, msg);
        const Answer answer = call(m_bob, m_aliceIds);
        if (msg.isEmpty()) {
            QVERIFY2(answer.ok(), answer.body);
            QVERIFY2(!answer.body.contains("alice") && !answer.body.contains("Survey"), answer.body);
            return;
        }
        QCOMPARE(answer.status, 404);
        QCOMPARE(answer.msg(), msg);
        QMap<QByteArray, QByteArray> nobodys = m_aliceIds;
        for (QByteArray& id : nobodys)
            id = "987654";
        QCOMPARE(answer.body, call(m_bob, nobodys).body);
    }

    void everyStatementFindsItsRowsByAnIndex()
    {
        QSet<QByteArray> statements;
        for (const QByteArray& line : m_platform.log().mid(m_logOfStart).split('\n'))
            if (const int at = line.indexOf("Statement: "); at >= 0)
                statements += line.mid(at + 11).replace("\\x0a", " ");
        QVERIFY2(statements.size() > 30, QByteArray::number(statements.size()));
        soci::session sql(soci::sqlite3, "db=" + m_platform.data().toStdString() + "/platform.sqlite");
        for (const QByteArray& statement : qAsConst(statements)) {
            if (statement == "commit")
                continue;
            std::string detail;
            int ignored = 0;
            soci::statement plan(sql);
            for (int column = 0; column < 3; ++column)
                plan.exchange(soci::into(ignored));
            plan.exchange(soci::into(detail));
            plan.alloc();
            plan.prepare("explain query plan " + QByteArray(statement).replace(':', '@').toStdString());
            plan.define_and_bind();
            plan.execute();
            while (plan.fetch()) {
                const auto step = QByteArray::fromStdString(detail);
                // Everybody reads all of the one table, up to a bound.
                QVERIFY2(!step.startsWith("SCAN ") || step == "SCAN support_types"
                        || step.startsWith("SCAN CONSTANT ROW"),
                    statement + "\n" + step);
            }
        }
    }

    void nothingWasChanged() { QCOMPARE(stateOfAlice(), m_aliceState); }

private:
    static QByteArray filled(QByteArray text, const QMap<QByteArray, QByteArray>& ids)
    {
        for (auto id = ids.begin(); id != ids.end(); ++id)
            text.replace(id.key(), id.value());
        return text;
    }

    static Answer call(const Client& client, const QMap<QByteArray, QByteArray>& ids)
    {
        QFETCH(QByteArray, method);
        QFETCH(QByteArray, path);
        QFETCH(FormFields, fields);
        path = filled(path, ids);
        for (auto& field : fields)
            field.second = filled(field.second, ids);
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
        QByteArray state;
        for (const QByteArray path : {"cloudProjectBackup/getProjectList?sourceClient=SoftA",
                 "cloudProjectBackup/downloadProject?projectId={project}",
                 "cloudProjectShare/getByProject?projectId={project}&sourceClient=SoftA",
                 "cloudProjectShare/download?logicalId={file}", "cloudAddressBook/list",
                 "cloudProjectGroupUser/listUserGroups",
                 "cloudProjectGroupUser/listGroupUsers?groupId={group}"})
            state += m_alice.get(filled(path, m_aliceIds)).body + '\n';
        return state;
    }

    PlatformUnderTest m_platform{{"--log-level", "trace"}};
    const int m_logOfStart = m_platform.log().size(); ///< a start goes through whole tables
    const Client m_alice = m_platform.signedIn("alice");
    const Client m_bob = m_platform.signedIn("bob");
    QMap<QByteArray, QByteArray> m_aliceIds; ///< by the placeholder in the rows
    QByteArray m_aliceState;
};

QTEST_GUILESS_MAIN(TestAccessRules)
#include "TestAccessRules.moc"
