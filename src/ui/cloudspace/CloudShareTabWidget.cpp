// SPDX-License-Identifier: MIT
#include "ui/cloudspace/CloudShareTabWidget.h"

#include "net/CloudQuery.h"
#include "net/CloudTransferJob.h"
#include "toolkit/FileDialog.h"
#include "toolkit/ISystemSettings.h"
#include "ui/FieldGrid.h"
#include "ui/ScopedDialog.h"
#include "ui/Steps.h"
#include "ui/cloudspace/AddressBookManageDlg.h"
#include "ui/cloudspace/ChoiceCloudProjectDlg.h"
#include "ui/cloudspace/EnterKey.h"
#include "ui/cloudspace/GroupManageDlg.h"
#include "ui/cloudspace/ItemWidget.h"
#include "ui/cloudspace/RecordTable.h"

#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QFileInfo>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>

using namespace tav;

namespace {

const char typeFlag[] = "1";

/// The columns behind the one of check boxes.
enum FriendColumn
{
    UserName = 4
};
enum GroupColumn
{
    GroupName = 1,
    GroupId
};

constexpr int hoursADay = 24;
constexpr int anonymousHours[] = {2, 12, 24, 72, 168};
constexpr int sharedHours[] = {24, 72, 168, 360, 720};

QString expiryText(int hours)
{
    const int days = hours / hoursADay;
    if (days == 0)
        return CloudShareTabWidget::tr("%1 Hours").arg(hours);
    return days == 1 ? CloudShareTabWidget::tr("1 Day") : CloudShareTabWidget::tr("%1 Days").arg(days);
}

template <int Count>
QComboBox* expiryCombo(const int (&choices)[Count])
{
    auto* combo = new QComboBox;
    for (const int hours : choices)
        combo->addItem(expiryText(hours), hours);
    return combo;
}

int hoursOf(const QComboBox* combo, int otherwise)
{
    const QVariant hours = combo->currentData();
    return hours.isValid() ? hours.toInt() : otherwise;
}

QLabel* labelFor(QWidget* field, const QString& text)
{
    auto* label = new QLabel(text);
    label->setBuddy(field);
    return label;
}

/// The controls that all modes have: until when to share, and the button that shares.
QHBoxLayout* shareRow(QComboBox* expiry, QPushButton* share)
{
    auto* row = new QHBoxLayout;
    row->addWidget(labelFor(expiry, CloudShareTabWidget::tr("Expiry date")));
    row->addWidget(expiry);
    row->addWidget(share);
    row->addStretch();
    return row;
}

QCheckBox* boxOf(const RecordTable* table, int row)
{
    return static_cast<ItemWidget*>(table->cellWidget(row, 0))->checkBox();
}

/// The texts of a column in the rows that are checked, from top to bottom.
QStringList checkedTexts(const RecordTable* table, int column)
{
    QStringList texts;
    for (int row = 0; row < table->rowCount(); ++row) {
        if (boxOf(table, row)->isChecked())
            texts.append(table->text(row, column));
    }
    return texts;
}

/// Replaces the rows of \a table by \a records. What was checked and is still there stays checked: the list
/// may be fetched again while the user prepares a share.
void refill(RecordTable* table, const QVector<QStringList>& records, int keyColumn)
{
    const QStringList checked = checkedTexts(table, keyColumn);
    table->setRowCount(0);
    for (const QStringList& record : records)
        table->addRecord(record, new ItemWidget(nullptr));
    for (int row = 0; row < table->rowCount(); ++row)
        boxOf(table, row)->setChecked(checked.contains(table->text(row, keyColumn)));
    table->fitColumns();
}

/// A page without margins: the box around it has some.
QVBoxLayout* newPage()
{
    auto* layout = new QVBoxLayout(new QWidget);
    layout->setContentsMargins(0, 0, 0, 0);
    return layout;
}

/// The page of a mode that shares with those who are checked in a table.
QWidget* tablePage(
    QComboBox* expiry, QPushButton* share, QPushButton* manage, QLabel* caption, RecordTable* table)
{
    QHBoxLayout* row = shareRow(expiry, share);
    row->addWidget(manage);
    caption->setBuddy(table);
    QVBoxLayout* layout = newPage();
    layout->addLayout(row);
    layout->addWidget(caption);
    layout->addWidget(table, 1);
    return layout->parentWidget();
}

void toggle(QCheckBox* box)
{
    box->setChecked(!box->isChecked());
}

} // namespace

