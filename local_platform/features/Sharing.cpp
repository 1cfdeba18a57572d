// SPDX-License-Identifier: MIT
#include "features/Sharing.h"

#include "base/Text.h"
#include "features/Groups.h"
#include "features/ProjectRecord.h"
#include "features/Projects.h"
#include "features/StoredFiles.h"
#include "features/Users.h"
#include "store/Secrets.h"

#include <nlohmann/json.hpp>

namespace local_platform {

namespace {

constexpr int extractionCodeLength = 10;
constexpr long long maxHours = 87840; // ten years

/// Takes the time and the user.
const std::string isShared = R"(
    files.id in (
        select share_files.file_id from share_files
        join shares on shares.id = share_files.share_id
        join share_recipients on share_recipients.share_id = shares.id
        where shares.expires_at > :now and share_recipients.user_id = :recipient))";

/// Takes the target software twice. A sharer who has saved no targets for a file type leaves it open to all.
const std::string isForTarget = R"(
    (projects.source_client = :target
     or exists (select 1 from adaptation_types a where a.owner_id = projects.owner_id
                and a.source_client = projects.source_client and a.support_type_id = files.support_type_id
                and a.target_client = :accepting)
     or not exists (select 1 from adaptation_types a where a.owner_id = projects.owner_id
                and a.source_client = projects.source_client and a.support_type_id = files.support_type_id)))";

struct SharedFile
{
    long long id;
    std::string originalName;
    std::string typeFlag;
    std::string supportTypeId;
    long long size;

    static SharedFile from(Database::Row& row)
    {
        return {row.number(), row.text(), row.text(), row.text(), row.number()};
    }
};

void to_json(Json& json, const SharedFile& file)
{
    json = {{"id", file.id}, {"originalName", file.originalName}, {"typeFlag", file.typeFlag},
        {"supportTypeId", file.supportTypeId}, {"size", file.size}};
}

const std::string filesOfProjects =
    " from shared_files files join projects on projects.id = files.project_id ";

} // namespace

Sharing::Sharing(Database& database, const FileStore& files, const Clock& clock)
    : database_(database)
    , files_(files)
    , clock_(clock)
    , guessing_(clock)
{
}

void Sharing::addTo(Routes& routes)
{
    const std::string base = "/project/cloudProjectShare/";
    routes.add("POST", base + "upload", {[this](Call& call) { return upload(call); }, {&files_, {}, 0}});
    routes.add("POST", base + "toAnonymous", [this](Call& call) { return shareAnonymously(call); });
    // Spelled as every client spells it.
    routes.add("POST", base + "toUSer", [this](Call& call) { return shareWithAccounts(call); });
    routes.add("POST", base + "toGroup", [this](Call& call) { return shareWithGroup(call); });
    routes.add("GET", base + "extractByCode", [this](Call& call) { return extract(call); });
    routes.add("GET", base + "getProjectBySoftId", [this](Call& call) { return listProjects(call); });
    routes.add("GET", base + "getByProject", [this](Call& call) { return listFiles(call); });
    routes.add("GET", base + "download", [this](Call& call) { return download(call); });
}

Json Sharing::upload(Call& call)
{
    const Upload upload = call.upload();
    const long long project = upload.fields.id("projectId");
    upload.file->finish();

    auto db = database_.work();
    requireOwnProject(db, call.user(), project);
    const auto id = db.number(
        "insert into shared_files (project_id, support_type_id, type_flag, original_name,"
        " stored_name, size, sha256)"
        " values (:project, :type, :flag, :name, :stored, :size, :sha256) returning id",
        {project, upload.fields.text("supportTypeId"), upload.fields.text("typeFlag"), upload.fileName,
            upload.file->storedName(), static_cast<long long>(upload.file->size()), upload.file->sha256()});
    db.commit();
    upload.file->keep();
    return success({{"logicalId", id.value()}});
}

long long Sharing::addShare(Database::Work& db, long long user, const Fields& form) const
{
    const long long project = form.id("projectId");
    const long long hours = form.id("durationHours");
    const std::vector<std::string> files = form.list("logicalIds");
    requireOwnProject(db, user, project);
    if (hours < 1 || hours > maxHours)
        throw Refusal("A share lasts from 1 to " + std::to_string(maxHours) + " hours");
    if (files.empty())
        throw Refusal("There is no file to share");

    const auto share = db.number(
        "insert into shares (expires_at) values (:expires) returning id", {clock_.now() + hours * 3600});
    for (const std::string& file : files) {
        if (!db.number("select id from shared_files where id = :id and project_id = :project",
                {idFrom(file), project}))
            throw unknown("file");
        db.run("insert into share_files (share_id, file_id) values (:share, :file) on conflict do nothing",
            {share.value(), idFrom(file)});
    }
    return share.value();
}

