// SPDX-License-Identifier: MIT
#pragma once

#include "base/Page.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace soci {
class row;
}

namespace local_platform {

/// What the platform remembers. Statements are plain SQL with named placeholders, each named once and filled
/// in the order of the values.
class Database
{
public:
    using Value = std::variant<long long, std::string>;
    using Values = std::vector<Value>;

    /// Opens the database, which has the latest schema. Throws when it cannot.
    enum class Access
    {
        Full,
        ReadOnly ///< beside a platform that has full access
    };
    explicit Database(const std::filesystem::path& file, Access access = Access::Full);
    ~Database();

    /// One row of a result, read column by column.
    class Row
    {
    public:
        explicit Row(const soci::row& row)
            : row_(row)
        {
        }

        long long number();
        std::string text();
        std::optional<std::string> textOrNull();

    private:
        const soci::row& row_;
        std::size_t next_ = 0;
    };

    /// One transaction. What is not committed never happened.
    class Work
    {
    public:
        Work(Work&&) noexcept;
        ~Work();

        /// The first column of the first row.
        std::optional<long long> number(const std::string& query, const Values& values = {});
        std::optional<std::string> text(const std::string& query, const Values& values = {});
        /// The first row, as Record::from() reads it.
        template <typename Record>
        std::optional<Record> one(const std::string& query, const Values& values = {})
        {
            std::optional<Record> first;
            each(query, values, [&](Row& row) {
                first = Record::from(row);
                return false;
            });
            return first;
        }
        /// All rows, as Record::from() reads them.
        template <typename Record>
        std::vector<Record> all(const std::string& query, const Values& values = {})
        {
            std::vector<Record> records;
            each(query, values, [&](Row& row) {
                records.push_back(Record::from(row));
                return true;
            });
            return records;
        }
        template <typename Record>
        std::vector<Record> all(const std::string& query, Values values, const Page& page)
        {
            values.insert(values.end(), {page.limit, page.offset});
            return all<Record>(query + " limit :limit offset :offset", values);
        }
        /// Hands over row after row until \a take returns false.
        void each(const std::string& query, const Values& values, const std::function<bool(Row&)>& take);
        /// Runs a statement that yields no rows.
        void run(const std::string& statement, const Values& values = {});
        /// Ends it: nothing can be asked of it afterwards.
        void commit();

    private:
        friend class Database;
        struct State;
        explicit Work(std::unique_ptr<State> state);
        std::unique_ptr<State> state_;
    };

    /// Sees what was committed before, to its end, and waits for no writer. It cannot write.
    Work read();
    /// The only one that writes at its time. Keep it short: the next one waits.
    Work work();

private:
    struct Session;
    class Pool;
    std::unique_ptr<Pool> writer_;
    std::unique_ptr<Pool> readers_;
};

} // namespace local_platform
