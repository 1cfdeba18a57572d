// SPDX-License-Identifier: MIT
#include "net/ReplyReader.h"

#include <QNetworkReply>

#include <algorithm>

namespace tav {

namespace {

/// Whether the header of \a value is missing, or says what holds without it.
bool isNone(const QByteArray& value, const char* same)
{
    return value.isEmpty() || value.compare(same, Qt::CaseInsensitive) == 0;
}

/// Whether the body of \a reply is a file: an error's is not, nor a part of one, nor one packed without being
/// asked.
bool bringsWholeFile(const QNetworkReply& reply)
{
    const int status = reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    return status / 100 == 2 && status != 206 && isNone(reply.rawHeader("Content-Encoding"), "identity")
        && isNone(reply.rawHeader("Transfer-Encoding"), "chunked");
}

/// The SHA-256 that \a reply promises of its body, if any: in its present header, "sha-256=:...:", or in the
/// older one, "SHA-256=...", each among other digests or alone.
QByteArray promisedDigest(const QNetworkReply& reply)
{
    for (const char* header : {"Content-Digest", "Digest"}) {
        for (const QByteArray& part : reply.rawHeader(header).split(',')) {
            const QByteArray digest = part.trimmed();
            if (digest.toLower().startsWith("sha-256="))
                return QByteArray::fromBase64(digest.mid(8).replace(':', "")).leftJustified(1, '?');
        }
    }
    return QByteArray();
}

/// Whether \a received bytes are what \a reply promised, if it did. As it stands in the header: of two
/// lengths, or of one that is no number, Qt makes what it can.
bool hasPromisedLength(const QNetworkReply& reply, qint64 received)
{
    return !reply.hasRawHeader("Content-Length")
        || reply.rawHeader("Content-Length") == QByteArray::number(received);
}

/// Whether the end of \a reply is to be believed without a digest. Over TLS a body that goes on until the
/// connection ends is not: Qt hides whether the peer ended it, or somebody on the way cut it.
bool showsItsEnd(const QNetworkReply& reply)
{
    return reply.url().scheme() != QLatin1String("https") || reply.hasRawHeader("Content-Length")
        || !reply.rawHeader("Transfer-Encoding").isEmpty();
}

} // namespace

bool BodyReader::take(QNetworkReply& reply)
{
    const int before = bytes.size();
    const qint64 count = reply.bytesAvailable();
    tooLarge = tooLarge || count > limit - before;
    if (tooLarge) {
        bytes.clear();
        return false;
    }
    // The peer's word on the length saves copying while the body grows. Whatever it says, little is reserved.
    if (before == 0)
        bytes.reserve(int(std::clamp<qint64>(
            reply.header(QNetworkRequest::ContentLengthHeader).toLongLong(), 0, std::min(limit, 8 << 20))));
    bytes.resize(before + int(count));
    bytes.resize(before + int(std::max<qint64>(reply.read(bytes.data() + before, count), 0)));
    return true;
}

bool FileReader::take(QNetworkReply& reply)
{
    const QByteArray chunk = reply.readAll();
    if (chunk.isEmpty() || !bringsWholeFile(reply))
        return true;
    if (state == State::Empty) {
        state = file.open() ? State::Writing : State::Failed;
        digest = promisedDigest(reply);
    }
    received += chunk.size();
    if (!digest.isEmpty())
        hash.addData(chunk);
    if (state == State::Writing && !file.write(chunk))
        state = State::Failed;
    return state == State::Writing;
}

bool FileReader::hasWholeBody(const QNetworkReply& reply) const
{
    return state == State::Writing && reply.error() == QNetworkReply::NoError
        && hasPromisedLength(reply, received)
        && (digest.isEmpty() ? showsItsEnd(reply) : hash.result() == digest);
}

bool FileReader::commit()
{
    return state == State::Writing && file.commit();
}

} // namespace tav
