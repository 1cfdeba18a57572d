// SPDX-License-Identifier: MIT
#include "account/AccessToken.h"

#include "net/BuildConstants.h"
#include "net/HttpRunner.h"

namespace {

constexpr double timeoutMs = 5000.0;

QString text(const ResultMap& reply, const char* key)
{
    return reply.value(QLatin1String(key)).toString();
}

} // namespace

bool checkToken(QString baseUrl, QString token, QString& error)
{
    ResultMap reply;
    const QByteArray body = "token=" + token.toLocal8Bit();
    if (!httpPost(reply, error, baseUrl + "/auth/oauth/check_token", {{"Authorization", clientCredential()}},
            body, timeoutMs))
        return false;
    if (reply.contains(QStringLiteral("user_info")))
        return true;
    error = text(reply, "error") + ":" + text(reply, "error_description");
    return false;
}

bool refreshAccessToken(QString baseUrl, QString& refreshToken, QString& token, QString& error)
{
    ResultMap reply;
    const QByteArray body = "refresh_token=" + refreshToken.toLocal8Bit() + "&scope=server";
    if (!httpPost(reply, error, baseUrl + "/auth/oauth/token?grant_type=refresh_token",
            {{"Authorization", refreshBearer()}}, body, timeoutMs))
        return false;
    if (reply.value(QStringLiteral("code")).toInt() != 0) {
        error = text(reply, "msg");
        return false;
    }
    token = text(reply, "access_token");
    refreshToken = text(reply, "refresh_token");
    return true;
}
