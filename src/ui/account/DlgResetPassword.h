// SPDX-License-Identifier: MIT
#pragma once

#include "tav_cloud_platform_sdk_export.h"

#include "toolkit/Dialog.h"

#include <memory>

class QLineEdit;

namespace tav {
class VerificationCode;
} // namespace tav

/// Sets a new password for the account of a phone number or e-mail address, with a code that the platform
/// sends there. The result is Accepted when the platform has set it, unless the dialog was closed during the
/// request. The session stays as it was, except for its last error and failure.
///
/// GUI thread only. A request blocks for at most 5000 ms: the dialog is disabled, painting and timers go on,
/// and presses and keys meanwhile are dropped. The dialog and its parent may be destroyed, and the
/// application may quit, meanwhile.
class TAV_CLOUD_PLATFORM_SDK_EXPORT DlgResetPassword : public Dialog
{
    Q_OBJECT

public:
    /// \param parent owns the dialog when given
    explicit DlgResetPassword(QWidget* parent = nullptr);
    ~DlgResetPassword() override;

    /// The phone number or e-mail address that was typed.
    QString account() const;

protected:
    /// Forgets the password.
    void hideEvent(QHideEvent* event) override;

private slots:
    void _updateTimeOut();
    void _slotGetVerifyCode();
    void _resetPassword();

private:
    std::unique_ptr<tav::VerificationCode> verification;
    QLineEdit* password;
};
