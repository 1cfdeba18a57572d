// SPDX-License-Identifier: MIT
#include "CloudSpaceFixture.h"
#include "Rows.h"

#include "support/MultipartForm.h"
#include "ui/cloudspace/AddressBookManageDlg.h"
#include "ui/cloudspace/ChoiceCloudProjectDlg.h"
#include "ui/cloudspace/GroupManageDlg.h"
#include "ui/cloudspace/RecordTable.h"

#include <QApplication>
#include <QClipboard>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QScrollBar>
#include <QTreeView>

namespace {

/// A request or, without a method, a message box.
struct Step
{
    QByteArray method, target, content; ///< the content of a form is its parts, else the type and the body
    QByteArray answer = success;
    ExpectedBox box = {};
};
using Steps = QVector<Step>;

/// A button, and what comes of it.
struct Flow
{
    QString button, what, selected; ///< a text that is clicked first, if any; the button comes then
    Steps steps; ///< where there are none, no form comes up either
    bool changes = false; ///< whether the other contents are shown in the end
};

/// What a button opens first: its title, its button, what stands in its fields (a ">" is before the one with
/// the focus, a "!" before those that stay), and the texts to fill in (a "*" is before those that are asked
/// for).
using Form = QStringList;

/// One of the dialogs. What it shows comes from the platform: first the one thing, after a change the other.
struct Kind
{
    std::function<QDialog*(CloudFileManger&, QWidget*)> make;
    QStringList headers;
    Steps loading;
    QStringList loaded, loadedAgain;
    QMap<QString, Form> forms; ///< by their buttons
    QVector<Flow> flows; ///< the last has the most steps
};

using Bytes = const QByteArray&;
using Text = const QString&;
const auto yes = QMessageBox::Ok;
const auto no = QMessageBox::Cancel;
const auto note = QMessageBox::Information;
const auto get = [](Bytes target, Bytes answer = success) { return Steps{{"GET", target, "", answer}}; };
const auto del = [](Bytes target) { return Steps{{"DELETE", target, ""}}; };
const auto post = [](Bytes to, Bytes body) { return Steps{{"POST", to, body, reply("12")}}; };
const auto part = [](Bytes name, Bytes value) { return fieldHead(name) + '=' + value + '\n'; };
const auto box = [](QMessageBox::Icon icon, Text title, Text text) {
    return Steps{{"", "", "", "", {icon, title, text, yes, yes, {}, {"OK"}}}};
};
const auto error = [](Text text) { return box(QMessageBox::Critical, "Error", text); };
const auto prompt = [](Text text) { return box(note, "Prompt", text); };
const auto warning = [](Text text) { return box(QMessageBox::Warning, "Prompt", text); };
const auto ask = [](Text text, auto answer, QMessageBox::Icon icon = QMessageBox::Question) {
    return Steps{{"", "", "", "", {icon, "Prompt", text, yes | no, answer, {}, {"OK", "Cancel"}}}};
};
const auto refused = [](Steps steps) {
    steps.last().answer = refusal;
    return steps;
};

/// Fills in and confirms, with one press too early for each text that is asked for.
void fill(QDialog& dialog, const Form& form)
{
    QStringList before;
    for (const QLineEdit* one : dialog.findChildren<QLineEdit*>())
        before.append((one == dialog.focusWidget() ? ">" : "") + QString(one->isEnabled() ? "" : "!")
            + one->text() + one->placeholderText());
    QCOMPARE(before.join(", "), form[2]);
    for (const QString& entry : form.mid(3)) {
        const QString text = entry.section('=', 1);
        if (entry.startsWith('*'))
            press(dialog, form[1]);
        QApplication::clipboard()->setText(' ' + text + "\n");
        button(dialog, "Paste") ? press(dialog, "Paste")
                                : type(dialog, entry.section('=', 0, 0).remove('*'), text);
    }
    QTest::keyClick(dialog.focusWidget(), Qt::Key_Return);
}

/// An answer with \a records: of each the two values that it has of its own.
QByteArray list(Text record, const Texts& records)
{
    QStringList texts;
    for (const auto& [first, second] : records)
        texts.append(record.arg(first, second));
    return reply('[' + texts.join(',').toUtf8() + ']');
}

const QByteArray book = "/project/cloudAddressBook/";
const QByteArray zhao = R"({"id":6,"friendUser":"u","friendPhone":"2","friendRemark":"Z","friendUnit":""})";
const QByteArray li =
    R"-({"id":5,"friendUser":"u","friendPhone":"1(3)","friendRemark":"<b>L</b>","friendUnit":"U"})-";
const Steps found = get(book + "list", reply('[' + li + ',' + zhao + ']'));
const Steps others = get(book + "list", reply('[' + zhao + ']'));
const Steps noList = refused(others);
const Steps notLoaded = noList + prompt("Failed to load address book form!");
const Steps add =
    post(book + "add", part("friendPhone", "1(3)") + part("friendRemark", "N") + part("friendUnit", "C"));
const Steps drop = del(book + "delete?id=5");
const Steps adds = box(note, "Error", "Account cannot be empty!") + add;
const Steps changes = found + drop + add;
const Steps notChanged = error("Change exceptions!");
const Steps sure = ask("Confirm deletion?", yes, note);
const Kind bookKind{
    [](CloudFileManger& client, QWidget* parent) { return new AddressBookManageDlg(&client, parent); },
    {"Remark name", "Account", "Company"}, found, {"<b>L</b> | 1(3) | U", "Z | 2 | "}, {"Z | 2 | "},
    {{"Add", {"Add", "OK", ", >, ", "Name=N", "Company=C", "*Account=1(3)"}},
        {"Edit", {"Change", "OK", "><b>L</b>, !1(3), U", "Name=N", "Company=C"}}},
    {
        {"Add", "refused", "", refused(adds) + error("Please enter the correct account number!")},
        {"Add", "not shown", "", adds + notLoaded},
        {"Add", "done", "", adds + others, true},
        {"Delete", "nothing selected", "", {}},
        {"Delete", "cancelled", "1(3)", ask("Confirm deletion?", no, note)},
        {"Delete", "list refused", "1(3)", sure + noList + error("Remove exceptions!")},
        {"Delete", "refused", "1(3)", sure + found + refused(drop) + error("Remove exceptions!")},
        {"Delete", "done", "1(3)", sure + found + drop + others, true},
        {"Edit", "nothing selected", "", {}},
        {"Edit", "list refused", "1(3)", noList + notChanged},
        {"Edit", "gone meanwhile", "1(3)", others},
        {"Edit", "delete refused", "1(3)", found + refused(drop) + notChanged},
        {"Edit", "add refused", "1(3)", refused(changes) + notChanged},
        {"Edit", "done", "1(3)", changes + others, true},
    }};

const QByteArray users = "/project/cloudProjectGroupUser/";
const QByteArray lists = users + "listUserGroups";
const QString group = R"({"id":%1,"groupName":"%2","createUser":"me"})";
const QString member = R"({"id":99,"groupId":98,"username":"%1","adminFlag":%2})";
const QByteArray in = users + "listGroupUsers?groupId=";
const auto members = [](Bytes id, const Texts& records) { return get(in + id, list(member, records)); };
const Steps all = get(lists, list(group, {{"7", "Bridge-(team)"}, {"8", "x(ID:9)"}, {"10", "Site"}}));
const QString bridge = "Bridge-(team)(ID:7)";
const QString trap = "x(ID:9)(ID:8)";
const QString site = "Site(ID:10)"; // of which the user is not the owner
const Steps in7 = members("7", {{"me", "1"}, {"a-(b)&c", "0"}});
const Steps in8 = members("8", {{"me", "1"}, {"dan", "0"}});
const Steps in10 = members("10", {{"me", "0"}, {"bob", "1"}});
const Steps other = get(lists, list(group, {{"11", "New"}})) + members("11", {{"me", "1"}});
const Steps unknown = refused(in7) + error("Failed to query a group member!");
const auto kick = [](Bytes query) { return del(users + "removeGroupMember?groupId=" + query); };
const Steps kickOther = kick("7&usernames=a-%28b%29%26c");
const QString invalid = "The group ID is invalid. Please click to select the group ";
const QString invite = "Generating invitation codes";
const Steps notInvited = prompt(
    "The current user is not the group owner of the group, and the invitation code cannot be generated!");
const Steps invites = in8 + get(users + "getInviteCode?groupId=8", reply("\"<i>C</i>\""));
const Steps invited =
    box(note, "Anonymous share", "Invitation code:<i>C</i>\nThe invitation code is copied to the clipboard.");
const QString join = "Join the group";
const Steps joins =
    prompt("The invitation code cannot be empty.") + post(users + "inviteToGroup", part("inviteCode", "c&d"));
const QString create = "Create group";
const Steps creates = prompt("Group name cannot be empty!")
    + post("/project/cloudProjectGroup/saveOrUpdate", R"(application/json{"groupName":"a\"b"})");
