// SPDX-License-Identifier: MIT
#pragma once

#include "net/CloudConversionReport.h"
#include "net/CloudFailure.h"
#include "net/CloudTransferOptions.h"
#include "tav_cloud_platform_sdk_export.h"

#include <QMetaType>
#include <QObject>

#include <memory>

namespace tav {
struct TransferPlan;
class TransferJobs;
} // namespace tav

/// An asynchronous transfer: a backup, a share's upload, a download or a conversion.
/// CloudFileManger and CadConversion.h make them; they do what the operation of the same name does, within
/// the same limits unless the options say otherwise.
///
/// A job belongs to the thread that it lives in, which needs a running event loop; any number may run at the
/// same time, in one thread or in several. What it sends is fixed when it is made: the client may change, or
/// be destroyed, and gets no last error from it. Nothing in it waits in an event loop of its own; beginning
/// to read a file, and putting a whole one in its place, block for as long as the disk takes.
///
/// Destroying a job cancels it, also from its own signals. A cancelled download leaves no file behind; the
/// platform drops what it received of a cancelled upload.
class TAV_CLOUD_PLATFORM_SDK_EXPORT CloudTransferJob : public QObject
{
    Q_OBJECT

public:
    ~CloudTransferJob() override;

    /// Starts the transfer and returns at once; a second call does nothing. finished() is emitted exactly
    /// once, never from within this call.
    void start();
    /// Cancels the transfer: finished() is emitted before this returns, with CloudFailure::Cancelled. Does
    /// nothing before start() and after the end.
    void cancel();

    /// Whether it has begun, and not ended.
    bool isRunning() const;
    /// How it ended; CloudFailure::None also before the end.
    CloudFailure failure() const;
    /// What getLastError() would be after the operation. For the user there is cloudFailureText().
    QString errorText() const;

    /// The file that is read, or written. After a conversion that succeeded: its result.
    QString filePath() const;
    /// The id to share the file by, once a share's upload has succeeded; else 0.
    int logicalId() const;
    /// What the service said about a conversion, once that has ended; empty for other transfers.
    CloudConversionReport conversionReport() const;

signals:
    /// Ten times a second while it runs, whether bytes move or not.
    void progressed(const CloudTransferProgress& progress);
    /// \param done whether the operation succeeded
    void finished(bool done);

private:
    friend class tav::TransferJobs;
    CloudTransferJob(tav::TransferPlan plan, QObject* parent);
    void conclude();

    struct Private;
    std::unique_ptr<Private> d;
};

Q_DECLARE_METATYPE(CloudTransferProgress)
