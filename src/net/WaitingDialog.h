// SPDX-License-Identifier: MIT
#pragma once

#include <QProgressDialog>

/// The modal busy dialog of a long exchange. It has no cancel button; it ends with the exchange.
class WaitingDialog : public QProgressDialog
{
    Q_OBJECT

public:
    WaitingDialog();
};
