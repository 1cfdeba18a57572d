// SPDX-License-Identifier: MIT
#include "account/CloudAccountLogin.h"

#include "account/AccessToken.h"
#include "crypto/AccountCipher.h"
#include "net/BuildConstants.h"
#include "net/HttpRunner.h"
#include "net/ReplyEnvelope.h"

using namespace tav;

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

struct TAV_CLOUD_PLATFORM_SDK_NO_EXPORT CloudAccountLogin::Private
{
    QString url;
    QString mobile;
    QString userName;
    QString token;
    QString refreshToken;
    QString password;
    bool loginState = false;
    QString lastError;
    CloudFailure lastFailure = CloudFailure::None;
};

/// One operation while it runs. It holds the members while it waits, and has an error of its own, so that
/// another operation, which a timer of the host may call meanwhile, does not affect its result. Only failures
/// are stored in the session: its last error outlasts a success.
class TAV_CLOUD_PLATFORM_SDK_NO_EXPORT CloudAccountLogin::Call
{
public:
    explicit Call(std::shared_ptr<Private> session)
        : members(std::move(session))
    {
    }
    Private* operator->() const { return members.get(); }

    // Each sends a request and returns whether a usable reply came.
    bool get(const QString& path);
    bool remove(const QString& path, const QString& token);
    bool post(const QString& path, const QByteArray& body, HeaderMap headers = {});
    bool postForm(const QString& path, const QMap<QString, QVariant>& fields);

    /// Whether the reply's code is 0 or missing.
    bool isAccepted();
    /// Stores the tokens and the names of a token reply: \a account is signed in.
    bool signIn(const QString& account, const QString& encipheredPassword);
    bool fail(CloudFailure failure, const QString& text);
    QVariantMap userInfo() const { return reply.value(QStringLiteral("user_info")).toMap(); }

    ResultMap reply;
    QString error;

private:
    bool sent(bool done) { return done || fail(lastTransportFailure(), error); }

    std::shared_ptr<Private> members;
};

bool CloudAccountLogin::Call::get(const QString& path)
{
    return sent(httpGet(reply, error, members->url + path, {}, platformTimeoutMs));
}

bool CloudAccountLogin::Call::remove(const QString& path, const QString& token)
{
    return sent(httpDelete(
        reply, error, members->url + path, {{"Authorization", "Bearer " + token}}, platformTimeoutMs));
}

bool CloudAccountLogin::Call::post(const QString& path, const QByteArray& body, HeaderMap headers)
{
    headers["Authorization"] = clientCredential();
    return sent(httpPost(reply, error, members->url + path, headers, body, platformTimeoutMs));
}

bool CloudAccountLogin::Call::postForm(const QString& path, const QMap<QString, QVariant>& fields)
{
    return sent(httpPostMultipart(reply, error, members->url + path, {{"Authorization", clientCredential()}},
        fields, QString(), platformTimeoutMs));
}

bool CloudAccountLogin::Call::isAccepted()
{
    // Not CloudFailure::SignedOut, whatever the code: a wrong password has the same.
    return checkCode(reply, error) || fail(CloudFailure::Refused, error);
}

bool CloudAccountLogin::Call::signIn(const QString& account, const QString& encipheredPassword)
{
    // Set again: another sign-in may have begun meanwhile, and the token is not that account's.
    members->mobile = account;
    members->password = encipheredPassword;
    members->loginState = true;
    members->token = replyText(reply, "access_token");
    members->refreshToken = replyText(reply, "refresh_token");
    members->userName = replyText(userInfo(), "username");
    return true;
}

bool CloudAccountLogin::Call::fail(CloudFailure failure, const QString& text)
{
    members->lastFailure = failure;
    members->lastError = text;
    return false;
}

CloudAccountLogin* CloudAccountLogin::instance()
{
    static CloudAccountLogin session;
    return &session;
}

CloudAccountLogin::CloudAccountLogin()
    : d(std::make_shared<Private>())
{
    d->url = platformAddress();
}

CloudAccountLogin::CloudAccountLogin(const CloudAccountLogin& other)
    : d(std::make_shared<Private>(*other.d))
{
}

CloudAccountLogin& CloudAccountLogin::operator=(const CloudAccountLogin& other)
{
    if (this != &other)
        *d = *other.d;
    return *this;
}

CloudAccountLogin::~CloudAccountLogin() = default;

QString CloudAccountLogin::getUrl() const
{
    return d->url;
}

QString CloudAccountLogin::getMobile() const
{
    return d->mobile;
}

QString CloudAccountLogin::getUserName() const
{
    return d->userName;
}

QString CloudAccountLogin::getToken() const
{
    return d->token;
}

