// SPDX-License-Identifier: MIT
#include "PlatformUnderTest.h"

namespace {

const QByteArray members = "cloudProjectGroupUser/";
const QByteArray book = "cloudAddressBook/";

QByteArray inviteCode(const Client& client, const QByteArray& group)
{
    return client.get(members + "getInviteCode?groupId=" + group).data();
}

Answer join(const Client& client, const QByteArray& code)
{
    return client.postForm(members + "inviteToGroup", {{"inviteCode", code}});
}

Answer groupsOf(const Client& client)
{
    return client.get(members + "listUserGroups");
}

Answer membersOf(const Client& client, const QByteArray& group)
{
    return client.get(members + "listGroupUsers?groupId=" + group);
}

} // namespace

class TestGroupsAndFriends : public QObject
{
    Q_OBJECT

private slots:
    void lifeOfAGroup()
    {
        const QByteArray group = addGroup(m_alice, "Team");
        QCOMPARE(groupsOf(m_alice).items("id"), QByteArrayList{group});
        QCOMPARE(groupsOf(m_alice).items("groupName"), QByteArrayList{"Team"});
        QCOMPARE(groupsOf(m_alice).items("createUser"), QByteArrayList{"alice"});

        const QByteArray code = inviteCode(m_alice, group);
        QCOMPARE(inviteCode(m_alice, group), code);
        QCOMPARE(join(m_bob, "WRONG").msg(), QByteArray("The invitation code is wrong"));
        QVERIFY(join(m_bob, code).ok());
        QCOMPARE(join(m_bob, code).msg(), QByteArray("You are in this group already"));
        QCOMPARE(groupsOf(m_alice).items("inviteCode"), QByteArrayList{code});
        QCOMPARE(groupsOf(m_bob).items("inviteCode"), QByteArrayList{""});

        for (const Answer& answer : {m_bob.get(members + "getInviteCode?groupId=" + group),
                 m_bob.del(members + "removeGroupMember?usernames=alice&groupId=" + group),
                 m_bob.del("cloudProjectGroup/delete?id=" + group)}) {
            QCOMPARE(answer.status, 403);
            QCOMPARE(answer.msg(), QByteArray("Only the owner of the group can do this"));
        }
        QCOMPARE(membersOf(m_bob, group).items("username"), (QByteArrayList{"alice", "bob"}));
        QCOMPARE(membersOf(m_bob, group).items("adminFlag"), (QByteArrayList{"1", "0"}));

        QVERIFY(m_bob.get(members + "outGroup?groupId=" + group).ok());
        QCOMPARE(membersOf(m_alice, group).items("username"), QByteArrayList{"alice"});
        QCOMPARE(membersOf(m_bob, group).msg(), QByteArray("The group does not exist"));
        QVERIFY2(!m_alice.get(members + "outGroup?groupId=" + group).ok(), "the owner stays");

        QVERIFY(m_alice.del("cloudProjectGroup/delete?id=" + group).ok());
        QVERIFY2(!join(m_bob, code).ok(), "the code ended with the group");
    }

    void removingMembers()
    {
        const QByteArray group = addGroup(m_alice, "Crew");
        const QByteArray code = inviteCode(m_alice, group);
        QVERIFY(join(m_bob, code).ok());
        QVERIFY(join(m_platform.signedIn("carol"), code).ok());
        const auto remove = [&](const QByteArray& names) {
            return m_alice.del(members + "removeGroupMember?groupId=" + group + "&usernames=" + names);
        };
        const QByteArray elsewhere = membersOf(m_alice, addGroup(m_alice, "Other")).items("id").first();
        QCOMPARE(remove("bob," + elsewhere).msg(), "The member " + elsewhere + " does not exist");
        QCOMPARE(membersOf(m_alice, group).items("id").size(), 3);
        QVERIFY(remove("bob,carol").ok());
        QVERIFY2(!join(m_bob, code).ok(), "who was sent away does not come back by the old code");
        QVERIFY(join(m_bob, inviteCode(m_alice, group)).ok());
        QVERIFY(remove(membersOf(m_alice, group).items("id").last()).ok());
        QCOMPARE(membersOf(m_alice, group).items("username"), QByteArrayList{"alice"});

        // Emptied before it is deleted: the owner keeps hold of it.
        QVERIFY(remove("alice").ok());
        QVERIFY(m_alice.del("cloudProjectGroup/delete?id=" + group).ok());
    }

    void refusedGroupNames()
    {
        for (const QByteArray& body : {QByteArray(R"({"groupName":""})"), QByteArray("groupName=x"),
                 QByteArray("{\"groupName\":\"\xff\"}"), QByteArray(60000, '[')}) {
            const Answer answer = m_bob.post("cloudProjectGroup/saveOrUpdate", body, "application/json");
            QCOMPARE(answer.status, 400);
            QCOMPARE(answer.msg(), QByteArray("The group needs a name"));
        }
    }

    void addressBook()
    {
        const std::pair<QByteArray, QByteArray> friends[]{
            {"13800000002", "success"},
            {"carol", "success"},
            {"13999999999", "The account 13999999999 does not exist"},
            {"13800000001", "This is your own account"},
            {"bob", "This friend is in the address book already"},
            {"", "The field friendPhone is empty"},
        };
        for (const auto& [phone, msg] : friends) {
            const FormFields form = {
                {"friendPhone", phone}, {"friendRemark", "鲍"}, {"friendUnit", "Unit & Co"}};
            QCOMPARE(m_alice.postForm(book + "add", form).msg(), msg);
        }
        const Answer list = m_alice.get(book + "list");
        QCOMPARE(list.items("friendUser"), (QByteArrayList{"bob", "carol"}));
        // A number that alice did not know stays untold.
        QCOMPARE(list.items("friendPhone"), (QByteArrayList{"13800000002", "carol"}));
        QCOMPARE(list.items("friendRemark").first(), QByteArray("鲍"));
        QCOMPARE(list.items("friendUnit").first(), QByteArray("Unit & Co"));
        QCOMPARE(m_bob.get(book + "list").items("id"), QByteArrayList());

        QVERIFY(m_alice.del(book + "delete?id=" + list.items("id").first()).ok());
        QCOMPARE(m_alice.get(book + "list").items("friendUser"), QByteArrayList{"carol"});
    }

private:
    PlatformUnderTest m_platform;
    const Client m_alice = m_platform.signedIn("alice");
    const Client m_bob = m_platform.signedIn("bob");
};

QTEST_GUILESS_MAIN(TestGroupsAndFriends)
#include "TestGroupsAndFriends.moc"