CloudShareTabWidget::CloudShareTabWidget(CloudFileManger* manager, QString projectName, QString projectId,
    QMap<QString, QString> fileTypeMap, QClipboard* systemClipboard, QString fourth, QString ownAccount,
    QWidget* parent)
    : QWidget(parent)
    , client(handleOn(manager))
    , fileTypes(std::move(fileTypeMap))
    , clipboard(systemClipboard)
    , account(std::move(ownAccount))
    , fourthText(std::move(fourth))
    , currentProjectName(std::move(projectName))
    , currentProjectId(std::move(projectId))
{
    auto* anonymousMode = new QRadioButton(tr("Anonymous share"));
    auto* friendsMode = new QRadioButton(tr("Share To friends"));
    auto* groupsMode = new QRadioButton(tr("Share To groups"));
    auto* modes = new QHBoxLayout;
    for (QRadioButton* button : {anonymousMode, friendsMode, groupsMode})
        modes->addWidget(button);
    modes->addStretch();

    auto* fileBox = makeFileBox();
    auto* modeBox = new QGroupBox(tr("Select sharing Mode"));
    auto* modeLayout = new QVBoxLayout(modeBox);
    modeLayout->addLayout(modes);
    pages = {makeAnonymousPage(), makeFriendsPage(), makeGroupsPage()};
    for (QWidget* page : pages)
        modeLayout->addWidget(page);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(fileBox);
    layout->addWidget(modeBox, 1);

    connect(anonymousMode, &QRadioButton::toggled, this, &CloudShareTabWidget::_onChangeAnonymousShare);
    connect(friendsMode, &QRadioButton::toggled, this, &CloudShareTabWidget::_onChangeAccountNumber);
    connect(groupsMode, &QRadioButton::toggled, this, &CloudShareTabWidget::_onChangeShareToGroup);
    anonymousMode->setChecked(true);

    leaveEnterTo(this);

    loadFriends();
    loadGroups();
}

/// Enter in a field presses the button that uses the field.
void CloudShareTabWidget::keyPressEvent(QKeyEvent* event)
{
    if (!isEnter(event))
        QWidget::keyPressEvent(event);
    else if (codeEdit->hasFocus())
        extractButton->click();
    else if (pathEdit->hasFocus())
        shareButtons[mode]->click();
    else
        pressFocused(this);
}

QWidget* CloudShareTabWidget::makeFileBox()
{
    pathEdit = new QLineEdit;
    pathEdit->setAccessibleName(tr("File"));
    typeCombo = new QComboBox;
    typeCombo->setAccessibleName(tr("File type"));
    for (auto type = fileTypes.begin(); type != fileTypes.end(); ++type)
        typeCombo->addItem(tr("%1 File").arg(type.key().toUpper()), type.key().toLower());
    auto* browse = new QPushButton(tr("Browse..."));
    connect(browse, &QPushButton::clicked, this, &CloudShareTabWidget::_onOpenFileDlg);

    auto* box = new QGroupBox(tr("Choose to Share files"));
    auto* row = new QHBoxLayout(box);
    row->addWidget(pathEdit, 1);
    row->addWidget(typeCombo);
    row->addWidget(browse);
    return box;
}

