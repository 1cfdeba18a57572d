// SPDX-License-Identifier: MIT
#pragma once

#include "net/CloudFailure.h"
#include "net/CloudTransferOptions.h"
#include "tav_cloud_platform_sdk_export.h"

#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>
#include <QVector>

#include <memory>

class ITreeElement;

class CloudFileManger;
class CloudTransferJob;
class QObject;

namespace tav {
std::shared_ptr<CloudFileManger> handleOn(const CloudFileManger* client);
} // namespace tav

/// One signed-in user's cloud space, as one piece of host software works in it on one current cloud project.
///
/// A value: copies are independent and carry everything, the last error and the listed projects included. The
/// base address and the token are copies taken at construction; after a token refresh, build a new client.
///
/// The operations send one request each, once, and return true on success; after false the reason is in
/// getLastError(): the platform's own text, "网络错误:code(text)", "连接超时" (no complete reply within 5000
/// ms) or "返回值解析失败" (no usable reply); empty where the platform gave no reason. getLastFailure() tells
/// the kinds of failure apart. Each operation empties the last error before it sends, and keeps its own at
/// its end. Out-arguments are written on success only; listings append to the caller's container without
/// emptying it.
///
/// The ids, codes and user names that an operation takes for its query are sent as they are; one that may
/// contain "#", "&", "+" or "%" goes through cloudQueryValue() first. Texts in forms, paths and names of
/// files need nothing. What the client itself is made with (software names, the project's id) goes into
/// queries and forms alike and must be without those characters.
///
/// Threads: any thread may use a client, one thread at a time; it needs an application object somewhere, but
/// no event loop of its own. A client that a dialog works with belongs to the GUI thread for as long as the
/// dialog lives; give other threads a copy. An operation blocks its thread for at most 5000 ms a request, the
/// reading and writing of its file not counted, in an event loop
/// that holds user input back but keeps timers, sockets and painting alive.
///
/// So a timer may call in between, and may use the same client: each operation is judged by itself, and the
/// outer one lasts longer by the time of the inner. The client may be destroyed meanwhile: the operation then
/// ends without touching it. Its out-arguments are written at the end, and must live until then.
class TAV_CLOUD_PLATFORM_SDK_EXPORT CloudFileManger
{
public:
    /// One cloud project.
    struct ShareProjectInfo
    {
        QString id; ///< the platform's number for it
        QString projectTitle; ///< the name to show
        QString sourceClient; ///< the software that owns the project
        QString targetClient; ///< the software it was shared to; empty for one's own projects
        QString description; ///< empty for one's own projects
    };

    /// One friend in the address book.
    struct CloudAddressBookInfo
    {
        QString id; ///< of this entry: for DelFromAddressBook()
        QString friendUser; ///< account name
        QString friendPhone; ///< phone number
        QString friendRemark; ///< the name shown for the friend
        QString friendUnit; ///< company
    };

    /// One group that the user belongs to.
    struct CloudGroupInfo
    {
        QString id; ///< the platform's number for it
        QString groupName; ///< the name to show
        QString createUser; ///< account name of the owner
        QString inviteCode; ///< the code that the owner last asked for; empty when there is none
    };

    /// One member of a group.
    struct CloudGroupMemberInfo
    {
        QString id; ///< of this membership
        QString groupId; ///< of the group
        QString username; ///< account name
        qint32 adminFlag = 0; ///< not 0 for the group's manager; 0 where the platform sent none
    };

    /// \param baseAddress   the platform, as CloudAccountLogin::getUrl() gives it
    /// \param accessToken   the bearer token, as CloudAccountLogin::getToken() gives it
    /// \param third         kept and copied, never read
    /// \param softName      the name of the host software, sent as "sourceClient"
    /// \param shareSourceSoft  the names of the software whose shares the file tree lists
    /// \param backupSuffix  appended to a project's title to name its backup file
    /// \param projectName   the current project's name
    /// \param projectId     the current project's id; empty when there is none yet
    ///
    /// With a project id the constructor asks for the two software tables, two requests of at most 5000 ms
    /// each; a failure of the second is left in getLastError(), and the client is usable all the same.
    /// Without one it sends nothing.
    CloudFileManger(QString baseAddress, QString accessToken, QString third, QString softName,
        QStringList shareSourceSoft, QString backupSuffix, QString projectName, QString projectId);
    /// The copy is a client of its own from then on.
    CloudFileManger(const CloudFileManger& other);
    /// Likewise.
    CloudFileManger& operator=(const CloudFileManger& other);
    ~CloudFileManger();

