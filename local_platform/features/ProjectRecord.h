// SPDX-License-Identifier: MIT
#pragma once

#include "http/Envelope.h"
#include "store/Database.h"

#include <nlohmann/json.hpp>
#include <string>

namespace local_platform {

/// A project as lists show it, its owner's and those of shares alike.
struct ProjectRecord
{
    long long id;
    std::string title;
    std::string sourceClient;
    std::string description;

    /// Reads "id, title, source_client, description".
    static ProjectRecord from(Database::Row& row)
    {
        return {row.number(), row.text(), row.text(), row.text()};
    }
};

inline void to_json(Json& json, const ProjectRecord& project)
{
    json = {{"id", project.id}, {"projectTitle", project.title}, {"sourceClient", project.sourceClient},
        {"description", project.description}};
}

} // namespace local_platform
