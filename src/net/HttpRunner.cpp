// SPDX-License-Identifier: MIT
#include "net/HttpRunner.h"

#include "net/ReplyEnvelope.h"
#include "net/WaitingDialog.h"

#include <QApplication>
#include <QEventLoop>
#include <QThread>

using namespace tav;

namespace {

thread_local CloudFailure lastFailure = CloudFailure::None;

/// Where a dialog can be shown.
bool isGuiThread()
{
    const auto* application = qobject_cast<QApplication*>(QCoreApplication::instance());
    return application && QThread::currentThread() == application->thread();
}

/// A request whose reply is taken by \a reader, with nothing special about it.
HttpRequest plainRequest(const QByteArray& verb, const QString& url, const HeaderMap& headers,
    std::unique_ptr<RequestBody> body, std::unique_ptr<ReplyReader> reader, double timeoutMs)
{
    return {verb, url, headers, std::move(body), std::move(reader), timeoutMs, QString(), {}};
}

bool runForJson(ResultMap& result, QString& error, const QByteArray& verb, const QString& url,
    const HeaderMap& headers, std::unique_ptr<RequestBody> body, double timeoutMs)
{
    auto reader = std::make_unique<JsonReader>();
    JsonReader& reply = *reader;
    HttpExchange exchange(plainRequest(verb, url, headers, std::move(body), std::move(reader), timeoutMs));
    if (!runToEnd(exchange, error))
        return false;
    result = reply.object;
    return true;
}

} // namespace

namespace tav {

bool runToEnd(HttpExchange& exchange, QString& error, BusyDialog busy)
{
    // Before any timer: this gives the thread what timers need, should it have run no event loop yet.
    std::optional<QEventLoop> loop;
    if (QCoreApplication::instance())
        loop.emplace();
    if (exchange.start()) {
        if (busy == BusyDialog::Shown && isGuiThread()) {
            WaitingDialog dialog;
            QObject::connect(&exchange, &HttpExchange::finished, &dialog, &QDialog::accept);
            dialog.exec();
        } else {
            QObject::connect(&exchange, &HttpExchange::finished, &*loop, &QEventLoop::quit);
            loop->exec(QEventLoop::ExcludeUserInputEvents);
        }
    }
    exchange.conclude();
    // Now, not when it ended: a nested call may have ended since.
    lastFailure = exchange.failure();
    if (lastFailure != CloudFailure::None && lastFailure != CloudFailure::NotWritten)
        error = exchange.errorText();
    return lastFailure == CloudFailure::None;
}

} // namespace tav

CloudFailure lastTransportFailure()
{
    return lastFailure;
}

bool httpGet(ResultMap& result, QString& error, QString url, const HeaderMap& headers, double timeoutMs)
{
    return runForJson(result, error, "GET", url, headers, std::make_unique<RequestBody>(), timeoutMs);
}

bool httpGetToFile(
    ResultMap&, QString& error, QString url, QString savePath, const HeaderMap& headers, double timeoutMs)
{
    HttpExchange exchange(plainRequest("GET", url, headers, std::make_unique<RequestBody>(),
        std::make_unique<FileReader>(savePath), timeoutMs));
    return runToEnd(exchange, error);
}

bool httpDelete(ResultMap& result, QString& error, QString url, const HeaderMap& headers, double timeoutMs)
{
    return runForJson(result, error, "DELETE", url, headers, std::make_unique<RequestBody>(), timeoutMs);
}

bool httpPost(ResultMap& result, QString& error, QString url, const HeaderMap& headers,
    const QByteArray& body, double timeoutMs)
{
    return runForJson(result, error, "POST", url, headers, std::make_unique<RequestBody>(body), timeoutMs);
}

bool httpPut(ResultMap& result, QString& error, QString url, const HeaderMap& headers, const QByteArray& body,
    double timeoutMs)
{
    return runForJson(result, error, "PUT", url, headers, std::make_unique<RequestBody>(body), timeoutMs);
}

bool httpPostMultipart(ResultMap& result, QString& error, QString url, const HeaderMap& headers,
    const QMap<QString, QVariant>& fields, QString filePath, double timeoutMs)
{
    return runForJson(
        result, error, "POST", url, headers, std::make_unique<RequestBody>(fields, filePath), timeoutMs);
}

bool httpPutMultipart(ResultMap& result, QString& error, QString url, const HeaderMap& headers,
    const QMap<QString, QVariant>& fields, double timeoutMs)
{
    return runForJson(
        result, error, "PUT", url, headers, std::make_unique<RequestBody>(fields, QString()), timeoutMs);
}

bool httpPostSoap(QByteArray& result, QString& error, QString url, const HeaderMap& headers,
    const QByteArray& body, double timeoutMs)
{
    auto reader = std::make_unique<SoapReader>();
    SoapReader& reply = *reader;
    HttpExchange exchange(plainRequest(
        "POST", url, headers, std::make_unique<RequestBody>(body), std::move(reader), timeoutMs));
    if (!runToEnd(exchange, error, BusyDialog::Shown))
        return false;
    result = reply.text;
    return true;
}
