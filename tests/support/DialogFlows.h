// SPDX-License-Identifier: MIT
#pragma once

#include "support/DialogSteps.h"

#include "ui/cloudspace/AddressBookManageDlg.h"
#include "ui/cloudspace/ChoiceCloudProjectDlg.h"
#include "ui/cloudspace/DlgMyCloudSpace.h"
#include "ui/cloudspace/GroupManageDlg.h"
#include "ui/cloudspace/TavFileButton.h"

#include <QPushButton>
#include <QRadioButton>

/// \file
/// The windows of the cloud space, what the platform answers them, and their flows.

/// An answer that lists a \a record for each two values of \a records.
inline QByteArray list(Text record, const Texts& records)
{
    QStringList texts;
    for (const auto& [first, second] : records)
        texts.append(record.arg(first, second));
    return reply('[' + texts.join(',').toUtf8() + ']');
}

const QString book = "/project/cloudAddressBook/";
const QByteArray zhao = R"({"id":6,"friendUser":"a b","friendPhone":"2","friendRemark":"","friendUnit":""})";
const Steps friends = get(book + "list",
    reply(R"-([{"id":5,"friendUser":"u","friendPhone":"1(3)","friendRemark":"<i>L</i>","friendUnit":"U"},)-"
        + zhao + R"(,{"id":7,"friendUser":"王","friendPhone":"3","friendRemark":"W","friendUnit":""}])"));
const QByteArray qian = R"({"id":8,"friendUser":"v","friendPhone":"4","friendRemark":"","friendUnit":""})";
const Steps others = get(book + "list", reply('[' + qian + ',' + zhao + ']'));
const QStringList otherRows{" | 4 | ", " | 2 | "};
const Steps notLoaded = refused(others) + prompt("Failed to load address book form!", reason);
const Steps sendsFriend =
    post(book + "add", part("friendPhone", "1(3)") + part("friendRemark", "N") + part("friendUnit", "C"));
const Steps adds = opens("Add", completes(", >, ", "OK", {"Name=N", "Company=C", "*Account=1(3)"}))
    + prompt("Account cannot be empty!", "", "Error") + sendsFriend;
const Steps edits = opens("Change", completes("><i>L</i>, !1(3), U", "OK", {"Name=N", "Company=C"}));
const Steps drop = del(book + "delete?id=5");
const Steps changes = edits + friends + drop + still(Anyway, sendsFriend);
const Steps notChanged = error("Change exceptions!");
const Steps notRemoved = error("Remove exceptions!");
const Steps sure = question("Confirm deletion?", yes, QMessageBox::Information);
const Kind bookKind{"address book",
    [](CloudFileManger* client, QWidget* parent) { return new AddressBookManageDlg(client, parent); },
    friends,
    {
        {"add a friend", on({}, "Add"), adds + others, otherRows},
        {"change a friend", on("1(3)", "Edit"), changes + others, otherRows},
        {"delete a friend", on("1(3)", "Delete"), sure + friends + drop + others, otherRows},
    },
    {
        {"add, left", on({}, "Add"), opens("Add", {presses("Cancel")})},
        {"add, refused", on({}, "Add"), refused(adds) + error("Please enter the correct account number!")},
        {"add, not shown", on({}, "Add"), adds + notLoaded},
        {"delete, nothing selected", on({}, "Delete"), {}},
        {"delete, cancelled", on("1(3)", "Delete"),
            question("Confirm deletion?", no, QMessageBox::Information)},
        {"delete, list refused", on("1(3)", "Delete"), sure + refused(friends) + notRemoved},
        {"delete, refused", on("1(3)", "Delete"), sure + friends + refused(drop) + notRemoved},
        {"change, nothing selected", on({}, "Edit"), {}},
        {"change, left", on("1(3)", "Edit"), opens("Change", {presses("Cancel")})},
        {"change, list refused", on("1(3)", "Edit"), edits + refused(friends) + notChanged},
        {"change, gone meanwhile", on("1(3)", "Edit"), edits + others},
        {"change, delete refused", on("1(3)", "Edit"), edits + friends + refused(drop) + notChanged},
        {"change, add refused", on("1(3)", "Edit"), refused(changes) + notChanged},
    },
    {"Remark name", "Account", "Company"}, {"<i>L</i> | 1(3) | U", " | 2 | ", "W | 3 | "}};

