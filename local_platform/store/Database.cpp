// SPDX-License-Identifier: MIT
#include "store/Database.h"

#include <mutex>
#include <soci/soci.h>
#include <soci/sqlite3/soci-sqlite3.h>
#include <sstream>

namespace local_platform {

namespace {

// The dialect is kept to what SQLite and PostgreSQL share; "KEY" stands for the one thing that differs. A key
// is never given out twice, or a deleted group's id could come to mean another group.
const std::string key = "integer primary key autoincrement";

const std::string schema = R"(
create table if not exists users (
    id KEY, username text not null unique, phone text not null, mail text not null, password_hash text not null);
create unique index if not exists users_phone on users (phone) where phone <> '';
create unique index if not exists users_mail on users (mail) where mail <> '';

create table if not exists tokens (
    access text primary key, refresh text not null unique, user_id bigint not null references users (id),
    expires_at bigint not null, refresh_expires_at bigint not null);
create index if not exists tokens_user on tokens (user_id);

create table if not exists codes (
    address text not null, purpose text not null, code text not null, expires_at bigint not null,
    tries_left bigint not null, window_start bigint not null, sent_in_window bigint not null,
    primary key (address, purpose));

create table if not exists projects (
    id KEY, owner_id bigint not null references users (id), source_client text not null, title text not null,
    description text not null);
create index if not exists projects_owner on projects (owner_id, source_client);

create table if not exists backups (
    project_id bigint primary key references projects (id), file_name text not null, stored_name text not null,
    size bigint not null);

create table if not exists support_types (
    id KEY, owner_id bigint not null references users (id), source_software text not null, type_flag text not null,
    title text not null, type_suffix text not null, type_description text not null,
    unique (owner_id, source_software, type_flag));
create table if not exists adaptation_types (
    id KEY, owner_id bigint not null references users (id), source_client text not null,
    support_type_id text not null, target_client text not null,
    unique (owner_id, source_client, support_type_id, target_client));

create table if not exists address_book (
    id KEY, owner_id bigint not null references users (id), friend_id bigint not null references users (id),
    phone text not null, remark text not null, unit text not null, unique (owner_id, friend_id));

create table if not exists user_groups (
    id KEY, owner_id bigint not null references users (id), name text not null, invite_code text unique);
create table if not exists group_members (
    id KEY, group_id bigint not null references user_groups (id) on delete cascade,
    user_id bigint not null references users (id), admin_flag bigint not null, unique (group_id, user_id));
create index if not exists group_members_user on group_members (user_id);

create table if not exists shared_files (
    id KEY, project_id bigint not null references projects (id), support_type_id text not null,
    type_flag text not null, original_name text not null, stored_name text not null, size bigint not null);
create index if not exists shared_files_project on shared_files (project_id);

create table if not exists shares (
    id KEY, expires_at bigint not null, extraction_code text unique,
    group_id bigint references user_groups (id) on delete cascade);
create index if not exists shares_group on shares (group_id);
create table if not exists share_files (
    share_id bigint not null references shares (id) on delete cascade,
    file_id bigint not null references shared_files (id), primary key (share_id, file_id));
create index if not exists share_files_file on share_files (file_id);
create table if not exists share_users (
    share_id bigint not null references shares (id) on delete cascade,
    user_id bigint not null references users (id), primary key (share_id, user_id));
create index if not exists share_users_user on share_users (user_id);

drop view if exists share_recipients;
create view share_recipients as
    select share_id, user_id from share_users
    union all
    select shares.id, group_members.user_id from shares
    join group_members on group_members.group_id = shares.group_id;
)";

bool hasColumn(soci::session& sql, const std::string& table, const std::string& column)
{
    soci::row row;
    soci::statement statement(sql); // with <<, the undefined-behaviour sanitizer wants what the library hides
    statement.exchange(soci::into(row));
    statement.alloc();
    statement.prepare("select * from " + table + " where 1 = 0");
    statement.define_and_bind();
    statement.execute(true);
    for (std::size_t i = 0; i < row.size(); ++i)
        if (row.get_properties(i).get_name() == column)
            return true;
    return false;
}

void createSchema(soci::session& sql)
{
    std::string script = schema;
    const std::string placeholder = " KEY,";
    for (std::size_t at = script.find(placeholder); at != std::string::npos;
         at = script.find(placeholder, at))
        script.replace(at, placeholder.size(), " " + key + ",");
    std::istringstream statements(script);
    for (std::string statement; std::getline(statements, statement, ';');) {
        if (statement.find_first_not_of('\n') != std::string::npos)
            sql << statement;
    }
    // What came later than its table. A file that is older has no digest until its first download.
    for (const std::string table : {"backups", "shared_files"}) {
        if (!hasColumn(sql, table, "sha256"))
            sql << "alter table " + table + " add column sha256 text";
    }
}

void bind(soci::statement& statement, const Database::Values& values)
{
    for (const Database::Value& value : values)
        std::visit([&](const auto& plain) { statement.exchange(soci::use(plain)); }, value);
}

template <typename T>
std::optional<T> firstValue(soci::session& sql, const std::string& query, const Database::Values& values)
{
    T value{};
    soci::indicator indicator = soci::i_ok;
    soci::statement statement(sql);
    statement.alloc();
    bind(statement, values);
    statement.exchange(soci::into(value, indicator));
    statement.prepare(query);
    statement.define_and_bind();
    if (!statement.execute(true) || indicator == soci::i_null)
        return std::nullopt;
    return value;
}

} // namespace

