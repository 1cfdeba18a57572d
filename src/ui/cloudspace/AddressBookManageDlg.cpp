// SPDX-License-Identifier: MIT
#include "ui/cloudspace/AddressBookManageDlg.h"

#include "ui/ScopedDialog.h"
#include "ui/Steps.h"
#include "ui/cloudspace/AddAltAccountDlg.h"
#include "ui/cloudspace/RecordTable.h"

#include <QHBoxLayout>
#include <QPushButton>

#include <algorithm>

using namespace tav;

namespace {

enum Column
{
    RemarkColumn,
    AccountColumn,
    CompanyColumn
};

using Friends = QList<CloudFileManger::CloudAddressBookInfo>;

} // namespace

AddressBookManageDlg::AddressBookManageDlg(CloudFileManger* manager, QWidget* parent)
    : Dialog(parent)
    , client(handleOn(manager))
    , table(new RecordTable({tr("Remark name"), tr("Account"), tr("Company")}, QString(), this))
{
    setWindowTitle(tr("Address book Management"));
    table->setAccessibleName(windowTitle());
    auto* addButton = new QPushButton(tr("Add"), this);
    auto* deleteButton = new QPushButton(tr("Delete"), this);
    auto* editButton = new QPushButton(tr("Edit"), this);
    auto* closeButton = new QPushButton(tr("Close"), this);
    editButton->setDefault(true); // of the row that Enter is pressed on

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(addButton);
    buttons->addWidget(deleteButton);
    buttons->addWidget(editButton);
    buttons->addStretch();
    buttons->addWidget(closeButton);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(table);
    layout->addLayout(buttons);

    connect(table, &QTableWidget::cellClicked, table, &QTableWidget::selectRow);
    connect(addButton, &QPushButton::clicked, this, &AddressBookManageDlg::_onAddRecord);
    connect(deleteButton, &QPushButton::clicked, this, &AddressBookManageDlg::_onDelRecord);
    connect(editButton, &QPushButton::clicked, this, &AddressBookManageDlg::_onAltRecord);
    connect(closeButton, &QPushButton::clicked, this, &QDialog::accept);
    table->widen(this);
    onceShown(this, [this] { load(); });
}

void AddressBookManageDlg::load()
{
    Friends friends;
    const Answer answer = ask(this, client, tr("Loading the address book..."),
        [&friends](CloudFileManger& cloud) { return cloud.SearchAddressBookList(friends); });
    if (answer.outcome == Outcome::Refused) {
        table->setEmptyText(tr("The address book could not be loaded."));
        inform(this, tr("Failed to load address book form!"), QString(), answer.reason);
    }
    if (answer.outcome != Outcome::Done)
        return;
    table->setEmptyText(tr("There is no friend in the address book yet. Press \"Add\" to add one."));
    table->setRowCount(0);
    for (const auto& entry : friends)
        table->addRecord({entry.friendRemark, entry.friendPhone, entry.friendUnit});
    table->fitColumns();
}

/// -1 when there is none. A table that gets the focus makes its first row the current one and shows nothing:
/// that is no choice of the user's.
int AddressBookManageDlg::selectedRow() const
{
    const QModelIndexList rows = table->selectionModel()->selectedRows();
    return rows.isEmpty() ? -1 : rows.first().row();
}

/// Asks the platform which entry \a account has now. False when there is none, or the window was closed or
/// destroyed.
bool AddressBookManageDlg::findEntry(const QString& account, QString& id, const QString& complaint)
{
    Friends friends;
    if (!perform(
            this, client, tr("Looking for the friend..."),
            [&friends](CloudFileManger& cloud) { return cloud.SearchAddressBookList(friends); }, complaint,
            tr("OK")))
        return false;
    const auto found = std::find_if(
        friends.cbegin(), friends.cend(), [&](const auto& entry) { return entry.friendPhone == account; });
    if (found == friends.cend())
        return false;
    id = found->id;
    return true;
}

void AddressBookManageDlg::_onAddRecord()
{
    ScopedDialog<AddAltAccountDlg> form(this);
    form->setWindowTitle(tr("Add"));
    if (!form.accepted())
        return;
    const auto request = [account = form->account(), name = form->name(), company = form->company()](
                             CloudFileManger& cloud) {
        return cloud.AddToAddressBook(account, name, company);
    };
    if (perform(this, client, tr("Adding the friend..."), request,
            tr("Please enter the correct account number!")))
        load();
}

void AddressBookManageDlg::_onAltRecord()
{
    const int row = selectedRow();
    if (row < 0)
        return;
    ScopedDialog<AddAltAccountDlg> form(this);
    form->setWindowTitle(tr("Change"));
    form->startFrom(
        table->text(row, RemarkColumn), table->text(row, AccountColumn), table->text(row, CompanyColumn));
    if (!form.accepted())
        return;
    const QString account = form->account();
    const QString name = form->name();
    const QString company = form->company();

    const QString complaint = tr("Change exceptions!");
    QString id;
    if (!findEntry(account, id, complaint))
        return;
    // Both in one request function: when the window is closed in between, the friend must not be lost.
    const auto replace = [id, account, name, company](CloudFileManger& cloud) {
        return cloud.DelFromAddressBook(id) && cloud.AddToAddressBook(account, name, company);
    };
    if (perform(this, client, tr("Changing the friend..."), replace, complaint, tr("OK")))
        load();
}

void AddressBookManageDlg::_onDelRecord()
{
    const int row = selectedRow();
    if (row < 0)
        return;
    const QString account = table->text(row, AccountColumn);
    if (!askBox(
            QMessageBox::Information, this, tr("Prompt"), tr("Confirm deletion?"), tr("OK"), tr("Cancel")))
        return;
    const QString complaint = tr("Remove exceptions!");
    QString id;
    if (!findEntry(account, id, complaint))
        return;
    const auto request = [id](CloudFileManger& cloud) { return cloud.DelFromAddressBook(id); };
    if (perform(this, client, tr("Deleting the friend..."), request, complaint, tr("OK")))
        load();
}
