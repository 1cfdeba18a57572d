// SPDX-License-Identifier: MIT
#include "ui/cloudspace/CreateGroupDlg.h"

#include "ui/FieldGrid.h"
#include "ui/Steps.h"

#include <QLineEdit>
#include <QPushButton>

using namespace tav;

CreateGroupDlg::CreateGroupDlg(QWidget* parent)
    : Dialog(parent)
    , nameEdit(new QLineEdit(this))
{
    setWindowTitle(tr("Create a group"));
    auto* createButton = new QPushButton(tr("Create"), this);
    auto* cancelButton = new QPushButton(tr("Cancel"), this);

    auto* fields = new FieldGrid;
    fields->addField(tr("Group Name:"), nameEdit);
    layOut(this, fields, createButton, cancelButton);

    connect(createButton, &QPushButton::clicked, this, &CreateGroupDlg::_onConfirm);
    connect(cancelButton, &QPushButton::clicked, this, &QDialog::reject);
}

QString CreateGroupDlg::groupName() const
{
    return nameEdit->text();
}

void CreateGroupDlg::_onConfirm()
{
    if (requireText(this, nameEdit, tr("Group name cannot be empty!")))
        accept();
}
