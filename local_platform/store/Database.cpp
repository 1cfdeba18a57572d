// SPDX-License-Identifier: MIT
#include "store/Database.h"

#include "store/Session.h"

#include <condition_variable>
#include <mutex>
#include <soci/soci.h>
#include <spdlog/spdlog.h>
#include <stdexcept>

namespace local_platform {

namespace {

constexpr int readerCount = 8;

/// The library's own message repeats the values, which nobody may read in a log.
template <typename Function>
auto withoutValues(const std::string& statement, Function function)
{
    spdlog::trace("Statement: {}", statement);
    try {
        return function();
    } catch (const soci::soci_error& error) {
        throw std::runtime_error(error.get_error_message() + " in: " + statement);
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
    return withoutValues(query, [&]() -> std::optional<T> {
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
    });
}

} // namespace

struct Database::Session
{
    Session(const std::filesystem::path& file, Access access)
    {
        if (access == Access::ReadOnly)
            openForReading(sql, file);
        else
            openSession(sql, file);
    }

    soci::session sql;
};

/// Lends a connection to one piece of work at a time.
class Database::Pool
{
public:
    Pool(const std::filesystem::path& file, Access access, int size)
    {
        for (int i = 0; i < size; ++i)
            free_.push_back(std::make_unique<Session>(file, access));
    }

    std::unique_ptr<Session> take()
    {
        std::unique_lock lock(mutex_);
        freed_.wait(lock, [this] { return !free_.empty(); });
        std::unique_ptr<Session> session = std::move(free_.back());
        free_.pop_back();
        return session;
    }

    void give(std::unique_ptr<Session> session)
    {
        {
            const std::lock_guard lock(mutex_);
            free_.push_back(std::move(session));
        }
        freed_.notify_one();
    }

    /// For settings of all connections, before any is lent.
    void run(const std::string& statement)
    {
        for (const auto& session : free_)
            session->sql << statement;
    }

private:
    std::mutex mutex_;
    std::condition_variable freed_;
    std::vector<std::unique_ptr<Session>> free_;
};

struct Database::Work::State
{
    explicit State(Pool& from)
        : pool(from)
        , session(from.take())
        , sql(session->sql)
    {
        try {
            transaction.emplace(sql);
        } catch (...) {
            pool.give(std::move(session));
            throw;
        }
    }
    ~State()
    {
        transaction.reset();
        pool.give(std::move(session));
    }

    Pool& pool;
    std::unique_ptr<Session> session;
    soci::session& sql;
    std::optional<soci::transaction> transaction;
};

Database::Database(const std::filesystem::path& file, Access access)
    : readers_(std::make_unique<Pool>(file, access, access == Access::Full ? readerCount : 1))
{
    if (access == Access::ReadOnly)
        return;
    writer_ = std::make_unique<Pool>(file, access, 1);
    readers_->run("pragma query_only=on");
}

Database::~Database()
{
    readers_.reset();
    if (!writer_)
        return;
    // The journal's file stays, but empty: whoever puts another database in this one's place must not find it
    // mixed with what the journal held.
    try {
        writer_->run("pragma wal_checkpoint(truncate)");
    } catch (const std::exception&) {
        // Then the next start reads the journal, as after a kill.
    }
}

Database::Work Database::read()
{
    return Work(std::make_unique<Work::State>(*readers_));
}

Database::Work Database::work()
{
    return Work(std::make_unique<Work::State>(*writer_));
}

long long Database::Row::number()
{
    const std::size_t column = next_++;
    switch (row_.get_properties(column).get_data_type()) {
    case soci::dt_integer:
        return row_.get<int>(column);
    case soci::dt_string: // what was computed has no declared type
        return std::stoll(row_.get<std::string>(column));
    default:
        return row_.get<long long>(column);
    }
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
    withoutValues(query, [&] {
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
    });
}

void Database::Work::run(const std::string& text, const Values& values)
{
    withoutValues(text, [&] {
        soci::statement statement(state_->sql);
        statement.alloc();
        bind(statement, values);
        statement.prepare(text);
        statement.define_and_bind();
        statement.execute(true);
    });
}

void Database::Work::commit()
{
    withoutValues("commit", [&] { state_->transaction->commit(); });
    state_.reset(); // the next one need not wait for what the caller does with the answer
}

} // namespace local_platform
