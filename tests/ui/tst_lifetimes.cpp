// SPDX-License-Identifier: MIT
#include "ui/account/DlgLoginCloundPlatform.h"
#include "ui/account/DlgLogoutCloundPlatform.h"
#include "ui/account/DlgRegisterR2V.h"
#include "ui/account/DlgResetPassword.h"
#include "ui/cloudspace/AddressBookManageDlg.h"
#include "ui/cloudspace/ChoiceCloudProjectDlg.h"
#include "ui/cloudspace/DlgMyCloudSpace.h"
#include "ui/cloudspace/GroupManageDlg.h"
#include "ui/cloudspace/TavFileButton.h"

#include "cloudspace/CloudSpaceFixture.h"
#include "cloudspace/Rows.h"
#include "support/Robot.h"

#include <QApplication>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QRadioButton>
#include <QTabBar>
#include <QTest>

/// Every flow of the dialogs is described once: what the user does, and what comes of it. It is then cut at
/// each point at which the module waits, for the platform or for the user, and by each ending that a host has
/// for it. Nothing of what would have come may come any more.
namespace {

using Act = std::function<void(QDialog&)>;

/// Whether a request is sent as well when its window went before.
enum GoesOn
{
    Never,
    WhenClosed, ///< it is for the window below, which is still there
    Anyway ///< it is part of one operation, which is not left half done
};

/// What comes of the user's acts: a request, a window in which the user goes on, or a box that is confirmed.
struct Step
{
    QByteArray method;
    QString what; ///< target, title or text
    QByteArray answer;
    QVector<Act> acts; ///< in the window
    GoesOn goesOn = Never;
};
using Steps = QVector<Step>;

struct Flow
{
    const char* name;
    /// The parent may go while it makes it.
    std::function<QDialog*(CloudFileManger*, const QPointer<QWidget>&)> make;
    QVector<Act> acts; ///< in its window
    Steps steps; ///< what comes of them
    Steps opening = {}; ///< what comes before
    bool cutsOpening = false; ///< where no other flow with that opening does
};

enum Ending
{
    Closed,
    Destroyed,
    ParentDestroyed,
    DestroyedWithClient,
    ClientDestroyed, ///< which the window can do without
    Quits
};
const char* const endings[]{"waiting window closed", "window destroyed", "parent destroyed",
    "window and client destroyed", "client destroyed", "application quits"};

Steps asks(const QByteArray& method, const QString& target, const QByteArray& answer = success)
{
    return {{method, target, answer, {}}};
}

Steps get(const QString& target, const QByteArray& answer = success)
{
    return asks("GET", target, answer);
}

Steps still(GoesOn when, Steps steps)
{
    for (Step& step : steps)
        step.goesOn = when;
    return steps;
}

Steps opens(const QString& title, const QVector<Act>& acts)
{
    return {{"window", title, {}, acts}};
}

Steps box(const QString& text)
{
    return {{"box", text, {}, {}}};
}

Act presses(const QString& text)
{
    return [text](QDialog& dialog) { press(dialog, text); };
}

/// Types into the fields and presses.
Act fills(const Texts& texts, const QString& then)
{
    return [=](QDialog& dialog) {
        fillIn(dialog, texts);
        press(dialog, then);
    };
}

Act selects(const QString& row, const QString& then)
{
    return [=](QDialog& dialog) {
        clickRow(dialog, row);
        press(dialog, then);
    };
}

/// Answers a file dialog with a path in the working directory.
Act chooses(const QString& path)
{
    return [path](QDialog& dialog) {
        dialog.findChild<QLineEdit*>("fileNameEdit")->setText(QDir().absoluteFilePath(path));
        QMetaObject::invokeMethod(&dialog, "accept");
    };
}

// Whatever the platform chooses has a tag in it.
const QByteArray refused = R"({"code":1,"msg":"<i>no</i>"})";
const QByteArray tokens =
    R"({"code":0,"access_token":"A","refresh_token":"R","user_info":{"username":"<i>u</i>"}})";
const QString phone = "13800000000";
const QString signIn = "/auth/oauth/token?grant_type=password";
const QString byCode = "/auth/mobile/token/sms?mobile=SMS@13800000000&code=1&grant_type=mobile";

const Act registers = fills({{"User name", "n"}, {word, "p"}, {account, phone}, {code, "1"}}, askForCode);
const Steps registered = get("/admin/mobile/" + phone) + asks("POST", "/admin/api/user")
    + box("Account registration successfully!");
const Act resets = fills({{account, phone}, {"New password", "p"}, {code, "1"}}, askForCode);
const Steps isReset = get("/admin/mobile/reset/" + phone) + asks("POST", "/admin/api/user/resetpw")
    + box("Password reset successfully!");

const QVector<Flow> accountFlows{
    {"sign in by code", [](auto*, QWidget* parent) { return new DlgLoginCloundPlatform(parent); },
        {fills({{account, phone}}, askForCode), fills({{code, "1"}}, "Login"), presses("Login")},
        get("/admin/mobile/" + phone, refused) + box("<i>no</i>") + asks("POST", byCode, refused)
            + box("<i>no</i>") + asks("POST", byCode, tokens) + box("login successfully!")},
    {"sign in by password", [](auto*, QWidget* parent) { return new DlgLoginCloundPlatform(parent); },
        {[](QDialog& dialog) { openTab(dialog, PasswordTab); },
            fills({{account, "n"}, {word, "p"}}, "Login")},
        asks("POST", signIn, tokens) + box("login successfully!")},
    {"register", [](auto*, QWidget* parent) { return new DlgRegisterR2V(parent); },
        {registers, presses("User registration")}, registered},
    {"reset", [](auto*, QWidget* parent) { return new DlgResetPassword(parent); }, {resets, presses("Reset")},
        isReset},
    {"register and reset from the sign-in",
        [](auto*, QWidget* parent) { return new DlgLoginCloundPlatform(parent); },
        {presses("User registration"), presses("Forget the password")},
        opens("User registration", {registers, presses("User registration")}) + registered
            + opens("Reset password", {resets, presses("Reset")}) + isReset},
    {"sign out",
        [](auto*, const QPointer<QWidget>& parent) {
            CloudAccountLogin::instance()->userLoginAccount("u", "p");
            return new DlgLogoutCloundPlatform(parent);
        },
        {presses("Logout")},
        asks("POST", "/auth/oauth/check_token", R"({"user_info":{}})")
            + still(Anyway, asks("DELETE", "/auth/token/logout")) + box("exit successfully!"),
        asks("POST", signIn, tokens)},
};

const QString book = "/project/cloudAddressBook/";
const Steps friends = get(book + "list",
    reply(
        R"([{"id":5,"friendUser":"<i>f</i>","friendPhone":"13","friendRemark":"<i>F</i>","friendUnit":"U"}])"));
const Steps addsFriend = asks("POST", book + "add");
QDialog* addressBook(CloudFileManger* client, QWidget* parent)
{
    return new AddressBookManageDlg(client, parent);
}
const QVector<Flow> friendFlows{
    {"add a friend", addressBook, {presses("Add")},
        opens("Add", {fills({{"Account", "14"}}, "OK")}) + addsFriend + friends, friends, true},
    {"change a friend", addressBook, {selects("13", "Edit")},
        opens("Change", {presses("OK")}) + friends + asks("DELETE", book + "delete?id=5")
            + still(Anyway, addsFriend) + friends,
        friends},
    {"delete a friend", addressBook, {selects("13", "Delete")},
        box("Confirm deletion?") + friends + asks("DELETE", book + "delete?id=5") + friends, friends},
};

const QString users = "/project/cloudProjectGroupUser/";
const Steps list =
    get(users + "listUserGroups", reply(R"([{"id":7,"groupName":"<i>G</i>","createUser":"me"}])"));
const Steps members = get(users + "listGroupUsers?groupId=7",
    reply(
        R"([{"id":1,"groupId":7,"username":"me","adminFlag":1},{"id":2,"groupId":7,"username":"<i>m</i>","adminFlag":0}])"));
const QString kick = users + "removeGroupMember?groupId=7&usernames=";
const QString team = "<i>G</i>(ID:7)";
const Steps allGroups = list + members;
const Steps kicks = asks("DELETE", kick + "%3Ci%3Em%3C%2Fi%3E");
QDialog* groups(CloudFileManger* client, QWidget* parent)
{
    return new GroupManageDlg(client, QApplication::clipboard(), "me", parent);
}
const QVector<Flow> groupFlows{
    {"invite", groups, {selects(team, "Generating invitation codes")},
        members + get(users + "getInviteCode?groupId=7", reply(R"("<i>C</i>")"))
            + box("Invitation code:<i>C</i>\nThe invitation code is copied to the clipboard."),
        allGroups, true},
    {"join a group", groups, {presses("Join the group")},
        opens("Join group by invitation code", {fills({{"Invitation code", "C"}}, "Join the group")})
            + asks("POST", users + "inviteToGroup") + box("Join the group successfully!") + allGroups,
        allGroups},
    {"create a group", groups, {presses("Create group")},
        opens("Create a group", {fills({{"Group Name", "G"}}, "Create")})
            + asks("POST", "/project/cloudProjectGroup/saveOrUpdate") + box("Create group successfully!")
            + allGroups,
        allGroups},
    {"remove a member", groups, {selects("<i>m</i>", "Removing a group member")}, members + kicks + allGroups,
        allGroups},
    {"delete a group", groups, {selects(team, "Delete the group")},
        members + box("Do you want to delete this group?") + members
            + still(Anyway,
                asks("DELETE", kick + "me") + kicks
                    + asks("DELETE", "/project/cloudProjectGroup/delete?id=7"))
            + box("Delete successfully!") + allGroups,
        allGroups},
};

const Steps projects = get("/project/cloudProjectBackup/getProjectList?sourceClient=Soft",
    reply(R"([{"id":9,"projectTitle":"<i>P</i>","sourceClient":"Soft"}])"));
CloudFileManger::ShareProjectInfo chosen;
const Flow chooser{"choose a project",
    [](CloudFileManger* client, QWidget* parent) {
        return new ChoiceCloudProjectDlg(client, &chosen, "Current", "7", parent);
    },
    {presses("Add"), selects("<i>P</i>", "OK")},
    opens(
        "Add cloud Project", {fills({{"Cloud Project Name", "N"}, {"Cloud Project Description", "D"}}, "OK")})
        + asks("POST", "/project/cloudProjectInfo/add", reply("9")) + projects
        + box("Add cloud project successfully!"),
    projects, true};

const QString share = "/project/cloudProjectShare/";
const Steps tree = get("/project/cloudProjectBackup/getProjectList?sourceClient=Soft", reply("[]"))
    + still(Anyway,
        get(share + "getProjectBySoftId?sourceClient=Soft&targetClient=Soft",
            reply(R"([{"id":1,"projectTitle":"<i>P<i>","sourceClient":"Soft"}])"))
            + get(share + "getByProject?projectId=1&sourceClient=Soft",
                reply(R"([{"id":11,"originalName":"<i>a"},{"id":12,"originalName":"<i>b"}])")));

QDialog* space(CloudFileManger* client, QWidget* parent)
{
    return new DlgMyCloudSpace(client, {{"dwg", "31"}}, "me", "4", parent);
}

/// Opens or selects the tile of that name.
Act clicksTile(const QString& name, int times)
{
    return [=](QDialog& dialog) {
        for (const auto* tile : dialog.findChildren<TavFileButton*>())
            for (int i = 0; i < times && tile->getName() == name && tile->isVisible(); ++i)
                robot::click(*tile->focusProxy());
    };
}

/// Goes to the tab and the way of sharing.
Act sharesBy(const QString& mode)
{
    return [mode](QDialog& dialog) {
        openTab(dialog, Tab(1));
        for (auto* radio : dialog.findChildren<QRadioButton*>())
            if (radio->text() == mode)
                robot::click(*radio, {8, radio->height() / 2});
    };
}

const Steps opening = tree + friends + list;
const Steps upload = projects + opens("Choose Cloud Project", {selects("<i>P</i>", "OK")})
    + asks("POST", share + "upload", reply(R"({"logicalId":42})"));
const Steps extracts = get(share + "extractByCode?extractionCode=C&sourceClient=Soft");

const Steps isShared = box("Share successfully!") + tree;
/// Types into the only field that has no name.
const Act extractsCode = [](QDialog& dialog) {
    robot::click(*field(dialog, {}));
    robot::write(dialog, "C");
    press(dialog, "Extract");
};
const Act typesFile = [](QDialog& dialog) { type(dialog, "File", "a.dwg"); };

const QVector<Flow> spaceFlows{
    {"browse", space, {presses("Refresh")}, tree, opening, true},
    {"download", space, {clicksTile("Soft", 2), clicksTile("<i>P<i>", 1), presses("Download")},
        opens("Save path", {chooses("out")}) + box("A file with the same name exists,whether or not covered?")
            + get(share + "download?logicalId=11", "bytes") + get(share + "download?logicalId=12", "bytes")
            + box("The download is complete!"),
        opening},
    {"share by code", space, {sharesBy("Anonymous share"), presses("Browse..."), presses("Share")},
        opens("Obtaining the file path", {chooses("a.dwg")}) + upload
            + asks("POST", share + "toAnonymous", reply(R"("C")"))
            + box("Fetch Code:C\nThe fetch code is copied to the clipboard.") + extracts
            + box("Please go to my Cloud space to view the uploaded file.") + tree,
        opening},
    {"extract", space, {sharesBy("Anonymous share"), extractsCode},
        extracts + box("Extraction successfully! Please go to My Cloud space to view the file") + tree,
        opening},
    {"share with friends", space, {sharesBy("Share To friends"), typesFile, selects("13", "Share")},
        upload + asks("POST", share + "toUSer") + isShared, opening},
    {"share with groups", space, {sharesBy("Share To groups"), typesFile, selects("<i>G</i>", "Share")},
        upload + asks("POST", share + "toGroup") + isShared, opening},
    {"manage friends", space, {sharesBy("Share To friends"), presses("Address book Management")},
        friends + opens("Address book Management", {presses("Close")}) + still(WhenClosed, friends), opening},
    {"manage groups", space, {sharesBy("Share To groups"), presses("Group management")},
        allGroups + opens("Group management", {presses("Close")}) + still(WhenClosed, list), opening},
};

const QVector<Flow> flows = accountFlows + friendFlows + groupFlows + QVector<Flow>{chooser} + spaceFlows;

/// What of \a window's texts is taken for markup.
QStringList takenForMarkup(const QWidget& window)
{
    QStringList found;
    for (const auto* label : window.findChildren<QLabel*>())
        if (label->textFormat() != Qt::PlainText && label->text().contains("<i>"))
            found.append(label->text());
    QStringList toolTips;
    for (const auto* widget : window.findChildren<QWidget*>()) {
        toolTips.append(widget->toolTip());
        const auto* view = qobject_cast<const QAbstractItemView*>(widget);
        const QModelIndexList all = view && view->model() && view->objectName().isEmpty()
            ? view->model()->match(view->model()->index(0, 0), Qt::ToolTipRole, "<i>", -1,
                Qt::MatchContains | Qt::MatchRecursive)
            : QModelIndexList();
        for (const QModelIndex& index : all)
            toolTips.append(index.data(Qt::ToolTipRole).toString());
    }
    return found + toolTips.filter("<i>"); // which is "&lt;i&gt;" where it is to be seen
}

/// Whether \a step is a request, and the last of its operation.
bool canBeRefused(const Steps& steps, int step)
{
    return !steps[step].answer.isNull() && (step + 1 == steps.size() || steps[step + 1].goesOn != Anyway);
}

/// One flow on its way, until its cut and beyond.
class Stage
{
public:
    /// \param cutAnswer what the platform answers to the request at which it is cut; null for the flow's own
    Stage(CloudSpaceFixture& shared, const Flow& played, int atStep, Ending by, const QByteArray& cutAnswer)
        : fixture(shared)
        , flow(played)
        , steps(played.opening + played.steps)
        , cut(atStep)
        , ending(by)
        , answerAtCut(cutAnswer)
    {
    }

