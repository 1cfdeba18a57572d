// SPDX-License-Identifier: MIT
#include "Tour.h"

#include "Commands.h"
#include "cloud/CloudFileManger.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <functional>

namespace {

bool sameBytes(const QString& path, const QString& otherPath)
{
    QFile file(path);
    QFile other(otherPath);
    if (!file.open(QIODevice::ReadOnly) || !other.open(QIODevice::ReadOnly) || file.size() != other.size())
        return false;
    while (!file.atEnd()) {
        if (file.read(1 << 20) != other.read(1 << 20))
            return false;
    }
    return true;
}

} // namespace

bool tour(const QStringList& arguments)
{
    const QFileInfo file(arguments[0]);
    if (!file.isReadable())
        return failed("Tour", file.filePath() + " cannot be read");
    const QTemporaryDir folder;
    const QString copy = folder.filePath(file.fileName());

    CloudFileManger client = clientOn();
    const auto narrate = [&](const QString& what, const std::function<bool()>& run) {
        return step(true, what, run,
            [&] { return cloudFailureText(client.getLastFailure(), client.getLastError()); });
    };
    return narrate("Create the cloud project \"" + file.completeBaseName() + "\"",
               [&] { return client.AddCloudProInfo(file.completeBaseName(), "Made by the tour"); })
        && narrate(QStringLiteral("Back %1 up (%2 bytes)").arg(file.fileName()).arg(file.size()),
            [&] { return client.BackupCloudProFile(file.filePath()); })
        && narrate("List the projects and find it",
            [&] {
                return client.getAllCloudProjectBackup()
                    && client.getAllCloudProjects().contains(client.getProjectId());
            })
        && narrate(
            "Download the backup", [&] { return client.DownloadCloudProFile(client.getProjectId(), copy); })
        && step(
            true, "Compare: the same, byte for byte", [&] { return sameBytes(file.filePath(), copy); },
            [] { return QStringLiteral("what came back differs"); });
}