QString CloudAccountLogin::getRefreshToken() const
{
    return d->refreshToken;
}

QString CloudAccountLogin::getLastError() const
{
    return d->lastError;
}

CloudFailure CloudAccountLogin::getLastFailure() const
{
    return d->lastFailure;
}

bool CloudAccountLogin::getLoginState() const
{
    return d->loginState;
}

bool CloudAccountLogin::userLoginAccount(const char* userName, const char* password)
{
    Call call(d);
    const QString account = QString::fromUtf8(userName);
    const QString cipherText = enciphered(password);
    call->mobile = account;
    call->password = cipherText;
    // The user name is sent as it is; the platform expects it so.
    const QString body = "username=" + account + "&password=" + formValue(cipherText) + "&scope=server";
    return call.post("/auth/oauth/token?grant_type=password", body.toLocal8Bit(),
               {{"Content-Type", "application/x-www-form-urlencoded"}})
        && call.isAccepted() && call.signIn(account, cipherText);
}

/// Asks for a code to be sent to \a target. This reply is judged by rules of its own: "code" must be there
/// and 0, "data" must not be false.
bool CloudAccountLogin::verify(const QString& path, const char* target)
{
    Call call(d);
    if (!call.get(path + QString::fromLocal8Bit(target)))
        return false;
    const bool good = call.reply.value(QStringLiteral("code"), 1).toInt() == 0
        && call.reply.value(QStringLiteral("data"), true).toBool();
    return good || call.fail(CloudFailure::Refused, replyText(call.reply, "msg"));
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
    Call call(d);
    const QString target = QString::fromLocal8Bit(account);
    call->mobile = target;
    const QString kind = target.contains('@') ? "MAIL@" : "SMS@";
    const QString query =
        "mobile=" + kind + target + "&code=" + QString::fromLocal8Bit(code) + "&grant_type=mobile";
    return call.post("/auth/mobile/token/sms?" + query, QByteArray()) && call.isAccepted()
        && call.signIn(target, replyText(call.userInfo(), "password"));
}

bool CloudAccountLogin::registerAccount(const QString& path, const QMap<QString, QVariant>& fields)
{
    Call call(d);
    if (!call.postForm(path, fields))
        return false;
    if (call.isAccepted())
        return true;
    // An error of the platform's database: say what it means. The text is the same for an e-mail address.
    if (call.error.contains(QLatin1String("Duplicate entry")))
        call->lastError = tr("The phone number is registered");
    return false;
}

bool CloudAccountLogin::registerUser(
    const char* userName, const char* password, const char* phone, const char* smsCode)
{
    return registerAccount("/admin/api/user",
        {{"username", QString::fromLocal8Bit(userName)}, {"password", enciphered(password)},
            {"phone", QString::fromLocal8Bit(phone)}, {"smscode", QString::fromLocal8Bit(smsCode)}});
}

bool CloudAccountLogin::registerUserByMail(
    const char*, const char* password, const char* mail, const char* mailCode)
{
    // No user name: the platform gives such accounts one.
    return registerAccount("/admin/api/user/mail/register",
        {{"password", enciphered(password)}, {"mail", QString::fromLocal8Bit(mail)},
            {"mailCode", QString::fromLocal8Bit(mailCode)}});
}

bool CloudAccountLogin::resetPassword(const char* phone, const char* newPassword, const char* smsCode)
{
    Call call(d);
    const QByteArray body = QByteArray("phone=") + phone
        + "&password=" + formValue(enciphered(newPassword)).toLatin1() + "&smscode=" + smsCode;
    return call.post("/admin/api/user/resetpw", body) && call.isAccepted();
}

bool CloudAccountLogin::logout()
{
    Call call(d);
    if (!call->loginState) {
        call->lastFailure = CloudFailure::SignedOut;
        return false;
    }
    // Without a transport failure it is the platform that does not take the token.
    const auto refusal = [] {
        const CloudFailure failure = lastTransportFailure();
        return failure == CloudFailure::None ? CloudFailure::SignedOut : failure;
    };
    QString token = call->token;
    QString refreshToken = call->refreshToken;
    if (!checkToken(call->url, token, call.error)) {
        call.fail(refusal(), call.error); // kept even if the refresh succeeds
        const QString checked = token;
        if (!refreshAccessToken(call->url, refreshToken, token, call.error))
            return call.fail(refusal(), call.error);
        if (call->token == checked) {
            call->token = token;
            call->refreshToken = refreshToken;
        }
    }
    if (!call.remove("/auth/token/logout", token) || !call.isAccepted())
        return false;
    // A timer of the host may have signed somebody else in meanwhile.
    if (call->token == token)
        call->loginState = false;
    return true;
}
