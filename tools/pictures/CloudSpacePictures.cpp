// SPDX-License-Identifier: MIT
#include "CloudSpacePictures.h"

#include "Album.h"
#include "cloud/CloudFileManger.h"
#include "support/ScriptedPeer.h"
#include "ui/cloudspace/AddAltAccountDlg.h"
#include "ui/cloudspace/AddressBookManageDlg.h"
#include "ui/cloudspace/ChoiceCloudProjectDlg.h"
#include "ui/cloudspace/CloudShareTabWidget.h"
#include "ui/cloudspace/CloudSpaceTabWidget.h"
#include "ui/cloudspace/CreateCloudProjectDlg.h"
#include "ui/cloudspace/CreateGroupDlg.h"
#include "ui/cloudspace/DlgMyCloudSpace.h"
#include "ui/cloudspace/GroupManageDlg.h"
#include "ui/cloudspace/JoinGroupDlg.h"

#include <QCheckBox>
#include <QGuiApplication>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>
#include <QTableWidget>
#include <QTreeView>

namespace {

QByteArray reply(const QByteArray& data)
{
    return R"({"code":0,"data":)" + data + '}';
}

const QByteArray ownProjects = R"([{"id":1,"projectTitle":"Harbour","sourceClient":"Host"},
    {"id":2,"projectTitle":"Bridge across the northern river","sourceClient":"Host"}])";
const QByteArray friends = R"([{"id":1,"friendUser":"wang.fang","friendPhone":"13800000002",
    "friendRemark":"\u738b\u82b3","friendUnit":"Harbour works"},
    {"id":2,"friendUser":"carol","friendPhone":"carol@example.org","friendRemark":"Carol","friendUnit":""}])";
const QByteArray groups = R"([{"id":3,"groupName":"Surveyors","createUser":"li.hua"},
    {"id":4,"groupName":"\u6865\u6881\u7ec4","createUser":"wang.fang"}])";
const QByteArray surveyors = R"([{"id":5,"groupId":3,"username":"li.hua","adminFlag":1},
    {"id":6,"groupId":3,"username":"wang.fang","adminFlag":0}])";
const QByteArray bridge = R"([{"id":7,"groupId":4,"username":"wang.fang","adminFlag":1},
    {"id":8,"groupId":4,"username":"li.hua","adminFlag":0}])";

const QByteArray listProjects = "/project/cloudProjectBackup/getProjectList?sourceClient=Host";
const QByteArray listFriends = "/project/cloudAddressBook/list";
const QByteArray listGroups = "/project/cloudProjectGroupUser/listUserGroups";
const QByteArray listMembers = "/project/cloudProjectGroupUser/listGroupUsers?groupId=";

/// Twelve drawings, so that there is a third row, one with a long name, and two of one name.
QByteArray drawings()
{
    QByteArray list = R"([{"id":10,"originalName":"Ground plan of the northern harbour basin.dwg"})";
    for (int i = 1; i <= 10; ++i)
        list += R"(,{"id":)" + QByteArray::number(20 + i) + R"(,"originalName":"sheet-)"
            + QByteArray::number(i) + R"(.dgn"})";
    return list + R"(,{"id":31,"originalName":"sheet-2.dgn"}])";
}

void expectGet(ScriptedPeer& peer, const QByteArray& target, const QByteArray& data)
{
    peer.expect("GET", target, behaviour::answer(reply(data)));
}

void expectTree(ScriptedPeer& peer)
{
    const QByteArray shares = "/project/cloudProjectShare/";
    expectGet(peer, listProjects, ownProjects);
    expectGet(peer, shares + "getProjectBySoftId?sourceClient=Survey&targetClient=Host",
        R"([{"id":9,"projectTitle":"Plans","sourceClient":"Survey"}])");
    expectGet(peer, shares + "getProjectBySoftId?sourceClient=Host&targetClient=Host", "[]");
    expectGet(peer, shares + "getByProject?projectId=9&sourceClient=Host", drawings());
}

void expectGroups(ScriptedPeer& peer)
{
    expectGet(peer, listGroups, groups);
    expectGet(peer, listMembers + "3", surveyors);
    expectGet(peer, listMembers + "4", bridge);
}

Behaviour answerLate(const QByteArray& json)
{
    return [json](PeerConnection& connection) {
        if (connection.readHead() && connection.readBody()) {
            connection.pause(500);
            connection.send(behaviour::response(json));
        }
    };
}

/// Clicks the tile called \a name.
void click(QWidget& window, const QString& name)
{
    for (QPushButton* button : window.findChildren<QPushButton*>())
        if (button->accessibleName() == name)
            return button->click();
    qFatal("There is no tile %s.", qPrintable(name));
}

void open(QWidget& window, const QString& folder)
{
    click(window, folder);
    click(window, folder);
}

/// Shows a dialog and lets it load its contents.
void bringUp(QWidget& dialog)
{
    dialog.show();
    QCoreApplication::processEvents();
}

