// SPDX-License-Identifier: MIT
#pragma once

#include "net/CloudFailure.h"
#include "net/WholeFile.h"

#include <QByteArray>
#include <QCryptographicHash>
#include <QMap>
#include <QVariant>

class QNetworkReply;
class QNetworkRequest;

namespace tav {

/// Takes a reply's body as it arrives, and decides what the reply is worth.
class ReplyReader
{
public:
    virtual ~ReplyReader() = default;
    /// Takes what \a reply has now; false when the rest is not wanted.
    virtual bool take(QNetworkReply& reply) = 0;
    /// What the call ends in, once \a reply is complete and all of it was taken.
    virtual CloudFailure judge(const QNetworkReply& reply) = 0;

    /// Of the body, in bytes; in all, -1 while that is not known.
    virtual qint64 received() const = 0;
    virtual qint64 expected() const = 0;

    /// Whether a further request can bring the rest of a reply that was cut.
    virtual bool canContinue() const { return false; }
    /// Asks in \a request for the rest.
    virtual void askForRest(QNetworkRequest&) const { }
};

/// Keeps the body in memory, up to a limit: a peer must not be able to fill the host's memory.
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

    QByteArray text; ///< of the result element
};

/// Streams the body of a 2xx reply into a temporary file beside the target, which it replaces only when the
/// whole body has come.
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
    /// Whether a file's bytes have come, and all of them, as far as the peer told how many or what their
    /// digest is; over TLS it has to tell.
    bool hasWholeBody(const QNetworkReply& reply) const;

    WholeFile file;
    QByteArray digest; // that the peer promised; empty for none
    QByteArray validator; // by which it offers the rest; empty when it does not
    QCryptographicHash hash{QCryptographicHash::Sha256};
    qint64 size = 0;
    qint64 promised = -1;
    const QNetworkReply* current = nullptr; // the reply whose bytes were taken last
    State state = State::Empty;
};

} // namespace tav
