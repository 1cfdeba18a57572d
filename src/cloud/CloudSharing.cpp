// SPDX-License-Identifier: MIT
#include "cloud/CloudFileManger_p.h"

using namespace tav;

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
    if (!d->hasProject())
        return false;
    Call call(d);
    if (!call.postForm("/project/cloudProjectShare/upload",
            {{"projectId", call->projectId}, {"sourceClient", call->softName},
                {"supportTypeId", supportTypeId}, {"typeFlag", typeFlag}},
            filePath))
        return false;
    logicalId = call.reply.value(QStringLiteral("data")).toMap().value(QStringLiteral("logicalId")).toInt();
    return true;
}

bool CloudFileManger::CloudShareAnonymous(QString logicalIds, QString& extractionCode, int durationHours)
{
    if (!d->hasProject())
        return false;
    Call call(d);
    if (!call.postForm(
            "/project/cloudProjectShare/toAnonymous", call->shareFields(logicalIds, durationHours)))
        return false;
    extractionCode = replyText(call.reply, "data");
    return true;
}

bool CloudFileManger::CloudShareToAccount(QString userNames, QString logicalIds, int durationHours)
{
    if (!d->hasProject())
        return false;
    Private::Fields fields = d->shareFields(logicalIds, durationHours);
    fields["userNames"] = userNames;
    // The platform's own spelling.
    return Call(d).postForm("/project/cloudProjectShare/toUSer", fields);
}

bool CloudFileManger::CloudShareToGroup(QString groupId, QString logicalIds, int durationHours)
{
    if (!d->hasProject())
        return false;
    Private::Fields fields = d->shareFields(logicalIds, durationHours);
    fields["groupId"] = groupId;
    return Call(d).postForm("/project/cloudProjectShare/toGroup", fields);
}

bool CloudFileManger::ExtractByCode(QString extractionCode, QString)
{
    return Call(d).get("/project/cloudProjectShare/extractByCode",
        "extractionCode=" + extractionCode + "&sourceClient=" + d->softName);
}

bool CloudFileManger::DownloadCloudShareFile(QString logicalId, QString savePath)
{
    return Call(d).download("/project/cloudProjectShare/download", "logicalId=" + logicalId, savePath);
}

bool CloudFileManger::getShareProjectFromPlatform(QString sourceClient)
{
    Call call(d);
    if (!call.get("/project/cloudProjectShare/getProjectBySoftId",
            "sourceClient=" + sourceClient + "&targetClient=" + call->softName))
        return false;
    QMap<QString, ShareProjectInfo> projects;
    for (const QVariantMap& item : replyList(call.reply, {"id", "sourceClient"})) {
        const QString id = replyText(item, "id");
        projects[id] = {id, replyText(item, "projectTitle"), replyText(item, "sourceClient"), call->softName,
            replyText(item, "description")};
    }
    call->foreignProjectMap[sourceClient] = projects;
    return true;
}

bool CloudFileManger::getShareProjectInfoById2(
    QString sourceClient, QString projectId, QMap<QString, QString>& files)
{
    // The query has the two the other way round.
    Call call(d);
    if (!call.get("/project/cloudProjectShare/getByProject",
            "projectId=" + projectId + "&sourceClient=" + sourceClient))
        return false;
    for (const QVariantMap& item : replyList(call.reply, {"originalName"}))
        files[replyText(item, "id")] = replyText(item, "originalName");
    return true;
}