const QString users = "/project/cloudProjectGroupUser/";
const QString group = R"({"id":%1,"groupName":"%2","createUser":"me"})";
const QString member = R"({"id":99,"groupId":98,"username":"%1","adminFlag":%2})";
const auto membersOf = [](Text id, const Texts& records) {
    return get(users + "listGroupUsers?groupId=" + id, list(member, records));
};
const auto listed = [](const Texts& records) { return get(users + "listUserGroups", list(group, records)); };
const Steps groups = listed({{"7", "<i>B</i>-(team)"}, {"8", "x(ID:9)"}, {R"("g-6")", "Site"}});
const QString bridge = "<i>B</i>-(team)(ID:7)";
const QString bob = "bob - group manager";
const QString odd = "x(ID:9)(ID:8)";
const QString site = "Site(ID:g-6)"; ///< the user is not its owner
const Steps in7 = membersOf("7", {{"me", "1"}, {"a-(b)&<i>", "0"}});
const Steps in8 = membersOf("8", {{"me", "1"}, {"dan", "0"}});
const Steps inSite = membersOf("g-6", {{"me", "0"}, {"bob", "1"}});
const Steps later = listed({{"11", "New"}}) + membersOf("11", {{"me", "1"}});
const QStringList laterRows{"My groups", "  New(ID:11)", "    me - group manager"};
const Steps unknown = refused(in7) + error("Failed to query a group member!");
const auto kick = [](Text query) { return del(users + "removeGroupMember?groupId=" + query); };
const Steps kickOther = kick("7&usernames=a-%28b%29%26%3Ci%3E");
const QString invalid = "The group ID is invalid. Please click to select the group ";
const QString invite = "Generating invitation codes";
const Steps invites = in8 + get(users + "getInviteCode?groupId=8", reply(R"("<i>C</i>")"));
const QString join = "Join the group";
const Steps joins =
    opens("Join group by invitation code", completes(">Please enter the invitation code", join, {"*=c&d"}))
    + prompt("The invitation code cannot be empty.")
    + post(users + "inviteToGroup", part("inviteCode", "c&d"), reply("12"));
const QString create = "Create group";
const Steps creates = opens("Create a group", completes(">", "Create", {"*Group Name=a\"b"}))
    + prompt("Group name cannot be empty!")
    + post("/project/cloudProjectGroup/saveOrUpdate", R"(application/json{"groupName":"a\"b"})", reply("12"));
const QString quit = "Quit the group";
const Steps quits = inSite + question("Confirm exit?", yes) + get(users + "outGroup?groupId=g-6");
const QString disband = "Delete the group";
const QString expel = "Removing a group member";
/// What happens when its owner deletes a group or quits it: either way the group is deleted.
const auto deletes = [](Text words) {
    return in7 + question(words, yes) + in7
        + still(Anyway, kick("7&usernames=me") + kickOther + del("/project/cloudProjectGroup/delete?id=7"))
        + prompt("Delete successfully!") + later;
};
const QString wantsToErase = "Do you want to delete this group?";
const QString wantsToQuit =
    "The current user is the group owner of the group. If you quit the group, you will delete the group. Do "
    "you want to quit the group?";

/// The flows that delete a group by \a button and are refused or cancelled on the way.
inline QVector<Flow> deletionsThatFail(Text button, Text words)
{
    const Steps failed = error("Delete failed!");
    const Acts acts{selects(bridge, button)};
    return {
        {button + ", cancelled", acts, in7 + question(words, no)},
        {button + ", members unknown", acts, refused(deletes(words).mid(0, 3)) + failed},
        {button + ", member stays", acts, refused(deletes(words).mid(0, 5)) + failed},
        {button + ", group stays", acts, refused(deletes(words).mid(0, 6)) + failed},
    };
}

