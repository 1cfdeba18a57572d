// SPDX-License-Identifier: MIT
#pragma once

#include "cloud/CloudHandle.h"
#include "toolkit/Dialog.h"

#include <QString>

namespace tav {
class RecordTable;
} // namespace tav

/// The user's address book: the friends to share with, to be added, edited and deleted.
class AddressBookManageDlg : public Dialog
{
    Q_OBJECT

public:
    /// Asks the platform for the address book once it is shown.
    AddressBookManageDlg(CloudFileManger* manager, QWidget* parent);

private slots:
    void _onAddRecord();
    void _onDelRecord();
    void _onAltRecord();

private:
    void load();
    int selectedRow() const;
    bool findEntry(const QString& account, QString& id, const QString& complaint);

    tav::CloudHandle client;
    tav::RecordTable* table;
};
