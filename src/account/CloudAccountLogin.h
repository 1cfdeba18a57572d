// SPDX-License-Identifier: MIT
#pragma once

#include "net/CloudFailure.h"
#include "tav_cloud_platform_sdk_export.h"

#include <QCoreApplication>
#include <QMap>
#include <QString>
#include <QVariant>

#include <memory>

/// The signed-in user's session with the cloud platform.
///
/// The operations send one request (logout() up to three) and return true on success; after false the reason
/// is in getLastError(). A success leaves the text of the last failure in place, so read it after false only.
/// Reasons are the platform's own texts, "连接超时" (no complete reply within 5000 ms) or "返回值解析失败"
/// (no usable reply).
///
/// getLastFailure() tells the kinds of failure apart; CloudFailure::SignedOut comes from logout() only.
///
/// Threads: any thread may use the session, one thread at a time (the module's dialogs use it on the GUI
/// thread); it needs an application object somewhere, but no event loop of its own. An operation blocks its
/// thread for at most 5000 ms a request, in an event loop that holds user input back but keeps timers,
/// sockets and painting alive. A timer may call in between: each operation is judged by itself, and a token
/// is kept together with the account that it was given to.
///
/// Text arguments are zero-terminated byte strings in the local 8-bit encoding, but for the user name of
/// userLoginAccount(), which is UTF-8; a null pointer counts as empty. Passwords leave the process enciphered
/// only and are never logged.
class TAV_CLOUD_PLATFORM_SDK_EXPORT CloudAccountLogin
{
    Q_DECLARE_TR_FUNCTIONS(CloudAccountLogin)

public:
    /// The one session of this process, made at the first call (from any thread) and alive until the module
    /// unloads.
    static CloudAccountLogin* instance();

    /// Copies are independent: later changes of the session do not reach them. A copy serves to restore the
    /// session by assignment. Only the module destroys sessions, so a copy lives until the process ends.
    CloudAccountLogin(const CloudAccountLogin& other);
    /// Puts the session back as \a other has it.
    CloudAccountLogin& operator=(const CloudAccountLogin& other);

    /// The platform's base address, scheme://host:port, fixed when the module was built.
    QString getUrl() const;
    /// What was typed at the last sign-in, successful or not: user name, phone number or e-mail address.
    QString getMobile() const;
    /// The account name that the platform gave at the last successful sign-in; kept after logout().
    QString getUserName() const;
    /// The access token; kept after logout().
    QString getToken() const;
    /// The refresh token; kept after logout().
    QString getRefreshToken() const;
    /// The reason of the last failure.
    QString getLastError() const;
    /// What kind of failure that was; for cloudFailureText(), or to react to.
    CloudFailure getLastFailure() const;
    /// Whether a user is signed in. A failed sign-in does not sign out who was signed in before.
    bool getLoginState() const;

    /// Signs in with a user name (UTF-8) and a password. The name goes into a form body unescaped, as the
    /// platform expects it. Writes the tokens, the user name and the login state on success; getMobile()
    /// changes either way.
    bool userLoginAccount(const char* userName, const char* password);

    /// \name Codes by SMS and e-mail
    /// The platform sends a code to the number or address given; true when it says that it has sent one. The
    /// number or address goes into the path as it is and must be without "#", "?" and "%".
    /// @{

    /// A code by SMS for signing in or registering.
    bool mobileVerify(const char* phone);
    /// A code by SMS for resetting the password.
    bool mobileVerify2(const char* phone);
    /// A code by e-mail for signing in or registering.
    bool emailVerify(const char* mail);
    /// A code by e-mail for resetting the password.
    bool emailVerify2(const char* mail);

    /// @}

    /// Signs in with a code. An \a account with "@" in it is an e-mail address, any other a phone number.
    /// Both arguments go into the query as they are and must be without "#", "&", "+" and "%". Writes what
    /// userLoginAccount() writes.
    bool phoneLoginAccount(const char* account, const char* code);

    /// Registers an account with a phone number and the code sent to it. Does not sign in. A number that has
    /// an account already fails with the translatable text "The phone number is registered".
    bool registerUser(const char* userName, const char* password, const char* phone, const char* smsCode);

    /// Registers an account with an e-mail address and the code sent to it; otherwise like registerUser(),
    /// its text for an address that has an account already included. The platform names such accounts itself:
    /// \a userName is not sent.
    bool registerUserByMail(
        const char* userName, const char* password, const char* mail, const char* mailCode);

    /// Sets a new password for the account of \a phone (a phone number or an e-mail address), with the code
    /// that the platform sent. Changes nothing in the session.
    bool resetPassword(const char* phone, const char* newPassword, const char* smsCode);

    /// Signs out, after checking the access token and, if it has expired, refreshing it (up to three
    /// requests). When nobody is signed in: false at once, nothing is sent, getLastError() keeps its text,
    /// and getLastFailure() is CloudFailure::SignedOut. Tokens and names are kept; tokens that were refreshed
    /// on the way stay refreshed even if signing out then fails. A check that fails leaves
    /// "error:error_description" as the platform named them in getLastError(), even if signing out then
    /// succeeds.
    bool logout();

private:
    struct Private;
    class Call;

    CloudAccountLogin();
    ~CloudAccountLogin();

    bool verify(const QString& path, const char* target);
    bool registerAccount(const QString& path, const QMap<QString, QVariant>& fields);

    std::shared_ptr<Private> d;
};