QWidget* CloudShareTabWidget::makeAnonymousPage()
{
    anonymousExpiry = expiryCombo(anonymousHours);
    auto* share = new QPushButton(tr("Share"));
    shareButtons.append(share);
    codeEdit = new QLineEdit;
    removeBlanksFrom(codeEdit);
    auto* paste = new QPushButton(tr("Paste"));
    extractButton = new QPushButton(tr("Extract"));
    connect(share, &QPushButton::clicked, this, &CloudShareTabWidget::_onAnonymousShare);
    connect(paste, &QPushButton::clicked, this, &CloudShareTabWidget::_onPasteCode);
    connect(extractButton, &QPushButton::clicked, this, &CloudShareTabWidget::_onConfirmExtraction);

    auto* extraction = new QHBoxLayout;
    extraction->addWidget(labelFor(codeEdit, tr("Input extraction code")));
    extraction->addWidget(codeEdit, 1);
    extraction->addWidget(paste);
    extraction->addWidget(extractButton);
    QVBoxLayout* layout = newPage();
    layout->addLayout(shareRow(anonymousExpiry, share));
    layout->addLayout(extraction);
    layout->addStretch();
    return layout->parentWidget();
}

QWidget* CloudShareTabWidget::makeFriendsPage()
{
    friendsExpiry = expiryCombo(sharedHours);
    friendsCaption = new QLabel(tr("Friends list"));
    friendsTable = new RecordTable(
        {QString(), tr("Remark name"), tr("Account"), tr("Company"), tr("User name")}, QString());
    auto* share = new QPushButton(tr("Share"));
    shareButtons.append(share);
    auto* manage = new QPushButton(tr("Address book Management"));
    connect(share, &QPushButton::clicked, this, &CloudShareTabWidget::_onAccountNumberShare);
    connect(manage, &QPushButton::clicked, this, &CloudShareTabWidget::_onOpenAddressBookManageDlg);
    connect(friendsTable, &QTableWidget::cellClicked, this, &CloudShareTabWidget::_onChangeCBoxState);
    return tablePage(friendsExpiry, share, manage, friendsCaption, friendsTable);
}

QWidget* CloudShareTabWidget::makeGroupsPage()
{
    groupsExpiry = expiryCombo(sharedHours);
    groupsCaption = new QLabel(tr("Groups"));
    groupsTable = new RecordTable({QString(), tr("Group name"), tr("Group ID")}, QString());
    auto* share = new QPushButton(tr("Share"));
    shareButtons.append(share);
    auto* manage = new QPushButton(tr("Group management"));
    connect(share, &QPushButton::clicked, this, &CloudShareTabWidget::_onGroupShare);
    connect(manage, &QPushButton::clicked, this, &CloudShareTabWidget::_onOpenGroupManageDlg);
    connect(groupsTable, &QTableWidget::cellClicked, this, &CloudShareTabWidget::_onChangeCBoxState2);
    return tablePage(groupsExpiry, share, manage, groupsCaption, groupsTable);
}

void CloudShareTabWidget::showMode(int chosen)
{
    mode = chosen;
    for (int i = 0; i < pages.size(); ++i)
        pages[i]->setVisible(i == mode);
}

// toggled() comes for the button that is switched off too, always before the one that is switched on.
void CloudShareTabWidget::_onChangeAnonymousShare()
{
    showMode(0);
}

void CloudShareTabWidget::_onChangeAccountNumber()
{
    showMode(1);
}

void CloudShareTabWidget::_onChangeShareToGroup()
{
    showMode(2);
}

void CloudShareTabWidget::_onChangeCBoxState(int row)
{
    toggle(boxOf(friendsTable, row));
}

void CloudShareTabWidget::_onChangeCBoxState2(int row)
{
    toggle(boxOf(groupsTable, row));
}

