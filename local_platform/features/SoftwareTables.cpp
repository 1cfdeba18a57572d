// SPDX-License-Identifier: MIT
#include "features/SoftwareTables.h"

#include <nlohmann/json.hpp>

namespace local_platform {

namespace {

struct AdaptationType
{
    long long id;
    std::string sourceClient;
    std::string supportTypeId;
    std::string targetClient;

    static AdaptationType from(Database::Row& row)
    {
        return {row.number(), row.text(), row.text(), row.text()};
    }
};

void to_json(Json& json, const AdaptationType& type)
{
    json = {{"id", type.id}, {"sourceClient", type.sourceClient}, {"supportTypeId", type.supportTypeId},
        {"targetClient", type.targetClient}};
}

struct SupportType
{
    long long id;
    std::string sourceSoftware;
    std::string typeFlag;
    std::string title;
    std::string suffix;
    std::string description;

    static SupportType from(Database::Row& row)
    {
        return {row.number(), row.text(), row.text(), row.text(), row.text(), row.text()};
    }
};

void to_json(Json& json, const SupportType& type)
{
    json = {{"id", type.id}, {"sourceSoftwareNameEn", type.sourceSoftware}, {"typeFlag", type.typeFlag},
        {"title", type.title}, {"typeSuffix", type.suffix}, {"typeDescription", type.description}};
}

} // namespace

SoftwareTables::SoftwareTables(Database& database)
    : database_(database)
{
}

void SoftwareTables::addTo(Routes& routes)
{
    // The double slash is what every client sends.
    routes.add("GET", "/project//softwareAdaptationType/listSupportClient",
        [this](Call& call) { return listAdaptationTypes(call); });
    routes.add(
        "GET", "/project/softwareSupportType/list", [this](Call& call) { return listSupportTypes(call); });
    routes.add(
        "POST", "/project/softwareAdaptationType/saveOrUpdate", [this](Call& call) { return save(call); });
}

Json SoftwareTables::listAdaptationTypes(Call& call)
{
    return success(database_.read().all<AdaptationType>(
        R"(select id, source_client, support_type_id, target_client
           from adaptation_types where source_client = :client order by id)",
        {call.query().text("sourceClient")}, call.query().page()));
}

Json SoftwareTables::listSupportTypes(Call& call)
{
    return success(database_.read().all<SupportType>(
        R"(select id, source_software, type_flag, title, type_suffix, type_description
           from support_types order by id)",
        {}, call.query().page()));
}

Json SoftwareTables::save(Call& call)
{
    const Fields form = call.form();
    auto db = database_.work();
    // Both kinds of rows are saved at one address and told apart by their fields.
    if (form.has("sourceSoftwareNameEn"))
        db.run("insert into support_types (owner_id, source_software, type_flag, title, type_suffix,"
               " type_description) values (:owner, :software, :flag, :title, :suffix, :description)"
               " on conflict (owner_id, source_software, type_flag) do update set title = excluded.title,"
               " type_suffix = excluded.type_suffix, type_description = excluded.type_description",
            {call.user(), form.text("sourceSoftwareNameEn"), form.text("typeFlag"), form.text("title"),
                form.text("typeSuffix"), form.text("typeDescription")});
    else
        db.run("insert into adaptation_types (owner_id, source_client, support_type_id, target_client)"
               " values (:owner, :source, :type, :target) on conflict do nothing",
            {call.user(), form.text("sourceClient"), form.text("supportTypeId"), form.text("targetClient")});
    db.commit();
    return success(true);
}

} // namespace local_platform
