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

TransferPlan CloudFileManger::Private::shareUpload(
    const QString& typeFlag, const QString& supportTypeId, const QString& filePath) const
{
    return ofProject(upload("/project/cloudProjectShare/upload",
        {{"projectId", projectId}, {"sourceClient", softName}, {"supportTypeId", supportTypeId},
            {"typeFlag", typeFlag}},
        filePath));
}

bool CloudFileManger::UploadCloudShareFile2(
    QString typeFlag, QString supportTypeId, QString filePath, int& logicalId)
{
    if (!d->hasProject())
        return false;
    Call call(d);
    if (!call.transfer(d->shareUpload(typeFlag, supportTypeId, filePath)))
        return false;
    logicalId = call.transferred.logicalId;
    return true;
}

CloudTransferJob* CloudFileManger::shareUploadJob(
    QString typeFlag, QString supportTypeId, QString filePath, QObject* parent) const
{
    return TransferJobs::make(d->shareUpload(typeFlag, supportTypeId, filePath), parent);
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

TransferPlan CloudFileManger::Private::shareDownload(const QString& logicalId, const QString& savePath) const
{
    return download("/project/cloudProjectShare/download", "logicalId=" + logicalId, savePath);
}

bool CloudFileManger::DownloadCloudShareFile(QString logicalId, QString savePath)
{
    return Call(d).transfer(d->shareDownload(logicalId, savePath));
}

CloudTransferJob* CloudFileManger::shareDownloadJob(
    QString logicalId, QString savePath, QObject* parent) const
{
    return TransferJobs::make(d->shareDownload(logicalId, savePath), parent);
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