void CloudShareTabWidget::loadFriends()
{
    QList<CloudFileManger::CloudAddressBookInfo> friends;
    const Answer answer = ask(this, client, tr("Loading the address book..."),
        [&friends](CloudFileManger& cloud) { return cloud.SearchAddressBookList(friends); });
    if (answer.outcome == Outcome::Refused) {
        friendsTable->setEmptyText(tr("The address book could not be loaded."));
        fail(this, tr("Failed to query the address book list!"), QString(), answer.reason);
    }
    if (answer.outcome != Outcome::Done)
        return;
    QVector<QStringList> records;
    for (const auto& entry : friends)
        records.append({entry.friendRemark, entry.friendPhone, entry.friendUnit, entry.friendUser});
    refill(friendsTable, records, UserName);
    friendsTable->setEmptyText(tr("There is nobody in your address book yet."));
    friendsCaption->setText(tr("Friends list") + QStringLiteral(" (%1)").arg(friends.size()));
}

void CloudShareTabWidget::loadGroups()
{
    QList<CloudFileManger::CloudGroupInfo> groups;
    const Answer answer = ask(this, client, tr("Loading the groups..."),
        [&groups](CloudFileManger& cloud) { return cloud.SearchGroup(groups); });
    if (answer.outcome == Outcome::Refused) {
        groupsTable->setEmptyText(tr("The groups could not be loaded."));
        fail(this, tr("Group Query Failure!"), QString(), answer.reason);
    }
    if (answer.outcome != Outcome::Done)
        return;
    QVector<QStringList> records;
    for (const auto& group : groups)
        records.append({group.groupName, group.id});
    refill(groupsTable, records, GroupId);
    groupsTable->setEmptyText(tr("You are in no group yet."));
    groupsCaption->setText(tr("Groups") + QStringLiteral(" (%1)").arg(groups.size()));
}

void CloudShareTabWidget::_onOpenFileDlg()
{
    const QString suffix = typeCombo->currentData().toString();
    const QString filter = suffix.isEmpty() ? QStringLiteral("()") : "(*." + suffix + ')';
    const Attendance attendance(this);
    const QString path = FileDialog::getOpenFileName(
        pSystemSettings, this, tr("Obtaining the file path"), QString(), filter, nullptr, {});
    if (attendance.lasts() && !path.isEmpty())
        pathEdit->setText(path);
}

void CloudShareTabWidget::_onOpenAddressBookManageDlg()
{
    if (ScopedDialog<AddressBookManageDlg>(this, client.get()).run())
        loadFriends();
}

void CloudShareTabWidget::_onOpenGroupManageDlg()
{
    if (ScopedDialog<GroupManageDlg>(this, client.get(), clipboard, account).run())
        loadGroups();
}

/// The path of the file to share; empty when there is none, after saying so.
QString CloudShareTabWidget::fileToShare(const QString& button)
{
    QString path = pathEdit->text();
    if (path.isEmpty()) {
        inform(this, tr("Please select the file to share first."));
        return QString();
    }
    if (QFileInfo(path).isFile()) // a folder cannot be shared
        return path;
    fail(this, tr("Invalid file path!"), button);
    return QString();
}

bool CloudShareTabWidget::chooseProject()
{
    CloudFileManger::ShareProjectInfo chosen;
    return ScopedDialog<ChoiceCloudProjectDlg>(
        this, client.get(), &chosen, currentProjectName, currentProjectId)
        .accepted();
}

/// Uploads the file at \a path and gives its id as the shares take it.
bool CloudShareTabWidget::upload(const QString& path, QString& fileId, const QString& button)
{
    const QFileInfo file(path);
    const auto type = fileTypes.constFind(file.suffix().toLower());
    const bool known = type != fileTypes.constEnd();
    const QString supportType = known ? *type : QString();
    // The platform decides on a type that the host does not know.
    if (!known && !fail(this, tr("Could not find the server configuration table number for this file type!")))
        return false;

    int id = 0;
    const Transfer transfer{
        [&](CloudFileManger& cloud) { return cloud.UploadCloudShareFile2(typeFlag, supportType, path, id); },
        [&](const CloudFileManger& cloud) {
            auto* job = cloud.shareUploadJob(typeFlag, supportType, path);
            QObject::connect(job, &CloudTransferJob::finished, [&id, job] { id = job->logicalId(); });
            return job;
        }};
    const bool uploaded = perform(this, client, tr("Uploading %1...").arg(file.fileName()), transfer,
        tr("File upload failed!"), button);
    fileId = QString::number(id);
    return uploaded;
}

