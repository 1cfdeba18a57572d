// SPDX-License-Identifier: MIT
#include "cloud/CloudFileManger_p.h"

/// What the three ways of sharing have in common.
CloudFileManger::Private::Fields CloudFileManger::Private::shareFields(
    const QString& logicalIds, int durationHours) const
{
    return {{"projectId", projectId}, {"sourceClient", softName},
        {"durationHours", QString::number(durationHours)}, {"logicalIds", logicalIds}};
}

bool CloudFileManger::UploadCloudShareFile2(
    QString typeFlag, QString supportTypeId, QString filePath, int& logicalId)
{
    if (d->projectId.isEmpty())
        return false;
    ResultMap reply;
    if (!d->postForm("/project/cloudProjectShare/upload",
            {{"projectId", d->projectId}, {"sourceClient", d->softName}, {"supportTypeId", supportTypeId},
                {"typeFlag", typeFlag}},
            reply, filePath))
        return false;
    logicalId = reply.value(QStringLiteral("data")).toMap().value(QStringLiteral("logicalId")).toInt();
    return true;
}

bool CloudFileManger::CloudShareAnonymous(QString logicalIds, QString& extractionCode, int durationHours)
{
    if (d->projectId.isEmpty())
        return false;
    ResultMap reply;
    if (!d->postForm(
            "/project/cloudProjectShare/toAnonymous", d->shareFields(logicalIds, durationHours), reply))
        return false;
    extractionCode = replyText(reply, "data");
    return true;
}

bool CloudFileManger::CloudShareToAccount(QString userNames, QString logicalIds, int durationHours)
{
    if (d->projectId.isEmpty())
        return false;
    Private::Fields fields = d->shareFields(logicalIds, durationHours);
    fields["userNames"] = userNames;
    // The platform's own spelling.
    return d->postForm("/project/cloudProjectShare/toUSer", fields);
}

bool CloudFileManger::CloudShareToGroup(QString groupId, QString logicalIds, int durationHours)
{
    if (d->projectId.isEmpty())
        return false;
    Private::Fields fields = d->shareFields(logicalIds, durationHours);
    fields["groupId"] = groupId;
    return d->postForm("/project/cloudProjectShare/toGroup", fields);
}

bool CloudFileManger::ExtractByCode(QString extractionCode, QString)
{
    return d->get("/project/cloudProjectShare/extractByCode",
        "extractionCode=" + extractionCode + "&sourceClient=" + d->softName);
}

bool CloudFileManger::DownloadCloudShareFile(QString logicalId, QString savePath)
{
    return d->download("/project/cloudProjectShare/download", "logicalId=" + logicalId, savePath);
}

bool CloudFileManger::getShareProjectFromPlatform(QString sourceClient)
{
    const auto kept = d;
    ResultMap reply;
    if (!kept->get("/project/cloudProjectShare/getProjectBySoftId",
            "sourceClient=" + sourceClient + "&targetClient=" + kept->softName, reply))
        return false;
    QMap<QString, ShareProjectInfo> projects;
    for (const QVariantMap& item : replyList(reply, {"id", "sourceClient"})) {
        const QString id = replyText(item, "id");
        projects[id] = {id, replyText(item, "projectTitle"), replyText(item, "sourceClient"), kept->softName,
            replyText(item, "description")};
    }
    kept->foreignProjectMap[sourceClient] = projects;
    return true;
}

bool CloudFileManger::getShareProjectInfoById2(
    QString sourceClient, QString projectId, QMap<QString, QString>& files)
{
    // The query has the two the other way round.
    ResultMap reply;
    if (!d->get("/project/cloudProjectShare/getByProject",
            "projectId=" + projectId + "&sourceClient=" + sourceClient, reply))
        return false;
    for (const QVariantMap& item : replyList(reply, {"originalName"}))
        files[replyText(item, "id")] = replyText(item, "originalName");
    return true;
}
