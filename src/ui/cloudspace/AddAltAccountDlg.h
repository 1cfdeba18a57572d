// SPDX-License-Identifier: MIT
#pragma once

#include "toolkit/Dialog.h"

#include <QString>

class QLineEdit;

/// A form for one friend of the address book. Whoever opens it sets its title, and reads the three texts once
/// it is accepted.
class AddAltAccountDlg : public Dialog
{
    Q_OBJECT

public:
    explicit AddAltAccountDlg(QWidget* parent);

    /// Fills in an existing friend, whose account cannot be changed.
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
