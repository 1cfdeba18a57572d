// SPDX-License-Identifier: MIT
#include "cloud/CloudFileManger_p.h"

bool CloudFileManger::AddCloudProInfo(QString title, QString description)
{
    const auto kept = d;
    ResultMap reply;
    if (!kept->postUnjudged("/project/cloudProjectInfo/add",
            {{"sourceClient", kept->softName}, {"projectTitle", title}, {"description", description}}, reply))
        return false;
    // The one project reply whose only success is code 0: 200 would come without an id.
    if (!checkCode(reply, kept->lastError))
        return false;
    kept->projectId = replyText(reply, "data");
    return true;
}

bool CloudFileManger::BackupCloudProFile(QString filePath)
{
    if (d->projectId.isEmpty())
        return false;
    return d->postForm("/project/cloudProjectBackup/upload",
        {{"projectId", d->projectId}, {"sourceClient", d->softName}}, filePath);
}

bool CloudFileManger::getAllCloudProjectBackup()
{
    const auto kept = d;
    ResultMap reply;
    if (!kept->get("/project/cloudProjectBackup/getProjectList", "sourceClient=" + kept->softName, reply))
        return false;
    kept->projectMap.clear();
    for (const QVariantMap& item : replyList(reply, {"id", "sourceClient"})) {
        const QString id = replyText(item, "id");
        kept->projectMap[id] = {
            id, replyText(item, "projectTitle"), replyText(item, "sourceClient"), QString(), QString()};
    }
    return true;
}

bool CloudFileManger::DownloadCloudProFile(QString projectId, QString savePath)
{
    // The current project is what is tested, although another's backup may be asked for: hosts rely on it.
    if (d->projectId.isEmpty())
        return false;
    return d->download("/project/cloudProjectBackup/downloadProject", "projectId=" + projectId, savePath);
}