const Kind groupKind{"groups",
    [](CloudFileManger* client, QWidget* parent) {
        return new GroupManageDlg(client, QApplication::clipboard(), "me", parent);
    },
    groups + in7 + in8 + inSite,
    {
        {"invite", on(odd, invite),
            invites + showsCode("Invitation code:<i>C</i>\nThe invitation code is copied to the clipboard.")},
        {"join a group", on({}, join), joins + prompt("Join the group successfully!") + later, laterRows},
        {"create a group", on({}, create), creates + prompt("Create group successfully!") + later, laterRows},
        {"remove a member", on("a-(b)&<i>", expel), in7 + kickOther + later, laterRows},
        {"delete a group", on(bridge, disband), deletes(wantsToErase), laterRows},
    },
    QVector<Flow>{
        {"invite, root", on("My groups", invite),
            prompt(invalid + "that needs to generate the invitation code.")},
        {"invite, not the owner", on(site, invite),
            inSite
                + prompt("The current user is not the group owner of the group, and the invitation code "
                         "cannot be generated!")},
        {"invite, refused", on(odd, invite), refused(invites) + error("Failed to generate invitation code!")},
        {"join, refused", on({}, join), refused(joins) + error("Join the group failed!")},
        {"join, left", on({}, join), opens("Join group by invitation code", {hits(Qt::Key_Escape)})},
        {"create, refused", on({}, create), refused(creates) + error("Failed to create group!")},
        {"create, left", on({}, create), opens("Create a group", {presses("Cancel")})},
        {"delete, member selected", on(bob, disband), prompt(invalid + "to be deleted.")},
        {"delete, not the owner", on(site, disband), inSite + prompt("No operation permission!")},
        {"quit, nothing selected", on({}, quit), prompt(invalid + "to exit!")},
        {"quit, owner unknown", on(bridge, quit), unknown + question("Confirm exit?", no)},
        {"quit, refused", on(site, quit), refused(quits) + error("Failed to exit the group!")},
        {"quit as a member", on(site, quit), quits + prompt("Exit group successfully!") + later, laterRows},
        {"quit as its owner", on(bridge, quit), deletes(wantsToQuit), laterRows},
        {"remove, group selected", on(bridge, expel), warning("Select a group member.")},
        {"remove, not the owner", on(bob, expel), inSite + warning("No operation permission!")},
        {"remove, manager", on("me - group manager", expel), in7 + warning("Unable to remove group master!")},
        {"remove, refused", on("a-(b)&<i>", expel),
            in7 + refused(kickOther) + error("Failed to delete a group member!")},
        {"remove, group named like an id", on("dan", expel), in8 + kick("8&usernames=dan") + later,
            laterRows},
    } + deletionsThatFail(quit, wantsToQuit)
        + deletionsThatFail(disband, wantsToErase),
    {"Groups"},
    {"My groups", "  " + bridge, "    me - group manager", "    a-(b)&<i>", "  " + odd,
        "    me - group manager", "    dan", "  " + site, "    me", "    " + bob}};

inline CloudFileManger::ShareProjectInfo chosen; ///< the project that the user chose
const QString projectList = "/project/cloudProjectBackup/getProjectList?sourceClient=Soft";
const QString project = R"({"id":%1,"projectTitle":"%2","sourceClient":"Soft"})";
const QString dam = " | Dam |  | Soft | 3";
const QString current = " | <i>P</i> |  | Soft | 7";
const Steps projects = get(projectList, list(project, {{"3", "Dam"}, {"7", "<i>P</i>"}}));
const Steps moreProjects = get(projectList, list(project, {{"3", "Dam"}, {"12", "New"}}));
const Steps addsProject =
    opens("Add cloud Project",
        completes(">, ", "OK", {"*Cloud Project Name=N", "*Cloud Project Description=D"}))
    + prompt("Cloud project name cannot be empty!") + prompt("Cloud project description cannot be empty!")
    + post("/project/cloudProjectInfo/add",
        part("description", "D") + part("projectTitle", "N") + part("sourceClient", "Soft"), reply("12"));
