// SPDX-License-Identifier: MIT
#include "ui/cloudspace/CreateCloudProjectDlg.h"

#include "ui/FieldGrid.h"
#include "ui/Steps.h"

#include <QLineEdit>
#include <QPushButton>

using namespace tav;

CreateCloudProjectDlg::CreateCloudProjectDlg(QWidget* parent)
    : Dialog(parent)
    , nameEdit(new QLineEdit(this))
    , descriptionEdit(new QLineEdit(this))
{
    setWindowTitle(tr("Add cloud Project"));
    auto* confirmButton = new QPushButton(tr("OK"), this);
    auto* cancelButton = new QPushButton(tr("Cancel"), this);

    auto* fields = new FieldGrid;
    fields->addField(tr("Cloud Project Name"), nameEdit);
    fields->addField(tr("Cloud Project Description"), descriptionEdit);
    layOut(this, fields, confirmButton, cancelButton);

    connect(confirmButton, &QPushButton::clicked, this, &CreateCloudProjectDlg::_onWhetherNull);
    connect(cancelButton, &QPushButton::clicked, this, &QDialog::reject);
}

QString CreateCloudProjectDlg::name() const
{
    return nameEdit->text();
}

QString CreateCloudProjectDlg::description() const
{
    return descriptionEdit->text();
}

void CreateCloudProjectDlg::_onWhetherNull()
{
    if (requireText(this, nameEdit, tr("Cloud project name cannot be empty!"))
        && requireText(this, descriptionEdit, tr("Cloud project description cannot be empty!")))
        accept();
}
