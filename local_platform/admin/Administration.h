// SPDX-License-Identifier: MIT
#pragma once

#include "base/Clock.h"
#include "features/Users.h"
#include "store/DataFolder.h"
#include "store/Database.h"
#include "store/FileStore.h"
#include "store/Trash.h"

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>

namespace local_platform {

/// What an administrator does to the accounts, sessions, shares and projects of a platform, whether it runs
/// or not: by its database, as the platform itself does it. Lists are arrays of objects with the same
/// members.
class Administration
{
public:
    using Json = nlohmann::ordered_json;

    /// Throws where the folder is no data folder of this version.
    explicit Administration(const std::filesystem::path& data);

    Json users();
    void addUser(const NewAccount& account);
    /// Who is disabled is signed out, and cannot sign in.
    void setDisabled(const std::string& login, bool disabled);
    /// @param password as clients send it. Signs the account out.
    void setPassword(const std::string& login, const std::string& password);

    Json sessions();
    /// Returns how many ended.
    long long endSession(const std::string& id);
    long long endSessionsOf(const std::string& login);

    Json shares();
    void revokeShare(long long id);

    Json projects();
    /// Its files go to the trash, as replaced ones do.
    void deleteProject(long long id);

    Json stats();

private:
    long long userOf(Database::Work& db, const std::string& login) const;

    DataFolder folder_;
    Clock clock_;
    Database database_;
    FileStore files_;
    Trash trash_;
};

} // namespace local_platform
