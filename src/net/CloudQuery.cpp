// SPDX-License-Identifier: MIT
#include "net/CloudQuery.h"

#include <QUrl>

QString cloudQueryValue(const QString& text)
{
    return QString::fromLatin1(QUrl::toPercentEncoding(text));
}