    /// The reason of the last failure; empty after an operation that succeeded.
    QString getLastError() const;
    /// What kind of failure that was; for cloudFailureText(), or to react to.
    CloudFailure getLastFailure() const;
    /// The current project's id; empty when there is none.
    QString getProjectId() const;
    /// The current project's name, as it was given at construction.
    QString getProjectName() const;
    /// The name of the host software, as it was given at construction.
    QString getSoftName() const;
    /// The software whose shares the file tree lists, as it was given at construction.
    QStringList getShareSourceSoft() const;
    /// Makes \a id the current project; sends nothing.
    void setProjectID(QString id);

    /// How the operations that carry a file, and the jobs made from now on, behave: their limit, their
    /// progress, whether a lost download goes on. Kept by copies; without it they behave as documented here.
    /// The cloud-space dialog shows transfers in a window of their own, with a button to cancel, when the
    /// client that it is made with has a limit of CloudTransferOptions::Limit::LastByte.
    void setTransferOptions(const CloudTransferOptions& options);
    /// What setTransferOptions() was given last.
    CloudTransferOptions getTransferOptions() const;

    /// This software's own projects by id, as the last successful getAllCloudProjectBackup() listed them.
    QMap<QString, ShareProjectInfo> getAllCloudProjects() const;
    /// Other software's projects by source client and then by id.
    QMap<QString, QMap<QString, ShareProjectInfo>> getForeignCloudProjects() const;

    /// \name Cloud projects and backups
    /// @{

    /// Creates a cloud project and makes it the current one.
    bool AddCloudProInfo(QString title, QString description);

    /// Uploads the file at \a filePath as the current project's backup, streamed from disk. Without a current
    /// project: false at once, nothing is sent, the last error keeps its text. A file that cannot be read is
    /// announced to the platform without any bytes, and refused there; an empty path sends no file at all,
    /// which the platform refuses too.
    bool BackupCloudProFile(QString filePath);

    /// The same as a job that runs beside everything else; for the caller to start, and to destroy unless
    /// \a parent does. The jobs of the other transfers are alike.
    CloudTransferJob* backupJob(QString filePath, QObject* parent = nullptr) const;

    /// Lists this software's projects; see getAllCloudProjects(). A failure keeps the projects listed before.
    bool getAllCloudProjectBackup();

    /// Downloads the backup of \a projectId to \a savePath, replacing a file there only once the whole body
    /// has been written. The folder must take a new file; what cannot be written (no such folder, an empty
    /// path, a full disk) gives false with an empty last error, and CloudFailure::NotWritten. A platform
    /// refuses a download by its HTTP status: CloudFailure::SignedOut for 401, CloudFailure::Unavailable for
    /// other errors. The body of a 2xx reply is the file, whatever is in it; over https one that does not say
    /// where it ends (by length, chunks or a digest) is refused. Without a current project (not the
    /// argument's): false at once, nothing is sent, the last error keeps its text.
    bool DownloadCloudProFile(QString projectId, QString savePath);
    /// The same as a job.
    CloudTransferJob* backupDownloadJob(QString projectId, QString savePath, QObject* parent = nullptr) const;

    /// @}
    /// \name Sharing and extraction
    /// A file is uploaded first, which gives it a logical id; logical ids are then shared for a number of
    /// hours. Uploading and sharing need a current project; without one: false at once, nothing is sent, the
    /// last error keeps its text. Mind the order of the arguments, which differs between the three ways of
    /// sharing.
    /// @{

