// SPDX-License-Identifier: MIT
#pragma once

#include "net/WholeFile.h"

#include <QByteArray>
#include <QCryptographicHash>

#include <utility>

class QNetworkReply;

namespace tav {

/// Takes a reply's body as it arrives.
class ReplyReader
{
public:
    virtual ~ReplyReader() = default;
    /// Takes what \a reply has now; false when the rest is not wanted.
    virtual bool take(QNetworkReply& reply) = 0;
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
    /// The whole body; empty when it was larger than the limit.
    QByteArray takeBody() { return std::exchange(bytes, QByteArray()); }

private:
    int limit;
    bool tooLarge = false;
    QByteArray bytes;
};

/// Streams the body of a 2xx reply into a temporary file beside the target, which it replaces in commit()
/// only.
class FileReader : public ReplyReader
{
public:
    explicit FileReader(const QString& savePath)
        : file(savePath)
    {
    }
    bool take(QNetworkReply& reply) override;
    /// Whether the file could not be written; nothing more was taken then.
    bool hasFailed() const { return state == State::Failed; }
    /// Whether a file's bytes have come, and all of them, as far as the peer told how many or what their
    /// digest is; over TLS it has to tell.
    bool hasWholeBody(const QNetworkReply& reply) const;
    /// Puts the file in place; false, with the old file untouched, if anything was not written.
    bool commit();

private:
    enum class State
    {
        Empty,
        Writing,
        Failed
    };

    WholeFile file;
    QByteArray digest; // that the peer promised; empty for none
    QCryptographicHash hash{QCryptographicHash::Sha256};
    qint64 received = 0;
    State state = State::Empty;
};

} // namespace tav
