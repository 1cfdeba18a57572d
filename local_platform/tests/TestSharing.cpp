// SPDX-License-Identifier: MIT
#include "PlatformUnderTest.h"

namespace {

const QByteArray base = "/project/cloudProjectShare/";

FormFields shareForm(const QByteArray& project, const QByteArray& ids, const FormFields& more = {})
{
    return FormFields{{"projectId", project}, {"sourceClient", "SoftA"}, {"durationHours", "24"},
               {"logicalIds", ids}}
    + more;
}

Answer filesOf(const Client& client, const QByteArray& project, const QByteArray& software = "SoftA")
{
    return client.get(base + "getByProject?projectId=" + project + "&sourceClient=" + software);
}

Answer projectsFor(
    const Client& client, const QByteArray& source = "SoftA", const QByteArray& target = "SoftA")
{
    return client.get(base + "getProjectBySoftId?sourceClient=" + source + "&targetClient=" + target);
}

Answer download(const Client& client, const QByteArray& logicalId)
{
    return client.get(base + "download?logicalId=" + logicalId);
}

QByteArray extract(const Client& client, const QByteArray& code)
{
    const Answer answer = client.get(base + "extractByCode?extractionCode=" + code + "&sourceClient=SoftA");
    return answer.ok() ? "ok" : answer.msg().toUtf8();
}

} // namespace

class TestSharing : public QObject
{
    Q_OBJECT

private slots:
    void anonymousShare()
    {
        const Client alice = m_platform.signedIn("alice");
        const Client bob = m_platform.signedIn("bob");
        const Client carol = m_platform.signedIn("carol");
        const QByteArray project = addProject(alice, "Bridge");
        const QByteArray file = uploadSharedFile(alice, project, "bridge.dwg", "the bridge");
        const QByteArray unshared = uploadSharedFile(alice, project, "secret.dwg", "not for you");

        const Answer shared = alice.postForm(base + "toAnonymous", shareForm(project, file));
        const QByteArray code = shared.data().toString().toLatin1();
        QVERIFY2(shared.ok() && code.size() >= 8, shared.body);
        QCOMPARE(download(bob, file).status, 404);
        QCOMPARE(extract(bob, "WRONGCODE1"), QByteArray("The extraction code is wrong or has expired"));
        QCOMPARE(extract(bob, code), QByteArray("ok"));

        const Answer projects = projectsFor(bob);
        QCOMPARE(projects.count(), 1);
        QCOMPARE(idText(projects.item(0).value("id")), project);
        QCOMPARE(projects.item(0).value("projectTitle").toString(), QString("Bridge"));
        QCOMPARE(projectsFor(bob, "SoftB").count(), 0);
        const Answer files = filesOf(bob, project);
        QCOMPARE(files.count(), 1);
        QCOMPARE(idText(files.item(0).value("id")), file);
        QCOMPARE(files.item(0).value("originalName").toString(), QString("bridge.dwg"));
        QCOMPARE(download(bob, file).body, QByteArray("the bridge"));
        QCOMPARE(download(bob, unshared).status, 404);

        // Who did not extract finds nothing; the owner has all files and, having extracted, sees the project
        // as shared.
        QCOMPARE(projectsFor(carol).count(), 0);
        QCOMPARE(filesOf(carol, project).msg(), QString("所选项目不存在"));
        QCOMPARE(download(carol, file).status, 404);
        QCOMPARE(filesOf(alice, project).count(), 2);
        QCOMPARE(projectsFor(alice).count(), 0);
        QCOMPARE(extract(alice, code), QByteArray("ok"));
        QCOMPARE(projectsFor(alice).count(), 1);

        m_platform.restart();
        QCOMPARE(download(m_platform.signedIn("bob"), file).body, QByteArray("the bridge"));
    }

    void shareWithGroup()
    {
        const Client alice = m_platform.signedIn("alice");
        const Client bob = m_platform.signedIn("bob");
        const QByteArray group = addGroup(alice, "Team");
        const QByteArray project = addProject(alice, "Tunnel");
        const QByteArray file = uploadSharedFile(alice, project, "tunnel.dwg", "the tunnel");
        QVERIFY(alice.postForm(base + "toGroup", shareForm(project, file, {{"groupId", group}})).ok());
        QCOMPARE(download(bob, file).status, 404);

        const QByteArray members = "/project/cloudProjectGroupUser/";
        const Answer code = alice.get(members + "getInviteCode?groupId=" + group);
        QVERIFY(bob.postForm(members + "inviteToGroup", {{"inviteCode", code.data().toString().toLatin1()}})
                    .ok());
        QCOMPARE(download(bob, file).body, QByteArray("the tunnel"));
        QCOMPARE(filesOf(bob, project).count(), 1);
        QVERIFY(bob.get(members + "outGroup?groupId=" + group).ok());
        QCOMPARE(download(bob, file).status, 404);
        QVERIFY(alice.del("/project/cloudProjectGroup/delete?id=" + group).ok());
        QCOMPARE(download(alice, file).body, QByteArray("the tunnel"));
    }

