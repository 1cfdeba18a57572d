// SPDX-License-Identifier: MIT
#include "ui/cloudspace/JoinGroupDlg.h"

#include "ui/FieldGrid.h"
#include "ui/Steps.h"

#include <QClipboard>
#include <QLineEdit>
#include <QPushButton>

using namespace tav;

JoinGroupDlg::JoinGroupDlg(QClipboard* systemClipboard, QWidget* parent)
    : Dialog(parent)
    , clipboard(systemClipboard)
    , codeEdit(new QLineEdit(this))
{
    setWindowTitle(tr("Join group by invitation code"));
    removeBlanksFrom(codeEdit);
    codeEdit->setPlaceholderText(tr("Please enter the invitation code"));
    auto* pasteButton = new QPushButton(tr("Paste"), this);
    auto* joinButton = new QPushButton(tr("Join the group"), this);

    auto* fields = new FieldGrid;
    fields->addField(tr("Invitation code"), codeEdit, pasteButton);
    layOut(this, fields, joinButton, nullptr);

    connect(pasteButton, &QPushButton::clicked, this, &JoinGroupDlg::_onPaste);
    connect(joinButton, &QPushButton::clicked, this, &JoinGroupDlg::_onConfirm);
}

QString JoinGroupDlg::invitationCode() const
{
    return codeEdit->text();
}

void JoinGroupDlg::_onConfirm()
{
    if (requireText(this, codeEdit, tr("The invitation code cannot be empty.")))
        accept();
}

void JoinGroupDlg::_onPaste()
{
    codeEdit->setText(clipboard->text());
    // Enter joins now, and does not paste again.
    codeEdit->setFocus();
}
