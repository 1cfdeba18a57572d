// SPDX-License-Identifier: MIT
#include "cloud/CloudFileManger_p.h"

#include <QJsonDocument>
#include <QJsonObject>

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

/// A second handle on \a shared, where a copy would be independent.
CloudFileManger::CloudFileManger(std::shared_ptr<Private> shared)
    : d(std::move(shared))
{
}

CloudFileManger::CloudFileManger(const CloudFileManger& other)
    : d(std::make_shared<Private>(*other.d))
{
}

CloudFileManger& CloudFileManger::operator=(const CloudFileManger& other)
{
    if (this != &other)
        d = std::make_shared<Private>(*other.d);
    return *this;
}

CloudFileManger::~CloudFileManger() = default;

QString CloudFileManger::getLastError() const
{
    return d->lastError;
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

QString CloudFileManger::Private::address(const QString& path, const QString& query) const
{
    return baseAddress + path + (query.isEmpty() ? QString() : "?" + query);
}

HeaderMap CloudFileManger::Private::bearer() const
{
    return {{"Authorization", "Bearer " + accessToken}};
}

bool CloudFileManger::Private::get(const QString& path, const QString& query, ResultMap& reply)
{
    const auto kept = shared_from_this();
    lastError.clear();
    return httpGet(reply, lastError, address(path, query), bearer(), platformTimeoutMs)
        && checkReply(reply, lastError);
}

bool CloudFileManger::Private::get(const QString& path, const QString& query)
{
    ResultMap reply;
    return get(path, query, reply);
}

bool CloudFileManger::Private::remove(const QString& path, const QString& query)
{
    const auto kept = shared_from_this();
    lastError.clear();
    ResultMap reply;
    return httpDelete(reply, lastError, address(path, query), bearer(), platformTimeoutMs)
        && checkReply(reply, lastError);
}

bool CloudFileManger::Private::postJson(const QString& path, const QVariantMap& object)
{
    const auto kept = shared_from_this();
    lastError.clear();
    HeaderMap headers = bearer();
    headers["Content-Type"] = "application/json";
    const QByteArray body = QJsonDocument(QJsonObject::fromVariantMap(object)).toJson(QJsonDocument::Compact);
    ResultMap reply;
    return httpPost(reply, lastError, address(path, QString()), headers, body, platformTimeoutMs)
        && checkReply(reply, lastError);
}

bool CloudFileManger::Private::download(const QString& path, const QString& query, const QString& savePath)
{
    const auto kept = shared_from_this();
    lastError.clear();
    ResultMap reply;
    return httpGetToFile(reply, lastError, address(path, query), savePath, bearer(), platformTimeoutMs)
        && checkReply(reply, lastError);
}

bool CloudFileManger::Private::postUnjudged(
    const QString& path, const Fields& fields, ResultMap& reply, const QString& filePath)
{
    const auto kept = shared_from_this();
    lastError.clear();
    return httpPostMultipart(
        reply, lastError, address(path, QString()), bearer(), fields, filePath, platformTimeoutMs);
}

bool CloudFileManger::Private::postForm(
    const QString& path, const Fields& fields, ResultMap& reply, const QString& filePath)
{
    const auto kept = shared_from_this();
    return postUnjudged(path, fields, reply, filePath) && checkReply(reply, lastError);
}

bool CloudFileManger::Private::postForm(const QString& path, const Fields& fields, const QString& filePath)
{
    ResultMap reply;
    return postForm(path, fields, reply, filePath);
}
