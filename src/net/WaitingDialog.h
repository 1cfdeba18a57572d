// SPDX-License-Identifier: MIT
#pragma once

#include <QProgressDialog>

namespace tav {

/// The modal busy dialog of a long exchange, which closes it at its end. It has no cancel button; Escape ends
/// the wait.
class WaitingDialog : public QProgressDialog
{
    Q_OBJECT

public:
    WaitingDialog();
};

} // namespace tav
