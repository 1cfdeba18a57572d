// SPDX-License-Identifier: MIT
#include "PlatformUnderTest.h"

namespace {

const QByteArray base = "cloudProjectShare/";
const QByteArray wrongCode = "The extraction code is wrong or has expired";
const QByteArray noFile = "The file does not exist";
const QByteArray noProject = "所选项目不存在";

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

/// What is in the file, or why not.
QByteArray download(const Client& client, const QByteArray& logicalId)
{
    const Answer answer = client.get(base + "download?logicalId=" + logicalId);
    return answer.status == 200 ? answer.body : answer.msg();
}

QByteArray extract(const Client& client, const QByteArray& code)
{
    return client.get(base + "extractByCode?extractionCode=" + code + "&sourceClient=SoftA").msg();
}

} // namespace

class TestSharing : public QObject
{
    Q_OBJECT

private slots:
    void anonymousShare()
    {
        const QByteArray project = addProject(m_alice, "Bridge");
        const QByteArray file = uploadSharedFile(m_alice, project, "bridge.dwg", "the bridge");
        const QByteArray unshared = uploadSharedFile(m_alice, project, "secret.dwg", "not for you");
        const QByteArray code = m_alice.postForm(base + "toAnonymous", shareForm(project, file)).data();
        QVERIFY2(code.size() >= 8, code);
        QCOMPARE(download(m_bob, file), noFile);
        QCOMPARE(extract(m_bob, "WRONGCODE1"), wrongCode);
        QCOMPARE(extract(m_bob, code), QByteArray("success"));

        QCOMPARE(projectsFor(m_bob).items("id"), QByteArrayList{project});
        QCOMPARE(projectsFor(m_bob).items("projectTitle"), QByteArrayList{"Bridge"});
        QCOMPARE(projectsFor(m_bob, "SoftB").items("id"), QByteArrayList());
        const Answer files = filesOf(m_bob, project);
        QCOMPARE(files.items("id"), QByteArrayList{file});
        QCOMPARE(files.items("originalName"), QByteArrayList{"bridge.dwg"});
        QCOMPARE(download(m_bob, file), QByteArray("the bridge"));
        QCOMPARE(download(m_bob, unshared), noFile);

        // Who did not extract finds nothing; the owner has all files and, having extracted, sees the project
        // as shared.
        QCOMPARE(projectsFor(m_carol).items("id"), QByteArrayList());
        QCOMPARE(filesOf(m_carol, project).msg(), noProject);
        QCOMPARE(download(m_carol, file), noFile);
        QCOMPARE(filesOf(m_alice, project).items("id"), (QByteArrayList{file, unshared}));
        QCOMPARE(projectsFor(m_alice).items("id"), QByteArrayList());
        QCOMPARE(extract(m_alice, code), QByteArray("success"));
        QCOMPARE(projectsFor(m_alice).items("id"), QByteArrayList{project});
    }

    void shareWithGroup()
    {
        const QByteArray group = addGroup(m_alice, "Team");
        const QByteArray project = addProject(m_alice, "Tunnel");
        const QByteArray file = uploadSharedFile(m_alice, project, "tunnel.dwg", "the tunnel");
        QVERIFY(m_alice.postForm(base + "toGroup", shareForm(project, file, {{"groupId", group}})).ok());
        QCOMPARE(download(m_bob, file), noFile);

        const QByteArray members = "cloudProjectGroupUser/";
        const FormFields code = {
            {"inviteCode", m_alice.get(members + "getInviteCode?groupId=" + group).data()}};
        QVERIFY(m_bob.postForm(members + "inviteToGroup", code).ok());
        QCOMPARE(download(m_bob, file), QByteArray("the tunnel"));
        QCOMPARE(filesOf(m_bob, project).items("id"), QByteArrayList{file});
        QVERIFY(m_bob.get(members + "outGroup?groupId=" + group).ok());
        QCOMPARE(download(m_bob, file), noFile);
        QVERIFY(m_bob.postForm(members + "inviteToGroup", code).ok());
        QVERIFY(m_alice.del("cloudProjectGroup/delete?id=" + group).ok());
        QVERIFY2(download(m_bob, file) == noFile, "a group's shares end with it");
        QCOMPARE(download(m_alice, file), QByteArray("the tunnel"));
    }