const QString quit = "Quit the group";
const Steps quits = in10 + ask("Confirm exit?", yes) + get(users + "outGroup?groupId=10");
const QString erase = "Delete the group";
const QString remove = "Removing a group member";

/// An owner's group is deleted whether the owner deletes or quits it.
QVector<Flow> deletions(Text button, Text words)
{
    const Steps asks = in7 + ask(words, yes) + in7;
    const Steps empties = asks + kick("7&usernames=me") + kickOther;
    const Steps deletes = empties + del("/project/cloudProjectGroup/delete?id=7");
    return {
        {button, "cancelled", bridge, in7 + ask(words, no)},
        {button, "members unknown", bridge, refused(asks) + error("Delete failed!")},
        {button, "member stays", bridge, refused(empties) + error("Delete failed!")},
        {button, "group stays", bridge, refused(deletes) + error("Delete failed!")},
        {button, "done", bridge, deletes + prompt("Delete successfully!") + other, true},
    };
}

const Kind groupKind{[](CloudFileManger& client, QWidget* parent) {
                         return new GroupManageDlg(&client, QApplication::clipboard(), "me", parent);
                     },
    {"Groups"}, all + in7 + in8 + in10,
    {"My groups", "  " + bridge, "    me - group manager", "    a-(b)&c", "  " + trap,
        "    me - group manager", "    dan", "  " + site, "    me", "    bob - group manager"},
    {"My groups", "  New(ID:11)", "    me - group manager"},
    {{join, {"Join group by invitation code", join, ">Please enter the invitation code", "*=c&d"}},
        {create, {"Create a group", "Create", ">", "*Group Name=a\"b"}}},
    QVector<Flow>{
        {invite, "root", "My groups", prompt(invalid + "that needs to generate the invitation code.")},
        {invite, "not the owner", site, in10 + notInvited},
        {invite, "refused", trap, refused(invites) + error("Failed to generate invitation code!")},
        {invite, "invited", trap, invites + invited},
        {join, "refused", "", refused(joins) + error("Join the group failed!")},
        {join, "done", "", joins + prompt("Join the group successfully!") + other, true},
        {create, "refused", "", refused(creates) + error("Failed to create group!")},
        {create, "done", "", creates + prompt("Create group successfully!") + other, true},
        {erase, "member selected", "bob - group manager", prompt(invalid + "to be deleted.")},
        {erase, "not the owner", site, in10 + prompt("No operation permission!")},
        {quit, "nothing selected", "", prompt(invalid + "to exit!")},
        {quit, "owner unknown", bridge, unknown + ask("Confirm exit?", no)},
        {quit, "as a member, refused", site, refused(quits) + error("Failed to exit the group!")},
        {quit, "as a member", site, quits + prompt("Exit group successfully!") + other, true},
        {remove, "group selected", bridge, warning("Select a group member.")},
        {remove, "not the owner", "bob - group manager", in10 + warning("No operation permission!")},
        {remove, "manager", "me - group manager", in7 + warning("Unable to remove group master!")},
        {remove, "refused", "a-(b)&c", in7 + refused(kickOther) + error("Failed to delete a group member!")},
        {remove, "done, in a group named like an id", "dan", in8 + kick("8&usernames=dan") + other, true},
    }
        + deletions(quit,
            "The current user is the group owner of the group. If you quit the group, you will delete the "
            "group. Do you want to quit the group?")
        + deletions(erase, "Do you want to delete this group?")};

