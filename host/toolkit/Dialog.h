// SPDX-License-Identifier: MIT
#pragma once

#include "toolkit/tav_host_toolkit_export.h"

#include <QDialog>

/// Base of the host's dialogs: modal, and without the context-help button in its title bar.
class TAV_HOST_TOOLKIT_EXPORT Dialog : public QDialog
{
    Q_OBJECT

public:
    /// \param parent owns the dialog when given
    explicit Dialog(QWidget* parent = nullptr);
};
