// SPDX-License-Identifier: MIT
#include "net/ReplyEnvelope.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

namespace tav {

bool readReply(const QByteArray& body, QMap<QString, QVariant>& reply)
{
    QJsonParseError fault;
    const QJsonDocument document = QJsonDocument::fromJson(body, &fault);
    if (fault.error != QJsonParseError::NoError || !document.isObject())
        return false;
    reply = document.object().toVariantMap();
    return true;
}

CloudFailure refusalIn(const QMap<QString, QVariant>& reply, const QString& error)
{
    const bool signedOut =
        reply.value(QStringLiteral("code")).toInt() == 401 || error.startsWith(QStringLiteral("Token失效"));
    return signedOut ? CloudFailure::SignedOut : CloudFailure::Refused;
}

bool checkCode(const QMap<QString, QVariant>& reply, QString& error)
{
    if (reply.value(QStringLiteral("code")).toInt() == 0)
        return true;
    error = replyText(reply, "msg");
    return false;
}

QString replyText(const QMap<QString, QVariant>& object, const char* key)
{
    return object.value(QLatin1String(key)).toString();
}

QList<QVariantMap> replyList(
    const QMap<QString, QVariant>& reply, std::initializer_list<const char*> required)
{
    QList<QVariantMap> items;
    for (const QVariant& element : reply.value(QStringLiteral("data")).toList()) {
        const QVariantMap item = element.toMap();
        if (std::none_of(required.begin(), required.end(),
                [&](const char* key) { return item.value(QLatin1String(key)).isNull(); }))
            items.append(item);
    }
    return items;
}

} // namespace tav

bool checkReply(QMap<QString, QVariant> reply, QString& error)
{
    if (error == tav::connectionTimedOut() || error == tav::replyUnusable())
        return false;

    const int code = reply.value(QStringLiteral("code")).toInt();
    const int status = reply.value(QStringLiteral("status")).toInt();
    const QString message = reply.value(QStringLiteral("msg")).toString();

    if (code == 401 || code == 403 || code == 404) {
        error = QStringLiteral("网络错误:%1(%2)").arg(QString::number(code), message);
        return false;
    }
    // An expired token and a missing project arrive here too; what to do about them is the user's choice.
    if (code == 500 || status == 500 || status == 404) {
        error = message.isEmpty() ? reply.value(QStringLiteral("error")).toString() : message;
        return false;
    }
    if (code == 1) {
        error = message;
        return false;
    }
    // Such a reply carries no text to show.
    if (status == 400)
        return false;
    if (code == 200 || code == 0)
        return true;
    error = message;
    return false;
}
