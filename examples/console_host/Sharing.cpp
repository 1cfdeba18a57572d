// SPDX-License-Identifier: MIT
#include "Commands.h"
#include "cloud/CloudFileManger.h"
#include "core/ITreeElement.h"
#include "net/CloudQuery.h"

#include <QFileInfo>

#include <memory>

namespace {

struct ReleaseTree
{
    void operator()(ITreeElement* root) const { tav_tree_element_release_instance(root); }
};

/// Uploads \a file into the client's project; \a id receives the id to share it by.
bool upload(CloudFileManger& client, const QString& file, QString& id)
{
    if (!QFileInfo(file).isReadable())
        return failed("Nothing was shared", file + " cannot be read");
    int logicalId = 0;
    // This host keeps no table of file types, so it names none.
    if (!succeeded(
            client.UploadCloudShareFile2("1", QString(), file, logicalId), "The upload failed", client))
        return false;
    id = QString::number(logicalId);
    return true;
}

void print(const ITreeElement* element, int depth)
{
    say(QString(2 * depth, ' ') + QString::fromLocal8Bit(element->name()));
    for (const ITreeElement* child = element->firstChild(); child; child = child->nextSibling())
        print(child, depth + 1);
}

} // namespace

bool shareByCode(const QStringList& projectFileHours)
{
    CloudFileManger client = clientOn(projectFileHours[0]);
    QString id;
    QString code;
    if (!upload(client, projectFileHours[1], id)
        || !succeeded(
            client.CloudShareAnonymous(id, code, projectFileHours[2].toInt()), "Sharing failed", client))
        return false;
    say(code);
    return true;
}

bool shareWithFriends(const QStringList& projectFileHoursAccounts)
{
    CloudFileManger client = clientOn(projectFileHoursAccounts[0]);
    QString id;
    return upload(client, projectFileHoursAccounts[1], id)
        && succeeded(
            client.CloudShareToAccount(projectFileHoursAccounts[3], id, projectFileHoursAccounts[2].toInt()),
            "Sharing failed", client);
}

bool shareWithGroup(const QStringList& projectFileHoursGroup)
{
    CloudFileManger client = clientOn(projectFileHoursGroup[0]);
    QString id;
    return upload(client, projectFileHoursGroup[1], id)
        && succeeded(client.CloudShareToGroup(projectFileHoursGroup[3], id, projectFileHoursGroup[2].toInt()),
            "Sharing failed", client);
}

bool extract(const QStringList& code)
{
    CloudFileManger client = clientOn();
    return succeeded(
        client.ExtractByCode(cloudQueryValue(code[0]), QString()), "Nothing was extracted", client);
}

bool tree(const QStringList&)
{
    CloudFileManger client = clientOn();
    const std::unique_ptr<ITreeElement, ReleaseTree> root(client.getFileTree());
    print(root.get(), 0);
    return succeeded(client.getLastError().isEmpty(), "Some of it could not be listed", client);
}

bool get(const QStringList& pathFile)
{
    CloudFileManger client = clientOn();
    const std::unique_ptr<ITreeElement, ReleaseTree> root(client.getFileTree());
    const ITreeElement* element = root.get();
    for (const QString& name : pathFile[0].split('/')) {
        element = element->findChild(name.toLocal8Bit().constData());
        if (!element)
            return failed("Nothing was downloaded", "there is no " + name + " on the path");
    }
    const char* fileId = element->properties().value("fileId");
    const char* projectId = element->properties().value("projectId");
    if (!projectId)
        return failed("Nothing was downloaded", "that is a folder");
    if (fileId)
        return succeeded(
            client.DownloadCloudShareFile(fileId, pathFile[1]), "Nothing was downloaded", client);
    client.setProjectID(projectId); // a backup is downloaded by a client on some project
    return succeeded(client.DownloadCloudProFile(projectId, pathFile[1]), "Nothing was downloaded", client);
}
