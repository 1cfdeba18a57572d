// SPDX-License-Identifier: MIT
#include "crypto/QAESEncryption.h"

#include <QtEndian>

#include <algorithm>
#include <cstring>

namespace {

using Byte = quint8;

constexpr int blockSize = 16;

// clang-format off
constexpr Byte sbox[256] = {
    0x63, 0x7c, 0x77, 0x7b, 0xf2, 0x6b, 0x6f, 0xc5, 0x30, 0x01, 0x67, 0x2b, 0xfe, 0xd7, 0xab, 0x76,
    0xca, 0x82, 0xc9, 0x7d, 0xfa, 0x59, 0x47, 0xf0, 0xad, 0xd4, 0xa2, 0xaf, 0x9c, 0xa4, 0x72, 0xc0,
    0xb7, 0xfd, 0x93, 0x26, 0x36, 0x3f, 0xf7, 0xcc, 0x34, 0xa5, 0xe5, 0xf1, 0x71, 0xd8, 0x31, 0x15,
    0x04, 0xc7, 0x23, 0xc3, 0x18, 0x96, 0x05, 0x9a, 0x07, 0x12, 0x80, 0xe2, 0xeb, 0x27, 0xb2, 0x75,
    0x09, 0x83, 0x2c, 0x1a, 0x1b, 0x6e, 0x5a, 0xa0, 0x52, 0x3b, 0xd6, 0xb3, 0x29, 0xe3, 0x2f, 0x84,
    0x53, 0xd1, 0x00, 0xed, 0x20, 0xfc, 0xb1, 0x5b, 0x6a, 0xcb, 0xbe, 0x39, 0x4a, 0x4c, 0x58, 0xcf,
    0xd0, 0xef, 0xaa, 0xfb, 0x43, 0x4d, 0x33, 0x85, 0x45, 0xf9, 0x02, 0x7f, 0x50, 0x3c, 0x9f, 0xa8,
    0x51, 0xa3, 0x40, 0x8f, 0x92, 0x9d, 0x38, 0xf5, 0xbc, 0xb6, 0xda, 0x21, 0x10, 0xff, 0xf3, 0xd2,
    0xcd, 0x0c, 0x13, 0xec, 0x5f, 0x97, 0x44, 0x17, 0xc4, 0xa7, 0x7e, 0x3d, 0x64, 0x5d, 0x19, 0x73,
    0x60, 0x81, 0x4f, 0xdc, 0x22, 0x2a, 0x90, 0x88, 0x46, 0xee, 0xb8, 0x14, 0xde, 0x5e, 0x0b, 0xdb,
    0xe0, 0x32, 0x3a, 0x0a, 0x49, 0x06, 0x24, 0x5c, 0xc2, 0xd3, 0xac, 0x62, 0x91, 0x95, 0xe4, 0x79,
    0xe7, 0xc8, 0x37, 0x6d, 0x8d, 0xd5, 0x4e, 0xa9, 0x6c, 0x56, 0xf4, 0xea, 0x65, 0x7a, 0xae, 0x08,
    0xba, 0x78, 0x25, 0x2e, 0x1c, 0xa6, 0xb4, 0xc6, 0xe8, 0xdd, 0x74, 0x1f, 0x4b, 0xbd, 0x8b, 0x8a,
    0x70, 0x3e, 0xb5, 0x66, 0x48, 0x03, 0xf6, 0x0e, 0x61, 0x35, 0x57, 0xb9, 0x86, 0xc1, 0x1d, 0x9e,
    0xe1, 0xf8, 0x98, 0x11, 0x69, 0xd9, 0x8e, 0x94, 0x9b, 0x1e, 0x87, 0xe9, 0xce, 0x55, 0x28, 0xdf,
    0x8c, 0xa1, 0x89, 0x0d, 0xbf, 0xe6, 0x42, 0x68, 0x41, 0x99, 0x2d, 0x0f, 0xb0, 0x54, 0xbb, 0x16
};

constexpr Byte invSbox[256] = {
    0x52, 0x09, 0x6a, 0xd5, 0x30, 0x36, 0xa5, 0x38, 0xbf, 0x40, 0xa3, 0x9e, 0x81, 0xf3, 0xd7, 0xfb,
    0x7c, 0xe3, 0x39, 0x82, 0x9b, 0x2f, 0xff, 0x87, 0x34, 0x8e, 0x43, 0x44, 0xc4, 0xde, 0xe9, 0xcb,
    0x54, 0x7b, 0x94, 0x32, 0xa6, 0xc2, 0x23, 0x3d, 0xee, 0x4c, 0x95, 0x0b, 0x42, 0xfa, 0xc3, 0x4e,
    0x08, 0x2e, 0xa1, 0x66, 0x28, 0xd9, 0x24, 0xb2, 0x76, 0x5b, 0xa2, 0x49, 0x6d, 0x8b, 0xd1, 0x25,
    0x72, 0xf8, 0xf6, 0x64, 0x86, 0x68, 0x98, 0x16, 0xd4, 0xa4, 0x5c, 0xcc, 0x5d, 0x65, 0xb6, 0x92,
    0x6c, 0x70, 0x48, 0x50, 0xfd, 0xed, 0xb9, 0xda, 0x5e, 0x15, 0x46, 0x57, 0xa7, 0x8d, 0x9d, 0x84,
    0x90, 0xd8, 0xab, 0x00, 0x8c, 0xbc, 0xd3, 0x0a, 0xf7, 0xe4, 0x58, 0x05, 0xb8, 0xb3, 0x45, 0x06,
    0xd0, 0x2c, 0x1e, 0x8f, 0xca, 0x3f, 0x0f, 0x02, 0xc1, 0xaf, 0xbd, 0x03, 0x01, 0x13, 0x8a, 0x6b,
    0x3a, 0x91, 0x11, 0x41, 0x4f, 0x67, 0xdc, 0xea, 0x97, 0xf2, 0xcf, 0xce, 0xf0, 0xb4, 0xe6, 0x73,
    0x96, 0xac, 0x74, 0x22, 0xe7, 0xad, 0x35, 0x85, 0xe2, 0xf9, 0x37, 0xe8, 0x1c, 0x75, 0xdf, 0x6e,
    0x47, 0xf1, 0x1a, 0x71, 0x1d, 0x29, 0xc5, 0x89, 0x6f, 0xb7, 0x62, 0x0e, 0xaa, 0x18, 0xbe, 0x1b,
    0xfc, 0x56, 0x3e, 0x4b, 0xc6, 0xd2, 0x79, 0x20, 0x9a, 0xdb, 0xc0, 0xfe, 0x78, 0xcd, 0x5a, 0xf4,
    0x1f, 0xdd, 0xa8, 0x33, 0x88, 0x07, 0xc7, 0x31, 0xb1, 0x12, 0x10, 0x59, 0x27, 0x80, 0xec, 0x5f,
    0x60, 0x51, 0x7f, 0xa9, 0x19, 0xb5, 0x4a, 0x0d, 0x2d, 0xe5, 0x7a, 0x9f, 0x93, 0xc9, 0x9c, 0xef,
    0xa0, 0xe0, 0x3b, 0x4d, 0xae, 0x2a, 0xf5, 0xb0, 0xc8, 0xeb, 0xbb, 0x3c, 0x83, 0x53, 0x99, 0x61,
    0x17, 0x2b, 0x04, 0x7e, 0xba, 0x77, 0xd6, 0x26, 0xe1, 0x69, 0x14, 0x63, 0x55, 0x21, 0x0c, 0x7d
};

/// The powers of x that the key expansion uses, from index 1 on.
constexpr Byte rcon[11] = {0x8d, 0x01, 0x02, 0x04, 0x08, 0x10, 0x20, 0x40, 0x80, 0x1b, 0x36};
// clang-format on

/// Each of the four bytes times x in GF(2^8).
constexpr quint32 xtime(quint32 bytes)
{
    return ((bytes & 0x7f7f7f7f) << 1) ^ (((bytes >> 7) & 0x01010101) * 0x1b);
}

/// The column \a word with each row taken from \a rows further down.
constexpr quint32 rotated(quint32 word, int rows)
{
    return (word >> (8 * rows)) | (word << (32 - 8 * rows));
}

quint32 loaded(const Byte* column)
{
    return qFromLittleEndian<quint32>(column);
}

void store(Byte* column, quint32 word)
{
    qToLittleEndian(word, column);
}

/// Replaces every byte of \a block by its entry in \a box; row r of a column comes from r * \a step bytes
/// further on.
void substitute(Byte* block, const Byte (&box)[256], int step)
{
    quint32 columns[4];
    for (int i = 0; i < 4; ++i) {
        const auto row = [&](int r) {
            return quint32(box[block[(4 * i + r * step) % blockSize]]) << (8 * r);
        };
        columns[i] = row(0) | row(1) | row(2) | row(3);
    }
    for (int i = 0; i < 4; ++i)
        store(block + 4 * i, columns[i]);
}

void addBlock(Byte* block, const Byte* other)
{
    for (int i = 0; i < blockSize; i += 4)
        store(block + i, loaded(block + i) ^ loaded(other + i));
}

/// \a size bytes of \a in XOR \a stream.
void addStream(Byte* out, const Byte* in, const Byte* stream, int size)
{
    for (int i = 0; i < size; ++i)
        out[i] = in[i] ^ stream[i];
}

Byte* writable(QByteArray& bytes)
{
    return reinterpret_cast<Byte*>(bytes.data());
}

const Byte* readable(const QByteArray& bytes)
{
    return reinterpret_cast<const Byte*>(bytes.constData());
}

} // namespace