CloudFileManger::ShareProjectInfo chosen;
const QByteArray projects = "/project/cloudProjectBackup/getProjectList?sourceClient=Soft";
const QString project = R"({"id":%1,"projectTitle":"%2","sourceClient":"Soft"})";
const QString dam = " | Dam |  | Soft | 3";
const QString current = " | Current |  | Soft | 7";
const Steps before = get(projects, list(project, {{"3", "Dam"}, {"7", "Current"}}));
const Steps after = get(projects, list(project, {{"3", "Dam"}, {"12", "New"}}));
const Steps addsProject = prompt("Cloud project name cannot be empty!")
    + prompt("Cloud project description cannot be empty!")
    + post("/project/cloudProjectInfo/add",
        part("description", "D") + part("projectTitle", "N") + part("sourceClient", "Soft"));
const Steps added = prompt("Add cloud project successfully!");
const Steps selectOne = prompt("Please select a cloud project");
const Kind projectKind{[](CloudFileManger& client, QWidget* parent) {
                           return new ChoiceCloudProjectDlg(&client, &chosen, "Current", "7", parent);
                       },
    {"", "Cloud Project Name", "Cloud Project Description", "Source Client", "Cloud project ID"}, before,
    {"[ ]" + dam, "[ ]" + current}, {"[x] | New |  | Soft | 12", "[ ]" + dam},
    {{"Add", {"Add cloud Project", "OK", ">, ", "*Cloud Project Name=N", "*Cloud Project Description=D"}}},
    {
        {"Add", "refused", "", refused(addsProject) + error("Add cloud project failed!")},
        {"Add", "not listed", "", addsProject + refused(before) + added},
        {"Add", "done", "Dam", addsProject + after + added, true},
    }};
