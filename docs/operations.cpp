// SPDX-License-Identifier: MIT
// An example of each operation: the reference shows the lines between two marks of its name, and the tests
// compile them. The target "reference" fails if an operation has no example.
#include "account/CloudAccountLogin.h"
#include "cloud/CloudFileManger.h"
#include "convert/CadConversion.h"
#include "core/ITreeElement.h"
#include "net/CloudQuery.h"
#include "net/CloudTransferJob.h"
#include "ui/CloudTransferWindow.h"
#include "ui/Translation.h"
#include "ui/account/DlgLoginCloundPlatform.h"
#include "ui/account/DlgLogoutCloundPlatform.h"
#include "ui/account/DlgResetPassword.h"
#include "ui/cloudspace/DlgMyCloudSpace.h"

#include <QLocale>
#include <QPointer>
#include <QWidget>

namespace host {

// To be written by the host.
void say(const QString& text);
void open(const QString& path);
void show(const QString& name, const QString& detail);

void failed(CloudAccountLogin* session)
{
    say(cloudFailureText(session->getLastFailure(), session->getLastError()));
}

void failed(const CloudFileManger& client)
{
    //! [cloudFailureText]
    say(cloudFailureText(client.getLastFailure(), client.getLastError()));
    if (client.getLastFailure() == CloudFailure::SignedOut)
        say("Please sign in again.");
    //! [cloudFailureText]
}

void account(
    const QByteArray& password, const QByteArray& phone, const QByteArray& mail, const QByteArray& code)
{
    //! [CloudAccountLogin]
    CloudAccountLogin* session = CloudAccountLogin::instance();
    if (session->getLoginState())
        say(session->getUserName() + " is signed in at " + session->getUrl());
    //! [CloudAccountLogin]

    //! [userLoginAccount]
    if (!session->userLoginAccount("alice", password)) // the password in the local 8-bit encoding
        return failed(session);
    //! [userLoginAccount]

    //! [mobileVerify]
    if (session->mobileVerify(phone))
        say("A code is on its way to your phone.");
    //! [mobileVerify]
    //! [emailVerify]
    if (session->emailVerify(mail))
        say("A code is on its way to your mail box.");
    //! [emailVerify]
    //! [phoneLoginAccount]
    if (!session->phoneLoginAccount(phone, code)) // or a mail address: whatever has an "@" in it
        return failed(session);
    //! [phoneLoginAccount]

    //! [registerUser]
    // After mobileVerify(phone), with the code that came.
    if (session->registerUser("alice", password, phone, code))
        session->userLoginAccount("alice", password);
    //! [registerUser]
    //! [registerUserByMail]
    // After emailVerify(mail). The account is called by its mail address.
    if (session->registerUserByMail("alice", password, mail, code))
        session->userLoginAccount(mail, password);
    //! [registerUserByMail]

    //! [mobileVerify2]
    if (!session->mobileVerify2(phone)) // for resetPassword() only
        return failed(session);
    //! [mobileVerify2]
    //! [emailVerify2]
    if (!session->emailVerify2(mail)) // for resetPassword() only
        return failed(session);
    //! [emailVerify2]
    //! [resetPassword]
    // After mobileVerify2(phone) or emailVerify2(mail).
    if (session->resetPassword(phone, password, code))
        say("Please sign in with the new password.");
    //! [resetPassword]

    //! [logout]
    if (!session->logout())
        failed(session);
    //! [logout]
}

void projects(const QString& drawing, const QString& target)
{
    //! [CloudFileManger]
    // After a sign-in; build a new one after the next.
    CloudAccountLogin* session = CloudAccountLogin::instance();
    CloudFileManger client(session->getUrl(), session->getToken(), "", "YourHost", {}, ".dgn", "", "");
    //! [CloudFileManger]

    //! [AddCloudProInfo]
    if (client.AddCloudProInfo("Survey", "North field"))
        say("Created as " + client.getProjectId()); // which is the current project now
    //! [AddCloudProInfo]
    //! [CloudTransferJob]
    CloudTransferOptions patient;
    patient.limit = CloudTransferOptions::Limit::LastByte;
    patient.limitMs = 30000;
    client.setTransferOptions(patient);

    CloudTransferJob* job = client.backupJob(drawing);
    QObject::connect(job, &CloudTransferJob::progressed, [](const CloudTransferProgress& progress) {
        say(QStringLiteral("%1 of %2 bytes").arg(progress.bytesDone).arg(progress.bytesTotal));
    });
    QObject::connect(job, &CloudTransferJob::finished, [job](bool done) {
        say(done ? "Backed up." : cloudFailureText(job->failure(), job->errorText()));
        job->deleteLater();
    });
    job->start();
    //! [CloudTransferJob]

    //! [BackupCloudProFile]
    if (!client.BackupCloudProFile(drawing)) // replaces the backup that the current project has
        failed(client);
    //! [BackupCloudProFile]
    //! [getAllCloudProjectBackup]
    if (client.getAllCloudProjectBackup())
        for (const CloudFileManger::ShareProjectInfo& project : client.getAllCloudProjects())
            show(project.projectTitle, project.id);
    //! [getAllCloudProjectBackup]
    //! [DownloadCloudProFile]
    const QString id = client.getAllCloudProjects().firstKey();
    client.setProjectID(id); // a download needs a current project, whichever it is
    if (client.DownloadCloudProFile(id, target))
        open(target);
    //! [DownloadCloudProFile]
}

void sharing(CloudFileManger& client, const QString& drawing, const QString& target)
{
    //! [UploadCloudShareFile2]
    int logicalId = 0;
    if (!client.UploadCloudShareFile2("dgn", "1", drawing, logicalId)) // into the current project
        return failed(client);
    //! [UploadCloudShareFile2]
    //! [CloudShareAnonymous]
    QString code;
    if (client.CloudShareAnonymous(QString::number(logicalId), code, 24)) // after UploadCloudShareFile2()
        say("For 24 hours, whoever has this code gets the drawing: " + code);
    //! [CloudShareAnonymous]
    //! [CloudShareToAccount]
    if (!client.CloudShareToAccount("bob,carol", QString::number(logicalId), 24)) // the accounts first
        failed(client);
    //! [CloudShareToAccount]
    //! [CloudShareToGroup]
    QList<CloudFileManger::CloudGroupInfo> groups;
    if (client.SearchGroup(groups) && !groups.isEmpty())
        client.CloudShareToGroup(groups.first().id, QString::number(logicalId), 24);
    //! [CloudShareToGroup]

    //! [ExtractByCode]
    if (!client.ExtractByCode(cloudQueryValue(code), QString()))
        failed(client);
    //! [ExtractByCode]
    //! [getShareProjectFromPlatform]
    if (client.getShareProjectFromPlatform("OtherHost"))
        for (const CloudFileManger::ShareProjectInfo& project : client.getForeignCloudProjects()["OtherHost"])
            show(project.projectTitle, project.description);
    //! [getShareProjectFromPlatform]
    //! [getShareProjectInfoById2]
    QMap<QString, QString> files; // names by logical id
    const QString project = client.getForeignCloudProjects()["OtherHost"].firstKey();
    if (client.getShareProjectInfoById2(client.getSoftName(), project, files))
        for (auto file = files.cbegin(); file != files.cend(); ++file)
            show(file.value(), file.key());
    //! [getShareProjectInfoById2]
    //! [DownloadCloudShareFile]
    if (client.DownloadCloudShareFile(files.firstKey(), target)) // an id of getShareProjectInfoById2()
        open(target);
    //! [DownloadCloudShareFile]
}

void people(CloudFileManger& client)
{
    //! [SearchAddressBookList]
    QList<CloudFileManger::CloudAddressBookInfo> friends;
    if (client.SearchAddressBookList(friends))
        for (const CloudFileManger::CloudAddressBookInfo& one : friends)
            show(one.friendRemark, one.friendUser);
    //! [SearchAddressBookList]
    //! [AddToAddressBook]
    if (!client.AddToAddressBook("13800000002", "Bob", "Surveys Ltd"))
        failed(client);
    //! [AddToAddressBook]
    //! [DelFromAddressBook]
    if (!friends.isEmpty() && !client.DelFromAddressBook(friends.first().id))
        failed(client);
    //! [DelFromAddressBook]
}

void groups(CloudFileManger& client, const QString& typed)
{
    //! [CreateGroup]
    if (!client.CreateGroup("Site office"))
        failed(client);
    //! [CreateGroup]
    //! [SearchGroup]
    QList<CloudFileManger::CloudGroupInfo> groups;
    if (client.SearchGroup(groups))
        for (const CloudFileManger::CloudGroupInfo& group : groups)
            show(group.groupName, group.createUser);
    //! [SearchGroup]
    const QString id = groups.first().id;
    //! [GetInviteCode]
    QString code;
    if (client.GetInviteCode(id, code)) // the id of a group of one's own
        say("Whoever types this joins: " + code);
    //! [GetInviteCode]
    //! [InviteToGroup]
    if (!client.InviteToGroup(cloudQueryValue(typed))) // by the one who was given the code
        failed(client);
    //! [InviteToGroup]
    //! [SearchGroupMember]
    QVector<CloudFileManger::CloudGroupMemberInfo> members;
    if (client.SearchGroupMember(id, members))
        for (const CloudFileManger::CloudGroupMemberInfo& member : members)
            show(member.username, member.adminFlag ? "manager" : "");
    //! [SearchGroupMember]
    //! [RemoveGroupMember]
    if (!client.RemoveGroupMember(id, "bob,carol"))
        failed(client);
    //! [RemoveGroupMember]
    //! [OutGroup]
    if (!client.OutGroup(id)) // of somebody else's
        failed(client);
    //! [OutGroup]
    //! [deleteGroup]
    if (!client.deleteGroup(id)) // of one's own
        failed(client);
    //! [deleteGroup]
}

void software(CloudFileManger& client)
{
    //! [updateSoftwareSupportType]
    if (!client.updateSoftwareSupportType("Drawing", "dgn", ".dgn", "A DGN V7 drawing"))
        failed(client);
    //! [updateSoftwareSupportType]
    //! [updateSoftwareAdaptationType]
    if (!client.updateSoftwareAdaptationType(
            "1", "OtherHost")) // OtherHost takes files of type 1 from YourHost
        failed(client);
    //! [updateSoftwareAdaptationType]
    //! [getSoftwareSupportType]
    if (!client.getSoftwareSupportType()) // needs a current project
        failed(client);
    //! [getSoftwareSupportType]
    //! [getSoftwareAdaptationType]
    if (!client.getSoftwareAdaptationType()) // needs a current project
        failed(client);
    //! [getSoftwareAdaptationType]
}

//! [getFileTree]
void list(const ITreeElement& folder, int depth)
{
    for (const ITreeElement* node = folder.firstChild(); node; node = node->nextSibling()) {
        const QString name = QString::fromLocal8Bit(node->name());
        const bool isFile = qstrcmp(node->properties().value("type"), "1") == 0;
        show(QString(depth, ' ') + name, isFile ? node->properties().value("projectId") : "");
        list(*node, depth + 1);
    }
}

void listCloud(CloudFileManger& client)
{
    ITreeElement* space = client.getFileTree(); // never null
    list(*space, 0);
    tav_tree_element_release_instance(space);
    if (client.getLastFailure() != CloudFailure::None)
        failed(client); // and so something is missing
}
//! [getFileTree]

void conversion(QWidget* window)
{
    //! [dgn2Dwg]
    QString path = "/plans/survey.dgn";
    QString error;
    if (!dgn2Dwg(path, error, "/converted/")) // a folder, for its trailing slash; "" for beside the drawing
        return say(cloudFailureText(lastConversionFailure(), error));
    open(path); // "/converted/survey.dwg"
    //! [dgn2Dwg]

    //! [dwg2Dgn]
    CloudConversionReport report;
    if (!dwg2Dgn("/plans/site.dwg", error, "/converted/site.dgn", {}, &report))
        say(cloudFailureText(lastConversionFailure(), error) + ' ' + report.refusal);
    else if (!report.leftOut.isEmpty())
        say("Without " + report.leftOut.join(", "));
    //! [dwg2Dgn]

    //! [runCloudTransfer]
    CloudTransferOptions patient;
    patient.limit = CloudTransferOptions::Limit::LastByte;
    patient.limitMs = 30000;
    const std::unique_ptr<CloudTransferJob> job(
        dwg2DgnJob("/plans/site.dwg", "/converted/site.dgn", patient));
    if (!runCloudTransfer(*job, window, "Converting site.dwg...")
        && job->failure() != CloudFailure::Cancelled)
        say(cloudFailureText(job->failure(), job->errorText()));
    //! [runCloudTransfer]

    //! [lastConversionFailure]
    if (lastConversionFailure()
        == CloudFailure::NotWritten) // dgn2Dwg() and dwg2Dgn() return true all the same
        say("There is no room for the converted drawing, or no such folder.");
    //! [lastConversionFailure]
}

void query(CloudFileManger& client, const QString& typed)
{
    //! [cloudQueryValue]
    if (!client.ExtractByCode(cloudQueryValue(typed), QString())) // whatever was typed, it stays one code
        failed(client);
    //! [cloudQueryValue]
}

void dialogs(QWidget* window)
{
    //! [installCloudPlatformTranslation]
    installCloudPlatformTranslation(QLocale::system()); // before the first dialog
    //! [installCloudPlatformTranslation]

    //! [DlgLoginCloundPlatform]
    DlgLoginCloundPlatform login(window);
    login.exec();
    if (CloudAccountLogin::instance()->getLoginState())
        say("Hello, " + CloudAccountLogin::instance()->getUserName());
    //! [DlgLoginCloundPlatform]

    //! [DlgResetPassword]
    DlgResetPassword reset(window);
    if (reset.exec() == QDialog::Accepted)
        say(reset.account() + " has a new password");
    //! [DlgResetPassword]

    //! [DlgLogoutCloundPlatform]
    DlgLogoutCloundPlatform logout(window);
    logout.exec();
    if (!CloudAccountLogin::instance()->getLoginState())
        say("Nobody is signed in");
    //! [DlgLogoutCloundPlatform]
}

void cloudSpace(CloudFileManger& client, QWidget* window)
{
    //! [DlgMyCloudSpace]
    QPointer<QWidget> alive(window); // may be destroyed while the dialog is built
    auto* space = new DlgMyCloudSpace(
        &client, {{"dgn", "1"}, {"dwg", "2"}}, CloudAccountLogin::instance()->getUserName(), "", window);
    if (!alive)
        return delete space;
    space->setAttribute(Qt::WA_DeleteOnClose);
    space->open();
    //! [DlgMyCloudSpace]
}

} // namespace host
