// SPDX-License-Identifier: MIT
#include "net/HttpRunner.h"

#include "net/ConnectionPolicy.h"
#include "net/ReplyEnvelope.h"
#include "net/ReplyReader.h"
#include "net/RequestBody.h"
#include "net/RequestLog.h"
#include "net/SoapReply.h"
#include "net/WaitingDialog.h"

#include <QApplication>
#include <QEventLoop>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QSslSocket>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <functional>
#include <limits>

using namespace tav;

namespace {

constexpr int jsonLimit = 8 << 20;
constexpr int soapLimit = 512 << 20;
constexpr qint64 readWindow = 64 << 10;

thread_local CloudFailure lastFailure = CloudFailure::None;

enum class BusyDialog
{
    Hidden,
    Shown
};

/// One request on its way: what the eight functions differ in.
struct Exchange
{
    QByteArray verb;
    QString url;
    const HeaderMap& headers;
    RequestBody& body; ///< every request has one, if empty: see RequestBody
    double timeoutMs;
    BusyDialog busy = BusyDialog::Hidden;
};

/// \a text as header bytes. A line break in it would begin a header of its own.
QByteArray headerText(const QString& text)
{
    QByteArray bytes = text.toLocal8Bit();
    bytes.replace('\r', "").replace('\n', "").replace('\0', "");
    return bytes;
}

QNetworkRequest requestFor(const Exchange& exchange)
{
    QNetworkRequest request;
    for (auto header = exchange.headers.begin(); header != exchange.headers.end(); ++header) {
        if (header.key() == QLatin1String("Content-Type"))
            request.setHeader(QNetworkRequest::ContentTypeHeader, headerText(header.value().toString()));
        else
            request.setRawHeader(headerText(header.key()), headerText(header.value().toString()));
    }
    request.setUrl(QUrl(exchange.url, QUrl::TolerantMode));
    if (exchange.verb.startsWith('P'))
        exchange.body.describeIn(request);
    // What is packed can unpack to any size, and does not tell its length.
    request.setRawHeader("Accept-Encoding", "identity");
    authorizeAtProxy(request);
    // The bearer is for the platform alone, wherever a reply may point to.
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    // Qt 6 would offer it to every https platform, and may send a request again there.
    request.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
    // No cookies, and no credentials that the user did not give to us.
    for (const auto attribute : {QNetworkRequest::CookieLoadControlAttribute,
             QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::AuthenticationReuseAttribute})
        request.setAttribute(attribute, QNetworkRequest::Manual);
    return request;
}

/// Where a dialog can be shown.
bool isGuiThread()
{
    const auto* application = qobject_cast<QApplication*>(QCoreApplication::instance());
    return application && QThread::currentThread() == application->thread();
}

/// Waits in \a loop until \a reply is complete. Anything but None when the time is over or the wait was ended
/// from outside.
CloudFailure waitFor(QNetworkReply& reply, QEventLoop& loop, double timeoutMs, BusyDialog busy)
{
    if (reply.isFinished())
        return CloudFailure::None;
    // Kept apart from the timer: in a nested call time can go by after the reply has come.
    bool timedOut = false;
    QTimer timer;
    timer.setSingleShot(true);
    timer.setTimerType(Qt::PreciseTimer);
    QObject::connect(&timer, &QTimer::timeout, [&] { timedOut = true; });
    QObject::connect(&reply, &QNetworkReply::finished, &timer, &QTimer::stop);
    timer.start(int(std::clamp(timeoutMs, 0.0, double(std::numeric_limits<int>::max()))));

    if (busy == BusyDialog::Shown && isGuiThread()) {
        WaitingDialog dialog;
        QObject::connect(&reply, &QNetworkReply::finished, &dialog, &QDialog::accept);
        QObject::connect(&timer, &QTimer::timeout, &dialog, &QDialog::accept);
        dialog.exec();
    } else {
        QObject::connect(&reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
        QObject::connect(&timer, &QTimer::timeout, &loop, &QEventLoop::quit);
        loop.exec(QEventLoop::ExcludeUserInputEvents);
    }
    if (timedOut)
        return CloudFailure::TimedOut;
    return reply.isFinished() ? CloudFailure::None : CloudFailure::Cancelled;
}

/// What kept \a reply from being usable.
CloudFailure failureOf(const QNetworkReply& reply)
{
    switch (reply.error()) {
    case QNetworkReply::ConnectionRefusedError:
    case QNetworkReply::HostNotFoundError:
    case QNetworkReply::NetworkSessionFailedError:
    case QNetworkReply::ProxyConnectionRefusedError:
    case QNetworkReply::ProxyConnectionClosedError:
    case QNetworkReply::ProxyNotFoundError:
    case QNetworkReply::ProxyTimeoutError:
    case QNetworkReply::ProxyAuthenticationRequiredError:
    case QNetworkReply::TemporaryNetworkFailureError:
    case QNetworkReply::UnknownNetworkError: // a network that cannot be reached, for one
        return CloudFailure::NoConnection;
    case QNetworkReply::SslHandshakeFailedError:
        return CloudFailure::NotTrusted;
    default:
        return CloudFailure::Unusable;
    }
}

/// The same of \a reply to a download, whose error replies are not judged by an envelope.
CloudFailure failureOfDownload(const QNetworkReply& reply)
{
    const int status = reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    if (status == 401)
        return CloudFailure::SignedOut;
    return status >= 400 ? CloudFailure::Unavailable : CloudFailure::Unusable;
}

/// Keeps what a call ended in; true when it was good.
bool finish(CloudFailure failure, QString& error)
{
    lastFailure = failure;
    if (failure == CloudFailure::TimedOut || failure == CloudFailure::Cancelled)
        error = connectionTimedOut();
    else if (failure != CloudFailure::None && failure != CloudFailure::NotWritten)
        error = replyUnusable();
    return failure == CloudFailure::None;
}

/// What the log says ended \a reply; Qt has a text of its own for the rest.
QString problemOf(const QNetworkReply& reply, CloudFailure failure)
{
    if (failure == CloudFailure::TimedOut)
        return QStringLiteral("no complete reply in time");
    if (failure == CloudFailure::Cancelled)
        return QStringLiteral("the wait was ended");
    if (failure == CloudFailure::NotWritten)
        return QStringLiteral("the file could not be written");
    return reply.error() == QNetworkReply::NoError ? QStringLiteral("the reply could not be used")
                                                   : QString();
}

/// The one road for every request. Once a reply has come in time, \a judge decides what it is worth.
bool run(const Exchange& exchange, QString& error, ReplyReader& reader,
    const std::function<CloudFailure(const QNetworkReply&)>& judge)
{
    const QNetworkRequest request = requestFor(exchange);
    RequestLog log(exchange.verb, request.url());
    if (!QCoreApplication::instance()) {
        log.refuse(QStringLiteral("there is no application object"));
        return finish(CloudFailure::Cancelled, error);
    }
    if (!hasRoomForConnection()) {
        log.refuse(QStringLiteral("too many files are open in this process"));
        return finish(CloudFailure::NoConnection, error);
    }
    if (request.url().scheme() == QLatin1String("https") && !QSslSocket::supportsSsl()) {
        log.refuse(QStringLiteral("there is no TLS library that Qt can use"));
        return finish(CloudFailure::NotTrusted, error);
    }
    // Before any timer: this gives the thread what timers need, should it have run no event loop yet.
    QEventLoop loop;
    QNetworkAccessManager manager;
    bufferConnections(manager);
    QNetworkReply* reply = manager.sendCustomRequest(request, exchange.verb, &exchange.body);
    // Once the manager has begun with the request, which with a body it does from the event loop: before that
    // the size would be lost.
    QMetaObject::invokeMethod(
        reply, [reply] { reply->setReadBufferSize(readWindow); }, Qt::QueuedConnection);
    const auto take = [&] {
        log.received(reply->bytesAvailable());
        return reader.take(*reply);
    };
    const auto reading = QObject::connect(reply, &QNetworkReply::readyRead, [&] {
        if (!take())
            reply->abort();
    });
    const auto distrust = QObject::connect(
        reply, &QNetworkReply::sslErrors, [&](const auto& errors) { log.noteUntrusted(errors); });

    CloudFailure failure = waitFor(*reply, loop, exchange.timeoutMs, exchange.busy);
    const bool inTime = failure == CloudFailure::None;
    QObject::disconnect(reading);
    QObject::disconnect(distrust);
    if (inTime && reply->bytesAvailable() > 0)
        take();
    if (inTime)
        failure = judge(*reply);
    if (failure == CloudFailure::Unusable)
        failure = failureOf(*reply);
    log.finish(*reply, exchange.body.size(), failure == CloudFailure::None, problemOf(*reply, failure));
    if (!inTime)
        reply->abort();
    reply->close();
    reply->deleteLater();
    return finish(failure, error);
}

bool runForJson(const Exchange& exchange, ResultMap& result, QString& error)
{
    BodyReader reader(jsonLimit);
    return run(exchange, error, reader, [&](const QNetworkReply&) {
        // Whatever the platform made of a file that came up short, it has not got it.
        const bool usable = !exchange.body.cameUpShort() && readReply(reader.takeBody(), result);
        return usable ? CloudFailure::None : CloudFailure::Unusable;
    });
}

} // namespace

CloudFailure lastTransportFailure()
{
    return lastFailure;
}

bool httpGet(ResultMap& result, QString& error, QString url, const HeaderMap& headers, double timeoutMs)
{
    RequestBody nothing;
    return runForJson({"GET", url, headers, nothing, timeoutMs}, result, error);
}

bool httpGetToFile(
    ResultMap&, QString& error, QString url, QString savePath, const HeaderMap& headers, double timeoutMs)
{
    RequestBody nothing;
    FileReader reader(savePath);
    return run({"GET", url, headers, nothing, timeoutMs}, error, reader, [&](const QNetworkReply& reply) {
        if (!reader.hasFailed() && !reader.hasWholeBody(reply))
            return failureOfDownload(reply);
        return reader.commit() ? CloudFailure::None : CloudFailure::NotWritten;
    });
}

bool httpDelete(ResultMap& result, QString& error, QString url, const HeaderMap& headers, double timeoutMs)
{
    RequestBody nothing;
    return runForJson({"DELETE", url, headers, nothing, timeoutMs}, result, error);
}

bool httpPost(ResultMap& result, QString& error, QString url, const HeaderMap& headers,
    const QByteArray& body, double timeoutMs)
{
    RequestBody bytes(body);
    return runForJson({"POST", url, headers, bytes, timeoutMs}, result, error);
}

bool httpPut(ResultMap& result, QString& error, QString url, const HeaderMap& headers, const QByteArray& body,
    double timeoutMs)
{
    RequestBody bytes(body);
    return runForJson({"PUT", url, headers, bytes, timeoutMs}, result, error);
}

bool httpPostMultipart(ResultMap& result, QString& error, QString url, const HeaderMap& headers,
    const QMap<QString, QVariant>& fields, QString filePath, double timeoutMs)
{
    RequestBody form(fields, filePath);
    return runForJson({"POST", url, headers, form, timeoutMs}, result, error);
}

bool httpPutMultipart(ResultMap& result, QString& error, QString url, const HeaderMap& headers,
    const QMap<QString, QVariant>& fields, double timeoutMs)
{
    RequestBody form(fields, QString());
    return runForJson({"PUT", url, headers, form, timeoutMs}, result, error);
}

bool httpPostSoap(QByteArray& result, QString& error, QString url, const HeaderMap& headers,
    const QByteArray& body, double timeoutMs)
{
    RequestBody bytes(body);
    BodyReader reader(soapLimit);
    return run({"POST", url, headers, bytes, timeoutMs, BusyDialog::Shown}, error, reader,
        [&](const QNetworkReply&) {
            const QByteArray text = conversionResult(reader.takeBody());
            if (text.isNull())
                return CloudFailure::Unusable;
            result = text;
            return CloudFailure::None;
        });
}