const Steps isAdded = prompt("Add cloud project successfully!");
const Kind projectKind{"projects",
    [](CloudFileManger* client, QWidget* parent) {
        return new ChoiceCloudProjectDlg(client, &chosen, "Current", "7", parent);
    },
    projects,
    {
        {"add a project", on("Dam", "Add"), addsProject + moreProjects + isAdded,
            {"[x] | New |  | Soft | 12", "[ ]" + dam}},
    },
    {
        {"add, refused", on({}, "Add"), refused(addsProject) + error("Add cloud project failed!")},
        {"add, left", on({}, "Add"), opens("Add cloud Project", {presses("Cancel")})},
        {"add, not listed", on({}, "Add"), addsProject + refused(projects) + isAdded},
    },
    {"", "Cloud Project Name", "Cloud Project Description", "Source Client", "Cloud project ID"},
    {"[ ]" + dam, "[ ]" + current}};

/// The contents of the cloud's two folders. Each project is "id=title", followed by its files as "|id=name",
/// all in the order of their ids.
struct Cloud
{
    QStringList soft;
    QStringList backups = {};
};

inline QByteArray listOf(const QStringList& items)
{
    Texts records;
    for (const QString& item : items)
        records.append({item.section('=', 0, 0), item.section('|', 0, 0).section('=', 1)});
    return list(R"({"id":"%1","projectTitle":"%2","originalName":"%2","sourceClient":"Soft"})", records);
}

const QString share = "/project/cloudProjectShare/";
/// The requests of a refresh.
inline Steps treeOf(const Cloud& cloud)
{
    Steps rest = get(share + "getProjectBySoftId?sourceClient=Soft&targetClient=Soft", listOf(cloud.soft));
    for (const QString& one : cloud.soft)
        rest += get(share + "getByProject?projectId=" + one.section('=', 0, 0) + "&sourceClient=Soft",
            listOf(one.split('|').mid(1)));
    return get(projectList, listOf(cloud.backups)) + still(Anyway, rest);
}

/// The requests of the cloud space while it is built.
const auto spaceOf = [](const Cloud& cloud) { return treeOf(cloud) + friends + groups; };

inline QList<TavFileButton*> tilesOf(const QWidget& window)
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    return window.findChildren<TavFileButton*>();
}

const auto emptySpace = [](CloudFileManger* client, QWidget* parent) {
    return new DlgMyCloudSpace(client, {}, "me", "4", parent);
};

/// Opens the folders of \a path and selects what comes after the last slash, if anything.
const auto goes = [](Text path) -> Act {
    return [path](QDialog& dialog) {
        const QStringList names = path.split('/');
        for (int i = 0; i < names.size(); ++i)
            for (const TavFileButton* tile : tilesOf(dialog)) {
                if (tile->getName() != names[i])
                    continue;
                robot::click(*tile->focusProxy());
                if (i + 1 == names.size())
                    continue;
                robot::click(*tile->focusProxy());
                break; // opening a folder deletes the tiles
            }
    };
};

/// The download of a shared file.
const auto brings = [](Text id, Bytes bytes) { return get(share + "download?logicalId=" + id, bytes); };
const Steps isDownloaded = prompt("The download is complete!");
/// The question whether to overwrite a file in the folder "out".
const auto asksToCover = [](Text which, auto answer) {
    Steps steps = question("A file with the same name exists,whether or not covered?", answer);
    steps[0].box.more = QString();
    steps[0].box.look = [which] {
        const auto* shown = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        QCOMPARE(shown->informativeText(),
            which + '\n' + QDir("out").absolutePath() + '/' + which.section(" (", 0, 0));
    };
    return steps;
};
inline void writeFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    QVERIFY(QDir().mkpath(QFileInfo(path).path()) && file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(bytes), qint64(bytes.size()));
}

