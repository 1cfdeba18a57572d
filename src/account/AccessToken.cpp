// SPDX-License-Identifier: MIT
#include "account/AccessToken.h"

#include "net/BuildConstants.h"
#include "net/HttpRunner.h"
#include "net/ReplyEnvelope.h"

using namespace tav;

bool checkToken(QString baseUrl, QString token, QString& error)
{
    ResultMap reply;
    const QByteArray body = "token=" + token.toLocal8Bit();
    if (!httpPost(reply, error, baseUrl + "/auth/oauth/check_token", {{"Authorization", clientCredential()}},
            body, platformTimeoutMs))
        return false;
    if (reply.contains(QStringLiteral("user_info")))
        return true;
    error = replyText(reply, "error") + ":" + replyText(reply, "error_description");
    return false;
}

bool refreshAccessToken(QString baseUrl, QString& refreshToken, QString& token, QString& error)
{
    ResultMap reply;
    const QByteArray body = "refresh_token=" + refreshToken.toLocal8Bit() + "&scope=server";
    if (!httpPost(reply, error, baseUrl + "/auth/oauth/token?grant_type=refresh_token",
            {{"Authorization", refreshBearer()}}, body, platformTimeoutMs))
        return false;
    if (!checkCode(reply, error))
        return false;
    token = replyText(reply, "access_token");
    refreshToken = replyText(reply, "refresh_token");
    return true;
}