Json Sharing::shareAnonymously(Call& call)
{
    const Fields form = call.form();
    const std::string code = randomCode(extractionCodeLength);
    auto db = database_.work();
    db.run(
        "update shares set extraction_code = :code where id = :id", {code, addShare(db, call.user(), form)});
    db.commit();
    return success(code);
}

Json Sharing::shareWithAccounts(Call& call)
{
    const Fields form = call.form();
    const std::vector<std::string> names = form.list("userNames");
    if (names.empty())
        throw Refusal("There is nobody to share with");
    const std::vector<long long> users = [&] {
        auto db = database_.read();
        requireOwnProject(db, call.user(), form.id("projectId"));
        std::vector<long long> found;
        for (const std::string& name : names) {
            const auto user = findUser(db, name);
            if (!user)
                throw unknown("account " + name);
            found.push_back(*user);
        }
        return found;
    }();
    auto db = database_.work();
    const long long share = addShare(db, call.user(), form);
    for (const long long user : users)
        db.run("insert into share_users (share_id, user_id) values (:share, :user) on conflict do nothing",
            {share, user});
    db.commit();
    return success(true);
}

Json Sharing::shareWithGroup(Call& call)
{
    const Fields form = call.form();
    const long long group = form.id("groupId");
    auto db = database_.work();
    requireGroup(db, call.user(), group);
    db.run("update shares set group_id = :group where id = :id", {group, addShare(db, call.user(), form)});
    db.commit();
    return success(true);
}

Json Sharing::extract(Call& call)
{
    const std::string account = "user " + std::to_string(call.user());
    guessing_.requireMay(account, call.client());
    auto db = database_.work();
    const auto share = db.number("select id from shares where extraction_code = :code and expires_at > :now",
        {call.query().text("extractionCode"), clock_.now()});
    if (!share) {
        guessing_.wrong(account, call.client());
        throw Refusal("The extraction code is wrong or has expired", 404);
    }
    db.run("insert into share_users (share_id, user_id) values (:share, :user) on conflict do nothing",
        {*share, call.user()});
    db.commit();
    return success(true);
}

Json Sharing::listProjects(Call& call)
{
    const std::string& target = call.query().text("targetClient");
    return success(database_.read().all<ProjectRecord>(
        R"(select distinct projects.id, projects.title, projects.source_client, projects.description)"
            + filesOfProjects + "where projects.source_client = :source and " + isShared + " and "
            + isForTarget + " order by 1",
        {call.query().text("sourceClient"), clock_.now(), call.user(), target, target}, call.query().page()));
}

Json Sharing::listFiles(Call& call)
{
    const long long project = call.query().id("projectId");
    const std::string& target = call.query().text("sourceClient"); // the software that asks
    auto db = database_.read();
    if (db.number("select id from projects where id = :id and owner_id = :user", {project, call.user()})
            == std::nullopt
        && !db.number(
            "select files.id" + filesOfProjects + "where projects.id = :id and " + isShared + " limit 1",
            {project, clock_.now(), call.user()}))
        throw unknownProject();
    return success(db.all<SharedFile>(
        R"(select files.id, files.original_name, files.type_flag, files.support_type_id, files.size)"
            + filesOfProjects + "where projects.id = :id and (projects.owner_id = :user or (" + isShared
            + " and " + isForTarget + ")) order by files.id",
        {project, call.user(), clock_.now(), call.user(), target, target}, call.query().page()));
}

Download Sharing::download(Call& call)
{
    return openDownload(database_, files_, [&](Database::Work& db) {
        const auto stored = db.one<WantedFile>("select files.stored_name, files.sha256" + filesOfProjects
                + "where files.id = :id and (projects.owner_id = :user or " + isShared + ")",
            {call.query().id("logicalId"), call.user(), clock_.now(), call.user()});
        if (!stored)
            throw unknown("file");
        return *stored;
    });
}

} // namespace local_platform