QAESEncryption::QAESEncryption(AesLevel aesLevel, AesMode aesMode, AesPadding aesPadding)
    : level(aesLevel)
    , mode(aesMode)
    , nk(aesLevel == AES_256        ? 8
              : aesLevel == AES_192 ? 6
                                    : 4)
    , keyLen(nk * 4)
    , nr(nk + 6)
    , expandedKey(aesLevel == AES_256 ? 240
              : aesLevel == AES_192   ? 209
                                      : 176)
    , padding(aesPadding)
{
}

QByteArray QAESEncryption::Crypt(AesLevel level, AesMode mode, const QByteArray& rawText,
    const QByteArray& key, const QByteArray& iv, AesPadding padding)
{
    return QAESEncryption(level, mode, padding).encode(rawText, key, iv);
}

QByteArray QAESEncryption::Decrypt(AesLevel level, AesMode mode, const QByteArray& rawText,
    const QByteArray& key, const QByteArray& iv, AesPadding padding)
{
    return QAESEncryption(level, mode, padding).decode(rawText, key, iv);
}

QByteArray QAESEncryption::ExpandKey(AesLevel level, AesMode mode, const QByteArray& key)
{
    return QAESEncryption(level, mode).expandKey(key);
}

QByteArray QAESEncryption::RemovePadding(const QByteArray& rawText, AesPadding padding)
{
    switch (padding) {
    case ZERO: {
        auto size = rawText.size();
        while (size > 0 && rawText[size - 1] == '\0')
            --size;
        return rawText.left(size);
    }
    case PKCS7: {
        const int count = rawText.isEmpty() ? 0 : static_cast<signed char>(rawText.back());
        return count >= 1 && count <= rawText.size() ? rawText.chopped(count) : rawText;
    }
    case ISO:
        return rawText.left(std::max<qsizetype>(rawText.lastIndexOf('\x80'), 0));
    }
    return rawText;
}

