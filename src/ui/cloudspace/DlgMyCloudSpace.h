// SPDX-License-Identifier: MIT
#pragma once

#include "tav_cloud_platform_sdk_export.h"

#include "toolkit/Dialog.h"

#include <QMap>
#include <QString>

class CloudFileManger;
class CloudSpaceTabWidget;

/// The user's cloud space: a tab to browse and download what is in the cloud, and a tab to share files, by
/// code, with friends and with groups, and to extract what others shared.
///
/// Building the dialog asks the platform for the file tree, the friends and the groups, and so blocks: for
/// the requests of CloudFileManger::getFileTree() and two for the lists, each of at most 5000 ms, and for as
/// long as the user leaves a message box open that tells of a failure. The constructor waits in event loops
/// that hold user input back but keep timers and painting alive; the parent's window, when it is visible, is
/// disabled and says what happens. The parent may be destroyed meanwhile: the dialog then has no parent,
/// fetches nothing more and belongs to the caller. Later requests block in the same way, with the whole
/// window disabled and a note on it that says what it does. The dialog, its parent and the client may be
/// destroyed, and the application may quit, during any of them.
///
/// Names that come from the platform are shown as plain text, and a download is written inside the chosen
/// directory only, whatever an element is called. A download replaces a file only when the user agreed, and
/// only once all of it is on the disk.
///
/// GUI thread only. The host shows the dialog, modal or not.
class TAV_CLOUD_PLATFORM_SDK_EXPORT DlgMyCloudSpace : public Dialog
{
    Q_OBJECT

public:
    /// \param manager the signed-in user's client; not null and not owned. The dialog shares its members, and
    /// keeps working when \a manager is destroyed. Its current project changes when the user chooses a
    /// project to share into or adds one. Without a current project the dialog downloads no backups: see
    /// CloudFileManger::DownloadCloudProFile().
    /// \param fileTypeMap the file types offered for sharing: from the suffix in lower case to the support
    /// type id that the platform's tables have for it
    /// \param ownAccount the user's account name, as CloudAccountLogin::getUserName() gives it. It tells
    /// which groups are the user's own, and receives a copy of what is shared with friends.
    /// \param fourth kept, never read
    /// \param parent owns the dialog when given
    DlgMyCloudSpace(CloudFileManger* manager, QMap<QString, QString> fileTypeMap, QString ownAccount,
        QString fourth, QWidget* parent);
    ~DlgMyCloudSpace() override;

private slots:
    void _onRefreshMyCloudSpace();

private:
    CloudSpaceTabWidget* browser;
};
