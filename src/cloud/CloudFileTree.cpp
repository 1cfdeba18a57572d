// SPDX-License-Identifier: MIT
#include "cloud/CloudFileManger_p.h"
#include "core/ITreeElement.h"
#include "utilities/AttributeDictionary.h"

namespace {

struct ReleaseDictionary
{
    void operator()(AttributeDictionary* dictionary) const { dictionary_release_instance(dictionary); }
};

/// The attributes of a node, which copies them when it is made.
class Attributes
{
public:
    explicit Attributes(const QString& type) { set("type", type); }
    void set(const char* key, const QString& value)
    {
        dic_set_value(dictionary.get(), key, value.toLocal8Bit().constData());
    }
    const AttributeDictionary* get() const { return dictionary.get(); }

private:
    std::unique_ptr<AttributeDictionary, ReleaseDictionary> dictionary{dictionary_get_instance()};
};

/// Names are zero-terminated: one that contains a NUL would end there. A separator in its place makes it a
/// name that no file can have, so it is never written.
ITreeElement* newNode(QString name, const Attributes& attributes)
{
    name.replace(QChar::Null, '/');
    return tav_tree_element_create_instance(name.toLocal8Bit().constData(), attributes.get(), "");
}

ITreeElement* addNode(ITreeElement* parent, const QString& name, const Attributes& attributes)
{
    ITreeElement* node = newNode(name, attributes);
    parent->addChild(node);
    return node;
}

Attributes fileAttributes(const QString& projectId)
{
    Attributes attributes("1");
    attributes.set("projectId", projectId);
    return attributes;
}

} // namespace

ITreeElement* CloudFileManger::getFileTree()
{
    // The host's client may be destroyed between two requests.
    CloudFileManger client(d);
    const Attributes folder("0");
    ITreeElement* root = newNode("My space", folder);
    ITreeElement* backups = addNode(root, "My backup", folder);

    // The first failure is the one to report; a request that succeeds later would clear it.
    QString error;
    CloudFailure failure = CloudFailure::None;
    const auto listed = [&](bool done) {
        if (!done && failure == CloudFailure::None) {
            error = client.getLastError();
            failure = client.getLastFailure();
        }
        return done;
    };

    if (listed(client.getAllCloudProjectBackup())) {
        for (const ShareProjectInfo& project : client.getAllCloudProjects())
            addNode(addNode(backups, project.projectTitle, folder),
                project.projectTitle + client.d->backupSuffix, fileAttributes(project.id));
    }

    // When a request fails, the projects that this source shared before are kept.
    for (const QString& source : client.getShareSourceSoft())
        listed(client.getShareProjectFromPlatform(source));
    const QString softName = client.getSoftName();
    if (!softName.isEmpty())
        listed(client.getShareProjectFromPlatform(softName));

    // A platform that hangs would cost the time of a request for each project.
    bool hangs = false;
    const auto foreign = client.getForeignCloudProjects();
    for (auto source = foreign.begin(); source != foreign.end(); ++source) {
        ITreeElement* sourceFolder = addNode(root, source.key(), folder);
        for (const ShareProjectInfo& project : source.value()) {
            ITreeElement* projectFolder = addNode(sourceFolder, project.projectTitle, folder);
            QMap<QString, QString> files;
            // This software's own name, not the source's: it is whose view of the project is asked for.
            if (!hangs && !listed(client.getShareProjectInfoById2(softName, project.id, files)))
                hangs = client.getLastFailure() == CloudFailure::TimedOut;
            Attributes attributes = fileAttributes(project.id);
            for (auto file = files.begin(); file != files.end(); ++file) {
                attributes.set("fileId", file.key());
                addNode(projectFolder, file.value(), attributes);
            }
        }
    }
    client.d->lastError = error;
    client.d->lastFailure = failure;
    return root;
}
