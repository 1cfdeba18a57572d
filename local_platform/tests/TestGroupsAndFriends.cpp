// SPDX-License-Identifier: MIT
#include "PlatformUnderTest.h"

namespace {

const QByteArray members = "/project/cloudProjectGroupUser/";
const QByteArray book = "/project/cloudAddressBook/";

QByteArray inviteCode(const Client& client, const QByteArray& group)
{
    return client.get(members + "getInviteCode?groupId=" + group).data().toString().toLatin1();
}

Answer join(const Client& client, const QByteArray& code)
{
    return client.postForm(members + "inviteToGroup", {{"inviteCode", code}});
}

QJsonArray groupsOf(const Client& client)
{
    return client.get(members + "listUserGroups").data().toArray();
}

QStringList membersOf(const Client& client, const QByteArray& group)
{
    QStringList names;
    for (const auto& item : client.get(members + "listGroupUsers?groupId=" + group).data().toArray()) {
        const QJsonObject member = item.toObject();
        names += member.value("username").toString() + (member.value("adminFlag").toInt() != 0 ? "*" : "");
    }
    return names;
}

} // namespace

class TestGroupsAndFriends : public QObject
{
    Q_OBJECT

private slots:
    void lifeOfAGroup()
    {
        const Client alice = m_platform.signedIn("alice");
        const Client bob = m_platform.signedIn("bob");
        const QByteArray group = addGroup(alice, "Team");
        const QJsonObject listed = groupsOf(alice).last().toObject();
        QCOMPARE(idText(listed.value("id")), group);
        QCOMPARE(listed.value("groupName").toString(), QString("Team"));
        QCOMPARE(listed.value("createUser").toString(), QString("alice"));
        QCOMPARE(membersOf(alice, group), QStringList{"alice*"});

        const QByteArray code = inviteCode(alice, group);
        QCOMPARE(inviteCode(alice, group), code);
        QCOMPARE(join(bob, "WRONG").msg(), QString("The invitation code is wrong"));
        QVERIFY(join(bob, code).ok());
        QCOMPARE(join(bob, code).msg(), QString("You are in this group already"));
        QCOMPARE(groupsOf(bob).last().toObject().value("inviteCode").toString(), QString());

        for (const Answer& answer : {bob.get(members + "getInviteCode?groupId=" + group),
                 bob.del(members + "removeGroupMember?usernames=alice&groupId=" + group),
                 bob.del("/project/cloudProjectGroup/delete?id=" + group)}) {
            QCOMPARE(answer.status, 403);
            QCOMPARE(answer.msg(), QString("Only the owner of the group can do this"));
        }
        QCOMPARE(membersOf(bob, group), (QStringList{"alice*", "bob"}));

        QVERIFY(bob.get(members + "outGroup?groupId=" + group).ok());
        QCOMPARE(membersOf(alice, group), QStringList{"alice*"});
        QCOMPARE(
            bob.get(members + "listGroupUsers?groupId=" + group).msg(), QString("The group does not exist"));
        QVERIFY2(!alice.get(members + "outGroup?groupId=" + group).ok(), "the owner stays");

        QVERIFY(alice.del("/project/cloudProjectGroup/delete?id=" + group).ok());
        QVERIFY2(!join(bob, code).ok(), "the code ended with the group");
    }

    void removingMembers()
    {
        const Client alice = m_platform.signedIn("alice");
        const Client bob = m_platform.signedIn("bob");
        const QByteArray group = addGroup(alice, "Crew");
        const QByteArray code = inviteCode(alice, group);
        QVERIFY(join(bob, code).ok());
        QVERIFY(join(m_platform.signedIn("carol"), code).ok());
        const auto remove = [&](const QByteArray& names) {
            return alice.del(members + "removeGroupMember?groupId=" + group + "&usernames=" + names);
        };
        const auto memberId = [&](const QByteArray& ofGroup, int at) {
            return idText(alice.get(members + "listGroupUsers?groupId=" + ofGroup).item(at).value("id"));
        };

        const QByteArray elsewhere = memberId(addGroup(alice, "Other"), 0);
        QCOMPARE(remove("bob," + elsewhere).msg(), "The member " + elsewhere + " does not exist");
        QCOMPARE(membersOf(alice, group).size(), 3);
        QVERIFY(remove("bob,carol").ok());
        QVERIFY2(!join(bob, code).ok(), "who was sent away does not come back by the old code");
        QVERIFY(join(bob, inviteCode(alice, group)).ok());
        QVERIFY(remove(memberId(group, 1)).ok());
        QCOMPARE(membersOf(alice, group), QStringList{"alice*"});

        // Emptied before it is deleted: the owner keeps hold of it.
        QVERIFY(remove("alice").ok());
        QVERIFY(alice.del("/project/cloudProjectGroup/delete?id=" + group).ok());
    }

    void refusedGroupNames()
    {
        const Client carol = m_platform.signedIn("carol");
        for (const QByteArray& body : {QByteArray(R"({"groupName":""})"), QByteArray("groupName=x"),
                 QByteArray("{\"groupName\":\"\xff\"}"), QByteArray(60000, '[')}) {
            const Answer answer =
                carol.post("/project/cloudProjectGroup/saveOrUpdate", body, "application/json");
            QCOMPARE(answer.status, 400);
            QCOMPARE(answer.msg(), QString("The group needs a name"));
        }
    }

    void addressBook()
    {
        const Client alice = m_platform.signedIn("alice");
        const auto add = [&](const QByteArray& phone) {
            return alice.postForm(book + "add",
                {{"friendPhone", phone}, {"friendRemark", "\xe9\xb2\x8d"}, {"friendUnit", "Unit & Co"}});
        };
        QVERIFY(add("13800000002").ok());
        QVERIFY(add("carol").ok());
        const QPair<QByteArray, QString> refusals[]{
            {"13999999999", "The account 13999999999 does not exist"},
            {"13800000001", "This is your own account"},
            {"bob", "This friend is in the address book already"},
            {"", "The field friendPhone is empty"},
        };
        for (const auto& [phone, msg] : refusals)
            QCOMPARE(add(phone).msg(), msg);

        const Answer list = alice.get(book + "list");
        QCOMPARE(list.count(), 2);
        QCOMPARE(list.item(0).value("friendUser").toString(), QString("bob"));
        QCOMPARE(list.item(0).value("friendPhone").toString(), QString("13800000002"));
        QCOMPARE(list.item(0).value("friendRemark").toString(), QString::fromUtf8("鲍"));
        QCOMPARE(list.item(0).value("friendUnit").toString(), QString("Unit & Co"));
        QVERIFY2(list.item(1).value("friendPhone").toString() == "carol",
            "a number that alice did not know stays untold");
        QCOMPARE(m_platform.signedIn("bob").get(book + "list").count(), 0);

        QVERIFY(alice.del(book + "delete?id=" + idText(list.item(0).value("id"))).ok());
        QCOMPARE(alice.get(book + "list").count(), 1);
    }

private:
    PlatformUnderTest m_platform;
};

QTEST_GUILESS_MAIN(TestGroupsAndFriends)
#include "TestGroupsAndFriends.moc"
