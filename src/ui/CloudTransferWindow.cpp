// SPDX-License-Identifier: MIT
#include "ui/CloudTransferWindow.h"

#include "net/CloudTransferJob.h"
#include "ui/TransferDialog.h"

#include <QPointer>

bool runCloudTransfer(CloudTransferJob& job, QWidget* parent, const QString& what)
{
    const QPointer<tav::TransferDialog> dialog(new tav::TransferDialog(parent->window()));
    tav::TransferDialog::run(dialog, job, what);
    delete dialog;
    return job.failure() == CloudFailure::None;
}
