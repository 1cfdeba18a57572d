// SPDX-License-Identifier: MIT
#include "crypto/AccountCipher.h"
#include "crypto/QAESEncryption.h"

#include <QTest>

using Aes = QAESEncryption;

namespace {
const QByteArray ourKey = "a key for tests!";

QByteArray hex(const QByteArray& digits)
{
    return QByteArray::fromHex(digits);
}

/// From NIST SP 800-38A, as the vectors are.
const QByteArray keys[]{hex("2b7e151628aed2a6abf7158809cf4f3c"),
    hex("8e73b0f7da0e6452c810f32b809079e562f8ead2522c6b7b"),
    hex("603deb1015ca71be2b73aef0857d77811f352c073b6108d72d9810a30914dff4")};
} // namespace

class TestQAESEncryption : public QObject
{
    Q_OBJECT

private slots:
    /// NIST SP 800-38A, appendix F. Modes do not depend on the key's length, so each has one length only.
    void matchesThePublishedVectors()
    {
        const std::tuple<Aes::AesLevel, Aes::AesMode, QByteArray> vectors[]{
            {Aes::AES_128, Aes::ECB,
                "3ad77bb40d7a3660a89ecaf32466ef97f5d3d58503b9699de785895a96fdbaaf"
                "43b1cd7f598ece23881b00e3ed0306887b0c785e27e8ad3f8223207104725dd4"},
            {Aes::AES_128, Aes::CBC,
                "7649abac8119b246cee98e9b12e9197d5086cb9b507219ee95db113a917678b2"
                "73bed6b8e3c1743b7116e69e222295163ff1caa1681fac09120eca307586e1a7"},
            {Aes::AES_128, Aes::CFB,
                "3b3fd92eb72dad20333449f8e83cfb4ac8a64537a0b3a93fcde3cdad9f1ce58b"
                "26751f67a3cbb140b1808cf187a4f4dfc04b05357c5d1c0eeac4c66f9ff7f2e6"},
            {Aes::AES_128, Aes::OFB,
                "3b3fd92eb72dad20333449f8e83cfb4a7789508d16918f03f53c52dac54ed825"
                "9740051e9c5fecf64344f7a82260edcc304c6528f659c77866a510d9c1d6ae5e"},
            {Aes::AES_192, Aes::ECB, "bd334f1d6e45f25ff712a214571fa5cc"},
            {Aes::AES_256, Aes::ECB, "f3eed1bdb5d2a03c064b5a7e3db181f8"},
        };
        for (const auto& [level, mode, digits] : vectors) {
            const QByteArray cipher = hex(digits);
            const QByteArray plain = hex("6bc1bee22e409f96e93d7e117393172aae2d8a571e03ac9c9eb76fac45af8e51"
                                         "30c81c46a35ce411e5fbc1191a0a52eff69f2445df4f9b17ad2b417be66c3710")
                                         .left(cipher.size());
            const QByteArray iv = mode == Aes::ECB ? QByteArray() : hex("000102030405060708090a0b0c0d0e0f");
            QCOMPARE(Aes::Crypt(level, mode, plain, keys[level], iv), cipher);
            QCOMPARE(Aes::Decrypt(level, mode, cipher, keys[level], iv), plain);
            QCOMPARE(Aes::ExpandKey(level, mode, keys[level]).size(), 176 + 32 * level);
        }
    }

    void padsToWholeBlocks()
    {
        const auto roundTrip = [](const QByteArray& text, Aes::AesMode mode, Aes::AesPadding padding) {
            const QByteArray cipher = Aes::Crypt(Aes::AES_128, mode, text, ourKey, ourKey, padding);
            return Aes::Decrypt(Aes::AES_128, mode, cipher, ourKey, ourKey, padding);
        };
        const QByteArray added[]{
            QByteArray(11, '\0'), QByteArray(11, '\x0b'), QByteArray("\x80\0\0\0\0\0\0\0\0\0\0", 11)};
        for (const auto mode : {Aes::ECB, Aes::CBC, Aes::CFB, Aes::OFB})
            for (const auto padding : {Aes::ZERO, Aes::PKCS7, Aes::ISO})
                for (const QByteArray& whole : {QByteArray(), QByteArray(48, 'x')}) {
                    QCOMPARE(roundTrip(whole, mode, padding), whole);
                    QCOMPARE(roundTrip(whole + "12345", mode, padding), whole + "12345" + added[padding]);
                }
    }