    void sharesEnd()
    {
        PlatformUnderTest platform({"--token-lifetime", "1000000"});
        const Client alice = platform.signedIn("alice");
        const QByteArray project = addProject(alice);
        const QByteArray file = uploadSharedFile(alice, project, "x.dwg", "x");
        const QByteArray code = alice.postForm(base + "toAnonymous", shareForm(project, file)).data();
        QCOMPARE(extract(platform.signedIn("bob"), code), QByteArray("success"));

        platform.restart({"--clock-offset", QString::number(24 * 3600 - 60)});
        QCOMPARE(download(platform.signedIn("bob"), file), QByteArray("x"));
        platform.restart({"--clock-offset", QString::number(24 * 3600 + 1)});
        const Client bob = platform.signedIn("bob");
        QCOMPARE(download(bob, file), noFile);
        QCOMPARE(filesOf(bob, project).msg(), noProject);
        QCOMPARE(projectsFor(bob).items("id"), QByteArrayList());
        QCOMPARE(extract(platform.signedIn("carol"), code), wrongCode);
        QCOMPARE(download(platform.signedIn("alice"), file), QByteArray("x"));
    }

    void refusedShares()
    {
        const QByteArray project = addProject(m_alice);
        const QByteArray file = uploadSharedFile(m_alice, project, "x.dwg", "x");
        const QByteArray bobs = uploadSharedFile(m_bob, addProject(m_bob), "y.dwg", "y");
        const QByteArray hours = "A share lasts from 1 to 87840 hours";
        const std::tuple<QByteArray, FormFields, QByteArray> shares[]{
            {"toAnonymous", {{"durationHours", "0"}}, hours},
            {"toAnonymous", {{"durationHours", "87841"}}, hours},
            {"toAnonymous", {{"durationHours", "99999999999999999999999"}}, hours},
            {"toAnonymous", {{"logicalIds", " ,"}}, "There is no file to share"},
            {"toUSer", {{"logicalIds", file + "," + bobs}}, noFile},
            {"toUSer", {{"userNames", "bob,nobody"}}, "The account nobody does not exist"},
            {"toGroup", {}, "The group does not exist"},
        };
        for (const auto& [path, change, msg] : shares) {
            // The first field of a name counts.
            const Answer answer = m_alice.postForm(base + path,
                change + shareForm(project, file, {{"userNames", "bob"}, {"groupId", "999999"}}));
            QCOMPARE(answer.msg(), msg);
            QVERIFY(answer.status >= 400 && answer.code() != 0);
            QVERIFY2(download(m_bob, file) == noFile, "a refused share gives nothing to anybody");
        }
    }

    void targetSoftware()
    {
        const QByteArray project = addProject(m_alice, "For some", "SoftT");
        const auto share = [&](const QByteArray& type) {
            const QByteArray file = uploadSharedFile(m_alice, project, "x" + type, "x", type);
            m_alice.postForm(base + "toUSer", shareForm(project, file, {{"userNames", "alice,bob"}}));
        };
        share("71");
        QCOMPARE(projectsFor(m_bob, "SoftT", "SoftV").items("id"), QByteArrayList{project});
        const FormFields accepted = {
            {"sourceClient", "SoftT"}, {"supportTypeId", "71"}, {"targetClient", "SoftU"}};
        QVERIFY(m_alice.postForm("softwareAdaptationType/saveOrUpdate", accepted).ok());
        QCOMPARE(projectsFor(m_bob, "SoftT", "SoftV").items("id"), QByteArrayList());
        QCOMPARE(projectsFor(m_bob, "SoftT", "SoftU").items("id"), QByteArrayList{project});
        QCOMPARE(projectsFor(m_bob, "SoftT", "SoftT").items("id"), QByteArrayList{project});
        share("72");
        QCOMPARE(filesOf(m_bob, project, "SoftV").items("originalName"), QByteArrayList{"x72"});
        QCOMPARE(filesOf(m_bob, project, "SoftU").items("originalName"), (QByteArrayList{"x71", "x72"}));
    }

    void hostileNames()
    {
        const QByteArray content("x\0\r\n--boundary", 14);
        const QPair<QByteArray, QByteArray> names[]{
            {"", "file"},
            {QByteArray(5000, 'x'), QByteArray(5000, 'x')},
            {"测量.dwg", "测量.dwg"},
            {"../../x.dwg", "x.dwg"},
            {"C:\\x\\y.dwg", "y.dwg"},
            {"<b>'&\\\"; drop table users;--", "<b>'&\"; drop table users;--"},
            {"a\xff.dwg", "a\xef\xbf\xbd.dwg"},
        };
        for (const auto& [sent, told] : names) {
            const QByteArray project = addProject(m_alice);
            const QByteArray file = uploadSharedFile(m_alice, project, sent, content);
            QCOMPARE(filesOf(m_alice, project).items("originalName"), QByteArrayList{told});
            QCOMPARE(download(m_alice, file), content);
        }
    }

private:
    PlatformUnderTest m_platform;
    const Client m_alice = m_platform.signedIn("alice");
    const Client m_bob = m_platform.signedIn("bob");
    const Client m_carol = m_platform.signedIn("carol");
};

QTEST_GUILESS_MAIN(TestSharing)
#include "TestSharing.moc"
