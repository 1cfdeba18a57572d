// SPDX-License-Identifier: MIT
#include "cloud/CloudFileManger_p.h"

using namespace tav;

bool CloudFileManger::AddCloudProInfo(QString title, QString description)
{
    Call call(d);
    // The one project reply whose only success is code 0: 200 would come without an id.
    if (!call.postFormForCode("/project/cloudProjectInfo/add",
            {{"sourceClient", call->softName}, {"projectTitle", title}, {"description", description}}))
        return false;
    call->projectId = replyText(call.reply, "data");
    return true;
}

TransferPlan CloudFileManger::Private::backup(const QString& filePath) const
{
    return ofProject(upload("/project/cloudProjectBackup/upload",
        {{"projectId", projectId}, {"sourceClient", softName}}, filePath));
}

bool CloudFileManger::BackupCloudProFile(QString filePath)
{
    return d->hasProject() && Call(d).transfer(d->backup(filePath));
}

CloudTransferJob* CloudFileManger::backupJob(QString filePath, QObject* parent) const
{
    return TransferJobs::make(d->backup(filePath), parent);
}

bool CloudFileManger::getAllCloudProjectBackup()
{
    Call call(d);
    if (!call.get("/project/cloudProjectBackup/getProjectList", "sourceClient=" + call->softName))
        return false;
    call->projectMap.clear();
    for (const QVariantMap& item : replyList(call.reply, {"id", "sourceClient"})) {
        const QString id = replyText(item, "id");
        call->projectMap[id] = {
            id, replyText(item, "projectTitle"), replyText(item, "sourceClient"), QString(), QString()};
    }
    return true;
}

TransferPlan CloudFileManger::Private::backupDownload(const QString& wantedId, const QString& savePath) const
{
    // The current project is what is tested, although another's backup may be asked for: hosts rely on it.
    return ofProject(
        download("/project/cloudProjectBackup/downloadProject", "projectId=" + wantedId, savePath));
}

bool CloudFileManger::DownloadCloudProFile(QString projectId, QString savePath)
{
    return d->hasProject() && Call(d).transfer(d->backupDownload(projectId, savePath));
}

CloudTransferJob* CloudFileManger::backupDownloadJob(
    QString projectId, QString savePath, QObject* parent) const
{
    return TransferJobs::make(d->backupDownload(projectId, savePath), parent);
}
