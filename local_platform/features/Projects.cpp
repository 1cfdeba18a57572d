// SPDX-License-Identifier: MIT
#include "features/Projects.h"

#include "features/ProjectRecord.h"
#include "features/StoredFiles.h"

namespace local_platform {

namespace {

constexpr std::size_t longestDescription = 20000;

} // namespace

void requireOwnProject(Database::Work& db, long long user, long long project)
{
    if (!db.number("select id from projects where id = :id and owner_id = :user", {project, user}))
        throw unknownProject();
}

Projects::Projects(Database& database, const FileStore& files, const Trash& trash)
    : database_(database)
    , files_(files)
    , trash_(trash)
{
}

void Projects::addTo(Routes& routes)
{
    routes.add("POST", "/project/cloudProjectInfo/add", [this](Call& call) { return add(call); });
    routes.add(
        "GET", "/project/cloudProjectBackup/getProjectList", [this](Call& call) { return list(call); });
    routes.add("POST", "/project/cloudProjectBackup/upload",
        {[this](Call& call) { return upload(call); }, {&files_, {}, 0}});
    routes.add(
        "GET", "/project/cloudProjectBackup/downloadProject", [this](Call& call) { return download(call); });
}

Json Projects::add(Call& call)
{
    const Fields form = call.form();
    auto db = database_.work();
    const auto id = db.number("insert into projects (owner_id, source_client, title, description)"
                              " values (:owner, :client, :title, :description) returning id",
        {call.user(), form.text("sourceClient"), form.filledText("projectTitle"),
            form.text("description", longestDescription)});
    db.commit();
    return success(id.value());
}

Json Projects::list(Call& call)
{
    return success(database_.read().all<ProjectRecord>(
        R"(select id, title, source_client, description
           from projects where owner_id = :user and source_client = :client order by id)",
        {call.user(), call.query().text("sourceClient")}, call.query().page()));
}

Json Projects::upload(Call& call)
{
    const Upload upload = call.upload();
    const long long project = upload.fields.id("projectId");
    upload.file->finish();

    auto db = database_.work();
    requireOwnProject(db, call.user(), project);
    const auto replaced = db.one<KnownFile>(
        "select stored_name, file_name, size, sha256, 'the backup of project ' || project_id from backups"
        " where project_id = :id",
        {project});
    const auto trashed = replaced ? std::optional(trash_.enter(db, *replaced)) : std::nullopt;
    db.run("delete from backups where project_id = :id", {project});
    db.run("insert into backups (project_id, file_name, stored_name, size, sha256)"
           " values (:id, :name, :stored, :size, :sha256)",
        {project, upload.fileName, upload.file->storedName(), static_cast<long long>(upload.file->size()),
            upload.file->sha256()});
    db.commit();
    upload.file->keep();
    if (trashed)
        trash_.take(*trashed);
    return success({{"projectId", project}, {"size", upload.file->size()}});
}

Download Projects::download(Call& call)
{
    const long long project = call.query().id("projectId");
    return openDownload(database_, files_, [&](Database::Work& db) {
        requireOwnProject(db, call.user(), project);
        const auto stored =
            db.one<WantedFile>("select stored_name, sha256 from backups where project_id = :id", {project});
        if (!stored)
            throw Refusal("The project has no backup yet", 404);
        return *stored;
    });
}

} // namespace local_platform