QByteArray QAESEncryption::removePadding(const QByteArray& rawText) const
{
    return RemovePadding(rawText, padding);
}

/// Text of whole blocks gets no padding, not even PKCS7: stored passwords depend on it.
QByteArray QAESEncryption::getPadding(qint32 currentSize, qint32 alignment) const
{
    const int count = (alignment - currentSize % alignment) % alignment;
    QByteArray bytes(count, padding == PKCS7 ? char(count) : '\0');
    if (padding == ISO && count > 0)
        bytes[0] = '\x80';
    return bytes;
}

bool QAESEncryption::usable(const QByteArray& key, const QByteArray& iv) const
{
    return key.size() == keyLen && (mode == ECB || iv.size() == blocklen);
}

QByteArray QAESEncryption::expandKey(const QByteArray& key) const
{
    if (key.size() != keyLen)
        return QByteArray();
    QByteArray schedule = key;
    schedule.resize((nr + 1) * nb * 4);
    Byte* const bytes = writable(schedule);

    for (int i = nk; i < (nr + 1) * nb; ++i) {
        Byte temp[4];
        std::memcpy(temp, bytes + 4 * (i - 1), 4);
        const bool rotates = i % nk == 0;
        if (rotates)
            std::rotate(temp, temp + 1, temp + 4);
        if (rotates || (level == AES_256 && i % nk == 4))
            std::transform(temp, temp + 4, temp, [](Byte value) { return sbox[value]; });
        if (rotates)
            temp[0] ^= rcon[i / nk];
        for (int j = 0; j < 4; ++j)
            bytes[4 * i + j] = bytes[4 * (i - nk) + j] ^ temp[j];
    }
    return schedule;
}

// The state is the block column by column: byte i is row i mod 4, column i / 4. A column is worked on as one
// word, its first row in the lowest byte.