const QVector<Kind> kinds{bookKind, groupKind, projectKind};

} // namespace

Q_DECLARE_METATYPE(Flow)
Q_DECLARE_METATYPE(Kind)

class TestCloudDialogs : public CloudSpaceTest
{
    Q_OBJECT

private slots:
    void doWhatTheirButtonsSay_data()
    {
        QTest::addColumn<Kind>("kind");
        QTest::addColumn<Flow>("flow");
        for (const Kind& kind : kinds)
            for (const Flow& flow : kind.flows)
                QTest::newRow(qPrintable(kind.headers.last() + ": " + flow.button + ", " + flow.what))
                    << kind << flow;
    }

    void doWhatTheirButtonsSay()
    {
        QFETCH(Kind, kind);
        QFETCH(Flow, flow);
        const auto dialog = open(kind, kind.loading + flow.steps);
        for (int i = 0; i < kind.headers.size(); ++i)
            QCOMPARE(viewIn(*dialog)->model()->headerData(i, Qt::Horizontal).toString(), kind.headers[i]);
        if (flow.changes && kind.forms.contains(flow.button)) // left at first: nothing is sent
            start(*dialog, kind, flow, [](QDialog& form, const Form&) {
                button(form, "Cancel") ? press(form, "Cancel") : form.reject();
            });
        start(*dialog, kind, flow, fill);
        QCOMPARE(rowsOf(*dialog), flow.changes ? kind.loadedAgain : kind.loaded);
        QVERIFY(dialog->isVisible() && button(*dialog, flow.button)->isEnabled());
        QCOMPARE(QApplication::clipboard()->text() == "<i>C</i>", flow.what == "invited");
        QByteArrayList sent, expected;
        for (const RecordedRequest& request : fixture->requests()) {
            QString noForm;
            sent.append(request.header("Authorization") + ' ' + request.target + ' ');
            for (const FormPart& one : parseForm(request, noForm))
                sent.last() += one.head + '=' + one.body + '\n';
            if (!noForm.isEmpty())
                sent.last() += request.header("Content-Type") + request.body;
        }
        for (const Step& step : kind.loading + flow.steps)
            if (!step.method.isEmpty())
                expected.append("Bearer token " + step.target + ' ' + step.content);
        QCOMPARE(sent, expected);
    }

