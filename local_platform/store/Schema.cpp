// SPDX-License-Identifier: MIT
#include "store/Schema.h"

#include "base/Names.h"
#include "store/Disk.h"
#include "store/Session.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <memory>
#include <set>
#include <sqlite3.h>
#include <sstream>
#include <stdexcept>
#include <utility>
#include <vector>

namespace local_platform {

namespace fs = std::filesystem;

namespace {

// The dialect is kept to what SQLite and PostgreSQL share; "KEY" stands for the one thing that differs. A key
// is never given out twice, or a deleted group's id could come to mean another group.
const std::string key = "integer primary key autoincrement";

const char* const firstSchema = R"(
create table users (
    id KEY, username text not null unique, phone text not null, mail text not null, password_hash text not null);
create unique index users_phone on users (phone) where phone <> '';
create unique index users_mail on users (mail) where mail <> '';

create table tokens (
    access text primary key, refresh text not null unique, user_id bigint not null references users (id),
    expires_at bigint not null, refresh_expires_at bigint not null);
create index tokens_user on tokens (user_id);

create table codes (
    address text not null, purpose text not null, code text not null, expires_at bigint not null,
    tries_left bigint not null, window_start bigint not null, sent_in_window bigint not null,
    primary key (address, purpose));

create table projects (
    id KEY, owner_id bigint not null references users (id), source_client text not null, title text not null,
    description text not null);
create index projects_owner on projects (owner_id, source_client);

create table backups (
    project_id bigint primary key references projects (id), file_name text not null, stored_name text not null,
    size bigint not null);

create table support_types (
    id KEY, owner_id bigint not null references users (id), source_software text not null, type_flag text not null,
    title text not null, type_suffix text not null, type_description text not null,
    unique (owner_id, source_software, type_flag));
create table adaptation_types (
    id KEY, owner_id bigint not null references users (id), source_client text not null,
    support_type_id text not null, target_client text not null,
    unique (owner_id, source_client, support_type_id, target_client));

create table address_book (
    id KEY, owner_id bigint not null references users (id), friend_id bigint not null references users (id),
    phone text not null, remark text not null, unit text not null, unique (owner_id, friend_id));

create table user_groups (
    id KEY, owner_id bigint not null references users (id), name text not null, invite_code text unique);
create table group_members (
    id KEY, group_id bigint not null references user_groups (id) on delete cascade,
    user_id bigint not null references users (id), admin_flag bigint not null, unique (group_id, user_id));
create index group_members_user on group_members (user_id);

create table shared_files (
    id KEY, project_id bigint not null references projects (id), support_type_id text not null,
    type_flag text not null, original_name text not null, stored_name text not null, size bigint not null);
create index shared_files_project on shared_files (project_id);

create table shares (
    id KEY, expires_at bigint not null, extraction_code text unique,
    group_id bigint references user_groups (id) on delete cascade);
create index shares_group on shares (group_id);
create table share_files (
    share_id bigint not null references shares (id) on delete cascade,
    file_id bigint not null references shared_files (id), primary key (share_id, file_id));
create index share_files_file on share_files (file_id);
create table share_users (
    share_id bigint not null references shares (id) on delete cascade,
    user_id bigint not null references users (id), primary key (share_id, user_id));
create index share_users_user on share_users (user_id);

create view share_recipients as
    select share_id, user_id from share_users
    union all
    select shares.id, group_members.user_id from shares
    join group_members on group_members.group_id = shares.group_id;
)";

const char* const markAndTrash = R"(
create table about (name text primary key, value text not null);
create table trash (
    stored_name text primary key, trashed_at bigint not null, file_name text not null, size bigint not null,
    sha256 text);
)";

const char* const namesAndIndexes = R"(
alter table users add column name_key text not null default '';
alter table users add column skeleton text not null default '';
create index users_name_key on users (name_key);
create index users_skeleton on users (skeleton);
create index backups_stored_name on backups (stored_name);
create index shared_files_stored_name on shared_files (stored_name);
create index trash_since on trash (trashed_at);
create index adaptation_types_source on adaptation_types (source_client);
create index user_groups_owner on user_groups (owner_id);
)";

// Whoever asks for a code, or tries one, from elsewhere must not use up somebody's own.
const char* const codesByClient = R"(
alter table codes rename to codes_of_old;
create table codes (
    address text not null, purpose text not null, client text not null, code text not null,
    expires_at bigint not null, tries_left bigint not null, strangers_tries_left bigint not null,
    window_start bigint not null, sent_in_window bigint not null, primary key (address, purpose, client));