const QStringList modes{"Anonymous share", "Share To friends", "Share To groups"};
constexpr int Anonymous = 0, Friends = 1, Groups = 2;
/// Goes to the share tab and one of its modes, and clicks rows of its list.
const auto sharesBy = [](int mode, const QStringList& rows = {}) -> Act {
    return [=](QDialog& dialog) {
        openTab(dialog, Tab(1));
        for (auto* radio : dialog.findChildren<QRadioButton*>())
            if (radio->text() == modes[mode])
                robot::click(*radio, {8, radio->height() / 2});
        for (const QString& row : rows)
            clickRow(dialog, row);
    };
};
const auto shares = [](int mode, const QStringList& rows, Text file = "a.DWG") {
    return Acts{sharesBy(mode, rows), fills({{"File", file}}, "Share")};
};
/// The upload of a file into the project that the user chooses for it.
const auto uploads = [](Bytes type, Bytes name) {
    return projects + opens("Choose Cloud Project", {selects("Dam", "OK")})
        + post(share + "upload",
            part("projectId", "3") + part("sourceClient", "Soft") + part("supportTypeId", type)
                + part("typeFlag", "1") + filePart(name, "drawing"),
            reply(R"({"logicalId":42})"));
};
/// The request that shares with \a whom, or by a code.
const auto sharing = [](int mode, Bytes whom, Bytes hours = "24") {
    const char* const operations[]{"toAnonymous", "toUSer", "toGroup"};
    return post(share + operations[mode],
        part("durationHours", hours) + (mode == Groups ? part("groupId", whom) : "")
            + part("logicalIds", "42") + part("projectId", "3") + part("sourceClient", "Soft")
            + (mode == Friends ? part("userNames", whom) : ""),
        mode == Anonymous ? reply(R"("<i>C</i>")") : success);
};
const Steps uploadsDwg = uploads("31", "a.DWG");
const Steps refresh = treeOf({{"1=<i>P<i>|11=<i>a|12=<i>b"}});
const Steps byCode = uploadsDwg + sharing(Anonymous, {}, "2");
const Steps toFriends = uploadsDwg + sharing(Friends, "u,王,me");
const Steps toGroup = uploadsDwg + sharing(Groups, "7");
const Steps toGroups = toGroup + sharing(Groups, "g-6");
const Steps fetchCode = showsCode("Fetch Code:<i>C</i>\nThe fetch code is copied to the clipboard.");
const auto extracts = [](Text with) {
    return get(share + "extractByCode?extractionCode=" + with + "&sourceClient=Soft");
};
const Steps extraction = extracts("%3Ci%3EC%3C%2Fi%3E");
const Steps isExtracted =
    prompt("Extraction successfully! Please go to My Cloud space to view the file") + refresh;
const Steps noCode = prompt("The text box is empty.");
const Steps isShared = prompt("Share successfully!") + refresh;
const Steps notShared = error("Share failed!");
const Steps noType = error("Could not find the server configuration table number for this file type!", "");
const QString manageFriends = "Address book Management";
const QString manageGroups = "Group management";
const Acts friendsManaged{sharesBy(Friends, {"2"}), presses(manageFriends)};
const Acts groupsManaged{sharesBy(Groups, {"7"}), presses(manageGroups)};

/// The failures that all modes of sharing have.
inline QVector<Flow> sharesThatFail(int mode)
{
    const QStringList rows[]{{}, {"1(3)"}, {"7"}};
    const auto acts = [&](Text file) { return shares(mode, rows[mode], file); };
    return {
        {modes[mode] + ", no file", acts(""), prompt("Please select the file to share first.")},
        {modes[mode] + ", file is missing", acts("c.dwg"), error("Invalid file path!", "")},
        {modes[mode] + ", file is a folder", acts("."), error("Invalid file path!", "")},
        {modes[mode] + ", project cancelled", acts("a.DWG"),
            projects + opens("Choose Cloud Project", {selects("Dam", "Cancel")})},
        {modes[mode] + ", upload fails", acts("a.xyz"),
            uploadsDwg.mid(0, 2) + noType + refused(uploads("", "a.xyz").mid(2))
                + error("File upload failed!")},
    };
}

