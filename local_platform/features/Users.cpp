// SPDX-License-Identifier: MIT
#include "features/Users.h"

#include "base/Names.h"
#include "base/Refusal.h"
#include "base/Text.h"

#include <algorithm>

namespace local_platform {

namespace {

bool isAscii(const std::string& text)
{
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

/// Whether people would take the name for that of an account. Within ASCII, where they know how alike a few
/// letters look, all names are different.
bool looksLikeAnother(Database::Work& db, const std::string& name, const std::string& skeleton)
{
    bool found = false;
    db.each("select username from users where skeleton = :skeleton", {skeleton}, [&](Database::Row& row) {
        found = !isAscii(name) || !isAscii(row.text());
        return !found;
    });
    return found;
}

void refuseDuplicate(Database::Work& db, const std::string& column, const std::string& value)
{
    if (!value.empty()
        && db.number("select id from users where " + column + " = :value and " + column + " <> ''", {value}))
        throw Refusal("Duplicate entry '" + value + "' for key '" + column + "'", 409);
}

} // namespace

void requireUsableName(const std::string& name, const std::string& phone)
{
    constexpr std::size_t longest = 100;
    const bool splits = listed(name) != std::vector<std::string>{name};
    if (splits || name.size() > longest)
        throw Refusal("A user name has no spaces, commas or semicolons, and at most 100 bytes");
    if (canDeceive(name))
        throw Refusal("A user name has no invisible characters, and no letters of scripts that look alike");
    const std::string compared = comparable(name);
    if (compared.find('@') != std::string::npos || (isPhone(compared) && name != phone))
        throw Refusal("A user name cannot look like a phone number or an e-mail address");
}

void requireUsableMail(const std::string& mail)
{
    if (!isMail(mail) || canDeceive(mail))
        throw Refusal("This is not an e-mail address");
}

std::optional<long long> findUser(Database::Work& db, const std::string& login)
{
    if (login.empty())
        return std::nullopt;
    // Each part by an index of its own, the exact name before all.
    const auto exact = db.number("select id from users where username = :name"
                                 " union all select id from users where phone = :phone and phone <> ''"
                                 " union all select id from users where mail = :mail and mail <> ''",
        {login, login, login});
    // Of two from times when case made a difference, neither is meant by a third spelling.
    return exact ? exact
                 : db.number("select min(id) from users where name_key = :key having count(*) = 1",
                     {comparable(login)});
}

void addUser(Database::Work& db, const NewAccount& account, const std::string& passwordHash)
{
    refuseDuplicate(db, "phone", account.phone);
    refuseDuplicate(db, "mail", account.mail);
    const std::string name = inOneForm(account.username);
    const std::string key = comparable(name);
    const std::string skeleton = skeletonOf(name);
    if (db.number("select id from users where name_key = :key", {key})
        || looksLikeAnother(db, name, skeleton))
        throw Refusal("The user name is taken", 409);
    db.run("insert into users (username, password_hash, phone, mail, name_key, skeleton)"
           " values (:name, :hash, :phone, :mail, :key, :skeleton)",
        {name, passwordHash, account.phone, account.mail, key, skeleton});
}

} // namespace local_platform
