// SPDX-License-Identifier: MIT
#pragma once

#include "tav_cloud_platform_sdk_export.h"

#include "toolkit/Dialog.h"

class QPushButton;

/// Shows who is signed in, as of when the dialog was built, and offers to sign out. The result is Accepted
/// when the user has signed out.
///
/// GUI thread only. Signing out blocks for up to three requests of at most 5000 ms each; input waits,
/// painting and timers go on. The dialog, its parent and the application may go meanwhile.
class TAV_CLOUD_PLATFORM_SDK_EXPORT DlgLogoutCloundPlatform : public Dialog
{
    Q_OBJECT

public:
    /// \param parent owns the dialog when given
    explicit DlgLogoutCloundPlatform(QWidget* parent = nullptr);

private slots:
    void _logout();

private:
    QPushButton* logoutButton;
};
