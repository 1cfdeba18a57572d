// SPDX-License-Identifier: MIT
#pragma once

#include "net/CloudFailure.h"

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QString>
#include <QVariant>

#include <initializer_list>

namespace tav {

/// The two texts of a request that got no reply to judge.
inline QString connectionTimedOut()
{
    return QStringLiteral("连接超时");
}
inline QString replyUnusable()
{
    return QStringLiteral("返回值解析失败");
}

/// Reads the one JSON object that \a body must be into \a reply; false, with \a reply unchanged, if it is
/// not.
bool readReply(const QByteArray& body, QMap<QString, QVariant>& reply);

} // namespace tav

/// Judges the platform's reply envelope: true when \a reply reports success. Otherwise \a error becomes the
/// text to show, which is the platform's own wherever it sent one; a reply with "status" 400 alone leaves
/// \a error as it was. A transport text that is already in \a error is kept, and \a reply is ignored.
bool checkReply(QMap<QString, QVariant> reply, QString& error);

namespace tav {

/// The kind of failure of \a reply, which was judged to be a failure with the text \a error.
CloudFailure refusalIn(const QMap<QString, QVariant>& reply, const QString& error);

/// The simpler judgement of the account replies: true when "code" is 0 or missing; otherwise \a error becomes
/// "msg".
bool checkCode(const QMap<QString, QVariant>& reply, QString& error);

/// The value of \a key as text; a number arrives as its decimal text, a missing value as the empty one.
QString replyText(const QMap<QString, QVariant>& object, const char* key);

/// The objects in the reply's "data" list that have every one of \a required, neither missing nor null.
QList<QVariantMap> replyList(
    const QMap<QString, QVariant>& reply, std::initializer_list<const char*> required);

} // namespace tav
