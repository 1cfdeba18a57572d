// SPDX-License-Identifier: MIT
#include "Commands.h"

#include "Tour.h"
#include "account/CloudAccountLogin.h"
#include "cloud/CloudFileManger.h"

#include <QElapsedTimer>
#include <QFileInfo>
#include <QTextStream>

const QString softName = QStringLiteral("ConsoleHost");

void say(const QString& line)
{
    QTextStream(stdout) << line << '\n';
}

bool failed(const QString& what, const QString& reason)
{
    QTextStream(stderr) << what << ": " << (reason.isEmpty() ? "the file could not be written" : reason)
                        << '\n';
    return false;
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
    return CloudFileManger(session->getUrl(), session->getToken(), QString(), softName, {softName}, ".bak",
        QString(), projectId);
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
    if (!client.getAllCloudProjectBackup())
        return failed("The projects could not be listed", client.getLastError());
    for (const auto& project : client.getAllCloudProjects())
        say(project.id + "\t" + project.projectTitle);
    return true;
}

bool create(const QStringList& arguments)
{
    CloudFileManger client = clientOn();
    if (!client.AddCloudProInfo(arguments[0], arguments[1]))
        return failed("The project could not be created", client.getLastError());
    say(client.getProjectId());
    return true;
}

bool backUp(const QStringList& arguments)
{
    if (!QFileInfo(arguments[1]).isReadable())
        return failed("Nothing was backed up", arguments[1] + " cannot be read");
    CloudFileManger client = clientOn(arguments[0]);
    if (!client.BackupCloudProFile(arguments[1]))
        return failed("Nothing was backed up", client.getLastError());
    say(arguments[1] + " is backed up");
    return true;
}

bool download(const QStringList& arguments)
{
    CloudFileManger client = clientOn(arguments[0]);
    if (!client.DownloadCloudProFile(arguments[0], arguments[1]))
        return failed("Nothing was downloaded", client.getLastError());
    say("The backup is in " + arguments[1]);
    return true;
}

} // namespace

QVector<Command> commands()
{
    return {
        {"sign-in", {}, "sign in, say as whom, and sign out", whoAmI},
        {"list", {}, "list this software's projects: id and title", list},
        {"create", {"TITLE", "DESCRIPTION"}, "create a project and print its id", create},
        {"backup", {"PROJECT", "FILE"}, "back FILE up into the project", backUp},
        {"download", {"PROJECT", "FILE"}, "download the project's backup to FILE", download},
        {"tour", {"FILE"}, "take FILE through all of the above and compare what comes back", tour, true},
    };
}
