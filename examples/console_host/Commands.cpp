// SPDX-License-Identifier: MIT
#include "Commands.h"

#include "Tour.h"
#include "account/CloudAccountLogin.h"
#include "cloud/CloudFileManger.h"

#include <QElapsedTimer>
#include <QFileInfo>
#include <QTextStream>

void say(const QString& line)
{
    QTextStream(stdout) << line << '\n';
}

bool failed(const QString& what, const QString& reason)
{
    QTextStream(stderr) << what << ": " << (reason.isEmpty() ? "no reason was given" : reason) << '\n';
    return false;
}

bool succeeded(bool good, const QString& what, const CloudFileManger& client)
{
    return good || failed(what, cloudFailureText(client.getLastFailure(), client.getLastError()));
}

bool step(bool narrated, const QString& what, const std::function<bool()>& run,
    const std::function<QString()>& reason)
{
    QElapsedTimer timer;
    timer.start();
    if (!run())
        return failed(what, reason());
    if (narrated)
        say(QStringLiteral("  %1 %2 ms").arg(what, -56).arg(double(timer.nsecsElapsed()) / 1e6, 8, 'f', 1));
    return true;
}

CloudFileManger clientOn(const QString& projectId)
{
    const CloudAccountLogin* session = CloudAccountLogin::instance();
    return CloudFileManger(
        session->getUrl(), session->getToken(), QString(), "ConsoleHost", {}, ".bak", QString(), projectId);
}

namespace {

bool whoAmI(const QStringList&)
{
    say("Signed in as " + CloudAccountLogin::instance()->getUserName());
    return true;
}

bool list(const QStringList&)
{
    CloudFileManger client = clientOn();
    if (!succeeded(client.getAllCloudProjectBackup(), "The projects could not be listed", client))
        return false;
    for (const auto& project : client.getAllCloudProjects())
        say(project.id + "\t" + project.projectTitle);
    return true;
}

bool create(const QStringList& arguments)
{
    CloudFileManger client = clientOn();
    if (!succeeded(
            client.AddCloudProInfo(arguments[0], arguments[1]), "The project could not be created", client))
        return false;
    say(client.getProjectId());
    return true;
}

bool backUp(const QStringList& arguments)
{
    if (!QFileInfo(arguments[1]).isReadable())
        return failed("Nothing was backed up", arguments[1] + " cannot be read");
    CloudFileManger client = clientOn(arguments[0]);
    return succeeded(client.BackupCloudProFile(arguments[1]), "Nothing was backed up", client);
}

bool download(const QStringList& arguments)
{
    CloudFileManger client = clientOn(arguments[0]);
    return succeeded(
        client.DownloadCloudProFile(arguments[0], arguments[1]), "Nothing was downloaded", client);
}

} // namespace

QVector<Command> commands()
{
    return {
        {"sign-in", {}, "say who is signed in", whoAmI},
        {"ask-code", {"ADDRESS"}, "have a code for signing in or registering sent", askForCode,
            Command::None},
        {"register", {"NAME", "ADDRESS", "CODE"}, "register an account", registerAccount, Command::None},
        {"ask-reset-code", {"ADDRESS"}, "have a code for a new password sent", askForResetCode,
            Command::None},
        {"reset-password", {"ADDRESS", "CODE"}, "set a new password", resetPassword, Command::None},
        {"list", {}, "list this software's projects: id and title", list},
        {"create", {"TITLE", "DESCRIPTION"}, "create a project and print its id", create},
        {"backup", {"PROJECT", "FILE"}, "back FILE up into the project", backUp},
        {"download", {"PROJECT", "FILE"}, "download the project's backup to FILE", download},
        {"share-code", {"PROJECT", "FILE", "HOURS"}, "share FILE and print the extraction code", shareByCode},
        {"share-friends", {"PROJECT", "FILE", "HOURS", "ACCOUNTS"},
            "share FILE with accounts, joined by commas", shareWithFriends},
        {"share-group", {"PROJECT", "FILE", "HOURS", "GROUP"}, "share FILE with a group", shareWithGroup},
        {"extract", {"CODE"}, "add what CODE stands for to one's own space", extract},
        {"tree", {}, "print everything in one's space as a tree", tree},
        {"get", {"PATH", "FILE"}, "download what the tree has at PATH (names joined by /)", get},
        {"friends", {}, "list the address book: id, account, phone, name, company", friends},
        {"add-friend", {"PHONE", "NAME", "COMPANY"}, "add a friend", addFriend},
        {"remove-friend", {"ID"}, "remove a friend", removeFriend},
        {"groups", {}, "list the groups and their members", groups},
        {"create-group", {"NAME"}, "create a group", createGroup},
        {"invite", {"GROUP"}, "print a code by which others join the group", invite},
        {"join", {"CODE"}, "join a group", join},
        {"leave", {"GROUP"}, "leave a group", leave},
        {"convert", {"DRAWING"}, "convert a .dgn or .dwg drawing to the other kind, beside it", convert,
            Command::None},
        {"tour", {"FILE"}, "take FILE through a backup and compare what comes back", tour, Command::Narrated},
    };
}