    void askNothingBeforeTheyAreShown()
    {
        for (const Kind& kind : kinds) {
            const std::unique_ptr<QDialog> dialog(kind.make(fixture->client(), nullptr));
            QCoreApplication::processEvents();
            dialog->show();
            dialog->hide();
            QCoreApplication::processEvents();
            QVERIFY(fixture->requests().isEmpty());
        }
    }

    void showGroupsUnfoldedWithTheirIcons()
    {
        const auto dialog = open(groupKind, groupKind.loading);
        const auto* tree = dialog->findChild<QTreeView*>();
        const Texts rows{
            {"My groups", "folder"}, {site, "202"}, {"bob - group manager", "201"}, {"me", "200"}};
        for (const auto& [text, file] : rows) {
            const QModelIndex index = indexOf(*tree->model(), text);
            const QIcon expected(":/tav_cloud_platform_sdk/Resources/" + file + ".png");
            const QImage icon = index.data(Qt::DecorationRole).value<QIcon>().pixmap(16).toImage();
            QVERIFY(!icon.isNull() && icon == expected.pixmap(16).toImage());
            QVERIFY(!tree->model()->hasChildren(index) || tree->isExpanded(index));
        }
    }

    void sayWhyTheyAreEmpty()
    {
        const auto saysSo = [this](const Kind& kind, const Steps& steps) {
            const auto dialog = open(kind, steps);
            auto* table = dialog->findChild<RecordTable*>();
            const QImage image = table->viewport()->grab().toImage();
            table->setEmptyText(QString());
            return table->rowCount() == 0 && image != table->viewport()->grab().toImage();
        };
        QVERIFY(saysSo(bookKind, get(book + "list", reply("[]"))));
        QVERIFY(saysSo(bookKind, notLoaded));
        QVERIFY(saysSo(projectKind, get(projects, reply("[]"))));
        QVERIFY(saysSo(projectKind, refused(before)));
        const auto shown = [this](const Steps& steps) {
            const auto dialog = open(groupKind, steps);
            const auto* hint = dialog->findChild<QLabel*>();
            return rowsOf(*dialog).join(',') + (hint->isVisible() ? ": " + hint->text() : QString());
        };
        QCOMPARE(shown(get(lists, reply("[]"))),
            QString("My groups: You are in no group yet. Create one, or join one by its invitation code."));
        QCOMPARE(shown(refused(all) + error("Failed to query group information!")),
            QString(": The groups could not be loaded."));
        const QStringList& rows = groupKind.loaded; // but for the members of the first
        QCOMPARE(shown(all + unknown + in8 + in10), (rows.mid(0, 2) + rows.mid(4)).join(','));
    }

    void chooseOneProject()
    {
        chosen = {"i", "t", "s", "target", "d"};
        const auto dialog = open(projectKind, before + selectOne);
        auto* table = dialog->findChild<QTableWidget*>();
        QVERIFY(
            table->currentRow() == 1 && table->selectedItems().isEmpty()); // begins there, chooses nothing
        press(*dialog, "OK");
        const auto clickBox = [&](int row) {
            auto* check = static_cast<MycheckBox*>(table->cellWidget(row, 0))->checkBox();
            QTest::mouseClick(check, Qt::LeftButton, {}, check->rect().center());
        };
        clickBox(1);
        QCOMPARE(rowsOf(*dialog), QStringList({"[ ]" + dam, "[x]" + current}));
        QTest::keyClick(table, Qt::Key_Up);
        clickRow(*dialog, "Dam"); // which unchecks nothing
        QCOMPARE(rowsOf(*dialog), QStringList({"[x]" + dam, "[ ]" + current}));
        const auto& [id, title, source, target, description] = chosen;
        QCOMPARE(id + title + source + target + description, QString("3DamSoft"));
        clickBox(0); // the choice stays
        QCOMPARE(rowsOf(*dialog), projectKind.loaded);
        QCOMPARE(fixture->client().getProjectId(), QString("7"));
        QTest::keyClick(dialog.get(), Qt::Key_Return);
        QCOMPARE(fixture->client().getProjectId() + chosen.id, QString("33"));
    }