create index codes_window on codes (window_start);
insert into codes select address, purpose, '', code, expires_at, tries_left, tries_left, window_start, sent_in_window
    from codes_of_old;
drop table codes_of_old;
)";

void runScript(soci::session& sql, std::string script)
{
    const std::string placeholder = " KEY,";
    for (std::size_t at = script.find(placeholder); at != std::string::npos;
         at = script.find(placeholder, at))
        script.replace(at, placeholder.size(), " " + key + ",");
    std::istringstream statements(script);
    for (std::string statement; std::getline(statements, statement, ';');) {
        if (statement.find_first_not_of('\n') != std::string::npos)
            sql << statement;
    }
}

std::string quoted(const std::string& text)
{
    std::string literal = "'";
    for (const char c : text)
        literal += c == '\'' ? std::string("''") : std::string(1, c);
    return literal + '\'';
}

/// The first column of all rows, as text. (With <<, the undefined-behaviour sanitizer wants what the library
/// hides.)
std::vector<std::string> textsOf(soci::session& sql, const std::string& query)
{
    std::string value;
    soci::statement statement(sql);
    statement.exchange(soci::into(value));
    statement.alloc();
    statement.prepare(query);
    statement.define_and_bind();
    statement.execute();
    std::vector<std::string> values;
    while (statement.fetch())
        values.push_back(value);
    return values;
}

void fillNameKeys(soci::session& sql)
{
    for (const std::string& name : textsOf(sql, "select username from users"))
        sql << "update users set name_key = " + quoted(comparable(name))
                + ", skeleton = " + quoted(skeletonOf(name)) + " where username = " + quoted(name);
}

/// SQLite's own interface, for what is asked of a file before it is known to be a database of ours.
class Look
{
public:
    explicit Look(const std::string& file)
    {
        sqlite3* opened = nullptr;
        const int flags = SQLITE_OPEN_READONLY | SQLITE_OPEN_URI;
        const int result = sqlite3_open_v2(file.c_str(), &opened, flags, nullptr);
        database_.reset(opened);
        if (result != SQLITE_OK)
            fail();
        sqlite3_busy_timeout(opened, 5000);
    }

    /// The first column of all rows.
    std::vector<std::string> texts(const std::string& query)
    {
        sqlite3_stmt* prepared = nullptr;
        if (sqlite3_prepare_v2(database_.get(), query.c_str(), -1, &prepared, nullptr) != SQLITE_OK)
            fail();
        const std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)> statement(prepared, sqlite3_finalize);
        std::vector<std::string> values;
        int result = SQLITE_OK;
        while ((result = sqlite3_step(prepared)) == SQLITE_ROW) {
            const unsigned char* text = sqlite3_column_text(prepared, 0);
            values.emplace_back(text ? reinterpret_cast<const char*>(text) : "");
        }
        if (result != SQLITE_DONE)
            fail();
        return values;
    }

    std::string text(const std::string& query)
    {
        const auto all = texts(query);
        return all.empty() ? std::string() : all.front();
    }

    bool hasColumn(const std::string& table, const std::string& column)
    {
        return text("select 1 from pragma_table_info('" + table + "') where name = '" + column + "'") == "1";
    }

private:
    [[noreturn]] void fail() { throw std::runtime_error(sqlite3_errmsg(database_.get())); }

    std::unique_ptr<sqlite3, int (*)(sqlite3*)> database_{nullptr, sqlite3_close};
};

std::string uriOf(const fs::path& file, const std::string& parameters)
{
    std::string uri = "file:";
    for (const char c : fs::absolute(file).string()) {
        if (c == '%' || c == '?' || c == '#') {
            constexpr char digits[] = "0123456789ABCDEF";
            uri += {'%', digits[c / 16], digits[c % 16]};
        } else {
            uri += c;
        }
    }
    return uri + "?" + parameters;
}

fs::path journalOf(const fs::path& file)
{
    return file.string() + "-wal";
}

bool holdsSomething(const fs::path& file)
{
    std::error_code missing;
    const auto size = fs::file_size(file, missing);
    return !missing && size > 0;
}

std::string uriToRead(const fs::path& file, Reading reading)
{
    // Without a journal the file alone is the database, and can be read without so much as a lock.
    const bool still = reading != Reading::Beside && !holdsSomething(journalOf(file));
    return uriOf(file, still ? "immutable=1" : "");
}