void CloudShareTabWidget::_onAnonymousShare()
{
    const int hours = hoursOf(anonymousExpiry, 24);
    const QString path = fileToShare();
    QString fileId;
    if (path.isEmpty() || !chooseProject() || !upload(path, fileId))
        return;
    QString code;
    const auto share = [&](CloudFileManger& cloud) { return cloud.CloudShareAnonymous(fileId, code, hours); };
    if (!perform(this, client, tr("Sharing the file..."), share, tr("Share failed!")))
        return;
    clipboard->setText(code);
    if (!showCode(this, tr("Anonymous share"),
            tr("Fetch Code") + ':' + code + '\n' + tr("The fetch code is copied to the clipboard."), code))
        return;
    const auto extract = [&](CloudFileManger& cloud) {
        return cloud.ExtractByCode(cloudQueryValue(code), QString());
    };
    if (perform(this, client, tr("Extracting the file..."), extract, tr("Fetch Code invalid!"), tr("OK"))
        && inform(this, tr("Please go to my Cloud space to view the uploaded file.")))
        emit refreshMyCloudSpace();
}

void CloudShareTabWidget::_onAccountNumberShare()
{
    const int hours = hoursOf(friendsExpiry, 360);
    const QString path = fileToShare(tr("OK"));
    if (path.isEmpty())
        return;
    QStringList accounts = checkedTexts(friendsTable, UserName);
    if (accounts.isEmpty()) {
        inform(this, tr("Choose friends"));
        return;
    }
    accounts.append(account);
    QString fileId;
    if (!chooseProject() || !upload(path, fileId, tr("OK")))
        return;
    const auto share = [&](CloudFileManger& cloud) {
        return cloud.CloudShareToAccount(accounts.join(','), fileId, hours);
    };
    if (perform(this, client, tr("Sharing the file..."), share,
            tr("Failed to share file with specified user!"), tr("OK"))
        && inform(this, tr("Share successfully!")))
        emit refreshMyCloudSpace();
}

void CloudShareTabWidget::_onGroupShare()
{
    const int hours = hoursOf(groupsExpiry, 360);
    const QString path = fileToShare();
    QString fileId;
    if (path.isEmpty() || !chooseProject() || !upload(path, fileId))
        return;
    // Not before the upload: the file goes into the cloud whether a group was chosen or not.
    int groups = 0;
    for (int row = 0; row < groupsTable->rowCount(); ++row) {
        if (!boxOf(groupsTable, row)->isChecked())
            continue;
        const auto share = [&, group = groupsTable->text(row, GroupId)](CloudFileManger& cloud) {
            return cloud.CloudShareToGroup(group, fileId, hours);
        };
        const QString what = tr("Sharing with %1...").arg(groupsTable->text(row, GroupName));
        if (!perform(this, client, what, share, tr("Share failed!")))
            return;
        ++groups;
    }
    if (groups == 0)
        inform(this, tr("Please choose a group."));
    else if (inform(this, tr("Share successfully!")))
        emit refreshMyCloudSpace();
}

void CloudShareTabWidget::_onPasteCode()
{
    codeEdit->setText(clipboard->text());
    codeEdit->setFocus(); // where Enter extracts
}

void CloudShareTabWidget::_onConfirmExtraction()
{
    const QString code = codeEdit->text();
    if (!requireText(this, codeEdit, tr("The text box is empty.")))
        return;
    const auto extract = [&](CloudFileManger& cloud) {
        return cloud.ExtractByCode(cloudQueryValue(code), QString());
    };
    if (perform(this, client, tr("Extracting the file..."), extract, tr("Extract code invalid!"), tr("Ok"))
        && inform(this, tr("Extraction successfully! Please go to My Cloud space to view the file")))
        emit refreshMyCloudSpace();
}
