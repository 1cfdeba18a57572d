// SPDX-License-Identifier: MIT
#pragma once

#include "toolkit/Dialog.h"

#include <QString>

class QLineEdit;

/// Asks for one friend of the address book. Its owner titles it, and reads the three texts once it is
/// accepted.
class AddAltAccountDlg : public Dialog
{
    Q_OBJECT

public:
    explicit AddAltAccountDlg(QWidget* parent);

    /// Starts from a friend that there is, whose account stays.
    void startFrom(const QString& friendName, const QString& friendAccount, const QString& friendCompany);
    QString name() const;
    QString account() const;
    QString company() const;

private slots:
    void _onConfirm();

private:
    QLineEdit* nameEdit;
    QLineEdit* accountEdit;
    QLineEdit* companyEdit;
};
