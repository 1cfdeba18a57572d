// SPDX-License-Identifier: MIT
#include "net/ReplyReader.h"

#include "net/ReplyEnvelope.h"
#include "net/SoapReply.h"

#include <QNetworkReply>
#include <QNetworkRequest>

#include <algorithm>
#include <utility>

namespace tav {

namespace {

/// Whether the header of \a value is missing, or says what holds without it.
bool isNone(const QByteArray& value, const char* same)
{
    return value.isEmpty() || value.compare(same, Qt::CaseInsensitive) == 0;
}

int statusOf(const QNetworkReply& reply)
{
    return reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
}

/// Whether the body of \a reply is a file's, or a part's: an error's is not, nor one packed without being
/// asked.
bool bringsFile(const QNetworkReply& reply)
{
    return statusOf(reply) / 100 == 2 && isNone(reply.rawHeader("Content-Encoding"), "identity")
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

/// The length that \a reply promises; -1 when it does not, or not clearly: of two lengths, or of one that is
/// no number, Qt makes what it can.
qint64 promisedLength(const QNetworkReply& reply)
{
    const QByteArray text = reply.rawHeader("Content-Length");
    const qint64 length = text.toLongLong();
    return text == QByteArray::number(length) ? length : -1;
}

/// What a download ends in whose \a reply is no whole file: no envelope judges it.
CloudFailure failureOfDownload(const QNetworkReply& reply)
{
    if (statusOf(reply) == 401)
        return CloudFailure::SignedOut;
    return statusOf(reply) >= 400 ? CloudFailure::Unavailable : CloudFailure::Unusable;
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
    if (before == 0) {
        promised = promisedLength(reply);
        bytes.reserve(int(std::clamp<qint64>(promised, 0, std::min(limit, 8 << 20))));
    }
    bytes.resize(before + int(count));
    bytes.resize(before + int(std::max<qint64>(reply.read(bytes.data() + before, count), 0)));
    return true;
}

CloudFailure JsonReader::judge(const QNetworkReply&)
{
    return readReply(std::exchange(bytes, QByteArray()), object) ? CloudFailure::None
                                                                 : CloudFailure::Unusable;
}

CloudFailure SoapReader::judge(const QNetworkReply& reply)
{
    report = conversionReport(bytes, reply.rawHeader("X-Conversion-Report"));
    text = conversionResult(std::exchange(bytes, QByteArray()));
    return text.isNull() ? CloudFailure::Unusable : CloudFailure::None;
}

bool FileReader::take(QNetworkReply& reply)
{
    const QByteArray chunk = reply.readAll();
    if (chunk.isEmpty() || !bringsFile(reply) || (current != &reply && !beginWith(reply)))
        return true;
    size += chunk.size();
    if (!digest.isEmpty())
        hash.addData(chunk);
    if (state == State::Writing && !file.write(chunk))
        state = State::Failed;
    return state == State::Writing;
}

/// The first bytes of \a reply; whether they belong to the file.
bool FileReader::beginWith(const QNetworkReply& reply)
{
    if (statusOf(reply) == 206) {
        if (!isRest(reply))
            return false;
    } else {
        // A file that changed since the first request comes from its beginning.
        const bool ready = state == State::Empty ? file.open() : file.startOver();
        state = ready ? State::Writing : State::Failed;
        hash.reset();
        size = 0;
        promised = promisedLength(reply);
        digest = promisedDigest(reply);
        const QByteArray tag = reply.rawHeader("ETag");
        // A weak one tells of files that are as good as each other, not the same.
        const bool continuable = reply.rawHeader("Accept-Ranges") == "bytes" && tag.startsWith('"');
        validator = continuable ? tag : QByteArray();
    }
    current = &reply;
    return true;
}

/// Whether \a reply goes on where the last one was cut, with the same file.
bool FileReader::isRest(const QNetworkReply& reply) const
{
    const QByteArray range = "bytes " + QByteArray::number(size) + '-' + QByteArray::number(promised - 1)
        + '/' + QByteArray::number(promised);
    return canContinue() && reply.rawHeader("Content-Range") == range && reply.rawHeader("ETag") == validator;
}

bool FileReader::canContinue() const
{
    return state == State::Writing && !validator.isEmpty() && size < promised;
}

void FileReader::askForRest(QNetworkRequest& request) const
{
    request.setRawHeader("Range", "bytes=" + QByteArray::number(size) + '-');
    request.setRawHeader("If-Range", validator);
}

bool FileReader::hasWholeBody(const QNetworkReply& reply) const
{
    return state == State::Writing && current == &reply && reply.error() == QNetworkReply::NoError
        && (promised < 0 ? !reply.hasRawHeader("Content-Length") : size == promised)
        && (digest.isEmpty() ? showsItsEnd(reply) : hash.result() == digest);
}

CloudFailure FileReader::judge(const QNetworkReply& reply)
{
    if (state != State::Failed && !hasWholeBody(reply))
        return failureOfDownload(reply);
    return state == State::Writing && file.commit() ? CloudFailure::None : CloudFailure::NotWritten;
}

} // namespace tav
