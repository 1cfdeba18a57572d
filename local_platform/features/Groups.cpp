// SPDX-License-Identifier: MIT
#include "features/Groups.h"

#include "base/Text.h"
#include "store/Secrets.h"

#include <nlohmann/json.hpp>

namespace local_platform {

namespace {

constexpr int inviteCodeLength = 10;
constexpr std::size_t maxJsonBody = 64u << 10;

struct Group
{
    long long id;
    std::string name;
    std::string createUser;
    std::string inviteCode;

    static Group from(Database::Row& row) { return {row.number(), row.text(), row.text(), row.text()}; }
};

void to_json(Json& json, const Group& group)
{
    json = {{"id", group.id}, {"groupName", group.name}, {"createUser", group.createUser},
        {"inviteCode", group.inviteCode}};
}

struct Member
{
    long long id;
    long long group;
    std::string username;
    long long adminFlag;

    static Member from(Database::Row& row) { return {row.number(), row.number(), row.text(), row.number()}; }
};

void to_json(Json& json, const Member& member)
{
    json = {{"id", member.id}, {"groupId", member.group}, {"username", member.username},
        {"adminFlag", member.adminFlag}};
}

bool owns(Database::Work& db, long long user, long long group)
{
    return db.number("select id from user_groups where id = :group and owner_id = :user", {group, user})
        .has_value();
}

void requireOwnGroup(Database::Work& db, long long user, long long group)
{
    requireGroup(db, user, group);
    if (!owns(db, user, group))
        throw Refusal("Only the owner of the group can do this", 403);
}

std::string groupName(const Json& body)
{
    const auto name = body.is_object() ? body.find("groupName") : body.end();
    if (name == body.end() || !name->is_string() || name->get<std::string>().empty())
        throw Refusal("The group needs a name");
    if (name->get<std::string>().size() > Fields::usualLength)
        throw Refusal("The group's name is too long");
    return name->get<std::string>();
}

/// Clients hand over the name or the id of a member record; a name wins.
std::optional<long long> findMember(Database::Work& db, long long group, const std::string& nameOrId)
{
    const auto named = db.number("select group_members.id from group_members"
                                 " join users on users.id = group_members.user_id"
                                 " where group_id = :group and username = :name",
        {group, nameOrId});
    return named ? named
                 : db.number("select id from group_members where group_id = :group and id = :id",
                     {group, idFrom(nameOrId)});
}

} // namespace

void requireGroup(Database::Work& db, long long user, long long group)
{
    if (!owns(db, user, group)
        && !db.number(
            "select id from group_members where group_id = :group and user_id = :user", {group, user}))
        throw unknown("group");
}

Groups::Groups(Database& database, const Clock& clock)
    : database_(database)
    , guessing_(clock)
{
}

void Groups::addTo(Routes& routes)
{
    const std::string members = "/project/cloudProjectGroupUser/";
    routes.add(
        "POST", "/project/cloudProjectGroup/saveOrUpdate", [this](Call& call) { return saveOrUpdate(call); });
    routes.add("DELETE", "/project/cloudProjectGroup/delete", [this](Call& call) { return remove(call); });
    routes.add("GET", members + "listUserGroups", [this](Call& call) { return list(call); });
    routes.add("GET", members + "listGroupUsers", [this](Call& call) { return listMembers(call); });
    routes.add("GET", members + "getInviteCode", [this](Call& call) { return inviteCode(call); });
    routes.add("POST", members + "inviteToGroup", [this](Call& call) { return join(call); });
    routes.add("GET", members + "outGroup", [this](Call& call) { return leave(call); });
    routes.add("DELETE", members + "removeGroupMember", [this](Call& call) { return removeMembers(call); });
}

Json Groups::saveOrUpdate(Call& call)
{
    const Json body = Json::parse(call.text(maxJsonBody), nullptr, false);
    const std::string name = groupName(body);
    auto db = database_.work();
    if (body.contains("id")) {
        const long long group =
            idFrom(body["id"].is_string() ? body["id"].get<std::string>() : body["id"].dump());
        requireOwnGroup(db, call.user(), group);
        db.run("update user_groups set name = :name where id = :group", {name, group});
        db.commit();
        return success(group);
    }
    const auto group = db.number(
        "insert into user_groups (owner_id, name) values (:owner, :name) returning id", {call.user(), name});
    db.run("insert into group_members (group_id, user_id, admin_flag) values (:group, :user, 1)",
        {group.value(), call.user()});
    db.commit();
    return success(group.value());
}

Json Groups::remove(Call& call)
{
    const long long group = call.query().id("id");
    auto db = database_.work();
    requireOwnGroup(db, call.user(), group);
    db.run("delete from user_groups where id = :group", {group});
    db.commit();
    return success(true);
}

Json Groups::list(Call& call)
{
    // The code lets anybody in, so it is the owner's to give.
    return success(database_.read().all<Group>(
        R"(select user_groups.id, name, username,
               case when owner_id = :me then coalesce(invite_code, '') else '' end
           from user_groups join users on users.id = owner_id
           where owner_id = :owner or user_groups.id in (select group_id from group_members where user_id = :user)
           order by user_groups.id)",
        {call.user(), call.user(), call.user()}, call.query().page()));
}

