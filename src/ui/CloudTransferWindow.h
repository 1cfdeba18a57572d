// SPDX-License-Identifier: MIT
#pragma once

#include "tav_cloud_platform_sdk_export.h"

#include <QString>

class CloudTransferJob;
class QWidget;

/// Starts \a job, which has not been started, and waits for its end in a local event loop. When that takes
/// longer than half a second, a modal window comes up in front of \a parent: what is transferred, how many
/// bytes of how many, the time left once it is steady, and a button that cancels the job. Until then input is
/// held back.
///
/// The job is cancelled too when \a parent is hidden or destroyed meanwhile, or the application quits. The
/// caller keeps the job, and may not touch a window that can have been destroyed.
///
/// GUI thread only. Lasts as long as the job: what limits that is in its CloudTransferOptions.
///
/// \param what what the job does, for the user: "Backing up bridge.dgn..."
/// \return whether the job succeeded; its failure() tells what else it ended in
TAV_CLOUD_PLATFORM_SDK_EXPORT bool runCloudTransfer(
    CloudTransferJob& job, QWidget* parent, const QString& what);
