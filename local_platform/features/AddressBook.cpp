// SPDX-License-Identifier: MIT
#include "features/AddressBook.h"

#include "features/Users.h"

#include <nlohmann/json.hpp>

namespace local_platform {

namespace {

struct Friend
{
    long long id;
    std::string username;
    std::string phone; ///< what the user typed: a friend found by name does not give away a number
    std::string remark;
    std::string unit;

    static Friend from(Database::Row& row)
    {
        return {row.number(), row.text(), row.text(), row.text(), row.text()};
    }
};

void to_json(Json& json, const Friend& record)
{
    json = {{"id", record.id}, {"friendUser", record.username}, {"friendPhone", record.phone},
        {"friendRemark", record.remark}, {"friendUnit", record.unit}};
}

} // namespace

AddressBook::AddressBook(Database& database)
    : database_(database)
{
}

void AddressBook::addTo(Routes& routes)
{
    routes.add("GET", "/project/cloudAddressBook/list", [this](Call& call) { return list(call); });
    routes.add("POST", "/project/cloudAddressBook/add", [this](Call& call) { return add(call); });
    routes.add("DELETE", "/project/cloudAddressBook/delete", [this](Call& call) { return remove(call); });
}

Json AddressBook::list(Call& call)
{
    return success(database_.read().all<Friend>(
        R"(select book.id, users.username, book.phone, book.remark, book.unit
           from address_book book join users on users.id = book.friend_id
           where book.owner_id = :user order by book.id)",
        {call.user()}, call.query().page()));
}

Json AddressBook::add(Call& call)
{
    const Fields form = call.form();
    const std::string& phone = form.filledText("friendPhone");
    auto db = database_.work();
    const auto user = findUser(db, phone);
    if (!user)
        throw unknown("account " + phone);
    if (*user == call.user())
        throw Refusal("This is your own account");
    if (db.number("select id from address_book where owner_id = :user and friend_id = :friend",
            {call.user(), *user}))
        throw Refusal("This friend is in the address book already", 409);
    db.run("insert into address_book (owner_id, friend_id, phone, remark, unit)"
           " values (:owner, :friend, :phone, :remark, :unit)",
        {call.user(), *user, phone, form.text("friendRemark"), form.text("friendUnit")});
    db.commit();
    return success(true);
}

Json AddressBook::remove(Call& call)
{
    const long long id = call.query().id("id");
    auto db = database_.work();
    if (!db.number(
            "delete from address_book where id = :id and owner_id = :user returning id", {id, call.user()}))
        throw unknown("friend");
    db.commit();
    return success(true);
}

} // namespace local_platform
