// SPDX-License-Identifier: MIT
#pragma once

#include "cloud/CloudFileManger.h"
#include "net/HttpRunner.h"
#include "net/ReplyEnvelope.h"
#include "net/TransferPlan.h"

#include <QList>
#include <QVariant>

/// The client's members.
struct TAV_CLOUD_PLATFORM_SDK_NO_EXPORT CloudFileManger::Private
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
    CloudFailure lastFailure = CloudFailure::None;
    CloudTransferOptions transferOptions;

    using Fields = QMap<QString, QVariant>;

    /// Whether there is a current project, for the operations that send nothing without.
    bool hasProject();
    Fields shareFields(const QString& logicalIds, int durationHours) const;
    HeaderMap bearer() const;

    /// \name What carries a file, before it is sent
    /// @{
    tav::TransferPlan upload(const QString& path, const Fields& fields, const QString& filePath) const;
    tav::TransferPlan download(const QString& path, const QString& query, const QString& savePath) const;
    tav::TransferPlan backup(const QString& filePath) const;
    tav::TransferPlan backupDownload(const QString& wantedId, const QString& savePath) const;
    tav::TransferPlan shareUpload(
        const QString& typeFlag, const QString& supportTypeId, const QString& filePath) const;
    tav::TransferPlan shareDownload(const QString& logicalId, const QString& savePath) const;
    /// \a plan, which sends nothing without a current project.
    tav::TransferPlan ofProject(tav::TransferPlan plan) const;
    /// @}
};

/// One operation at work. It holds the members, so that the client may be destroyed while it waits, and has
/// an error of its own, so that another operation of the same client, which a timer of the host may call
/// meanwhile, does not decide about this one. What it ends in is kept when it is destroyed.
///
/// The carriers are what an operation is written with: each builds the request, sends it and judges the
/// reply's envelope. One call sends one request.
class TAV_CLOUD_PLATFORM_SDK_NO_EXPORT CloudFileManger::Call
{
public:
    using Fields = Private::Fields;

    explicit Call(std::shared_ptr<Private> client);
    ~Call();
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

    Private* operator->() const { return members.get(); }

    bool get(const QString& path, const QString& query = QString());
    bool remove(const QString& path, const QString& query);
    bool postJson(const QString& path, const QVariantMap& object);
    bool postForm(const QString& path, const Fields& fields);
    /// The same for the one reply that is judged by its code alone.
    bool postFormForCode(const QString& path, const Fields& fields);
    bool transfer(tav::TransferPlan plan);

    ResultMap reply;
    tav::TransferResult transferred;

private:
    QString address(const QString& path, const QString& query = QString()) const;
    template <class Judge>
    bool isAccepted(bool sent, Judge judge);

    std::shared_ptr<Private> members;
    QString error;
    CloudFailure failure = CloudFailure::None;
};