void shootBrowser(const Album& album, ScriptedPeer& peer, DlgMyCloudSpace& space)
{
    const auto tr = [](const char* text) { return CloudSpaceTabWidget::tr(text); };
    album.shoot(space, "space-root");
    click(space, "My backup");
    album.shoot(space, "space-selected");
    open(space, "Survey");
    open(space, "Plans");
    click(space, "sheet-1.dgn");
    album.shoot(space, "space-folder");
    peer.expect("GET", listProjects, answerLate(reply(ownProjects)));
    const QByteArray refusal = R"({"code":1,"msg":"Not now / \u7a0d\u540e\u518d\u8bd5"})";
    for (const QByteArray source : {"Survey", "Host"})
        peer.expect("GET",
            "/project/cloudProjectShare/getProjectBySoftId?sourceClient=" + source + "&targetClient=Host",
            behaviour::answer(refusal));
    peer.expect("GET", "/project/cloudProjectShare/getByProject?projectId=9&sourceClient=Host",
        behaviour::answer(refusal));
    album.shootWaiting(space, tr("Refresh"), "space-waiting");
    album.shoot(space, "space-partly-loaded");
    open(space, "Survey");
    open(space, "Plans");
    album.shoot(space, "space-empty-folder");
}

void shootShares(const Album& album, DlgMyCloudSpace& space)
{
    const auto tr = [](const char* text) { return CloudShareTabWidget::tr(text); };
    space.findChild<QTabWidget*>()->setCurrentIndex(1);
    album.shoot(space, "share-code");
    album.shootBox(space, tr("Share"), "share-code-prompt");
    const auto modes = space.findChildren<QRadioButton*>();
    modes[1]->click();
    space.findChildren<QTableWidget*>()[0]->cellWidget(0, 0)->findChild<QCheckBox*>()->setChecked(true);
    album.shoot(space, "share-friends");
    modes[2]->click();
    album.shoot(space, "share-groups");
}

void shootEmpty(const Album& album, ScriptedPeer& peer, CloudFileManger& client)
{
    expectGet(peer, listFriends, "[]");
    expectGet(peer, listGroups, "[]");
    CloudShareTabWidget share(&client, QString(), QString(), {{"dwg", "1"}}, QGuiApplication::clipboard(),
        QString(), "li.hua", nullptr);
    share.setWindowTitle(DlgMyCloudSpace::tr("Share"));
    share.findChildren<QRadioButton*>()[1]->click();
    album.shoot(share, "share-friends-empty");
    expectGet(peer, listFriends, "[]");
    AddressBookManageDlg book(&client, nullptr);
    album.shoot(book, "book-empty");
    expectGet(peer, listProjects, "[]");
    CloudFileManger::ShareProjectInfo chosen;
    ChoiceCloudProjectDlg chooser(&client, &chosen, QString(), QString(), nullptr);
    album.shoot(chooser, "chooser-empty");
}

void shootManagement(const Album& album, ScriptedPeer& peer, CloudFileManger& client)
{
    expectGet(peer, listFriends, friends);
    AddressBookManageDlg book(&client, nullptr);
    bringUp(book);
    book.findChild<QTableWidget*>()->selectRow(0);
    album.shoot(book, "book");
    album.shootBox(book, AddressBookManageDlg::tr("Delete"), "book-question");
    AddAltAccountDlg entry(nullptr);
    entry.setWindowTitle(AddressBookManageDlg::tr("Change"));
    entry.startFrom("Carol", "carol", "Harbour works");
    album.shoot(entry, "book-change");

    expectGroups(peer);
    GroupManageDlg manage(&client, QGuiApplication::clipboard(), "li.hua", nullptr);
    bringUp(manage);
    auto* tree = manage.findChild<QTreeView*>();
    const QAbstractItemModel* items = tree->model();
    tree->setCurrentIndex(items->index(0, 0, items->index(0, 0)));
    album.shoot(manage, "groups");
    expectGet(peer, listMembers + "3", surveyors);
    album.shootBox(manage, GroupManageDlg::tr("Delete the group"), "groups-question");
    expectGet(peer, listMembers + "3", surveyors);
    expectGet(peer, "/project/cloudProjectGroupUser/getInviteCode?groupId=3", R"("K7QX-2M")");
    album.shootBox(manage, GroupManageDlg::tr("Generating invitation codes"), "groups-code");
    expectGet(peer, listMembers + "3", surveyors);
    peer.expect("GET", "/project/cloudProjectGroupUser/getInviteCode?groupId=3",
        behaviour::answer(R"({"code":1,"msg":"Not now / \u7a0d\u540e\u518d\u8bd5"})"));
    album.shootBox(manage, GroupManageDlg::tr("Generating invitation codes"), "groups-failure");
    CreateGroupDlg create(nullptr);
    album.shoot(create, "groups-create");
    JoinGroupDlg join(QGuiApplication::clipboard(), nullptr);
    album.shoot(join, "groups-join");

    expectGet(peer, listProjects, ownProjects);
    CloudFileManger::ShareProjectInfo chosen;
    ChoiceCloudProjectDlg chooser(&client, &chosen, QString(), QString(), nullptr);
    bringUp(chooser);
    chooser.findChild<QTableWidget*>()->cellWidget(1, 0)->findChild<QCheckBox*>()->setChecked(true);
    album.shoot(chooser, "chooser");
    CreateCloudProjectDlg project(nullptr);
    album.shoot(project, "chooser-add");
}

} // namespace

void shootCloudSpace(const Album& album, ScriptedPeer& peer)
{
    CloudFileManger client(
        peer.address(), "token", QString(), "Host", {"Survey"}, ".dat", QString(), QString());
    expectTree(peer);
    expectGet(peer, listFriends, friends);
    expectGet(peer, listGroups, groups);
    DlgMyCloudSpace space(&client, {{"dgn", "2"}, {"dwg", "1"}}, "li.hua", QString(), nullptr);
    shootBrowser(album, peer, space);
    shootShares(album, space);
    shootEmpty(album, peer, client);
    shootManagement(album, peer, client);
}
