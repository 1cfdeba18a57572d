// SPDX-License-Identifier: MIT
#include "account/CloudAccountLogin.h"

#include "account/AccessToken.h"
#include "crypto/AccountCipher.h"
#include "net/BuildConstants.h"
#include "net/HttpRunner.h"
#include "net/ReplyEnvelope.h"

namespace {

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
    return sent && checkCode(reply, lastError);
}

/// Takes over what a token reply says of the session.
void CloudAccountLogin::signIn(const QMap<QString, QVariant>& reply)
{
    loginState = true;
    token = replyText(reply, "access_token");
    refreshToken = replyText(reply, "refresh_token");
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
                      body.toLocal8Bit(), platformTimeoutMs),
            reply))
        return false;
    signIn(reply);
    return true;
}

/// Asks for a code to be sent to \a target. Its own reply fields: "code" must be there and 0, "data" must not
/// be false.
bool CloudAccountLogin::verify(const QString& path, const char* target)
{
    ResultMap reply;
    if (!httpGet(reply, lastError, url + path + QString::fromLocal8Bit(target), {}, platformTimeoutMs))
        return false;
    if (reply.value(QStringLiteral("code"), 1).toInt() == 0
        && reply.value(QStringLiteral("data"), true).toBool())
        return true;
    lastError = replyText(reply, "msg");
    return false;
}

bool CloudAccountLogin::mobileVerify(const char* phone)
{
    return verify("/admin/mobile/", phone);
}

bool CloudAccountLogin::mobileVerify2(const char* phone)
{
    return verify("/admin/mobile/reset/", phone);
}

bool CloudAccountLogin::emailVerify(const char* mail)
{
    return verify("/admin/mail/", mail);
}

bool CloudAccountLogin::emailVerify2(const char* mail)
{
    return verify("/admin/mail/reset/", mail);
}

bool CloudAccountLogin::phoneLoginAccount(const char* account, const char* code)
{
    mobile = QString::fromLocal8Bit(account);
    const QString kind = mobile.contains('@') ? "MAIL@" : "SMS@";
    const QString query =
        "mobile=" + kind + mobile + "&code=" + QString::fromLocal8Bit(code) + "&grant_type=mobile";
    ResultMap reply;
    if (!accepted(httpPost(reply, lastError, url + "/auth/mobile/token/sms?" + query,
                      {{"Authorization", clientCredential()}}, QByteArray(), platformTimeoutMs),
            reply))
        return false;
    signIn(reply);
    password = reply.value(QStringLiteral("user_info")).toMap().value(QStringLiteral("password")).toString();
    return true;
}

bool CloudAccountLogin::registered(const QString& path, const QMap<QString, QVariant>& fields)
{
    ResultMap reply;
    const bool sent = httpPostMultipart(reply, lastError, url + path, {{"Authorization", clientCredential()}},
        fields, QString(), platformTimeoutMs);
    if (accepted(sent, reply))
        return true;
    // The platform's database speaks here; say what it means. The text is the same for an e-mail address.
    if (sent && lastError.contains(QLatin1String("Duplicate entry")))
        lastError = tr("The phone number is registered");
    return false;
}

bool CloudAccountLogin::registerUser(
    const char* name, const char* passwordText, const char* phone, const char* smsCode)
{
    return registered("/admin/api/user",
        {{"username", QString::fromLocal8Bit(name)}, {"password", enciphered(passwordText)},
            {"phone", QString::fromLocal8Bit(phone)}, {"smscode", QString::fromLocal8Bit(smsCode)}});
}

bool CloudAccountLogin::registerUserByMail(
    const char*, const char* passwordText, const char* mail, const char* mailCode)
{
    // No user name: the platform gives such accounts one.
    return registered("/admin/api/user/mail/register",
        {{"password", enciphered(passwordText)}, {"mail", QString::fromLocal8Bit(mail)},
            {"mailCode", QString::fromLocal8Bit(mailCode)}});
}

bool CloudAccountLogin::resetPassword(const char* phone, const char* newPassword, const char* smsCode)
{
    const QByteArray body = QByteArray("phone=") + phone
        + "&password=" + formValue(enciphered(newPassword)).toLatin1() + "&smscode=" + smsCode;
    ResultMap reply;
    return accepted(httpPost(reply, lastError, url + "/admin/api/user/resetpw",
                        {{"Authorization", clientCredential()}}, body, platformTimeoutMs),
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
                      {{"Authorization", "Bearer " + token}}, platformTimeoutMs),
            reply))
        return false;
    loginState = false;
    return true;
}
