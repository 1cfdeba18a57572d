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
        qCWarning(cloudLog) << "the file to upload cannot be read";
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
        fileSize = file ? file->size() : 0;
    }
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
    while (done < maxSize && at >= head.size() && at < head.size() + fileSize) {
        const qint64 left = head.size() + fileSize - at;
        const qint64 count = file->read(data + done, std::min(maxSize - done, left));
        if (count <= 0) {
            fileShort = true;
            return done > 0 ? done : -1;
        }
        at += count;
        done += count;
    }
    if (at >= head.size() + fileSize)
        copy(tail, at - head.size() - fileSize);
    return done;
}

} // namespace tav