const Kind spaceKind{"cloud space",
    [](CloudFileManger* client, QWidget* parent) {
        for (const char* name : {"a.DWG", "b.dgn", "a.xyz", "plain", "out/<i>P<i>/<i>b"})
            writeFile(name, "drawing");
        return new DlgMyCloudSpace(client, {{"dgn", "32"}, {"dwg", "31"}}, "me", "4", parent);
    },
    refresh + friends + groups,
    {
        {"browse", {presses("Refresh")}, refresh},
        {"download", {goes("Soft/<i>P<i>"), presses("Download")},
            opens("Save path", {chooses("out")}) + brings("11", "bytes") + asksToCover("<i>P<i>/<i>b", yes)
                + brings("12", "bytes") + isDownloaded},
        {"share by code", {sharesBy(Anonymous), presses("Browse..."), presses("Share")},
            opens("Obtaining the file path", {chooses("a.DWG")}) + byCode + fetchCode + extraction
                + prompt("Please go to my Cloud space to view the uploaded file.") + refresh},
        {"extract", {sharesBy(Anonymous), pastes("&"), hits(Qt::Key_Return)}, extracts("%26") + isExtracted},
        {"share with friends", shares(Friends, {"1(3)", "3"}), toFriends + isShared},
        {"share with groups", shares(Groups, {"7", "g-6"}), toGroups + isShared},
        {"manage friends", friendsManaged,
            friends + opens(manageFriends, {presses("Close")}) + still(WhenClosed, others),
            {"[ ] |  | 4 |  | v", "[x] |  | 2 |  | a b"}},
        {"manage groups", groupsManaged,
            groupKind.opening + opens(manageGroups, {presses("Close")})
                + still(WhenClosed, listed({{"11", "New"}, {"7", "Team"}})),
            {"[ ] | New | 11", "[x] | Team | 7"}},
    },
    QVector<Flow>{
        {"by code, refused", shares(Anonymous, {}), refused(byCode) + notShared},
        {"by code, not extracted", shares(Anonymous, {}),
            byCode + fetchCode + refused(extraction) + error("Fetch Code invalid!")},
        {"extract nothing", {sharesBy(Anonymous), presses("Extract")}, noCode},
        {"extract nothing, by Enter", {sharesBy(Anonymous), pastes(""), hits(Qt::Key_Enter)}, noCode},
        {"extract, refused", {sharesBy(Anonymous), enters({}, "C"), presses("Extract")},
            refused(extracts("C")) + error("Extract code invalid!", reason, "Ok")},
        {"to one friend", shares(Friends, {"2"}, "b.dgn"),
            uploads("32", "b.dgn") + sharing(Friends, "a b,me") + isShared},
        {"to friends, none checked", shares(Friends, {}), prompt("Choose friends")},
        {"to friends, refused", shares(Friends, {"1(3)", "3"}),
            refused(toFriends) + error("Failed to share file with specified user!")},
        // The platform may take a type that the host does not know.
        {"to a group, type unknown", shares(Groups, {"7"}, "plain"),
            uploadsDwg.mid(0, 2) + noType + uploads("", "plain").mid(2) + sharing(Groups, "7") + isShared},
        {"to groups, none checked", shares(Groups, {}), uploadsDwg + prompt("Please choose a group.")},
        {"to groups, first refused", shares(Groups, {"7", "g-6"}), refused(toGroup) + notShared},
        {"to groups, second refused", shares(Groups, {"7", "g-6"}), refused(toGroups) + notShared},
        // A list that cannot be fetched again stays as it was.
        {"manage friends, left by Escape", friendsManaged,
            friends + opens(manageFriends, {hits(Qt::Key_Escape)}) + refused(friends)
                + error("Failed to query the address book list!"),
            {"[ ] | <i>L</i> | 1(3) | U | u", "[x] |  | 2 |  | a b", "[ ] | W | 3 |  | 王"}},
        {"manage groups, left by Escape", groupsManaged,
            groupKind.opening + opens(manageGroups, {hits(Qt::Key_Escape)}) + refused(groups)
                + error("Group Query Failure!"),
            {"[x] | <i>B</i>-(team) | 7", "[ ] | x(ID:9) | 8", "[ ] | Site | g-6"}},
    } + sharesThatFail(Anonymous)
        + sharesThatFail(Friends) + sharesThatFail(Groups)};

const QVector<Kind> kinds{bookKind, groupKind, projectKind, spaceKind};
