// SPDX-License-Identifier: MIT
#include "convert/CadConversion.h"

#include "core/Log.h"
#include "net/BuildConstants.h"
#include "net/HttpRunner.h"
#include "net/ReplyEnvelope.h"
#include "net/RequestLog.h"
#include "net/TransferPlan.h"
#include "net/WholeFile.h"

#include <QFileInfo>

using namespace tav;

namespace {

constexpr double timeoutMs = 30000.0;

thread_local CloudFailure lastFailure = CloudFailure::None;

/// The request as the service expects it, including the spaces before "=".
std::unique_ptr<RequestBody> envelope(const QByteArray& operation, const QString& path)
{
    constexpr qint64 limit = 1 << 30; // a drawing that is no larger has a result that fits into memory
    return std::make_unique<RequestBody>(
        "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
        "<soap:Envelope xmlns:xsi= \"http://www.w3.org/2001/XMLSchema-instance\""
        " xmlns:xsd= \"http://www.w3.org/2001/XMLSchema\""
        " xmlns:soap = \"http://schemas.xmlsoap.org/soap/envelope/\">\n"
        "<soap:Body>\n<"
            + operation + " xmlns=\"http://tempuri.org/\">\n<file>",
        path, limit, "</file>\n</" + operation + ">\n</soap:Body>\n</soap:Envelope>");
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

/// The service's \a operation on the drawing at \a inPath, whose result goes to \a outPath.
TransferPlan conversion(const QByteArray& operation, const QString& inPath, const QString& outPath,
    const CloudTransferOptions& options)
{
    TransferPlan plan;
    plan.result.filePath = inPath;
    plan.request = [=] {
        return HttpRequest{"POST", conversionAddress() + "/NrvConRnx.asmx",
            {{"Content-Type", "text/xml; charset=utf-8"},
                {"SOAPAction", QByteArray("http://tempuri.org/" + operation)}},
            envelope(operation, inPath), std::make_unique<SoapReader>(), timeoutMs, inPath, options};
    };
    plan.judge = [outPath](ReplyReader& reader, TransferResult& result) {
        result.report = static_cast<SoapReader&>(reader).report;
        if (result.failure == CloudFailure::Unusable)
            result.failure = CloudFailure::NotConverted;
        if (result.failure != CloudFailure::None)
            return;
        const QByteArray drawing = decoded(std::move(static_cast<SoapReader&>(reader).text));
        if (drawing.isEmpty()) { // never written over a good file
            qCWarning(cloudLog) << "the result of the conversion is not whole";
            result.failure = CloudFailure::NotConverted;
            result.error = replyUnusable();
        } else if (writeWholeFile(outPath, drawing)) {
            result.filePath = outPath;
        } else {
            result.failure = CloudFailure::NotWritten;
            qCWarning(cloudLog) << "the result of the conversion could not be written";
        }
    };
    return plan;
}

/// Where dgn2Dwg() puts the result of \a path.
QString dwgPath(const QString& path, const QString& outLocation)
{
    if (outLocation.isEmpty())
        return QString(path).replace(".dgn", ".dwg");
    return QFileInfo(outLocation).absolutePath() + "/" + QFileInfo(path).baseName() + ".dwg";
}

TransferPlan toDwg(const QString& path, const QString& outLocation, const CloudTransferOptions& options)
{
    return conversion("ConDgn2Dwg", path, dwgPath(path, outLocation), options);
}

TransferPlan toDgn(const QString& inPath, const QString& outPath, const CloudTransferOptions& options)
{
    return conversion("ConDwg2Dgn", inPath, outPath, options);
}

/// Runs \a plan to its end. To the caller, a result that cannot be written is no failure.
bool converted(TransferPlan plan, QString& error, CloudConversionReport* report)
{
    HttpRequest request = plan.request();
    const BusyDialog busy = request.options.progress ? BusyDialog::Hidden : BusyDialog::Shown;
    HttpExchange exchange(std::move(request));
    QString ofExchange;
    runToEnd(exchange, ofExchange, busy);
    plan.conclude(exchange);
    lastFailure = plan.result.failure;
    if (report)
        *report = plan.result.report;
    if (lastFailure == CloudFailure::None || lastFailure == CloudFailure::NotWritten)
        return true;
    error = plan.result.error;
    return false;
}

} // namespace

CloudFailure lastConversionFailure()
{
    return lastFailure;
}

bool dgn2Dwg(QString& path, QString& error, QString outLocation, const CloudTransferOptions& options,
    CloudConversionReport* report)
{
    if (!converted(toDwg(path, outLocation, options), error, report))
        return false;
    path = dwgPath(path, outLocation);
    return true;
}

bool dgn2Dwg(QString& path, QString& error, QString outLocation)
{
    return dgn2Dwg(path, error, outLocation, {});
}

bool dwg2Dgn(QString inPath, QString& error, QString outPath, const CloudTransferOptions& options,
    CloudConversionReport* report)
{
    if (converted(toDgn(inPath, outPath, options), error, report))
        return true;
    SendLogInfo(error.toLocal8Bit().constData(), 0);
    return false;
}

bool dwg2Dgn(QString inPath, QString& error, QString outPath)
{
    return dwg2Dgn(inPath, error, outPath, {});
}

CloudTransferJob* dgn2DwgJob(
    QString path, QString outLocation, const CloudTransferOptions& options, QObject* parent)
{
    return TransferJobs::make(toDwg(path, outLocation, options), parent);
}

CloudTransferJob* dwg2DgnJob(
    QString inPath, QString outPath, const CloudTransferOptions& options, QObject* parent)
{
    return TransferJobs::make(toDgn(inPath, outPath, options), parent);
}