    void sharesEnd()
    {
        PlatformUnderTest platform({"--token-lifetime", "1000000"});
        const Client alice = platform.signedIn("alice");
        const QByteArray project = addProject(alice);
        const QByteArray file = uploadSharedFile(alice, project, "x.dwg", "x");
        const QByteArray code =
            alice.postForm(base + "toAnonymous", shareForm(project, file)).data().toString().toLatin1();
        QCOMPARE(extract(platform.signedIn("bob"), code), QByteArray("ok"));

        platform.restart({"--clock-offset", QString::number(24 * 3600 - 60)});
        QCOMPARE(download(platform.signedIn("bob"), file).body, QByteArray("x"));
        platform.restart({"--clock-offset", QString::number(24 * 3600 + 1)});
        const Client bob = platform.signedIn("bob");
        QCOMPARE(download(bob, file).status, 404);
        QCOMPARE(filesOf(bob, project).msg(), QString("所选项目不存在"));
        QCOMPARE(projectsFor(bob).count(), 0);
        QCOMPARE(extract(platform.signedIn("carol"), code),
            QByteArray("The extraction code is wrong or has expired"));
        QCOMPARE(download(platform.signedIn("alice"), file).body, QByteArray("x"));
    }

    void refusedShares()
    {
        const Client alice = m_platform.signedIn("alice");
        const Client bob = m_platform.signedIn("bob");
        const QByteArray project = addProject(alice);
        const QByteArray file = uploadSharedFile(alice, project, "x.dwg", "x");
        const QByteArray anothers = uploadSharedFile(bob, addProject(bob), "y.dwg", "y");
        const QString hours = "A share lasts from 1 to 87840 hours";
        const std::tuple<QByteArray, FormFields, QString> shares[]{
            {"toAnonymous", {{"durationHours", "0"}}, hours},
            {"toAnonymous", {{"durationHours", "99999999999999999999999"}}, hours},
            {"toAnonymous", {{"logicalIds", " ,"}}, "There is no file to share"},
            {"toUSer", {{"logicalIds", file + "," + anothers}}, "The file does not exist"},
            {"toUSer", {{"userNames", "bob,nobody"}}, "The account nobody does not exist"},
            {"toGroup", {}, "The group does not exist"},
        };
        for (const auto& [path, change, msg] : shares) {
            // The first field of a name counts.
            const Answer answer = alice.postForm(base + path,
                change + shareForm(project, file, {{"userNames", "bob"}, {"groupId", "999999"}}));
            QCOMPARE(answer.msg(), msg);
            QVERIFY(answer.status >= 400 && answer.code() != 0);
            QVERIFY2(download(bob, file).status == 404, "a refused share gives nothing to anybody");
        }
    }

    void targetSoftware()
    {
        const Client alice = m_platform.signedIn("alice");
        const Client bob = m_platform.signedIn("bob");
        const QByteArray project = addProject(alice, "For some", "SoftT");
        const auto share = [&](const QByteArray& type) {
            const QByteArray file = uploadSharedFile(alice, project, "x" + type, "x", type);
            alice.postForm(base + "toUSer", shareForm(project, file, {{"userNames", "alice,bob"}}));
        };
        share("71");
        QCOMPARE(projectsFor(bob, "SoftT", "SoftV").count(), 1);
        const FormFields accepted = {
            {"sourceClient", "SoftT"}, {"supportTypeId", "71"}, {"targetClient", "SoftU"}};
        QVERIFY(alice.postForm("/project/softwareAdaptationType/saveOrUpdate", accepted).ok());
        QCOMPARE(projectsFor(bob, "SoftT", "SoftV").count(), 0);
        QCOMPARE(projectsFor(bob, "SoftT", "SoftU").count(), 1);
        QCOMPARE(projectsFor(bob, "SoftT", "SoftT").count(), 1);
        share("72");
        QCOMPARE(filesOf(bob, project, "SoftV").count(), 1);
        QCOMPARE(filesOf(bob, project, "SoftU").count(), 2);
    }

    void hostileNames()
    {
        const QByteArray content("x\0\r\n--boundary", 14);
        const QPair<QByteArray, QString> names[]{
            {"", "file"},
            {QByteArray(5000, 'x'), QString(5000, 'x')},
            {"\xe6\xb5\x8b\xe9\x87\x8f.dwg", "测量.dwg"},
            {"../../x.dwg", "x.dwg"},
            {"C:\\x\\y.dwg", "y.dwg"},
            {"<b>'&\"; drop table users;--", "<b>'&\"; drop table users;--"},
            {"a\xff.dwg", QString("a%1.dwg").arg(QChar(0xfffd))},
        };
        const Client alice = m_platform.signedIn("alice");
        for (const auto& [sent, told] : names) {
            const QByteArray project = addProject(alice);
            const QByteArray file = uploadSharedFile(alice, project, sent, content);
            QCOMPARE(filesOf(alice, project).item(0).value("originalName").toString(), told);
            QCOMPARE(download(alice, file).body, content);
        }
    }

private:
    PlatformUnderTest m_platform;
};

QTEST_GUILESS_MAIN(TestSharing)
#include "TestSharing.moc"
