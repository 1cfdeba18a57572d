// SPDX-License-Identifier: MIT
#include "features/Users.h"

#include "base/Refusal.h"
#include "base/Text.h"

#include <algorithm>

namespace local_platform {

namespace {

void refuseDuplicate(Database::Work& db, const std::string& column, const std::string& value)
{
    if (!value.empty() && db.number("select id from users where " + column + " = :value", {value}))
        throw Refusal("Duplicate entry '" + value + "' for key '" + column + "'", 409);
}

} // namespace

void requireUsableName(const std::string& name, const std::string& phone)
{
    const bool splits = listed(name) != std::vector<std::string>{name};
    const bool hasControls =
        std::any_of(name.begin(), name.end(), [](char c) { return static_cast<unsigned char>(c) < ' '; });
    if (splits || hasControls || name.size() > 100)
        throw Refusal("A user name has no spaces, commas or semicolons, and at most 100 bytes");
    if (name.find('@') != std::string::npos || (isPhone(name) && name != phone))
        throw Refusal("A user name cannot look like a phone number or an e-mail address");
}

std::optional<long long> findUser(Database::Work& db, const std::string& login)
{
    if (login.empty())
        return std::nullopt;
    return db.number("select id from users where username = :name or phone = :phone or mail = :mail",
        {login, login, login});
}

void addUser(Database::Work& db, const NewAccount& account, const std::string& passwordHash)
{
    refuseDuplicate(db, "phone", account.phone);
    refuseDuplicate(db, "mail", account.mail);
    if (db.number("select id from users where username = :name", {account.username}))
        throw Refusal("The user name is taken", 409);
    db.run("insert into users (username, password_hash, phone, mail) values (:name, :hash, :phone, :mail)",
        {account.username, passwordHash, account.phone, account.mail});
}

} // namespace local_platform
