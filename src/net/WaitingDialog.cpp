// SPDX-License-Identifier: MIT
#include "net/WaitingDialog.h"

namespace tav {

WaitingDialog::WaitingDialog()
    : QProgressDialog(nullptr, Qt::FramelessWindowHint)
{
    setMinimumDuration(3);
    setMinimumWidth(400);
    setLabelText(tr("read data..."));
    setRange(0, 0);
    setCancelButton(nullptr);
    setWindowTitle(tr("Waiting"));
    // It may be the only window: closing it must not quit the application.
    setAttribute(Qt::WA_QuitOnClose, false);
}

} // namespace tav
