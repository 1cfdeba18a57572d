// SPDX-License-Identifier: MIT
#include "net/HttpRunner.h"

#include "net/ReplyEnvelope.h"
#include "net/ReplyReader.h"
#include "net/RequestBody.h"
#include "net/SoapReply.h"
#include "net/WaitingDialog.h"

#include <QApplication>
#include <QEventLoop>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QTimer>

#include <algorithm>
#include <functional>
#include <limits>

namespace {

constexpr int jsonLimit = 64 << 20;
constexpr int soapLimit = 512 << 20;
constexpr qint64 downloadWindow = 4 << 20;

enum class Waiting
{
    Unseen,
    InDialog
};

/// One request on its way: what the eight functions differ in.
struct Exchange
{
    QString url;
    const HeaderMap& headers;
    double timeoutMs;
    std::function<QNetworkReply*(QNetworkAccessManager&, QNetworkRequest&)> send;
    Waiting waiting = Waiting::Unseen;
    qint64 readAhead = 0; ///< how many bytes may wait unread; 0 for any number
};

/// \a text as header bytes. A line break in it would begin a header of its own.
QByteArray headerText(const QString& text)
{
    QByteArray bytes = text.toLocal8Bit();
    bytes.replace('\r', "").replace('\n', "").replace('\0', "");
    return bytes;
}

QNetworkRequest requestFor(const QString& url, const HeaderMap& headers)
{
    QNetworkRequest request;
    for (auto header = headers.begin(); header != headers.end(); ++header) {
        if (header.key() == QLatin1String("Content-Type"))
            request.setHeader(QNetworkRequest::ContentTypeHeader, headerText(header.value().toString()));
        else
            request.setRawHeader(headerText(header.key()), headerText(header.value().toString()));
    }
    request.setUrl(QUrl(url, QUrl::TolerantMode));
    // The bearer is for the platform alone, wherever a reply may point to.
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    // No cookies, and no credentials that the user did not give to us.
    for (const auto attribute : {QNetworkRequest::CookieLoadControlAttribute,
             QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::AuthenticationReuseAttribute})
        request.setAttribute(attribute, QNetworkRequest::Manual);
    return request;
}

/// Waits until \a reply is complete; false when the time is over or the wait was ended from outside.
bool waitFor(QNetworkReply& reply, double timeoutMs, Waiting waiting)
{
    if (reply.isFinished())
        return true;
    // Kept apart from the timer: in a nested call time can go by after the reply has come.
    bool timedOut = false;
    QTimer timer;
    timer.setSingleShot(true);
    timer.setTimerType(Qt::PreciseTimer);
    QObject::connect(&timer, &QTimer::timeout, [&] { timedOut = true; });
    QObject::connect(&reply, &QNetworkReply::finished, &timer, &QTimer::stop);
    timer.start(int(std::clamp(timeoutMs, 0.0, double(std::numeric_limits<int>::max()))));

    if (waiting == Waiting::InDialog && qobject_cast<QApplication*>(QCoreApplication::instance())) {
        WaitingDialog dialog;
        QObject::connect(&reply, &QNetworkReply::finished, &dialog, &QDialog::accept);
        QObject::connect(&timer, &QTimer::timeout, &dialog, &QDialog::accept);
        dialog.exec();
    } else {
        QEventLoop loop;
        QObject::connect(&reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
        QObject::connect(&timer, &QTimer::timeout, &loop, &QEventLoop::quit);
        loop.exec(QEventLoop::ExcludeUserInputEvents);
    }
    return !timedOut && reply.isFinished();
}

/// The one road for every request. True when the exchange ended in time; \a judge then decides, with the
/// reply at hand, what it was worth.
bool run(const Exchange& exchange, QString& error, ReplyReader& reader,
    const std::function<bool(const QNetworkReply&)>& judge)
{
    if (!QCoreApplication::instance()) {
        error = connectionTimedOut();
        return false;
    }
    QNetworkRequest request = requestFor(exchange.url, exchange.headers);
    QNetworkAccessManager manager;
    QNetworkReply* reply = exchange.send(manager, request);
    // Once more when the reply begins: of a request with a body, the network access manager forgets the
    // first.
    const auto limitReadAhead = [&] { reply->setReadBufferSize(exchange.readAhead); };
    limitReadAhead();
    const auto beginning = QObject::connect(reply, &QNetworkReply::metaDataChanged, limitReadAhead);
    const auto reading = QObject::connect(reply, &QNetworkReply::readyRead, [&] {
        if (!reader.take(*reply))
            reply->abort();
    });

    const bool inTime = waitFor(*reply, exchange.timeoutMs, exchange.waiting);
    QObject::disconnect(beginning);
    QObject::disconnect(reading);
    if (inTime && reply->bytesAvailable() > 0)
        reader.take(*reply);
    if (!inTime) {
        error = connectionTimedOut();
        reply->abort();
    }
    const bool good = inTime && judge(*reply);
    reply->close();
    reply->deleteLater();
    return good;
}

bool unusable(QString& error)
{
    error = replyUnusable();
    return false;
}

bool runForJson(const Exchange& exchange, ResultMap& result, QString& error)
{
    BodyReader reader(jsonLimit);
    return run(exchange, error, reader, [&](const QNetworkReply&) {
        QJsonParseError fault;
        const QJsonDocument document = QJsonDocument::fromJson(reader.takeBody(), &fault);
        if (fault.error != QJsonParseError::NoError || !document.isObject())
            return unusable(error);
        result = document.object().toVariantMap();
        return true;
    });
}

/// An exchange that sends \a body by \a verb.
Exchange sending(QNetworkReply* (QNetworkAccessManager::*verb)(const QNetworkRequest&, QIODevice*),
    RequestBody& body, const QString& url, const HeaderMap& headers, double timeoutMs)
{
    return {url, headers, timeoutMs, [verb, &body](QNetworkAccessManager& manager, QNetworkRequest& request) {
                body.describeIn(request);
                return (manager.*verb)(request, &body);
            }};
}

} // namespace

bool httpGet(ResultMap& result, QString& error, QString url, const HeaderMap& headers, double timeoutMs)
{
    return runForJson(
        {url, headers, timeoutMs, [](auto& manager, auto& request) { return manager.get(request); }}, result,
        error);
}

bool httpGetToFile(
    ResultMap&, QString& error, QString url, QString savePath, const HeaderMap& headers, double timeoutMs)
{
    // The network access manager repeats a GET whose reply was cut, and then forgets that it was cut: half a
    // file would count as whole. A body that cannot be rewound, even one of no bytes, keeps it from that.
    RequestBody nothing{QByteArray()};
    const auto send = [&nothing](QNetworkAccessManager& manager, QNetworkRequest& request) {
        // Only of a body that is not packed does the peer tell the length.
        request.setRawHeader("Accept-Encoding", "identity");
        return manager.sendCustomRequest(request, "GET", &nothing);
    };
    Exchange exchange{url, headers, timeoutMs, send};
    exchange.readAhead = downloadWindow;
    FileReader reader(savePath);
    return run(exchange, error, reader, [&](const QNetworkReply& reply) {
        if (reader.hasFailed())
            return false;
        return reader.hasWholeBody(reply) ? reader.commit() : unusable(error);
    });
}

bool httpDelete(ResultMap& result, QString& error, QString url, const HeaderMap& headers, double timeoutMs)
{
    return runForJson({url, headers, timeoutMs,
                          [](auto& manager, auto& request) { return manager.deleteResource(request); }},
        result, error);
}

bool httpPost(ResultMap& result, QString& error, QString url, const HeaderMap& headers,
    const QByteArray& body, double timeoutMs)
{
    RequestBody bytes(body);
    return runForJson(sending(&QNetworkAccessManager::post, bytes, url, headers, timeoutMs), result, error);
}

bool httpPut(ResultMap& result, QString& error, QString url, const HeaderMap& headers, const QByteArray& body,
    double timeoutMs)
{
    RequestBody bytes(body);
    return runForJson(sending(&QNetworkAccessManager::put, bytes, url, headers, timeoutMs), result, error);
}

bool httpPostMultipart(ResultMap& result, QString& error, QString url, const HeaderMap& headers,
    const QMap<QString, QVariant>& fields, QString filePath, double timeoutMs)
{
    RequestBody form(fields, filePath);
    ResultMap reply;
    if (!runForJson(sending(&QNetworkAccessManager::post, form, url, headers, timeoutMs), reply, error))
        return false;
    // Whatever the platform made of it, it has not got the file.
    if (form.cameUpShort())
        return unusable(error);
    result = reply;
    return true;
}

bool httpPutMultipart(ResultMap& result, QString& error, QString url, const HeaderMap& headers,
    const QMap<QString, QVariant>& fields, double timeoutMs)
{
    RequestBody form(fields, QString());
    return runForJson(sending(&QNetworkAccessManager::put, form, url, headers, timeoutMs), result, error);
}

bool httpPostSoap(QByteArray& result, QString& error, QString url, const HeaderMap& headers,
    const QByteArray& body, double timeoutMs)
{
    RequestBody bytes(body);
    Exchange exchange = sending(&QNetworkAccessManager::post, bytes, url, headers, timeoutMs);
    exchange.waiting = Waiting::InDialog;
    BodyReader reader(soapLimit);
    return run(exchange, error, reader, [&](const QNetworkReply&) {
        const QByteArray text = conversionResult(reader.takeBody());
        if (text.isNull())
            return unusable(error);
        result = text;
        return true;
    });
}
