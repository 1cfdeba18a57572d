// SPDX-License-Identifier: MIT
#pragma once

#include <QFile>
#include <QIODevice>
#include <QMap>
#include <QVariant>

#include <memory>

class QNetworkRequest;

namespace tav {

/// The body of a request: bytes, and for an upload a file between them, read from disk as it is needed. The
/// length is fixed when the body is made.
///
/// It can be read once only. QNetworkAccessManager rewinds a body to write the request again by itself when
/// the peer closes without answering; a body that refuses makes it report an error instead. So every request
/// has one, even an empty one: some GET requests of the platform have effects too, such as sending a text
/// message or leaving a group.
class RequestBody : public QIODevice
{
public:
    /// \a bytes as they are. Their content type is the caller's to set.
    explicit RequestBody(const QByteArray& bytes = QByteArray());

    /// A multipart/form-data body: one part for each entry of \a fields in key order, then, unless \a
    /// filePath is empty, the part "file". Only a regular file that can be opened has bytes in it.
    RequestBody(const QMap<QString, QVariant>& fields, const QString& filePath);

    /// The file at \a filePath in Base64, between \a before and \a after. There is nothing between them when
    /// the file cannot be opened or has more than \a limit bytes.
    RequestBody(const QByteArray& before, const QString& filePath, qint64 limit, const QByteArray& after);

    /// Sets the content type and length of this body in \a request.
    void describeIn(QNetworkRequest& request) const;

    /// Whether the file had fewer bytes than when the body was made. The body ends there; the missing bytes
    /// are not replaced by others.
    bool isTruncated() const { return fileShort; }

    bool isSequential() const override { return false; }
    qint64 size() const override { return head.size() + fileLength + tail.size(); }
    bool seek(qint64 pos) override;
    bool reset() override { return false; }

protected:
    qint64 readData(char* data, qint64 maxSize) override;
    qint64 writeData(const char*, qint64) override { return -1; }

private:
    qint64 readEncoded(char* data, qint64 maxSize);

    QByteArray boundary; // of a multipart body
    QByteArray head;
    std::unique_ptr<QFile> file;
    qint64 fileSize = 0; // on the disk
    qint64 fileLength = 0; // in the body
    bool encodes = false;
    QByteArray encoded; // of the block of the file that is being sent
    int encodedAt = 0;
    QByteArray tail;
    qint64 at = 0;
    bool fileShort = false;
};

} // namespace tav
