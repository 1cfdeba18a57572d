// SPDX-License-Identifier: MIT
#pragma once

#include "toolkit/tav_host_toolkit_export.h"

#include <QDialog>

/// Base of the host's dialogs: modal, without the context-help button in its title bar, and as large as the
/// user last made it. The size is kept in pSystemSettings under the dialog's object name or, without one,
/// under the name of its class; a dialog that has neither of its own keeps none. The place is never kept: a
/// dialog opens over its parent.
class TAV_HOST_TOOLKIT_EXPORT Dialog : public QDialog
{
    Q_OBJECT

public:
    /// \param parent owns the dialog when given
    explicit Dialog(QWidget* parent = nullptr);

    void setVisible(bool visible) override;

protected:
    bool event(QEvent* event) override;

private:
    void noteSize(bool byUser);
    QString nameInSettings() const;
    void takeSizeFromSettings();

    QSize sizeByProgram;
    bool sizedByUser = false;
};
