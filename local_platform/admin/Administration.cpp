// SPDX-License-Identifier: MIT
#include "admin/Administration.h"

#include "base/Refusal.h"
#include "base/Text.h"
#include "store/Inventory.h"
#include "store/Schema.h"
#include "store/Secrets.h"

#include <limits>
#include <optional>
#include <stdexcept>
#include <utility>
#include <vector>

namespace local_platform {

namespace {

enum class Kind
{
    Number,
    Text,
    Flag,
    Time ///< told as people read it
};
using Columns = std::vector<std::pair<const char*, Kind>>;
using Json = Administration::Json;

Json valueOf(Database::Row& row, Kind kind)
{
    switch (kind) {
    case Kind::Number:
        return row.number();
    case Kind::Flag:
        return row.number() != 0;
    case Kind::Time:
        return timeText(row.number());
    case Kind::Text:
        break;
    }
    return row.text();
}

Json listOf(
    Database& database, const Columns& columns, const std::string& query, const Database::Values& values = {})
{
    Json list = Json::array();
    database.read().each(query, values, [&](Database::Row& row) {
        Json object;
        for (const auto& [name, kind] : columns)
            object[name] = valueOf(row, kind);
        list.push_back(std::move(object));
        return true;
    });
    return list;
}

std::filesystem::path databaseOf(const DataFolder& folder)
{
    if (lookAt(folder.database(), Reading::Beside).version != latestSchema)
        throw std::runtime_error(
            "The data folder is of an earlier version: start this version's platform on it once");
    return folder.database();
}

} // namespace

Administration::Administration(const std::filesystem::path& data)
    : folder_(data, DataFolder::Use::Inspect)
    , database_(databaseOf(folder_))
    , files_(folder_.path(), std::numeric_limits<std::uint64_t>::max())
    , trash_(database_, files_, clock_, 0)
{
}

long long Administration::userOf(Database::Work& db, const std::string& login) const
{
    const auto user = findUser(db, login);
    if (!user)
        throw Refusal("There is no account " + login);
    return *user;
}

Json Administration::users()
{
    return listOf(database_,
        {{"id", Kind::Number}, {"username", Kind::Text}, {"phone", Kind::Text}, {"mail", Kind::Text},
            {"disabled", Kind::Flag}, {"projects", Kind::Number}, {"sessions", Kind::Number}},
        "select id, username, phone, mail, disabled,"
        " (select count(*) from projects where owner_id = users.id),"
        " (select count(*) from tokens where user_id = users.id and refresh_expires_at > :now)"
        " from users order by id",
        {clock_.now()});
}

void Administration::addUser(const NewAccount& account)
{
    requireUsableName(account.username, account.phone);
    if (!account.mail.empty())
        requireUsableMail(account.mail);
    if (!account.phone.empty() && !isPhone(account.phone))
        throw Refusal("This is not a phone number");
    const std::string hash = hashedPassword(account.password);
    auto db = database_.work();
    local_platform::addUser(db, account, hash);
    db.commit();
}

void Administration::setDisabled(const std::string& login, bool disabled)
{
    auto db = database_.work();
    const long long user = userOf(db, login);
    db.run("update users set disabled = :disabled where id = :id", {disabled ? 1LL : 0LL, user});
    if (disabled)
        db.run("delete from tokens where user_id = :user", {user});
    db.commit();
}

void Administration::setPassword(const std::string& login, const std::string& password)
{
    const std::string hash = hashedPassword(password);
    auto db = database_.work();
    const long long user = userOf(db, login);
    db.run("update users set password_hash = :hash where id = :id", {hash, user});
    db.run("delete from tokens where user_id = :user", {user});
    db.commit();
}

Json Administration::sessions()
{
    // The beginning of a token's fingerprint names it, and is of no use to sign in with.
    return listOf(database_, {{"id", Kind::Text}, {"username", Kind::Text}, {"expires", Kind::Time}},
        "select substr(access, 1, 12), username, refresh_expires_at from tokens"
        " join users on users.id = user_id where refresh_expires_at > :now order by username, expires_at",
        {clock_.now()});
}

long long Administration::endSession(const std::string& id)
{
    auto db = database_.work();
    const auto ended =
        db.number("select count(*) from tokens where substr(access, 1, 12) = :id", {id}).value_or(0);
    db.run("delete from tokens where substr(access, 1, 12) = :id", {id});
    db.commit();
    return ended;
}

long long Administration::endSessionsOf(const std::string& login)
{
    auto db = database_.work();
    const long long user = userOf(db, login);
    const auto ended = db.number("select count(*) from tokens where user_id = :user", {user}).value_or(0);
    db.run("delete from tokens where user_id = :user", {user});
    db.commit();
    return ended;
}

Json Administration::shares()
{
    return listOf(database_,
        {{"id", Kind::Number}, {"owner", Kind::Text}, {"project", Kind::Text}, {"files", Kind::Number},
            {"with", Kind::Text}, {"expires", Kind::Time}},
        "select shares.id, users.username, projects.title, count(distinct shared_files.id),"
        " case when extraction_code is not null then 'a code'"
        "      when group_id is not null then 'group ' || group_id else 'accounts' end"
        " || ', ' || (select count(*) from share_recipients where share_id = shares.id), shares.expires_at"
        " from shares join share_files on share_files.share_id = shares.id"
        " join shared_files on shared_files.id = share_files.file_id"
        " join projects on projects.id = shared_files.project_id join users on users.id = projects.owner_id"
        " where shares.expires_at > :now group by shares.id, users.username, projects.title, extraction_code,"
        " group_id, shares.expires_at order by shares.id",
        {clock_.now()});
}

void Administration::revokeShare(long long id)
{
    auto db = database_.work();
    if (!db.number("delete from shares where id = :id returning id", {id}))
        throw Refusal("There is no share " + std::to_string(id));
    db.commit();
}

Json Administration::projects()
{
    return listOf(database_,
        {{"id", Kind::Number}, {"owner", Kind::Text}, {"software", Kind::Text}, {"title", Kind::Text},
            {"files", Kind::Number}, {"bytes", Kind::Number}},
        "select projects.id, username, source_client, title,"
        " (select count(*) from shared_files where project_id = projects.id)"
        " + (select count(*) from backups where project_id = projects.id),"
        " (select coalesce(sum(size), 0) from shared_files where project_id = projects.id)"
        " + (select coalesce(sum(size), 0) from backups where project_id = projects.id)"
        " from projects join users on users.id = owner_id order by projects.id");
}

void Administration::deleteProject(long long id)
{
    auto db = database_.work();
    if (!db.number("select id from projects where id = :id", {id}))
        throw Refusal("There is no project " + std::to_string(id));
    std::vector<TrashedFile> trashed;
    for (const KnownFile& file : db.all<KnownFile>(
             "select stored_name, file_name, size, sha256, '' from backups where project_id = :backup"
             " union all select stored_name, original_name, size, sha256, '' from shared_files"
             " where project_id = :shared",
             {id, id}))
        trashed.push_back(trash_.enter(db, file));
    // A share is of files of one project.
    db.run("delete from shares where id in (select share_id from share_files join shared_files"
           " on shared_files.id = file_id where project_id = :id)",
        {id});
    for (const char* table : {"shared_files", "backups"})
        db.run(std::string("delete from ") + table + " where project_id = :id", {id});
    db.run("delete from projects where id = :id", {id});
    db.commit();
    for (const TrashedFile& file : trashed)
        trash_.take(file);
}

Json Administration::stats()
{
    auto db = database_.read();
    const long long now = clock_.now();
    const auto count = [&](const std::string& query, const Database::Values& values = {}) {
        return db.number("select " + query, values).value_or(0);
    };
    const Json figures = {{"accounts", count("count(*) from users")},
        {"disabled accounts", count("count(*) from users where disabled <> 0")},
        {"sessions", count("count(*) from tokens where refresh_expires_at > :now", {now})},
        {"projects", count("count(*) from projects")}, {"backups", count("count(*) from backups")},
        {"bytes of backups", count("coalesce(sum(size), 0) from backups")},
        {"shared files", count("count(*) from shared_files")},
        {"bytes of shared files", count("coalesce(sum(size), 0) from shared_files")},
        {"shares", count("count(*) from shares where expires_at > :now", {now})},
        {"groups", count("count(*) from user_groups")}, {"files in the trash", count("count(*) from trash")},
        {"bytes in the trash", count("coalesce(sum(size), 0) from trash")}};
    Json list = Json::array();
    for (const auto& [name, value] : figures.items())
        list.push_back({{"what", name}, {"count", value}});
    return list;
}

} // namespace local_platform
