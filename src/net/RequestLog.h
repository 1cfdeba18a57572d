// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QElapsedTimer>
#include <QLoggingCategory>
#include <QString>
#include <QStringList>

class QNetworkReply;
class QSslError;
class QUrl;

namespace tav {

/// "tav.cloud": a debug line for every request, and a warning with the reason of each that got no usable
/// reply. Paths are logged without their query and without the account that some end with; headers, bodies,
/// passwords, tokens and codes are never logged.
Q_DECLARE_LOGGING_CATEGORY(cloudLog)

/// The log entry of one request.
class RequestLog
{
public:
    RequestLog(const QByteArray& verb, const QUrl& url);

    /// Adds to the warning which certificate was not trusted, and why.
    void noteUntrusted(const QList<QSslError>& errors);
    void received(qint64 bytes) { bytesReceived += bytes; }
    /// Logs the end of the request.
    /// \param problem what ended it, where Qt's own error text does not say so; empty for none
    void finish(const QNetworkReply& reply, qint64 bytesSent, bool usable, const QString& problem);
    /// Logs a request that could not be sent.
    void refuse(const QString& problem) const;

private:
    QString request;
    QElapsedTimer clock;
    QStringList untrusted;
    qint64 bytesReceived = 0;
};

} // namespace tav
