// SPDX-License-Identifier: MIT
#pragma once

#include "toolkit/Dialog.h"

#include <QString>

class QClipboard;
class QLineEdit;

/// Asks for the code by which the user was invited to a group.
class JoinGroupDlg : public Dialog
{
    Q_OBJECT

public:
    JoinGroupDlg(QClipboard* systemClipboard, QWidget* parent);

    QString invitationCode() const;

private slots:
    void _onConfirm();
    void _onPaste();

private:
    QClipboard* clipboard;
    QLineEdit* codeEdit;
};