int versionOf(Look& look)
{
    if (look.hasColumn("about", "value"))
        return std::atoi(look.text("select value from about where name = 'schema'").c_str());
    if (!look.hasColumn("users", "username"))
        return 0;
    // Before the version was kept, one thing alone was ever added.
    return look.hasColumn("backups", "sha256") && look.hasColumn("shared_files", "sha256") ? 2 : 1;
}

DatabaseLook lookThrough(const std::string& uri)
{
    DatabaseLook seen;
    try {
        Look look(uri);
        seen.tables = static_cast<int>(look.texts("select name from sqlite_master").size());
        seen.version = versionOf(look);
        seen.ours = seen.version > 0;
        for (const auto& [table, column] : {std::pair("users", "password_hash"), {"tokens", "refresh"},
                 {"projects", "source_client"}, {"backups", "stored_name"}, {"shared_files", "stored_name"},
                 {"share_users", "share_id"}, {"address_book", "friend_id"}})
            seen.ours = seen.ours && look.hasColumn(table, column);
        if (seen.version >= 3)
            seen.id = look.text("select value from about where name = 'id'");
        seen.readable = true;
    } catch (const std::exception& error) {
        seen.problem = error.what();
    }
    return seen;
}

/// A folder for copies, gone with this object.
class TemporaryFolder
{
public:
    TemporaryFolder()
    {
        std::string name = (fs::temp_directory_path() / "tav-look-XXXXXX").string();
        if (!::mkdtemp(name.data()))
            throwSystemError(errno, name);
        path_ = name;
    }
    ~TemporaryFolder()
    {
        std::error_code ignored; // the system empties its folder for such things
        fs::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const fs::path& path() const { return path_; }

private:
    fs::path path_;
};

} // namespace

DatabaseLook lookAt(const fs::path& file, Reading reading)
{
    const fs::path journal = journalOf(file);
    if (reading != Reading::Untraced || !holdsSomething(journal))
        return lookThrough(uriToRead(file, reading));
    // What was written last is in the journal, and only a copy of both can be read without a trace.
    const TemporaryFolder copies;
    copyDurably(file, copies.path() / "copy");
    copyDurably(journal, copies.path() / "copy-wal");
    return lookThrough(uriOf(copies.path() / "copy", ""));
}

std::string damageOf(const fs::path& file, Reading reading, bool thorough)
{
    try {
        Look look(uriToRead(file, reading));
        const std::string said = look.text(thorough ? "pragma integrity_check(1)" : "pragma quick_check(1)");
        if (said != "ok")
            return said;
        const std::string table =
            thorough ? look.text("select \"table\" from pragma_foreign_key_check limit 1") : std::string();
        return table.empty() ? std::string() : "a row of " + table + " refers to nothing";
    } catch (const std::exception& error) {
        return error.what();
    }
}

void takeSnapshot(const fs::path& file, const fs::path& target)
{
    Look(uriOf(file, "")).texts("vacuum into " + quoted(target.string()));
}

void bringUpToDate(const fs::path& file, const std::string& id)
{
    const int found = fs::exists(file) ? lookAt(file, Reading::Alone).version : 0;
    if (found == latestSchema)
        return;
    soci::session sql;
    openSession(sql, file);
    const std::array<void (*)(soci::session&), latestSchema> steps = {
        [](soci::session& to) { runScript(to, firstSchema); },
        [](soci::session& to) {
            // Its program added them one by one, and may have been stopped between.
            for (const std::string table : {"backups", "shared_files"}) {
                if (textsOf(to, "select name from pragma_table_info('" + table + "') where name = 'sha256'")
                        .empty())
                    to << "alter table " + table + " add column sha256 text";
            }
        },
        [](soci::session& to) { runScript(to, markAndTrash); },
        [](soci::session& to) {
            runScript(to, namesAndIndexes);
            fillNameKeys(to);
        },
        [](soci::session& to) { runScript(to, codesByClient); },
        [](soci::session& to) { to << "alter table users add column disabled bigint not null default 0"; },
    };
    for (int version = found; version < latestSchema; ++version) {
        soci::transaction transaction(sql);
        steps[static_cast<std::size_t>(version)](sql);
        if (version + 1 == 3)
            sql << "insert into about (name, value) values ('id', " + quoted(id) + ')';
        if (version + 1 == 3)
            sql << "insert into about (name, value) values ('schema', '3')";
        else if (version + 1 > 3)
            sql << "update about set value = '" + std::to_string(version + 1) + "' where name = 'schema'";
        transaction.commit();
    }
}

} // namespace local_platform
