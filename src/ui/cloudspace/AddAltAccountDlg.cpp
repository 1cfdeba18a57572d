// SPDX-License-Identifier: MIT
#include "ui/cloudspace/AddAltAccountDlg.h"

#include "ui/FieldGrid.h"
#include "ui/Steps.h"

#include <QLineEdit>
#include <QPushButton>

using namespace tav;

AddAltAccountDlg::AddAltAccountDlg(QWidget* parent)
    : Dialog(parent)
    , nameEdit(new QLineEdit(this))
    , accountEdit(new QLineEdit(this))
    , companyEdit(new QLineEdit(this))
{
    auto* confirmButton = new QPushButton(tr("OK"), this);
    auto* cancelButton = new QPushButton(tr("Cancel"), this);

    auto* fields = new FieldGrid;
    fields->addField(tr("Name"), nameEdit);
    fields->addField(tr("Account"), accountEdit);
    fields->addField(tr("Company"), companyEdit);
    layOut(this, fields, confirmButton, cancelButton);
    // The one field that must not stay empty.
    accountEdit->setFocusPolicy(Qt::StrongFocus);
    accountEdit->setFocus();

    connect(confirmButton, &QPushButton::clicked, this, &AddAltAccountDlg::_onConfirm);
    connect(cancelButton, &QPushButton::clicked, this, &QDialog::reject);
}

void AddAltAccountDlg::startFrom(
    const QString& friendName, const QString& friendAccount, const QString& friendCompany)
{
    nameEdit->setText(friendName);
    accountEdit->setText(friendAccount);
    companyEdit->setText(friendCompany);
    accountEdit->setEnabled(false);
    nameEdit->setFocus();
}

QString AddAltAccountDlg::name() const
{
    return nameEdit->text();
}

QString AddAltAccountDlg::account() const
{
    return accountEdit->text();
}

QString AddAltAccountDlg::company() const
{
    return companyEdit->text();
}

void AddAltAccountDlg::_onConfirm()
{
    if (!accountEdit->text().isEmpty())
        return accept();
    if (showBox(QMessageBox::Information, this, tr("Error"), tr("Account cannot be empty!"), tr("OK")))
        accountEdit->setFocus();
}
