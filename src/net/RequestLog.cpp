// SPDX-License-Identifier: MIT
#include "net/RequestLog.h"

#include "net/ConnectionPolicy.h"

#include <QCryptographicHash>
#include <QMetaEnum>
#include <QNetworkProxy>
#include <QNetworkReply>
#include <QRegularExpression>
#include <QSslCertificate>
#include <QSslError>
#include <QUrl>

namespace tav {

Q_LOGGING_CATEGORY(cloudLog, "tav.cloud", QtWarningMsg)

namespace {

/// The path of \a url, without the phone number or e-mail address that some end with.
QString loggable(const QUrl& url)
{
    static const QRegularExpression account(QStringLiteral("(?<=/admin/mobile/|/admin/mail/)(reset/)?.+"));
    return url.path(QUrl::FullyDecoded).replace(account, QStringLiteral("\\1*")).simplified();
}

QString nameOf(QNetworkReply::NetworkError error)
{
    const char* name = QMetaEnum::fromType<QNetworkReply::NetworkError>().valueToKey(error);
    return name ? QString::fromLatin1(name) : QString::number(error);
}

/// Qt's own text without the address that it names for some errors: a query may contain a code.
QString textOf(const QNetworkReply& reply)
{
    QString text = reply.errorString();
    for (const auto format : {QUrl::PrettyDecoded, QUrl::FullyEncoded})
        text.replace(reply.url().toString(format), QStringLiteral("the address"));
    // The address may be written in another form still.
    return text.contains(QLatin1String("://")) ? QStringLiteral("an error with the address") : text;
}

} // namespace

RequestLog::RequestLog(const QByteArray& verb, const QUrl& url)
    : request(QString::fromLatin1(verb) + ' ' + loggable(url))
{
    clock.start();
}

void RequestLog::noteUntrusted(const QList<QSslError>& errors)
{
    for (const QSslError& error : errors) {
        const QSslCertificate certificate = error.certificate();
        untrusted += certificate.isNull()
            ? error.errorString()
            : QStringLiteral("%1 (certificate of \"%2\", issued by \"%3\", valid until %4, SHA-256 %5)")
                  .arg(error.errorString(), certificate.subjectDisplayName().simplified(),
                      certificate.issuerDisplayName().simplified(),
                      certificate.expiryDate().toString(Qt::ISODate),
                      QString::fromLatin1(certificate.digest(QCryptographicHash::Sha256).toHex()));
    }
}

void RequestLog::finish(const QNetworkReply& reply, qint64 bytesSent, bool usable, const QString& problem)
{
    const QString status = reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toString();
    const QString line =
        QStringLiteral("%1: %2, %3, %4 bytes sent, %5 received, %6 ms")
            .arg(request, status.isEmpty() ? QStringLiteral("no status") : status, nameOf(reply.error()))
            .arg(bytesSent)
            .arg(bytesReceived)
            .arg(clock.elapsed());
    if (usable) {
        qCDebug(cloudLog).noquote() << line;
        return;
    }
    QStringList reasons = untrusted;
    if (!problem.isEmpty())
        reasons += problem;
    if (reply.error() != QNetworkReply::NoError)
        reasons += textOf(reply);
    const QNetworkProxy proxy = proxyFor(reply.url());
    if (proxy.type() != QNetworkProxy::NoProxy)
        reasons += QStringLiteral("through the proxy %1:%2").arg(proxy.hostName()).arg(proxy.port());
    qCWarning(cloudLog).noquote() << line + QStringLiteral(": ") + reasons.join(QStringLiteral("; "));
}

void RequestLog::refuse(const QString& problem) const
{
    qCWarning(cloudLog).noquote() << request + QStringLiteral(": ") + problem;
}

} // namespace tav