    void removesPadding()
    {
        const std::tuple<Aes::AesPadding, QByteArray, QByteArray> rows[]{
            {Aes::ZERO, QByteArray("a\0b\0\0", 5), QByteArray("a\0b", 3)},
            {Aes::ZERO, QByteArray(16, '\0'), ""},
            {Aes::PKCS7, "abc\2\2", "abc"},
            {Aes::PKCS7, "abcde\3", "abc"}, // the bytes are not compared
            {Aes::PKCS7, QByteArray(32, ' '), ""}, // beyond a block
            {Aes::PKCS7, "ab\4", "ab\4"},
            {Aes::PKCS7, QByteArray("abc\0", 4), QByteArray("abc\0", 4)},
            {Aes::PKCS7, QByteArray(200, '\x80'), QByteArray(200, '\x80')}, // negative
            {Aes::ISO, QByteArray("abc\x80\0\0", 6), "abc"},
            {Aes::ISO, "a\x80 b\x80", "a\x80 b"},
            {Aes::ISO, "abc", ""},
            {Aes::AesPadding(9), QByteArray("abc\1\0", 5), QByteArray("abc\1\0", 5)},
        };
        for (const auto& [padding, padded, text] : rows)
            QCOMPARE(QAESEncryption(Aes::AES_256, Aes::OFB, padding).removePadding(padded), text);
    }

    void invalidArgumentsGiveAnEmptyArray()
    {
        const auto nothingFor = [](Aes::AesLevel level, Aes::AesMode mode, int keySize, int ivSize) {
            const QByteArray block(16, 'x');
            const QByteArray key(keySize, 'k');
            const QByteArray iv(ivSize, 'i');
            return (Aes::Crypt(level, mode, block, key, iv) + Aes::Decrypt(level, mode, block, key, iv))
                .isEmpty();
        };
        for (const auto mode : {Aes::CBC, Aes::CFB, Aes::OFB})
            QVERIFY(nothingFor(Aes::AES_128, mode, 16, 15) && nothingFor(Aes::AES_128, mode, 16, 17));
        for (const auto level : {Aes::AES_128, Aes::AES_192, Aes::AES_256})
            for (const int size : {15, 17, 31, 33})
                QVERIFY(nothingFor(level, Aes::ECB, size, 16));
    }

    void deciphersAnyLengthOrOnlyWholeBlocks()
    {
        const QByteArray text(48, 't');
        for (const auto mode : {Aes::ECB, Aes::CBC, Aes::CFB, Aes::OFB})
            for (int size = 0; size <= text.size(); ++size) {
                const QByteArray cipher = Aes::Crypt(Aes::AES_128, mode, text, ourKey, ourKey).left(size);
                const bool usable = mode == Aes::CFB || mode == Aes::OFB || size % 16 == 0;
                QCOMPARE(Aes::Decrypt(Aes::AES_128, mode, cipher, ourKey, ourKey),
                    usable ? text.left(size) : QByteArray());
            }
    }

    void missingAndUnknownArgumentsHaveDefaults()
    {
        QAESEncryption unknown(Aes::AesLevel(7), Aes::CBC, Aes::PKCS7);
        QCOMPARE(unknown.encode("text", ourKey, ourKey),
            Aes::Crypt(Aes::AES_128, Aes::CBC, "text", ourKey, ourKey, Aes::PKCS7));
        QCOMPARE(QAESEncryption(Aes::AES_128, Aes::ECB).removePadding("abc\x80"), QByteArray("abc"));
        const QByteArray iso = Aes::Crypt(Aes::AES_128, Aes::ECB, "abc", ourKey, "ignored", Aes::ISO);
        QCOMPARE(Aes::Crypt(Aes::AES_128, Aes::ECB, "abc", ourKey), iso);
    }

    void enciphersText()
    {
        const std::tuple<QString, QString, int> texts[]{
            {"", "", 0}, {"密码", "密码", 24}, // two characters, six bytes
            {"0123456789abcde\1", "0123456789abcde", 24}, // a whole block that ends like padding
            {"0123456789abcdef0123456789abcde ", "", 44}, // two blocks that end in a space
        };
        for (const auto& [text, back, length] : texts) {
            const QString cipher = aesEncryptText(text, ourKey, ourKey);
            QCOMPARE(cipher.size(), length);
            QCOMPARE(aesDecryptText(cipher, ourKey, ourKey), back);
        }
    }

    /// printf hello | openssl enc -aes-128-cbc -K (ourKey in hex) -iv (the same) -base64
    void enciphersTextAsOpenSslDoes()
    {
        QCOMPARE(aesEncryptText("hello", ourKey, ourKey), QString("MB+o8xg7mCBZ5F7ajwRQ4w=="));
        QCOMPARE(aesDecryptText(" MB+o8xg7\r\nmCBZ5F*7ajwRQ4w==", ourKey, ourKey), QString("hello"));
        QCOMPARE(aesDecryptText("MB+o8xg7", ourKey, ourKey), QString());
    }
};

QTEST_APPLESS_MAIN(TestQAESEncryption)
#include "tst_qaesencryption.moc"