void QAESEncryption::addRoundKey(const QByteArray& schedule, qint32 round)
{
    addBlock(state, readable(schedule) + round * blockSize);
}

/// SubBytes and ShiftRows, which may be done in either order, in one pass: row r comes from r columns further
/// right.
void QAESEncryption::subBytesShiftRows()
{
    substitute(state, sbox, 5);
}

/// InvShiftRows and InvSubBytes: row r comes from r columns further left.
void QAESEncryption::invShiftRowsSubBytes()
{
    substitute(state, invSbox, 13);
}

/// Each byte becomes {02} times itself and the next, plus the other three of its column.
void QAESEncryption::mixColumns()
{
    for (Byte* column = state; column < state + blockSize; column += 4) {
        const quint32 word = loaded(column);
        const quint32 next = rotated(word, 1);
        store(column, xtime(word ^ next) ^ next ^ rotated(word, 2) ^ rotated(word, 3));
    }
}

/// {0e}, {0b}, {0d}, {09} is {02}, {03}, {01}, {01} times {05}, {00}, {04}, {00}: two xtime chains, then
/// MixColumns.
void QAESEncryption::invMixColumns()
{
    for (Byte* column = state; column < state + blockSize; column += 4) {
        const quint32 word = loaded(column);
        store(column, word ^ xtime(xtime(word ^ rotated(word, 2))));
    }
    mixColumns();
}

void QAESEncryption::cipher(const QByteArray& schedule, Byte* block)
{
    state = block;
    addRoundKey(schedule, 0);
    for (int round = 1; round < nr; ++round) {
        subBytesShiftRows();
        mixColumns();
        addRoundKey(schedule, round);
    }
    subBytesShiftRows();
    addRoundKey(schedule, nr);
    state = nullptr;
}

void QAESEncryption::invCipher(const QByteArray& schedule, Byte* block)
{
    state = block;
    addRoundKey(schedule, nr);
    for (int round = nr - 1; round > 0; --round) {
        invShiftRowsSubBytes();
        addRoundKey(schedule, round);
        invMixColumns();
    }
    invShiftRowsSubBytes();
    addRoundKey(schedule, 0);
    state = nullptr;
}

QByteArray QAESEncryption::encode(const QByteArray& rawText, const QByteArray& key, const QByteArray& iv)
{
    if (!usable(key, iv))
        return QByteArray();
    const QByteArray schedule = expandKey(key);
    QByteArray text = rawText + getPadding(qint32(rawText.size() % blocklen), blocklen);
    Byte stream[blockSize] = {};
    if (mode != ECB)
        std::memcpy(stream, iv.constData(), blockSize);

    const Byte* chain = stream;
    Byte* const end = writable(text) + text.size();
    for (Byte* block = writable(text); block < end; block += blockSize) {
        switch (mode) {
        case ECB:
            cipher(schedule, block);
            break;
        case CBC:
            addBlock(block, chain);
            cipher(schedule, block);
            chain = block;
            break;
        case CFB:
            if (chain != stream)
                std::memcpy(stream, chain, blockSize);
            cipher(schedule, stream);
            addBlock(block, stream);
            chain = block;
            break;
        case OFB:
            cipher(schedule, stream);
            addBlock(block, stream);
            break;
        }
    }
    return text;
}

QByteArray QAESEncryption::decode(const QByteArray& rawText, const QByteArray& key, const QByteArray& iv)
{
    if (!usable(key, iv) || ((mode == ECB || mode == CBC) && rawText.size() % blocklen != 0))
        return QByteArray();
    const QByteArray schedule = expandKey(key);
    QByteArray text = rawText;
    Byte stream[blockSize] = {};
    if (mode != ECB)
        std::memcpy(stream, iv.constData(), blockSize);

    const Byte* const in = readable(rawText);
    Byte* const out = writable(text);
    for (qsizetype offset = 0; offset < text.size(); offset += blockSize) {
        const int size = int(std::min<qsizetype>(blockSize, text.size() - offset));
        switch (mode) {
        case ECB:
            invCipher(schedule, out + offset);
            break;
        case CBC:
            invCipher(schedule, out + offset);
            addBlock(out + offset, stream);
            std::memcpy(stream, in + offset, blockSize);
            break;
        case CFB:
            cipher(schedule, stream);
            addStream(out + offset, in + offset, stream, size);
            std::memcpy(stream, in + offset, size_t(size));
            break;
        case OFB:
            cipher(schedule, stream);
            addStream(out + offset, in + offset, stream, size);
            break;
        }
    }
    return text;
}
