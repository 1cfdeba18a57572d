// SPDX-License-Identifier: MIT
#pragma once

#include "tav_cloud_platform_sdk_export.h"

#include "toolkit/Dialog.h"

class PhoneLoginWidget;
class QTabWidget;
class UserNameLoginWidget;

/// Signs in to the cloud platform: by a code sent to a phone or mail box, or by user name and password. Leads
/// to the registration and to the reset of a password.
///
/// It opens on the page for the password, with the latest name filled in and selected, once somebody has
/// signed in there; before that on the page for the code. After a registration or a new password, that
/// account's name is filled in.
///
/// Build a dialog for each sign-in and call exec(). The result is Accepted when the user has signed in, and
/// the session is then in CloudAccountLogin::instance(); otherwise it is Rejected. It is Rejected too when
/// the user closes the dialog while a request runs, even if the platform accepts the sign-in after that: ask
/// CloudAccountLogin::getLoginState() whether somebody is signed in.
///
/// Building it reads the remembered accounts from "./AccountManage.bin", and a sign-in with a password writes
/// them there (enciphered, readable by the owner of the file only); a file that is damaged or cannot be
/// written is ignored without a message. Once finished, the dialog holds no password in clear; shown again,
/// it fills in a remembered one again, without reading the file again.
///
/// GUI thread only. A request blocks for at most 5000 ms: the dialog is disabled, painting and timers go on,
/// and presses and keys meanwhile are dropped, in all windows of the application. Boxes and sub-dialogs then
/// run modally. The dialog and its parent may be destroyed, and the application may quit, meanwhile.
class TAV_CLOUD_PLATFORM_SDK_EXPORT DlgLoginCloundPlatform : public Dialog
{
    Q_OBJECT

public:
    /// \param parent owns the dialog when given
    explicit DlgLoginCloundPlatform(QWidget* parent = nullptr);

protected:
    /// Fills in a remembered password.
    void showEvent(QShowEvent* event) override;
    /// Forgets every password in clear.
    void hideEvent(QHideEvent* event) override;

private slots:
    void _register();
    void _retrievePassword();
    void _login();

private:
    void goOnWithPassword(const QString& userName);
    void loginByCode();
    void loginByPassword();

    QTabWidget* tabs;
    PhoneLoginWidget* phonePage;
    UserNameLoginWidget* passwordPage;
};