    /// What came that must not come, or did not come.
    QStringList play()
    {
        fixture.begin();
        for (const char* name : {"a.dwg", "out/<i>P<i>/<i>a"}) {
            QDir().mkpath(QFileInfo(name).path());
            QFile(name).open(QIODevice::WriteOnly);
        }
        for (int i = 0; i < steps.size(); ++i)
            expect(i);
        parent->show();
        if (ending == Quits) {
            QTimer::singleShot(0, [this] { run(); });
            QCoreApplication::exec();
        } else {
            run();
        }
        delete dialog;
        delete parent;
        QStringList wrong = complaints;
        for (const QString& complaint : fixture.finish())
            if (!isCut || !complaint.startsWith("never came"))
                wrong.append(complaint);
        if (QApplication::overrideCursor() || QApplication::activeModalWidget())
            wrong.append("something is left");
        return wrong;
    }

    bool wasCut() const { return isCut; }

private:
    void expect(int i)
    {
        const Step& step = steps[i];
        if (step.method == "box")
            fixture.boxes().expect(
                {QMessageBox::NoIcon, {}, step.what, {}, QMessageBox::Ok, [=] { reach(i); }});
        else if (step.method == "window")
            fixture.whenOpened(step.what, [=](QDialog& opened) {
                const bool wasCut = isCut;
                const QPointer<QDialog> alive(&opened);
                reach(i);
                if (!alive || wasCut || quits())
                    return;
                // In a window that is left over, the user confirms what is there.
                if (isCut && !qobject_cast<QFileDialog*>(alive))
                    alive->accept();
                else
                    act(alive, step.acts);
            });
        else
            fixture.expectAndHold(step.method, step.what.toLatin1(),
                i == cut && !answerAtCut.isNull() ? answerAtCut : step.answer, [=] { reach(i); });
    }

