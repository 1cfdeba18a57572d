// SPDX-License-Identifier: MIT
#include "PublicOperations.h"

#include <QFile>
#include <QRegularExpression>

QStringList publicOperations(const QString& header)
{
    QFile file(QStringLiteral(TAV_SOURCE_DIR "/") + header);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("There is no %s.", qPrintable(header));
    const QString text = QString::fromUtf8(file.readAll());
    const int begin = text.indexOf(QLatin1String("\npublic:"));
    const QString part = text.mid(begin, text.indexOf(QLatin1String("\nprivate:"), begin) - begin);

    QStringList names;
    static const QRegularExpression declaration(
        QStringLiteral("^ *bool (\\w+)\\(([^;]*);"), QRegularExpression::MultilineOption);
    for (auto match = declaration.globalMatch(part); match.hasNext();) {
        const QRegularExpressionMatch found = match.next();
        if (!found.captured(2).endsWith(QLatin1String("const")))
            names.append(found.captured(1));
    }
    return names;
}
