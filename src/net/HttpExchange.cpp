// SPDX-License-Identifier: MIT
#include "net/HttpExchange.h"

#include "net/ConnectionPolicy.h"
#include "net/ReplyEnvelope.h"

#include <QCoreApplication>
#include <QNetworkReply>
#include <QSslSocket>

#include <algorithm>
#include <limits>

namespace tav {

namespace {

constexpr qint64 readWindow = 64 << 10;
constexpr int tickMs = 100;
constexpr int firstPauseMs = 250;
constexpr int longestPauseMs = 4000;

/// \a text as header bytes. A line break in it would begin a header of its own.
QByteArray headerText(const QString& text)
{
    QByteArray bytes = text.toLocal8Bit();
    bytes.replace('\r', "").replace('\n', "").replace('\0', "");
    return bytes;
}

QNetworkRequest networkRequest(const HttpRequest& what)
{
    QNetworkRequest request;
    for (auto header = what.headers.begin(); header != what.headers.end(); ++header) {
        if (header.key() == QLatin1String("Content-Type"))
            request.setHeader(QNetworkRequest::ContentTypeHeader, headerText(header.value().toString()));
        else
            request.setRawHeader(headerText(header.key()), headerText(header.value().toString()));
    }
    request.setUrl(QUrl(what.url, QUrl::TolerantMode));
    if (what.verb.startsWith('P'))
        what.body->describeIn(request);
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

/// Whether the platform, or what stands before it, says that it is only away for a while.
bool isAway(const QNetworkReply& reply)
{
    const int status = reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    return status >= 502 && status <= 504;
}

} // namespace

HttpExchange::HttpExchange(HttpRequest what, QObject* parent)
    : QObject(parent)
    , request(std::move(what))
{
    state.filePath = request.filePath;
    for (QTimer* timer : {&limit, &nextAttempt})
        timer->setSingleShot(true);
    limit.setTimerType(Qt::PreciseTimer);
    connect(&limit, &QTimer::timeout, this, &HttpExchange::checkTime);
    connect(&nextAttempt, &QTimer::timeout, this, &HttpExchange::send);
    connect(&ticks, &QTimer::timeout, this, &HttpExchange::tick);
}

HttpExchange::~HttpExchange()
{
    const QSignalBlocker nobodyWaits(this);
    end(CloudFailure::Cancelled);
}

bool HttpExchange::start()
{
    const QUrl url(request.url, QUrl::TolerantMode);
    log.emplace(request.verb, url);
    refusal = obstacle(url);
    if (refusal) {
        QMetaObject::invokeMethod(this, &HttpExchange::conclude, Qt::QueuedConnection);
        return false;
    }
    manager = std::make_unique<QNetworkAccessManager>();
    bufferConnections(*manager);
    send();
    sinceMove.start();
    limit.start(limitMs());
    if (request.options.progress)
        ticks.start(tickMs);
    return true;
}

int HttpExchange::limitMs() const
{
    const double wanted = request.options.limitMs > 0 ? request.options.limitMs : request.timeoutMs;
    return int(std::clamp(wanted, 0.0, double(std::numeric_limits<int>::max())));
}

/// What keeps the request from being sent at all.
std::optional<CloudFailure> HttpExchange::obstacle(const QUrl& url)
{
    if (!QCoreApplication::instance()) {
        log->refuse(QStringLiteral("there is no application object"));
        return CloudFailure::Cancelled;
    }
    if (!hasRoomForConnection()) {
        log->refuse(QStringLiteral("too many files are open in this process"));
        return CloudFailure::NoConnection;
    }
    if (url.scheme() == QLatin1String("https") && !QSslSocket::supportsSsl()) {
        log->refuse(QStringLiteral("there is no TLS library that Qt can use"));
        return CloudFailure::NotTrusted;
    }
    return std::nullopt;
}

void HttpExchange::send()
{
    QNetworkRequest next = networkRequest(request);
    if (lastAttempt) {
        request.reader->askForRest(next);
        log.emplace(request.verb, next.url());
    }
    replyCame = false;
    reply = manager->sendCustomRequest(next, request.verb, request.body.get());
    // Once the manager has begun with the request, which with a body it does from the event loop: before that
    // the size would be lost.
    QMetaObject::invokeMethod(
        reply, [sent = reply] { sent->setReadBufferSize(readWindow); }, Qt::QueuedConnection);
    state.stage = request.body->size() > 0 ? CloudTransferProgress::Stage::Sending
                                           : CloudTransferProgress::Stage::Waiting;
    connect(reply, &QNetworkReply::uploadProgress, this, [this](qint64 sent) {
        uploaded = sent;
        if (state.stage != CloudTransferProgress::Stage::Sending)
            return;
        state.bytesDone = sent;
        state.bytesTotal = request.body->size();
        if (sent == state.bytesTotal)
            state.stage = CloudTransferProgress::Stage::Waiting;
        moved();
    });
    connect(reply, &QNetworkReply::readyRead, this, &HttpExchange::receive);
    connect(reply, &QNetworkReply::sslErrors, this,
        [this](const QList<QSslError>& errors) { log->noteUntrusted(errors); });
    connect(reply, &QNetworkReply::finished, this, [this] {
        // The time is over once the reply is there, however long a nested call keeps it from being judged.
        replyCame = true;
        QMetaObject::invokeMethod(this, &HttpExchange::judgeReply, Qt::QueuedConnection);
    });
}

void HttpExchange::receive()
{
    log->received(reply->bytesAvailable());
    const bool wanted = request.reader->take(*reply);
    state.stage = CloudTransferProgress::Stage::Receiving;
    state.bytesDone = request.reader->received();
    state.bytesTotal = request.reader->expected();
    pauseMs = 0;
    moved();
    if (!wanted)
        reply->abort();
}

void HttpExchange::moved()
{
    sinceMove.restart();
}

void HttpExchange::tick()
{
    if (ticking || replyCame)
        return;
    ticking = true;
    // Whatever happens in it, the end of this object included.
    const auto progress = request.options.progress;
    const QPointer<HttpExchange> self(this);
    const bool goesOn = progress(state);
    if (!self)
        return;
    ticking = false;
    if (!goesOn)
        cancel();
}

void HttpExchange::checkTime()
{
    if (replyCame)
        return;
    const qint64 left =
        request.options.limit == CloudTransferOptions::Limit::LastByte ? limitMs() - sinceMove.elapsed() : 0;
    if (left > 0)
        limit.start(int(left));
    else
        end(lastAttempt.value_or(CloudFailure::TimedOut));
}

void HttpExchange::cancel()
{
    if (ended)
        return;
    cancelled = true;
    end(CloudFailure::Cancelled);
}

void HttpExchange::conclude()
{
    if (ended)
        return;
    if (refusal)
        end(*refusal);
    else if (replyCame)
        judgeReply();
    else
        end(CloudFailure::Cancelled);
}

QString HttpExchange::errorText() const
{
    if (cancelled || failure() == CloudFailure::None || failure() == CloudFailure::NotWritten)
        return QString();
    return failure() == CloudFailure::TimedOut || failure() == CloudFailure::Cancelled ? connectionTimedOut()
                                                                                       : replyUnusable();
}

void HttpExchange::judgeReply()
{
    if (ended || !reply || !replyCame)
        return;
    if (reply->bytesAvailable() > 0)
        receive();
    // Whatever the peer made of a file that came up short, it has not got it.
    CloudFailure failure =
        request.body->isTruncated() ? CloudFailure::Unusable : request.reader->judge(*reply);
    if (failure == CloudFailure::Unusable)
        failure = failureOf(*reply);
    if (!continuesAfter(failure))
        end(failure);
}

/// Whether the rest of a download that was cut is asked for. A platform that restarts is given time.
bool HttpExchange::continuesAfter(CloudFailure failure)
{
    const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    const bool lost = reply->error() != QNetworkReply::NoError && status / 100 <= 2;
    if (!request.options.continueDownloads || !request.reader->canContinue() || (!lost && !isAway(*reply)))
        return false;
    log->finish(*reply, 0, false, problemOf(*reply, failure));
    lastAttempt = failure;
    dropReply();
    nextAttempt.start(pauseMs);
    pauseMs = std::clamp(2 * pauseMs, firstPauseMs, longestPauseMs);
    return true;
}

void HttpExchange::dropReply()
{
    disconnect(reply, nullptr, this, nullptr);
    if (!reply->isFinished())
        reply->abort();
    reply->close();
    reply->deleteLater();
    reply = nullptr;
}

void HttpExchange::end(CloudFailure failure)
{
    if (ended)
        return;
    ended = failure;
    for (QTimer* timer : {&limit, &ticks, &nextAttempt})
        timer->stop();
    if (reply) {
        // Before a quick reply, Qt says nothing of what was sent.
        const bool answered = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).isValid();
        const QString refused = request.reader->refusal();
        log->finish(*reply, answered ? request.body->size() : uploaded, failure == CloudFailure::None,
            refused.isEmpty() ? problemOf(*reply, failure) : refused);
        dropReply();
    }
    manager.reset();
    emit finished();
}

} // namespace tav