    void run()
    {
        dialog = flow.make(&fixture.client(), parent);
        if (!isCut) {
            bringUp(*dialog);
            QCoreApplication::processEvents();
        }
        if (!isCut)
            act(dialog, flow.acts);
        if (ending == Quits)
            QCoreApplication::quit();
    }

    bool isRequest(int i) const { return !steps[i].answer.isNull(); }
    bool quits() const { return isCut && ending == Quits; }
    bool goesOn(int i) const
    {
        const GoesOn how = steps[i].goesOn;
        return how == Anyway || (how == WhenClosed && ending == Closed);
    }

    /// The user of a window that went while he did something goes on with nothing.
    void act(const QPointer<QDialog>& window, const QVector<Act>& acts)
    {
        const bool wasCut = isCut;
        for (const Act& one : acts)
            if (window && isCut == wasCut)
                one(*window);
    }

    void reach(int i)
    {
        if (isCut && !goesOn(i))
            complaints.append("came afterwards: " + steps[i].what);
        for (const QWidget* window : QApplication::topLevelWidgets())
            for (const QString& text : takenForMarkup(*window))
                complaints.append("taken for markup: " + text);
        if (i != cut)
            return;
        // A window that is still being built can neither be closed nor destroyed.
        isCut = ending == Quits || ending == ParentDestroyed || (ending != ClientDestroyed && dialog);
        if (isCut)
            fixture.expectNothing();
        for (int next = i + 1; isCut && next < steps.size(); ++next)
            if (isRequest(next) && goesOn(next))
                expect(next);
        if (ending == Closed && isCut)
            waitingWindow()->close();
        if (ending == Destroyed || ending == DestroyedWithClient)
            delete dialog;
        if (ending == ParentDestroyed)
            delete parent;
        if (ending == ClientDestroyed || (ending == DestroyedWithClient && isCut))
            fixture.destroyClient();
        if (ending == Quits)
            QCoreApplication::quit();
    }

