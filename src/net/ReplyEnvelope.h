// SPDX-License-Identifier: MIT
#pragma once

#include <QMap>
#include <QString>
#include <QVariant>

/// The two texts that a request ends with when there is no reply to judge.
inline QString connectionTimedOut()
{
    return QStringLiteral("连接超时");
}
inline QString replyUnusable()
{
    return QStringLiteral("返回值解析失败");
}

/// Judges the platform's reply envelope: true when \a reply reports success. Otherwise \a error becomes the
/// text to show, which is the platform's own wherever it sent one; a reply with "status" 400 alone leaves \a
/// error as it was. A transport text that already stands in \a error is kept, and the reply is not looked at.
bool checkReply(QMap<QString, QVariant> reply, QString& error);