struct Database::Session
{
    explicit Session(const std::filesystem::path& file)
        : sql(soci::sqlite3, "db=\"" + file.string() + '"')
    {
        // An answered request must survive a power cut, so every commit waits for the disk.
        sql << "pragma journal_mode=wal";
        sql << "pragma synchronous=full";
        sql << "pragma foreign_keys=on";
        createSchema(sql);
    }

    std::mutex mutex;
    soci::session sql;
};

struct Database::Work::State
{
    explicit State(Session& session)
        : lock(session.mutex)
        , sql(session.sql)
        , transaction(session.sql)
    {
    }

    std::unique_lock<std::mutex> lock;
    soci::session& sql;
    soci::transaction transaction;
};

long long Database::Row::number()
{
    const std::size_t column = next_++;
    return row_.get_properties(column).get_data_type() == soci::dt_integer ? row_.get<int>(column)
                                                                           : row_.get<long long>(column);
}

std::string Database::Row::text()
{
    return row_.get<std::string>(next_++);
}

std::optional<std::string> Database::Row::textOrNull()
{
    if (row_.get_indicator(next_) == soci::i_null) {
        ++next_;
        return std::nullopt;
    }
    return text();
}

Database::Database(const std::filesystem::path& file)
    : session_(std::make_unique<Session>(file))
{
}

Database::~Database() = default;

Database::Work Database::work()
{
    return Work(std::make_unique<Work::State>(*session_));
}

Database::Work::Work(std::unique_ptr<State> state)
    : state_(std::move(state))
{
}

Database::Work::Work(Work&&) noexcept = default;
Database::Work::~Work() = default;

std::optional<long long> Database::Work::number(const std::string& query, const Values& values)
{
    return firstValue<long long>(state_->sql, query, values);
}

std::optional<std::string> Database::Work::text(const std::string& query, const Values& values)
{
    return firstValue<std::string>(state_->sql, query, values);
}

void Database::Work::each(
    const std::string& query, const Values& values, const std::function<bool(Row&)>& take)
{
    soci::row columns;
    soci::statement statement(state_->sql);
    statement.alloc();
    bind(statement, values);
    statement.exchange(soci::into(columns));
    statement.prepare(query);
    statement.define_and_bind();
    statement.execute();
    while (statement.fetch()) {
        Row row(columns);
        if (!take(row))
            return;
    }
}

void Database::Work::run(const std::string& text, const Values& values)
{
    soci::statement statement(state_->sql);
    statement.alloc();
    bind(statement, values);
    statement.prepare(text);
    statement.define_and_bind();
    statement.execute(true);
}

void Database::Work::commit()
{
    state_->transaction.commit();
}

} // namespace local_platform
