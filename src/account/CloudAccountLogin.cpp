// SPDX-License-Identifier: MIT
#include "account/CloudAccountLogin.h"

#include "account/AccessToken.h"
#include "crypto/AccountCipher.h"
#include "net/BuildConstants.h"
#include "net/HttpRunner.h"

namespace {

constexpr double timeoutMs = 5000.0;

QString enciphered(const char* password)
{
    return aesEncryptText(QString::fromLocal8Bit(password), accountCipherKey(), accountCipherKey());
}

/// Base64 text as it stands in a form body.
QString formValue(const QString& text)
{
    return QString::fromLatin1(text.toLatin1().toPercentEncoding());
}

} // namespace

CloudAccountLogin* CloudAccountLogin::instance()
{
    static CloudAccountLogin session;
    return &session;
}

CloudAccountLogin::CloudAccountLogin()
    : url(platformAddress())
{
}

QString CloudAccountLogin::getUrl() const
{
    return url;
}

QString CloudAccountLogin::getMobile() const
{
    return mobile;
}

QString CloudAccountLogin::getUserName() const
{
    return userName;
}

QString CloudAccountLogin::getToken() const
{
    return token;
}

QString CloudAccountLogin::getRefreshToken() const
{
    return refreshToken;
}

QString CloudAccountLogin::getLastError() const
{
    return lastError;
}

bool CloudAccountLogin::getLoginState() const
{
    return loginState;
}

/// Whether the platform took the request: \a sent, and answered with code 0 or none.
bool CloudAccountLogin::accepted(bool sent, const QMap<QString, QVariant>& reply)
{
    if (!sent)
        return false;
    if (reply.value(QStringLiteral("code")).toInt() == 0)
        return true;
    lastError = reply.value(QStringLiteral("msg")).toString();
    return false;
}

/// Takes over what a token reply says of the session.
void CloudAccountLogin::signIn(const QMap<QString, QVariant>& reply)
{
    loginState = true;
    token = reply.value(QStringLiteral("access_token")).toString();
    refreshToken = reply.value(QStringLiteral("refresh_token")).toString();
    userName = reply.value(QStringLiteral("user_info")).toMap().value(QStringLiteral("username")).toString();
}

bool CloudAccountLogin::userLoginAccount(const char* name, const char* passwordText)
{
    mobile = QString::fromUtf8(name);
    password = enciphered(passwordText);
    // The user name is sent as it is; the platform expects it so.
    const QString body = "username=" + mobile + "&password=" + formValue(password) + "&scope=server";
    const HeaderMap headers{
        {"Authorization", clientCredential()}, {"Content-Type", "application/x-www-form-urlencoded"}};
    ResultMap reply;
    if (!accepted(httpPost(reply, lastError, url + "/auth/oauth/token?grant_type=password", headers,
                      body.toLocal8Bit(), timeoutMs),
            reply))
        return false;
    signIn(reply);
    return true;
}

bool CloudAccountLogin::resetPassword(const char* phone, const char* newPassword, const char* smsCode)
{
    const QByteArray body = QByteArray("phone=") + phone
        + "&password=" + formValue(enciphered(newPassword)).toLatin1() + "&smscode=" + smsCode;
    ResultMap reply;
    return accepted(httpPost(reply, lastError, url + "/admin/api/user/resetpw",
                        {{"Authorization", clientCredential()}}, body, timeoutMs),
        reply);
}

bool CloudAccountLogin::logout()
{
    if (!loginState)
        return false;
    if (!checkToken(url, token, lastError) && !refreshAccessToken(url, refreshToken, token, lastError))
        return false;
    ResultMap reply;
    if (!accepted(httpDelete(reply, lastError, url + "/auth/token/logout",
                      {{"Authorization", "Bearer " + token}}, timeoutMs),
            reply))
        return false;
    loginState = false;
    return true;
}
