// SPDX-License-Identifier: MIT
#pragma once

#include "toolkit/Dialog.h"

#include <QString>

class QLineEdit;

/// Asks for the name of a new group.
class CreateGroupDlg : public Dialog
{
    Q_OBJECT

public:
    explicit CreateGroupDlg(QWidget* parent);

    QString groupName() const;

private slots:
    void _onConfirm();

private:
    QLineEdit* nameEdit;
};
