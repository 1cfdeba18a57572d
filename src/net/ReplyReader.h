// SPDX-License-Identifier: MIT
#pragma once

#include "net/CloudConversionReport.h"
#include "net/CloudFailure.h"
#include "net/WholeFile.h"

#include <QByteArray>
#include <QCryptographicHash>
#include <QMap>
#include <QVariant>

class QNetworkReply;
class QNetworkRequest;

namespace tav {

/// Reads the body of a reply as it arrives, and judges whether the reply is usable.
class ReplyReader
{
public:
    virtual ~ReplyReader() = default;
    /// Reads what \a reply has now. False: the rest is not needed, and the request may be aborted.
    virtual bool take(QNetworkReply& reply) = 0;
    /// The result of the call, once \a reply is complete and has been read.
    virtual CloudFailure judge(const QNetworkReply& reply) = 0;

    /// Why the peer refused, in its own words, if it said so.
    virtual QString refusal() const { return {}; }

    /// Bytes of the body so far, and in total; -1 while the total is not known.
    virtual qint64 received() const = 0;
    virtual qint64 expected() const = 0;

    /// Whether the rest of an interrupted reply can be requested.
    virtual bool canContinue() const { return false; }
    /// Sets the headers in \a request that ask for the rest.
    virtual void askForRest(QNetworkRequest&) const { }
};

/// Keeps the body in memory, up to a limit, so that a peer cannot exhaust the host's memory.
class BodyReader : public ReplyReader
{
public:
    explicit BodyReader(int sizeLimit)
        : limit(sizeLimit)
    {
    }
    bool take(QNetworkReply& reply) override;
    qint64 received() const override { return bytes.size(); }
    qint64 expected() const override { return promised; }

protected:
    QByteArray bytes; // empty when there were more than the limit

private:
    int limit;
    bool tooLarge = false;
    qint64 promised = -1;
};

/// A reply of the platform, which is a JSON object whatever its status.
class JsonReader : public BodyReader
{
public:
    JsonReader()
        : BodyReader(8 << 20)
    {
    }
    CloudFailure judge(const QNetworkReply& reply) override;

    QMap<QString, QVariant> object;
};

/// A reply of the conversion service.
class SoapReader : public BodyReader
{
public:
    SoapReader()
        : BodyReader(512 << 20)
    {
    }
    CloudFailure judge(const QNetworkReply& reply) override;
    QString refusal() const override { return report.refusal; }

    QByteArray text; ///< of the result element
    CloudConversionReport report;
};

/// Streams the body of a 2xx reply into a temporary file beside the target, and replaces the target only when
/// the whole body has arrived.
class FileReader : public ReplyReader
{
public:
    explicit FileReader(const QString& savePath)
        : file(savePath)
    {
    }
    bool take(QNetworkReply& reply) override;
    CloudFailure judge(const QNetworkReply& reply) override;
    qint64 received() const override { return size; }
    qint64 expected() const override { return promised; }
    bool canContinue() const override;
    void askForRest(QNetworkRequest& request) const override;

private:
    enum class State
    {
        Empty,
        Writing,
        Failed
    };

    bool beginWith(const QNetworkReply& reply);
    bool isRest(const QNetworkReply& reply) const;
    /// Whether the body is not empty and complete by its announced length or digest. Over TLS one of them, or
    /// chunked transfer, is required.
    bool hasWholeBody(const QNetworkReply& reply) const;

    WholeFile file;
    QByteArray digest; // announced by the peer; empty for none
    QByteArray validator; // a strong ETag, if the peer serves ranges; else empty
    QCryptographicHash hash{QCryptographicHash::Sha256};
    qint64 size = 0;
    qint64 promised = -1;
    const QNetworkReply* current = nullptr; // the reply that was read last
    State state = State::Empty;
};

} // namespace tav
