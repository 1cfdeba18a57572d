// SPDX-License-Identifier: MIT
#pragma once

#include "Envelope.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace local_platform {

/// What the platform remembers. Statements are plain SQL with named placeholders, each named once and filled
/// in the order of the values.
class Database
{
public:
    using Value = std::variant<long long, std::string>;
    using Values = std::vector<Value>;

    /// Opens or creates the database. Throws when it cannot.
    explicit Database(const std::filesystem::path& file);
    ~Database();

    /// One transaction, and the only one at its time. What is not committed never happened.
    class Work
    {
    public:
        Work(Work&&) noexcept;
        ~Work();

        /// The first column of the first row.
        std::optional<long long> number(const std::string& query, const Values& values = {});
        std::optional<std::string> text(const std::string& query, const Values& values = {});
        /// The first row as an object of its columns; null when there is none.
        Json row(const std::string& query, const Values& values = {});
        /// All rows as an array of such objects.
        Json rows(const std::string& query, const Values& values = {});
        /// Runs a statement that yields no rows.
        void run(const std::string& statement, const Values& values = {});
        void commit();

    private:
        friend class Database;
        struct State;
        explicit Work(std::unique_ptr<State> state);
        std::unique_ptr<State> state_;
    };

    Work work();

private:
    struct Session;
    std::unique_ptr<Session> session_;
};

} // namespace local_platform
