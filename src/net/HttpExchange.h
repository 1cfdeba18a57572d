// SPDX-License-Identifier: MIT
#pragma once

#include "net/CloudFailure.h"
#include "net/CloudTransferOptions.h"
#include "net/ReplyReader.h"
#include "net/RequestBody.h"
#include "net/RequestLog.h"

#include <QElapsedTimer>
#include <QMap>
#include <QNetworkAccessManager>
#include <QNetworkRequest>
#include <QPointer>
#include <QTimer>
#include <QVariant>

#include <memory>
#include <optional>

namespace tav {

using HeaderMap = QMap<QString, QVariant>;

/// What to send, how to read the reply, and within which limits.
struct HttpRequest
{
    QByteArray verb;
    QString url; ///< parsed in QUrl::TolerantMode
    HeaderMap headers;
    std::unique_ptr<RequestBody> body; ///< never null; see RequestBody
    std::unique_ptr<ReplyReader> reader;
    double timeoutMs; ///< used when options.limitMs is 0
    QString filePath; ///< the local file, reported with the progress
    CloudTransferOptions options;
};

/// Sends one request and decides when it has ended, and how. Every request of the module is one of these. It
/// lives in the thread that created it, which must run an event loop.
class HttpExchange : public QObject
{
    Q_OBJECT

public:
    explicit HttpExchange(HttpRequest what, QObject* parent = nullptr);
    /// Aborts the request if it is still running.
    ~HttpExchange() override;

    /// Starts the request and returns at once; to be called once. False when it cannot be sent: the exchange
    /// then ends from the event loop, or in conclude() if that is called first.
    bool start();
    /// Ends it with CloudFailure::Cancelled, if it has not ended.
    void cancel();
    /// Ends it now: by the reply if that has come, otherwise with CloudFailure::Cancelled.
    void conclude();

    /// How it ended.
    CloudFailure failure() const { return ended.value_or(CloudFailure::None); }
    /// The error text of an operation that ended like this; empty after cancel(), also by the progress
    /// function.
    QString errorText() const;
    ReplyReader& reader() const { return *request.reader; }

signals:
    /// Once, and never from within start().
    void finished();

private:
    int limitMs() const;
    std::optional<CloudFailure> obstacle(const QUrl& url);
    void send();
    void receive();
    void moved();
    void tick();
    void checkTime();
    void judgeReply();
    bool continuesAfter(CloudFailure failure);
    void dropReply();
    void end(CloudFailure failure);

    HttpRequest request;
    std::unique_ptr<QNetworkAccessManager> manager; // destroyed before the body, which it reads
    QNetworkReply* reply = nullptr;
    bool replyCame = false;
    std::optional<CloudFailure> refusal;
    std::optional<RequestLog> log;
    CloudTransferProgress state;
    qint64 uploaded = 0; // of the body, in bytes
    QTimer limit;
    QTimer ticks;
    QTimer nextAttempt;
    QElapsedTimer sinceMove;
    int pauseMs = 0;
    std::optional<CloudFailure> lastAttempt; // of a download that is being continued
    bool ticking = false;
    bool cancelled = false;
    std::optional<CloudFailure> ended;
};

} // namespace tav
