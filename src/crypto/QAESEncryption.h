// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QObject>

/// AES (FIPS-197) with 128, 192 and 256 bit keys, four chaining modes and three kinds of padding.
/// Make one on the stack for a single operation. Objects share no state: each thread may use one of its own.
///
/// Invalid arguments give an empty array and no message: an initialisation vector that is not 16 bytes long
/// (in every mode but ECB), a key that is not as long as the level asks, and ECB or CBC input to decode()
/// that is not whole blocks.
class QAESEncryption : public QObject
{
public:
    enum AesLevel : qint32
    {
        AES_128 = 0,
        AES_192 = 1,
        AES_256 = 2
    };
    enum AesMode : qint32
    {
        ECB = 0,
        CBC = 1,
        CFB = 2,
        OFB = 3
    };
    enum AesPadding : qint32
    {
        ZERO = 0,
        PKCS7 = 1,
        ISO = 2
    };

    /// A level other than the three named ones behaves as AES_128.
    QAESEncryption(AesLevel aesLevel, AesMode aesMode, AesPadding aesPadding = ISO);

    /// \a rawText, padded to whole blocks, enciphered.
    QByteArray encode(const QByteArray& rawText, const QByteArray& key, const QByteArray& iv = QByteArray());

    /// \a rawText deciphered, padding still in place.
    QByteArray decode(const QByteArray& rawText, const QByteArray& key, const QByteArray& iv = QByteArray());

    /// \a rawText without the padding of this object's kind.
    QByteArray removePadding(const QByteArray& rawText) const;

    /// The key schedule of \a key: 176, 208 or 240 bytes.
    QByteArray expandKey(const QByteArray& key) const;

    static QByteArray Crypt(AesLevel level, AesMode mode, const QByteArray& rawText, const QByteArray& key,
        const QByteArray& iv = QByteArray(), AesPadding padding = ISO);
    static QByteArray Decrypt(AesLevel level, AesMode mode, const QByteArray& rawText, const QByteArray& key,
        const QByteArray& iv = QByteArray(), AesPadding padding = ISO);
    static QByteArray ExpandKey(AesLevel level, AesMode mode, const QByteArray& key);
    static QByteArray RemovePadding(const QByteArray& rawText, AesPadding padding);

private:
    QByteArray getPadding(qint32 currentSize, qint32 alignment) const;
    bool usable(const QByteArray& key, const QByteArray& iv) const;

    void addRoundKey(const QByteArray& schedule, qint32 round);
    void subBytesShiftRows();
    void invShiftRowsSubBytes();
    void mixColumns();
    void invMixColumns();
    void cipher(const QByteArray& schedule, quint8* block);
    void invCipher(const QByteArray& schedule, quint8* block);

    qint32 nb = 4; ///< words per block
    qint32 blocklen = 16; ///< bytes per block
    AesLevel level;
    AesMode mode;
    qint32 nk; ///< key length in words
    qint32 keyLen; ///< key length in bytes
    qint32 nr; ///< rounds
    [[maybe_unused]] qint32 expandedKey; ///< nominal size of the key schedule; the real one follows from nr
    AesPadding padding;
    quint8* state = nullptr; ///< the block being transformed, borrowed from the caller
};
