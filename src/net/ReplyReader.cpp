// SPDX-License-Identifier: MIT
#include "net/ReplyReader.h"

#include <QNetworkReply>

#include <algorithm>

namespace {

/// Whether the body of \a reply is a file: an error's is not, nor a part of one, nor one packed without being
/// asked.
bool bringsWholeFile(const QNetworkReply& reply)
{
    const int status = reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    const QByteArray encoding = reply.rawHeader("Content-Encoding");
    return status / 100 == 2 && status != 206 && (encoding.isEmpty() || encoding == "identity");
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
    // The peer's word on the length saves copying while a large body grows, and is not taken for more than
    // that.
    if (before == 0)
        bytes.reserve(
            int(std::min<qint64>(reply.header(QNetworkRequest::ContentLengthHeader).toLongLong(), limit)));
    bytes.resize(before + int(count));
    bytes.resize(before + int(std::max<qint64>(reply.read(bytes.data() + before, count), 0)));
    return true;
}

bool FileReader::take(QNetworkReply& reply)
{
    const QByteArray chunk = reply.readAll();
    if (chunk.isEmpty() || !bringsWholeFile(reply))
        return true;
    received += chunk.size();
    if (state == State::Empty)
        state = file.open() ? State::Writing : State::Failed;
    if (state == State::Writing && !file.write(chunk))
        state = State::Failed;
    return state == State::Writing;
}

bool FileReader::hasWholeBody(const QNetworkReply& reply) const
{
    const QVariant length = reply.header(QNetworkRequest::ContentLengthHeader);
    if (length.isValid() && length.toLongLong() != received)
        return false;
    // Of a body that ends with the connection, the manager cannot tell the end from a cut, and may have tried
    // to repeat the request.
    const bool endsWithConnection = !length.isValid() && !reply.hasRawHeader("Transfer-Encoding");
    const bool ended = reply.error() == QNetworkReply::NoError
        || (endsWithConnection && reply.error() == QNetworkReply::ContentReSendError);
    return state == State::Writing && ended;
}

bool FileReader::commit()
{
    return state == State::Writing && file.commit();
}
