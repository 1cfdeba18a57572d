// SPDX-License-Identifier: MIT
#pragma once

#include <QProgressDialog>

namespace tav {

/// The modal busy dialog of a long exchange, which closes it. It has no cancel button; Escape gives the
/// exchange up.
class WaitingDialog : public QProgressDialog
{
    Q_OBJECT

public:
    WaitingDialog();
};

} // namespace tav
