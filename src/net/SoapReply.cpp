// SPDX-License-Identifier: MIT
#include "net/SoapReply.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QXmlStreamReader>

#include <algorithm>
#include <cctype>

namespace tav {

namespace {

constexpr int longestReport = 1 << 20;
constexpr int longestLine = 1000;

QString line(const QString& text)
{
    return text.simplified().left(longestLine);
}

} // namespace

/// Works on bytes and without a parser: the text may be a hundred megabytes, and the service's element is
/// known.
QByteArray conversionResult(QByteArray body)
{
    for (const QByteArray& name :
        {QByteArrayLiteral("ConDgn2DwgResult"), QByteArrayLiteral("ConDwg2DgnResult")}) {
        const auto opening = body.indexOf(name);
        if (opening < 0)
            continue;
        auto begin = opening + name.size();
        // From the next tag on: over a long text, one byte is found faster than a name.
        const auto closing = body.indexOf(name, std::max(begin, body.indexOf('<', begin)));
        if (closing < 0)
            return QByteArray();

        // Between the names stand the end of the opening tag, the text and "</"; either tag may carry more,
        // an attribute or a namespace prefix.
        auto end = body.lastIndexOf("</", closing - 1);
        if (end < begin)
            end = closing - 2;
        if (begin < end && std::isspace(static_cast<unsigned char>(body[begin]))) {
            begin = body.indexOf('>', begin);
            if (begin < 0 || begin >= end)
                return QByteArray();
        }
        ++begin;
        body.truncate(std::max(begin, end));
        return body.remove(0, begin);
    }
    return QByteArray();
}

CloudConversionReport conversionReport(const QByteArray& body, const QByteArray& encodedReport)
{
    CloudConversionReport report;
    QXmlStreamReader xml(body.left(longestReport));
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement)
            continue;
        if (xml.name().endsWith(QLatin1String("Result"))) // of what follows, nothing is for people
            break;
        if (xml.name() == QLatin1String("faultstring"))
            report.refusal = line(xml.readElementText());
        else if (xml.name() == QLatin1String("ConversionReport"))
            report.json = xml.readElementText().toUtf8();
    }
    if (report.json.isEmpty() && encodedReport.size() < longestReport)
        report.json = QByteArray::fromBase64(encodedReport);
    const QJsonDocument document = QJsonDocument::fromJson(report.json);
    if (!document.isObject()) {
        report.json.clear();
        return report;
    }
    report.summary = line(document["summary"].toString());
    const QJsonObject leftOut = document["leftOut"].toObject();
    for (auto kind = leftOut.begin(); kind != leftOut.end(); ++kind)
        report.leftOut += QStringLiteral("%1 %2").arg(kind.value().toInt()).arg(line(kind.key()));
    return report;
}

} // namespace tav