    void showNamesAsFarAsThereIsRoom()
    {
        const QString longName(400, 'n');
        const auto dialog = open(projectKind, get(projects, list(project, {{"3", longName}, {"4", "Dam"}})));
        const auto* table = dialog->findChild<RecordTable*>();
        const auto isRoomy = [&] {
            const bool isWidest = table->columnWidth(1) > table->columnWidth(2);
            return isWidest && !table->horizontalScrollBar()->isVisible();
        };
        QVERIFY(isRoomy());
        dialog->resize(dialog->width() * 3 / 4, dialog->height());
        QCoreApplication::processEvents();
        QVERIFY(isRoomy());
    }

    void takeTheNewProjectInsteadOfTheChosen()
    {
        for (const bool listed : {false, true}) {
            const Steps then = listed ? after + added : before + added + selectOne;
            const auto dialog = open(projectKind, before + addsProject + then);
            start(*dialog, projectKind, projectKind.flows.last(), fill);
            bringUp(*dialog);
            QTest::keyClick(dialog->focusWidget(), Qt::Key_Return);
            QCOMPARE(dialog->isVisible(), !listed);
        }
        QCOMPARE(fixture->client().getProjectId() + chosen.projectTitle, QString("12New"));
    }

private:
    /// The platform answers, and the boxes come, in this order.
    void schedule(const Steps& steps)
    {
        int sent = fixture->requests().size();
        for (const Step& step : steps) {
            if (!step.method.isEmpty()) {
                ++sent;
                fixture->expect(step.method, step.target, step.answer);
                continue;
            }
            ExpectedBox expected = step.box;
            const bool isFailure =
                expected.icon == QMessageBox::Critical || expected.text.startsWith("Failed");
            expected.look = [this, sent, isFailure] {
                QCOMPARE(fixture->requests().size(), sent);
                const auto* shown = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
                QCOMPARE(shown->defaultButton(), shown->button(no));
                if (shown->windowTitle() == "Anonymous share") {
                    QCOMPARE(QApplication::clipboard()->text(), QString("<i>C</i>"));
                    QApplication::clipboard()->clear();
                    QTRY_VERIFY(shown->isActiveWindow());
                    QTest::keyClick(QApplication::activeModalWidget(), Qt::Key_C, Qt::ControlModifier);
                }
                QCOMPARE(shown->informativeText(), QString(isFailure ? "<b>no</b>" : ""));
            };
            fixture->boxes().expect(expected);
        }
    }

    std::unique_ptr<QDialog> open(const Kind& kind, const Steps& steps)
    {
        QApplication::clipboard()->clear();
        schedule(steps);
        std::unique_ptr<QDialog> dialog(kind.make(fixture->client(), nullptr));
        bringUpLoaded(*dialog);
        return dialog;
    }

    /// Selects, presses, and lets \a play be the user of the form.
    void start(QDialog& dialog, const Kind& kind, const Flow& flow, void (*play)(QDialog&, const Form&))
    {
        if (!flow.selected.isEmpty())
            clickRow(dialog, flow.selected);
        const Form form = kind.forms.value(flow.button);
        if (!flow.steps.isEmpty() && !form.isEmpty())
            fixture->whenOpened(form[0], [play, form](QDialog& shown) { play(shown, form); });
        press(dialog, flow.button);
    }
};

QTEST_MAIN(TestCloudDialogs)
#include "tst_clouddialogs.moc"