    /// Uploads the file at \a filePath into the current project's share area, in the manner of
    /// BackupCloudProFile().
    /// \param typeFlag       the type flag of the file's support type
    /// \param supportTypeId  the id of the file's type in the platform's support table
    /// \param filePath       the file to share
    /// \param logicalId      receives the id to share the file by; 0 where the platform names none
    bool UploadCloudShareFile2(QString typeFlag, QString supportTypeId, QString filePath, int& logicalId);
    /// The same as a job; see CloudTransferJob::logicalId().
    CloudTransferJob* shareUploadJob(
        QString typeFlag, QString supportTypeId, QString filePath, QObject* parent = nullptr) const;
    /// Shares files with whoever knows the code.
    /// \param logicalIds      one id, or several joined by commas
    /// \param extractionCode  receives the code
    /// \param durationHours   hours until the share ends
    bool CloudShareAnonymous(QString logicalIds, QString& extractionCode, int durationHours);
    /// Shares files with the accounts \a userNames (joined by commas) for \a durationHours hours.
    bool CloudShareToAccount(QString userNames, QString logicalIds, int durationHours);
    /// Shares files with the members of the group \a groupId for \a durationHours hours.
    bool CloudShareToGroup(QString groupId, QString logicalIds, int durationHours);
    /// Adds what \a extractionCode stands for to this user's cloud space. \a other is not sent.
    bool ExtractByCode(QString extractionCode, QString other);
    /// Downloads a shared file to \a savePath, in the manner of DownloadCloudProFile(), but without its
    /// guard.
    bool DownloadCloudShareFile(QString logicalId, QString savePath);
    /// The same as a job.
    CloudTransferJob* shareDownloadJob(QString logicalId, QString savePath, QObject* parent = nullptr) const;
    /// Lists the projects that \a sourceClient shares to this software; see getForeignCloudProjects(). A
    /// failure keeps what was listed before, an empty list leaves an empty entry.
    bool getShareProjectFromPlatform(QString sourceClient);
    /// Lists the shared files of a project: adds their names by logical id to \a files.
    /// \param sourceClient the name of this software, whose view of the project is asked for
    /// \param projectId    one that getShareProjectFromPlatform() listed
    /// \param files        receives the names
    bool getShareProjectInfoById2(QString sourceClient, QString projectId, QMap<QString, QString>& files);

    /// @}
    /// \name Address book
    /// @{

    /// Appends the user's friends to \a list, in the platform's order.
    bool SearchAddressBookList(QList<CloudAddressBookInfo>& list);
    /// Adds a friend by phone number or account, with the name to show and the company.
    bool AddToAddressBook(QString friendPhone, QString friendRemark, QString friendUnit);
    /// Removes the friend whose CloudAddressBookInfo::id is \a id.
    bool DelFromAddressBook(QString id);

    /// @}
    /// \name Groups
    /// @{

    /// Creates a group that this user owns.
    bool CreateGroup(QString groupName);
    /// Deletes the group \a id.
    bool deleteGroup(QString id);
    /// Appends the groups that this user belongs to.
    bool SearchGroup(QList<CloudGroupInfo>& groups);
    /// Appends the members of a group.
    bool SearchGroupMember(QString groupId, QVector<CloudGroupMemberInfo>& members);
    /// Asks for a code by which others join the group.
    bool GetInviteCode(QString groupId, QString& inviteCode);
    /// Joins the group that \a inviteCode was made for. Despite the name, this is what the invited user
    /// calls.
    bool InviteToGroup(QString inviteCode);
    /// Leaves a group.
    bool OutGroup(QString groupId);
    /// Removes members from a group; \a usernames are account names joined by commas.
    bool RemoveGroupMember(QString groupId, QString usernames);

    /// @}
    /// \name Which files travel between which software
    /// @{

    /// Asks for the adaptation table of this software. Nothing of it is kept; true means the platform
    /// answered with success. Without a current project: false at once, nothing is sent, the last error keeps
    /// its text.
    bool getSoftwareAdaptationType();
    /// Asks for the support table; otherwise like getSoftwareAdaptationType().
    bool getSoftwareSupportType();
    /// Says that \a targetClient accepts files of \a supportTypeId from this software.
    bool updateSoftwareAdaptationType(QString supportTypeId, QString targetClient);
    /// Describes a file type that this software works with.
    bool updateSoftwareSupportType(
        QString title, QString typeFlag, QString typeSuffix, QString typeDescription);

    /// @}

    /// Everything the user can open from the cloud, as one tree of the host's elements (core/ITreeElement.h)
    /// for the caller to release with tav_tree_element_release_instance(). The root is called "My space";
    /// below it stand the own backups under "My backup", then a folder for each software that shares, in it
    /// one for each project. Every node has the attribute "type" ("0" folder, "1" file); a file has
    /// "projectId", a shared one "fileId" too. Names and attributes are in the local 8-bit encoding; children
    /// of one folder may bear the same name.
    ///
    /// Never null. A request that fails leaves its branch empty, but for a source whose projects were listed
    /// before: it keeps those. getLastError() and getLastFailure() then tell of the first that failed.
    ///
    /// It sends one request for the backups, one for each share source, one for this software itself if it
    /// has a name, and one for each shared project, one after another, each of at most 5000 ms. Once the
    /// files of a project did not come in time, those of the projects behind it are not asked for any more.
    ITreeElement* getFileTree();

private:
    struct Private;
    class Call;
    explicit CloudFileManger(std::shared_ptr<Private> shared);
    friend std::shared_ptr<CloudFileManger> tav::handleOn(const CloudFileManger* client);

    std::shared_ptr<Private> d;
};
