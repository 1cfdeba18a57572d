// SPDX-License-Identifier: MIT
#include "ui/account/AccountFile.h"

#include "net/WholeFile.h"

#include <QDataStream>
#include <QFile>
#include <QFileInfo>
#include <QtEndian>

using namespace tav;

namespace {

constexpr qint32 fileMagic = qint32(0xABBCC0DD);
constexpr qint32 fileVersion = 580;
constexpr auto streamVersion = QDataStream::Qt_5_6; // 17
constexpr quint32 nullText = 0xFFFFFFFF;

QString filePath()
{
    // In what is the working directory at the time of the call.
    return QStringLiteral("./AccountManage.bin");
}

/// Reads a length or a count; false when the stream ends or has failed before.
bool readSize(QDataStream& stream, quint32& size)
{
    if (stream.status() == QDataStream::Ok)
        stream >> size;
    return stream.status() == QDataStream::Ok;
}

/// Reads what the stream's own operator does, which allocates the length that it reads before it looks
/// whether the bytes are there.
bool readText(QDataStream& stream, QString& text)
{
    quint32 bytes = 0;
    if (!readSize(stream, bytes))
        return false;
    if (bytes == nullText) {
        text = QString();
        return true;
    }
    // Nothing that is typed into a field is that long.
    constexpr quint32 limit = 1 << 20;
    if (bytes % 2 != 0 || bytes > limit || bytes > stream.device()->bytesAvailable())
        return false;
    text = QString(int(bytes / 2), Qt::Uninitialized);
    if (stream.readRawData(reinterpret_cast<char*>(text.data()), int(bytes)) != int(bytes))
        return false;
    qFromBigEndian<ushort>(text.data(), text.size(), text.data());
    return true;
}

/// Reads a list of texts; once one list is damaged, it and all after it are empty.
QStringList readTexts(QDataStream& stream)
{
    quint32 count = 0;
    if (!readSize(stream, count))
        return {};
    // Five are written. A file with more than this is damaged, and its list would take minutes to show.
    constexpr quint32 limit = 1000;
    if (count > limit) {
        stream.setStatus(QDataStream::ReadCorruptData);
        return {};
    }
    QStringList texts;
    for (quint32 i = 0; i < count; ++i) {
        QString text;
        if (!readText(stream, text)) {
            stream.setStatus(QDataStream::ReadCorruptData);
            return {};
        }
        texts.append(text);
    }
    return texts;
}

void writeTexts(QDataStream& stream, const QStringList& texts)
{
    stream << qint32(texts.size());
    for (const QString& text : texts)
        stream << text;
}

} // namespace

void readAccountFile(AccountLists& accounts)
{
    QFile file(filePath());
    // Opening a pipe of that name would wait for its other end.
    if (!QFileInfo(file).isFile() || !file.open(QIODevice::ReadOnly))
        return;
    QDataStream stream(&file);
    qint32 magic = 0;
    qint32 version = 0;
    stream >> magic >> version;
    if (magic != fileMagic || version != fileVersion)
        return;
    stream.setVersion(streamVersion);
    accounts.userNames = readTexts(stream);
    accounts.passwords = readTexts(stream);
    accounts.rememberFlags = readTexts(stream);
}

void writeAccountFile(const AccountLists& accounts)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream << fileMagic << fileVersion;
    stream.setVersion(streamVersion);
    writeTexts(stream, accounts.userNames);
    writeTexts(stream, accounts.passwords);
    writeTexts(stream, accounts.rememberFlags);

    writeWholeFile(filePath(), bytes, QFile::ReadOwner | QFile::WriteOwner);
}
