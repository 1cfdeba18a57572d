// SPDX-License-Identifier: MIT
#pragma once

#include "cloud/CloudFileManger.h"
#include "net/HttpRunner.h"
#include "net/ReplyEnvelope.h"

#include <QList>
#include <QVariant>

/// The client's members, and the carriers that an operation is written with: each builds the request, empties
/// the last error, runs it, judges the reply's envelope and keeps the reason of a failure.
///
/// A carrier keeps the members alive while it waits, so the client may be destroyed meanwhile; an operation
/// that writes members after a carrier returned holds a copy of the pointer itself.
struct TAV_CLOUD_PLATFORM_SDK_NO_EXPORT CloudFileManger::Private
    : std::enable_shared_from_this<CloudFileManger::Private>
{
    QString baseAddress;
    QString accessToken;
    QString third;
    QString softName;
    QString projectId;
    QString lastError;
    QMap<QString, ShareProjectInfo> projectMap;
    QMap<QString, QMap<QString, ShareProjectInfo>> foreignProjectMap;
    QString backupSuffix;
    QStringList shareSourceSoft;
    QString projectName;

    using Fields = QMap<QString, QVariant>;

    bool get(const QString& path, const QString& query, ResultMap& reply);
    bool get(const QString& path, const QString& query = QString());
    bool remove(const QString& path, const QString& query);
    bool postJson(const QString& path, const QVariantMap& object);
    bool download(const QString& path, const QString& query, const QString& savePath);
    /// Posts a form, with the file at \a filePath unless that is empty.
    bool postForm(
        const QString& path, const Fields& fields, ResultMap& reply, const QString& filePath = QString());
    bool postForm(const QString& path, const Fields& fields, const QString& filePath = QString());
    /// Posts a form and leaves the judgement of the reply to the operation.
    bool postUnjudged(
        const QString& path, const Fields& fields, ResultMap& reply, const QString& filePath = QString());

    Fields shareFields(const QString& logicalIds, int durationHours) const;

private:
    QString address(const QString& path, const QString& query) const;
    HeaderMap bearer() const;
};