    /// The one that asks the platform, or on which another stands.
    QWidget* waitingWindow() const
    {
        QWidget* front = QApplication::activeModalWidget();
        if (!front || front == dialog)
            return dialog;
        return isRequest(cut) ? front : front->parentWidget()->window();
    }

    CloudSpaceFixture& fixture;
    const Flow& flow;
    const Steps steps;
    int cut;
    Ending ending;
    QByteArray answerAtCut;
    bool isCut = false;
    QStringList complaints;
    QPointer<QWidget> parent = new QWidget;
    QPointer<QDialog> dialog;
};

} // namespace

class TestLifetimes : public CloudSpaceTest
{
    Q_OBJECT

private slots:
    void endsWithItsWindow_data()
    {
        QTest::addColumn<int>("index");
        QTest::addColumn<int>("ending");
        for (int i = 0; i < flows.size(); ++i)
            for (int ending = Closed; ending <= Quits; ++ending)
                if (i >= accountFlows.size() || (ending != ClientDestroyed && ending != DestroyedWithClient))
                    QTest::addRow("%s, %s", flows[i].name, endings[ending]) << i << ending;
    }

    void endsWithItsWindow()
    {
        QFETCH(int, index);
        QFETCH(int, ending);
        const Flow& flow = flows[index];
        const Steps steps = flow.opening + flow.steps;
        const int first = flow.cutsOpening ? 0 : flow.opening.size();
        for (int cut = first - (ending == Closed); cut < steps.size(); ++cut) { // closed: at first not at all
            const bool isCut = cut >= first;
            const QString where = isCut ? QString("%1, %2").arg(cut).arg(steps[cut].what) : "uncut";
            bool again = true;
            for (QByteArray answer; again; answer = refused) {
                Stage stage(*fixture, flow, isCut ? cut : -1, Ending(ending), answer);
                const QStringList wrong = stage.play();
                QVERIFY2(wrong.isEmpty() && !QTest::currentTestFailed(),
                    qPrintable(where + ": " + wrong.join("; ")));
                again = answer.isNull() && ending <= Destroyed && stage.wasCut() && canBeRefused(steps, cut);
            }
        }
    }
};

QTEST_MAIN(TestLifetimes)
#include "tst_lifetimes.moc"
