// SPDX-License-Identifier: MIT
#include "net/RequestBody.h"

#include "net/RequestLog.h"

#include <QFileInfo>
#include <QNetworkRequest>
#include <QUuid>

#include <algorithm>
#include <cstring>

namespace tav {

namespace {

constexpr int block = 48 << 10; // of threes, so that the blocks' texts join to the whole file's

/// \a name within the quotes of a Content-Disposition header, escaped as browsers do it, so that no name can
/// end its quotes or begin a header of its own.
QByteArray quotable(const QString& name)
{
    QByteArray bytes = name.toUtf8();
    bytes.replace('"', "%22").replace('\r', "%0D").replace('\n', "%0A").replace('\0', "%00");
    return bytes;
}

/// The regular file at \a path, opened, or null. Anything else (a pipe, say) could block the host for ever.
std::unique_ptr<QFile> openedFile(const QString& path)
{
    auto file = std::make_unique<QFile>(path);
    if (!QFileInfo(path).isFile() || !file->open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        qCWarning(cloudLog) << "the file to send cannot be read";
        return nullptr;
    }
    return file;
}

} // namespace

RequestBody::RequestBody(const QByteArray& bytes)
    : head(bytes)
{
    open(ReadOnly | Unbuffered);
}

RequestBody::RequestBody(const QMap<QString, QVariant>& fields, const QString& filePath)
    : boundary("tav." + QUuid::createUuid().toByteArray(QUuid::Id128))
{
    const QByteArray delimiter = "--" + boundary;

    for (auto field = fields.begin(); field != fields.end(); ++field) {
        head +=
            delimiter + "\r\nContent-Disposition: form-data; name=\"" + quotable(field.key()) + "\"\r\n\r\n";
        head += field.value().toByteArray() + "\r\n";
    }
    if (filePath.isEmpty()) {
        head += delimiter + "--\r\n";
    } else {
        head += delimiter + "\r\nContent-Disposition: form-data; name=\"file\"; filename=\"";
        head += quotable(QFileInfo(filePath).fileName()) + "\"\r\n\r\n";
        tail = "\r\n" + delimiter + "--\r\n";
        file = openedFile(filePath);
        fileSize = fileLength = file ? file->size() : 0;
    }
    open(ReadOnly | Unbuffered);
}

RequestBody::RequestBody(
    const QByteArray& before, const QString& filePath, qint64 limit, const QByteArray& after)
    : head(before)
    , file(openedFile(filePath))
    , encodes(true)
    , tail(after)
{
    if (file && file->size() <= limit)
        fileSize = file->size();
    else if (file)
        qCWarning(cloudLog) << "the file to send is larger than" << limit << "bytes";
    fileLength = (fileSize + 2) / 3 * 4;
    open(ReadOnly | Unbuffered);
}

void RequestBody::describeIn(QNetworkRequest& request) const
{
    if (!boundary.isEmpty())
        request.setHeader(QNetworkRequest::ContentTypeHeader, "multipart/form-data; boundary=" + boundary);
    else if ((!head.isEmpty() || request.url().hasQuery()) && !request.hasRawHeader("Content-Type"))
        request.setHeader(
            QNetworkRequest::ContentTypeHeader, QByteArrayLiteral("application/x-www-form-urlencoded"));
}

bool RequestBody::seek(qint64 pos)
{
    return pos == at && QIODevice::seek(pos);
}

qint64 RequestBody::readData(char* data, qint64 maxSize)
{
    qint64 done = 0;
    const auto copy = [&](const QByteArray& bytes, qint64 from) {
        const qint64 count = std::clamp<qint64>(bytes.size() - from, 0, maxSize - done);
        std::memcpy(data + done, bytes.constData() + std::min<qint64>(from, bytes.size()), size_t(count));
        at += count;
        done += count;
    };

    if (at < head.size())
        copy(head, at);
    while (done < maxSize && at >= head.size() && at < head.size() + fileLength) {
        const qint64 most = std::min(maxSize - done, head.size() + fileLength - at);
        const qint64 count = encodes ? readEncoded(data + done, most) : file->read(data + done, most);
        if (count <= 0) {
            fileShort = true;
            return done > 0 ? done : -1;
        }
        at += count;
        done += count;
    }
    if (at >= head.size() + fileLength)
        copy(tail, at - head.size() - fileLength);
    return done;
}

/// 0 once there is nothing more, and where the file is no longer as long as it was.
qint64 RequestBody::readEncoded(char* data, qint64 maxSize)
{
    if (encodedAt == encoded.size()) {
        const qint64 most = std::min<qint64>(block, fileSize - file->pos());
        const QByteArray bytes = file->read(most);
        if (bytes.size() != most)
            return 0;
        encoded = bytes.toBase64();
        encodedAt = 0;
    }
    const int count = int(std::min<qint64>(maxSize, encoded.size() - encodedAt));
    std::memcpy(data, encoded.constData() + encodedAt, size_t(count));
    encodedAt += count;
    return count;
}

} // namespace tav
