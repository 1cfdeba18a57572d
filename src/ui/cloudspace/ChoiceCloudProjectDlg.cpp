// SPDX-License-Identifier: MIT
#include "ui/cloudspace/ChoiceCloudProjectDlg.h"

#include "ui/ScopedDialog.h"
#include "ui/Steps.h"
#include "ui/cloudspace/CreateCloudProjectDlg.h"
#include "ui/cloudspace/MycheckBox.h"
#include "ui/cloudspace/RecordTable.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>

using namespace tav;

namespace {

enum Column
{
    BoxColumn,
    NameColumn,
    DescriptionColumn,
    SourceColumn,
    IdColumn
};

} // namespace

ChoiceCloudProjectDlg::ChoiceCloudProjectDlg(CloudFileManger* manager,
    CloudFileManger::ShareProjectInfo* chosen, QString projectName, QString projectId, QWidget* parent)
    : Dialog(parent)
    , client(handleOn(manager))
    , chosenProject(chosen)
    , currentName(std::move(projectName))
    , currentId(std::move(projectId))
    , table(new RecordTable({QString(), tr("Cloud Project Name"), tr("Cloud Project Description"),
                                tr("Source Client"), tr("Cloud project ID")},
          QString(), this))
{
    setWindowTitle(tr("Choose Cloud Project"));
    auto* label = new QLabel(tr("Please select a cloud project"), this);
    label->setBuddy(table);
    table->setAccessibleName(label->text());
    auto* addButton = new QPushButton(tr("Add"), this);
    auto* confirmButton = new QPushButton(tr("OK"), this);
    auto* cancelButton = new QPushButton(tr("Cancel"), this);
    confirmButton->setDefault(true);

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(addButton);
    buttons->addStretch();
    buttons->addWidget(confirmButton);
    buttons->addWidget(cancelButton);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(label);
    layout->addWidget(table);
    layout->addLayout(buttons);

    connect(table, &QTableWidget::itemSelectionChanged, this, &ChoiceCloudProjectDlg::chooseSelected);
    connect(table, &QTableWidget::cellClicked, this, &ChoiceCloudProjectDlg::_onChangCBoxCheck);
    connect(addButton, &QPushButton::clicked, this, &ChoiceCloudProjectDlg::_onOpenCreateCloudProjectDlg);
    connect(confirmButton, &QPushButton::clicked, this, &ChoiceCloudProjectDlg::_onWhetherNull);
    connect(cancelButton, &QPushButton::clicked, this, &QDialog::reject);
    table->widen(this);
    onceShown(this, [this] { loadFirst(); });
}

void ChoiceCloudProjectDlg::loadFirst()
{
    if (!load())
        return;
    const int row = currentId.isEmpty() ? rowOf(NameColumn, currentName) : rowOf(IdColumn, currentId);
    // Not selected: what is highlighted is what OK takes, and the user has chosen nothing yet.
    if (row >= 0)
        table->setCurrentCell(row, NameColumn, QItemSelectionModel::NoUpdate);
}

/// When the projects cannot be listed, the table keeps those that it has. False when the window was closed or
/// destroyed meanwhile.
bool ChoiceCloudProjectDlg::load()
{
    const Answer answer = ask(this, client, tr("Loading the cloud projects..."),
        [](CloudFileManger& cloud) { return cloud.getAllCloudProjectBackup(); });
    switch (answer.outcome) {
    case Outcome::Done:
        showProjects();
        return true;
    case Outcome::Refused:
        table->setEmptyText(tr("The cloud projects could not be loaded.") + "\n" + answer.reason);
        return true;
    case Outcome::Cancelled:
    case Outcome::Abandoned:
        break;
    }
    return false;
}

void ChoiceCloudProjectDlg::showProjects()
{
    table->setEmptyText(tr("There is no cloud project yet. Press \"Add\" to add one."));
    chosenId.clear();
    boxes.clear();
    table->setRowCount(0);
    for (const auto& project : client->getAllCloudProjects()) {
        const int row = table->rowCount();
        auto* box = new MycheckBox(row, table);
        table->addRecord({project.projectTitle, project.description, project.sourceClient, project.id}, box);
        connect(box, &MycheckBox::boxChecked, this, &ChoiceCloudProjectDlg::_onCheckChange);
        boxes.insert(row, box);
    }
    table->fitColumns();
}

/// The first; -1 when there is none.
int ChoiceCloudProjectDlg::rowOf(int column, const QString& text) const
{
    for (int row = 0; row < table->rowCount() && !text.isEmpty(); ++row)
        if (table->text(row, column) == text)
            return row;
    return -1;
}

void ChoiceCloudProjectDlg::_onChangCBoxCheck(int row)
{
    boxes.value(row)->checkBox()->setChecked(true);
    _onCheckChange(row);
}

/// The keyboard chooses as the mouse does.
void ChoiceCloudProjectDlg::chooseSelected()
{
    const QModelIndexList rows = table->selectionModel()->selectedRows();
    if (!rows.isEmpty() && table->text(rows.first().row(), IdColumn) != chosenId)
        _onChangCBoxCheck(rows.first().row());
}

void ChoiceCloudProjectDlg::_onCheckChange(int row)
{
    chosenId = table->text(row, IdColumn);
    if (!table->selectionModel()->isRowSelected(row, QModelIndex()))
        table->selectRow(row);
    *chosenProject = {chosenId, table->text(row, NameColumn), table->text(row, SourceColumn), QString(),
        table->text(row, DescriptionColumn)};
    for (auto box = boxes.cbegin(); box != boxes.cend(); ++box)
        if (box.key() != row)
            box.value()->checkBox()->setChecked(false);
}

void ChoiceCloudProjectDlg::_onWhetherNull()
{
    if (chosenId.isEmpty()) {
        inform(this, tr("Please select a cloud project"));
        return;
    }
    client->setProjectID(chosenId);
    accept();
}

void ChoiceCloudProjectDlg::_onOpenCreateCloudProjectDlg()
{
    ScopedDialog<CreateCloudProjectDlg> form(this);
    if (!form.accepted())
        return;
    const auto request = [name = form->name(), description = form->description()](
                             CloudFileManger& cloud) { return cloud.AddCloudProInfo(name, description); };
    if (!perform(this, client, tr("Adding the cloud project..."), request, tr("Add cloud project failed!"))
        || !load())
        return;
    const int row = rowOf(IdColumn, client->getProjectId());
    if (row >= 0)
        _onChangCBoxCheck(row);
    if (inform(this, tr("Add cloud project successfully!")))
        table->setFocus(); // where Enter presses OK, and does not add another project
}
