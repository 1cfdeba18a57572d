// SPDX-License-Identifier: MIT
#pragma once

#include "tav_cloud_platform_sdk_export.h"

#include "toolkit/Dialog.h"

/// Shows who was signed in when the dialog was built, and offers to sign out. Build it while somebody is
/// signed in. The result is Accepted when the user has signed out; it is Rejected when the dialog was closed
/// during the request, even if that succeeds: ask CloudAccountLogin::getLoginState().
///
/// GUI thread only. Signing out blocks for up to three requests of at most 5000 ms each: the dialog is
/// disabled, painting and timers go on, and presses and keys meanwhile are dropped. The dialog and its
/// parent may be destroyed, and the application may quit, meanwhile.
class TAV_CLOUD_PLATFORM_SDK_EXPORT DlgLogoutCloundPlatform : public Dialog
{
    Q_OBJECT

public:
    /// \param parent owns the dialog when given
    explicit DlgLogoutCloundPlatform(QWidget* parent = nullptr);

private slots:
    void _logout();
};