Json Groups::listMembers(Call& call)
{
    const long long group = call.query().id("groupId");
    auto db = database_.read();
    requireGroup(db, call.user(), group);
    return success(db.all<Member>(
        R"(select group_members.id, group_id, username, admin_flag
           from group_members join users on users.id = user_id
           where group_id = :group order by group_members.id)",
        {group}, call.query().page()));
}

Json Groups::inviteCode(Call& call)
{
    const long long group = call.query().id("groupId");
    auto db = database_.work();
    requireOwnGroup(db, call.user(), group);
    auto code = db.text("select invite_code from user_groups where id = :group", {group});
    if (!code) {
        code = randomCode(inviteCodeLength);
        db.run("update user_groups set invite_code = :code where id = :group", {*code, group});
        db.commit();
    }
    return success(*code);
}

Json Groups::join(Call& call)
{
    const Fields form = call.form();
    const std::string account = "user " + std::to_string(call.user());
    guessing_.requireMay(account, call.client());
    auto db = database_.work();
    const auto group =
        db.number("select id from user_groups where invite_code = :code", {form.text("inviteCode")});
    if (!group) {
        guessing_.wrong(account, call.client());
        throw Refusal("The invitation code is wrong", 404);
    }
    if (db.number("select id from group_members where group_id = :group and user_id = :user",
            {*group, call.user()}))
        throw Refusal("You are in this group already", 409);
    db.run("insert into group_members (group_id, user_id, admin_flag) values (:group, :user, 0)",
        {*group, call.user()});
    db.commit();
    return success(true);
}

Json Groups::leave(Call& call)
{
    const long long group = call.query().id("groupId");
    auto db = database_.work();
    requireGroup(db, call.user(), group);
    if (owns(db, call.user(), group))
        throw Refusal("The owner cannot leave the group, only delete it", 403);
    db.run("delete from group_members where group_id = :group and user_id = :user", {group, call.user()});
    db.commit();
    return success(true);
}

Json Groups::removeMembers(Call& call)
{
    const long long group = call.query().id("groupId");
    const std::vector<std::string> names = call.query().list("usernames");
    auto db = database_.work();
    requireOwnGroup(db, call.user(), group);
    if (names.empty())
        throw Refusal("There is nobody to remove");
    for (const std::string& name : names) {
        const auto member = findMember(db, group, name);
        if (!member)
            throw unknown("member " + name);
        db.run("delete from group_members where id = :id", {*member});
    }
    // Who was sent away still knows the code.
    db.run("update user_groups set invite_code = null where id = :group", {group});
    db.commit();
    return success(true);
}

} // namespace local_platform
