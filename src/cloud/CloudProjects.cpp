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

bool CloudFileManger::BackupCloudProFile(QString filePath)
{
    if (!d->hasProject())
        return false;
    return Call(d).postForm("/project/cloudProjectBackup/upload",
        {{"projectId", d->projectId}, {"sourceClient", d->softName}}, filePath);
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

bool CloudFileManger::DownloadCloudProFile(QString projectId, QString savePath)
{
    // The current project is what is tested, although another's backup may be asked for: hosts rely on it.
    if (!d->hasProject())
        return false;
    return Call(d).download(
        "/project/cloudProjectBackup/downloadProject", "projectId=" + projectId, savePath);
}
