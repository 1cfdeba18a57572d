// SPDX-License-Identifier: MIT
#include "convert/CadConversion.h"

#include "core/Log.h"
#include "net/BuildConstants.h"
#include "net/HttpRunner.h"
#include "net/ReplyEnvelope.h"
#include "net/RequestLog.h"
#include "net/WholeFile.h"

#include <QFile>
#include <QFileInfo>

using namespace tav;

namespace {

constexpr double timeoutMs = 30000.0;

thread_local CloudFailure lastFailure = CloudFailure::None;

/// Appends the drawing at \a path to \a body, in Base64; nothing when it cannot be read.
void appendDrawing(QByteArray& body, const QString& path)
{
    constexpr int block = 3 << 20; // of threes, so that the blocks' texts join to the whole file's
    constexpr qint64 limit = 1 << 30; // its text must fit into one array
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly) || file.size() > limit) {
        qCWarning(cloudLog) << "the drawing cannot be read, or is larger than 1 GiB";
        return;
    }
    const int before = body.size();
    body.reserve(int(before + file.size() / 3 * 4 + 200));
    qint64 done = 0;
    for (QByteArray bytes = file.read(block); !bytes.isEmpty(); bytes = file.read(block)) {
        done += bytes.size();
        body += bytes.toBase64();
    }
    // Half a drawing might convert to half a result.
    if (done != file.size())
        body.truncate(before);
}

/// The request as the service expects it, its odd spaces included.
QByteArray envelope(const QByteArray& operation, const QString& path)
{
    QByteArray body = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
                      "<soap:Envelope xmlns:xsi= \"http://www.w3.org/2001/XMLSchema-instance\""
                      " xmlns:xsd= \"http://www.w3.org/2001/XMLSchema\""
                      " xmlns:soap = \"http://schemas.xmlsoap.org/soap/envelope/\">\n"
                      "<soap:Body>\n<"
        + operation + " xmlns=\"http://tempuri.org/\">\n<file>";
    appendDrawing(body, path);
    return body.append("</file>\n</" + operation + ">\n</soap:Body>\n</soap:Envelope>");
}

/// \a text from Base64, which may be broken into lines; null when it is anything but Base64.
QByteArray decoded(QByteArray text)
{
    for (const char space : {'\r', '\n', ' ', '\t'}) {
        if (text.contains(space))
            text.replace(space, "");
    }
    // The decoder does not mind a text that ends within a group of four; to us it means that something is
    // missing.
    if (text.size() % 4 != 0)
        return QByteArray();
    const auto result =
        QByteArray::fromBase64Encoding(std::move(text), QByteArray::AbortOnBase64DecodingErrors);
    return result ? *result : QByteArray();
}

/// Has the service do \a operation on the drawing at \a inPath.
bool converted(QByteArray& result, QString& error, const QByteArray& operation, const QString& inPath)
{
    const HeaderMap headers{{"Content-Type", "text/xml; charset=utf-8"},
        {"SOAPAction", QByteArray("http://tempuri.org/" + operation)}};
    QByteArray text;
    const bool answered = httpPostSoap(text, error, conversionAddress() + "/NrvConRnx.asmx", headers,
        envelope(operation, inPath), timeoutMs);
    lastFailure = lastTransportFailure();
    if (answered)
        result = decoded(std::move(text));
    if (!result.isEmpty())
        return true;
    if (answered) { // an answer that is no drawing must not become one
        qCWarning(cloudLog) << "the result of the conversion is not whole";
        error = replyUnusable();
    }
    if (answered || lastFailure == CloudFailure::Unusable)
        lastFailure = CloudFailure::NotConverted;
    return false;
}

/// To the caller, a result that cannot be written is no failure.
void writeResult(const QString& path, const QByteArray& result)
{
    if (writeWholeFile(path, result))
        return;
    lastFailure = CloudFailure::NotWritten;
    qCWarning(cloudLog) << "the result of the conversion could not be written";
}

} // namespace

CloudFailure lastConversionFailure()
{
    return lastFailure;
}

bool dgn2Dwg(QString& path, QString& error, QString outLocation)
{
    QByteArray result;
    if (!converted(result, error, "ConDgn2Dwg", path))
        return false;
    if (outLocation.isEmpty())
        path.replace(".dgn", ".dwg");
    else
        path = QFileInfo(outLocation).absolutePath() + "/" + QFileInfo(path).baseName() + ".dwg";
    writeResult(path, result);
    return true;
}

bool dwg2Dgn(QString inPath, QString& error, QString outPath)
{
    QByteArray result;
    if (!converted(result, error, "ConDwg2Dgn", inPath)) {
        SendLogInfo(error.toLocal8Bit().constData(), 0);
        return false;
    }
    writeResult(outPath, result);
    return true;
}
