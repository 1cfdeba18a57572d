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

/// What one request differs from others in.
struct HttpRequest
{
    QByteArray verb;
    QString url; ///< parsed tolerantly
    HeaderMap headers;
    std::unique_ptr<RequestBody> body; ///< every request has one, if empty: see RequestBody
    std::unique_ptr<ReplyReader> reader;
    double timeoutMs; ///< where the options have no limit
    QString filePath; ///< the local file, for the progress
    CloudTransferOptions options;
};

/// The one road for every request: sends it, and decides when it has ended and in what. Belongs to the thread
/// that it was made in, where an event loop must run.
class HttpExchange : public QObject
{
    Q_OBJECT

public:
    explicit HttpExchange(HttpRequest what, QObject* parent = nullptr);
    /// Gives up what still runs.
    ~HttpExchange() override;

    /// Returns at once. Once only. False when the request cannot be sent: conclude() says why, which happens
    /// by itself when the event loop runs.
    bool start();
    /// Ends it with CloudFailure::Cancelled, if it has not ended.
    void cancel();
    /// As it is now: good when the reply is there, if untold yet, else given up.
    void conclude();

    /// What it ended in.
    CloudFailure failure() const { return ended.value_or(CloudFailure::None); }
    /// The text that an operation returns for a failure; empty when cancel() or the progress function ended
    /// it.
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
    std::unique_ptr<QNetworkAccessManager> manager; // goes before the body that it reads
    QNetworkReply* reply = nullptr;
    bool replyCame = false;
    std::optional<CloudFailure> refusal;
    std::optional<RequestLog> log;
    CloudTransferProgress state;
    QTimer limit;
    QTimer ticks;
    QTimer nextAttempt;
    QElapsedTimer sinceMove;
    int pauseMs = 0;
    std::optional<CloudFailure> lastAttempt; // while a download waits for its next
    bool ticking = false;
    bool cancelled = false;
    std::optional<CloudFailure> ended;
};

} // namespace tav
