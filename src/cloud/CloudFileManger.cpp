// SPDX-License-Identifier: MIT
#include "cloud/CloudFileManger_p.h"
#include "cloud/CloudHandle.h"

#include <QJsonDocument>
#include <QJsonObject>

using namespace tav;

CloudFileManger::CloudFileManger(QString baseAddress, QString accessToken, QString third, QString softName,
    QStringList shareSourceSoft, QString backupSuffix, QString projectName, QString projectId)
    : d(std::make_shared<Private>())
{
    d->baseAddress = baseAddress;
    d->accessToken = accessToken;
    d->third = third;
    d->softName = softName;
    d->shareSourceSoft = shareSourceSoft;
    d->backupSuffix = backupSuffix;
    d->projectName = projectName;
    d->projectId = projectId;
    getSoftwareAdaptationType();
    getSoftwareSupportType();
}

CloudFileManger::CloudFileManger(std::shared_ptr<Private> shared)
    : d(std::move(shared))
{
}

CloudHandle tav::handleOn(const CloudFileManger* client)
{
    return CloudHandle(new CloudFileManger(client->d));
}

CloudFileManger::CloudFileManger(const CloudFileManger& other)
    : d(std::make_shared<Private>(*other.d))
{
}

CloudFileManger& CloudFileManger::operator=(const CloudFileManger& other)
{
    if (this != &other)
        *d = *other.d; // in place: the module's dialogs work on these members too
    return *this;
}

CloudFileManger::~CloudFileManger() = default;

QString CloudFileManger::getLastError() const
{
    return d->lastError;
}

CloudFailure CloudFileManger::getLastFailure() const
{
    return d->lastFailure;
}

QString CloudFileManger::getProjectId() const
{
    return d->projectId;
}

QString CloudFileManger::getProjectName() const
{
    return d->projectName;
}

QString CloudFileManger::getSoftName() const
{
    return d->softName;
}

QStringList CloudFileManger::getShareSourceSoft() const
{
    return d->shareSourceSoft;
}

void CloudFileManger::setProjectID(QString id)
{
    d->projectId = id;
}

QMap<QString, CloudFileManger::ShareProjectInfo> CloudFileManger::getAllCloudProjects() const
{
    return d->projectMap;
}

QMap<QString, QMap<QString, CloudFileManger::ShareProjectInfo>>
CloudFileManger::getForeignCloudProjects() const
{
    return d->foreignProjectMap;
}

bool CloudFileManger::Private::hasProject()
{
    if (projectId.isEmpty())
        lastFailure = CloudFailure::NoProject;
    return !projectId.isEmpty();
}

void CloudFileManger::setTransferOptions(const CloudTransferOptions& options)
{
    d->transferOptions = options;
}

CloudTransferOptions CloudFileManger::getTransferOptions() const
{
    return d->transferOptions;
}

CloudFileManger::Call::Call(std::shared_ptr<Private> client)
    : members(std::move(client))
{
    members->lastError.clear();
}

CloudFileManger::Call::~Call()
{
    members->lastError = error;
    members->lastFailure = failure;
}

QString CloudFileManger::Call::address(const QString& path, const QString& query) const
{
    return members->baseAddress + path + (query.isEmpty() ? QString() : "?" + query);
}

HeaderMap CloudFileManger::Private::bearer() const
{
    return {{"Authorization", "Bearer " + accessToken}};
}

template <class Judge>
bool CloudFileManger::Call::isAccepted(bool sent, Judge judge)
{
    if (!sent)
        failure = lastTransportFailure();
    else if (!judge(reply, error))
        failure = refusalIn(reply, error);
    return failure == CloudFailure::None;
}

bool CloudFileManger::Call::get(const QString& path, const QString& query)
{
    return isAccepted(
        httpGet(reply, error, address(path, query), members->bearer(), platformTimeoutMs), checkReply);
}

bool CloudFileManger::Call::remove(const QString& path, const QString& query)
{
    return isAccepted(
        httpDelete(reply, error, address(path, query), members->bearer(), platformTimeoutMs), checkReply);
}

bool CloudFileManger::Call::postJson(const QString& path, const QVariantMap& object)
{
    HeaderMap headers = members->bearer();
    headers["Content-Type"] = "application/json";
    const QByteArray body = QJsonDocument(QJsonObject::fromVariantMap(object)).toJson(QJsonDocument::Compact);
    return isAccepted(httpPost(reply, error, address(path), headers, body, platformTimeoutMs), checkReply);
}

bool CloudFileManger::Call::postForm(const QString& path, const Fields& fields)
{
    return isAccepted(httpPostMultipart(reply, error, address(path), members->bearer(), fields, QString(),
                          platformTimeoutMs),
        checkReply);
}

bool CloudFileManger::Call::postFormForCode(const QString& path, const Fields& fields)
{
    return isAccepted(httpPostMultipart(reply, error, address(path), members->bearer(), fields, QString(),
                          platformTimeoutMs),
        checkCode);
}

bool CloudFileManger::Call::transfer(TransferPlan plan)
{
    HttpExchange exchange(plan.request());
    runToEnd(exchange, error);
    plan.conclude(exchange);
    transferred = plan.result;
    failure = transferred.failure;
    error = transferred.error;
    return failure == CloudFailure::None;
}
