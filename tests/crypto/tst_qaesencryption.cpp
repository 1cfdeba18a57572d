// SPDX-License-Identifier: MIT
#include "crypto/AccountCipher.h"
#include "crypto/QAESEncryption.h"

#include <QRandomGenerator>
#include <QTest>

#include <openssl/evp.h>

#include <memory>

using Aes = QAESEncryption;
Q_DECLARE_METATYPE(Aes::AesLevel)
Q_DECLARE_METATYPE(Aes::AesMode)
Q_DECLARE_METATYPE(Aes::AesPadding)

namespace {
const Aes::AesLevel levels[]{Aes::AES_128, Aes::AES_192, Aes::AES_256};
const Aes::AesMode modes[]{Aes::ECB, Aes::CBC, Aes::CFB, Aes::OFB};
const Aes::AesPadding paddings[]{Aes::ZERO, Aes::PKCS7, Aes::ISO};

const QByteArray ourKey = "a key for tests!";

QByteArray hex(const char* digits)
{
    return QByteArray::fromHex(digits);
}

int keyLength(Aes::AesLevel level)
{
    return 16 + 8 * level;
}

/// What OpenSSL makes of whole blocks.
QByteArray openssl(Aes::AesLevel level, Aes::AesMode mode, const QByteArray& text, const QByteArray& key,
    const QByteArray& iv)
{
    using Get = const EVP_CIPHER* (*)();
    static constexpr Get ciphers[3][4]{
        {EVP_aes_128_ecb, EVP_aes_128_cbc, EVP_aes_128_cfb128, EVP_aes_128_ofb},
        {EVP_aes_192_ecb, EVP_aes_192_cbc, EVP_aes_192_cfb128, EVP_aes_192_ofb},
        {EVP_aes_256_ecb, EVP_aes_256_cbc, EVP_aes_256_cfb128, EVP_aes_256_ofb},
    };
    const auto bytes = [](const QByteArray& array) {
        return reinterpret_cast<const unsigned char*>(array.constData());
    };
    const std::unique_ptr<EVP_CIPHER_CTX, decltype(&EVP_CIPHER_CTX_free)> context(
        EVP_CIPHER_CTX_new(), EVP_CIPHER_CTX_free);
    EVP_EncryptInit_ex(context.get(), ciphers[level][mode](), nullptr, bytes(key), bytes(iv));
    EVP_CIPHER_CTX_set_padding(context.get(), 0);
    QByteArray out(text.size() + 16, '\0');
    int length = 0;
    EVP_EncryptUpdate(
        context.get(), reinterpret_cast<unsigned char*>(out.data()), &length, bytes(text), text.size());
    out.truncate(length);
    return out;
}

QByteArray randomBytes(QRandomGenerator& random, int length)
{
    QByteArray bytes(length, '\0');
    for (char& byte : bytes)
        byte = char(random.bounded(256));
    return bytes;
}
} // namespace

class TestQAESEncryption : public QObject
{
    Q_OBJECT

private slots:
    void publishedVectors_data()
    {
        QTest::addColumn<Aes::AesLevel>("level");
        QTest::addColumn<Aes::AesMode>("mode");
        QTest::addColumn<QByteArray>("key");
        QTest::addColumn<QByteArray>("plain");
        QTest::addColumn<QByteArray>("cipher");

        const auto row = [](const char* name, Aes::AesLevel level, Aes::AesMode mode, const QByteArray& key,
                             const QByteArray& plain, const char* cipher) {
            QTest::newRow(name) << level << mode << key << plain << hex(cipher);
        };

        // FIPS-197, appendix C.
        const QByteArray key = hex("000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f");
        const QByteArray block = hex("00112233445566778899aabbccddeeff");
        row("C.1", Aes::AES_128, Aes::ECB, key.left(16), block, "69c4e0d86a7b0430d8cdb78070b4c55a");
        row("C.2", Aes::AES_192, Aes::ECB, key.left(24), block, "dda97ca4864cdfe06eaf70a0ec0d7191");
        row("C.3", Aes::AES_256, Aes::ECB, key, block, "8ea2b7ca516745bfeafc49904b496089");

        // NIST SP 800-38A, appendix F; the section of each vector is its row's name.
        const QByteArray k128 = hex("2b7e151628aed2a6abf7158809cf4f3c");
        const QByteArray k192 = hex("8e73b0f7da0e6452c810f32b809079e562f8ead2522c6b7b");
        const QByteArray k256 = hex("603deb1015ca71be2b73aef0857d77811f352c073b6108d72d9810a30914dff4");
        const QByteArray text = hex("6bc1bee22e409f96e93d7e117393172aae2d8a571e03ac9c9eb76fac45af8e51"
                                    "30c81c46a35ce411e5fbc1191a0a52eff69f2445df4f9b17ad2b417be66c3710");
        row("F.1.1", Aes::AES_128, Aes::ECB, k128, text,
            "3ad77bb40d7a3660a89ecaf32466ef97f5d3d58503b9699de785895a96fdbaaf"
            "43b1cd7f598ece23881b00e3ed0306887b0c785e27e8ad3f8223207104725dd4");
        row("F.1.3", Aes::AES_192, Aes::ECB, k192, text,
            "bd334f1d6e45f25ff712a214571fa5cc974104846d0ad3ad7734ecb3ecee4eef"
            "ef7afd2270e2e60adce0ba2face6444e9a4b41ba738d6c72fb16691603c18e0e");
        row("F.1.5", Aes::AES_256, Aes::ECB, k256, text,
            "f3eed1bdb5d2a03c064b5a7e3db181f8591ccb10d410ed26dc5ba74a31362870"
            "b6ed21b99ca6f4f9f153e7b1beafed1d23304b7a39f9f3ff067d8d8f9e24ecc7");
        row("F.2.1", Aes::AES_128, Aes::CBC, k128, text,
            "7649abac8119b246cee98e9b12e9197d5086cb9b507219ee95db113a917678b2"
            "73bed6b8e3c1743b7116e69e222295163ff1caa1681fac09120eca307586e1a7");
        row("F.2.3", Aes::AES_192, Aes::CBC, k192, text,
            "4f021db243bc633d7178183a9fa071e8b4d9ada9ad7dedf4e5e738763f69145a"
            "571b242012fb7ae07fa9baac3df102e008b0e27988598881d920a9e64f5615cd");
        row("F.2.5", Aes::AES_256, Aes::CBC, k256, text,
            "f58c4c04d6e5f1ba779eabfb5f7bfbd69cfc4e967edb808d679f777bc6702c7d"
            "39f23369a9d9bacfa530e26304231461b2eb05e2c39be9fcda6c19078c6a9d1b");
        row("F.3.13", Aes::AES_128, Aes::CFB, k128, text,
            "3b3fd92eb72dad20333449f8e83cfb4ac8a64537a0b3a93fcde3cdad9f1ce58b"
            "26751f67a3cbb140b1808cf187a4f4dfc04b05357c5d1c0eeac4c66f9ff7f2e6");
        row("F.3.15", Aes::AES_192, Aes::CFB, k192, text,
            "cdc80d6fddf18cab34c25909c99a417467ce7f7f81173621961a2b70171d3d7a"
            "2e1e8a1dd59b88b1c8e60fed1efac4c9c05f9f9ca9834fa042ae8fba584b09ff");
        row("F.3.17", Aes::AES_256, Aes::CFB, k256, text,
            "dc7e84bfda79164b7ecd8486985d386039ffed143b28b1c832113c6331e5407b"
            "df10132415e54b92a13ed0a8267ae2f975a385741ab9cef82031623d55b1e471");
        row("F.4.1", Aes::AES_128, Aes::OFB, k128, text,
            "3b3fd92eb72dad20333449f8e83cfb4a7789508d16918f03f53c52dac54ed825"
            "9740051e9c5fecf64344f7a82260edcc304c6528f659c77866a510d9c1d6ae5e");
        row("F.4.3", Aes::AES_192, Aes::OFB, k192, text,
            "cdc80d6fddf18cab34c25909c99a4174fcc28b8d4c63837c09e81700c1100401"
            "8d9a9aeac0f6596f559c6d4daf59a5f26d9f200857ca6c3e9cac524bd9acc92a");
        row("F.4.5", Aes::AES_256, Aes::OFB, k256, text,
            "dc7e84bfda79164b7ecd8486985d38604febdc6740d20b3ac88f6ad82a4fb08d"
            "71ab47a086e86eedf39d1c5bba97c4080126141d67f37be8538f5a8be740e484");
    }

    void publishedVectors()
    {
        QFETCH(Aes::AesLevel, level);
        QFETCH(Aes::AesMode, mode);
        QFETCH(QByteArray, key);
        QFETCH(QByteArray, plain);
        QFETCH(QByteArray, cipher);
        const QByteArray iv = mode == Aes::ECB ? QByteArray() : hex("000102030405060708090a0b0c0d0e0f");
        QCOMPARE(Aes::Crypt(level, mode, plain, key, iv), cipher);
        QCOMPARE(Aes::Decrypt(level, mode, cipher, key, iv), plain);
        QAESEncryption member(level, mode);
        QCOMPARE(member.encode(plain, key, iv), cipher);
        QCOMPARE(member.decode(cipher, key, iv), plain);
    }

    /// FIPS-197, appendix A: the last word of each schedule.
    void expandsKeys()
    {
        const auto lastWord = [](Aes::AesLevel level, const char* key, int size) {
            const QByteArray schedule = Aes::ExpandKey(level, Aes::ECB, hex(key));
            return schedule.size() == size && schedule.startsWith(hex(key)) ? schedule.right(4).toHex()
                                                                            : "wrong size";
        };
        QCOMPARE(lastWord(Aes::AES_128, "2b7e151628aed2a6abf7158809cf4f3c", 176), QByteArray("b6630ca6"));
        QCOMPARE(lastWord(Aes::AES_192, "8e73b0f7da0e6452c810f32b809079e562f8ead2522c6b7b", 208),
            QByteArray("01002202"));
        QCOMPARE(
            lastWord(Aes::AES_256, "603deb1015ca71be2b73aef0857d77811f352c073b6108d72d9810a30914dff4", 240),
            QByteArray("706c631e"));
    }

    void agreesWithOpenSSL()
    {
        QRandomGenerator random(20240229);
        for (int round = 0; round < 60; ++round) {
            for (const auto level : levels) {
                for (const auto mode : modes) {
                    const QByteArray key = randomBytes(random, keyLength(level));
                    const QByteArray iv = randomBytes(random, 16);
                    const QByteArray text = randomBytes(random, random.bounded(round < 55 ? 100 : 20000));
                    const QByteArray zeros(-text.size() & 15, '\0');
                    const QByteArray cipher = openssl(level, mode, text + zeros, key, iv);
                    QCOMPARE(Aes::Crypt(level, mode, text, key, iv, Aes::ZERO), cipher);
                    QCOMPARE(Aes::Decrypt(level, mode, cipher, key, iv), text + zeros);
                }
            }
        }
    }

    void pads_data()
    {
        QTest::addColumn<int>("size");
        QTest::addColumn<Aes::AesPadding>("padding");
        QTest::addColumn<QByteArray>("added");

        for (const int size : {0, 16, 48})
            for (const auto padding : paddings)
                QTest::addRow("%d bytes, kind %d", size, padding) << size << padding << QByteArray();
        QTest::newRow("5, zero") << 5 << Aes::ZERO << QByteArray(11, '\0');
        QTest::newRow("5, PKCS7") << 5 << Aes::PKCS7 << QByteArray(11, '\x0b');
        QTest::newRow("5, ISO") << 5 << Aes::ISO << QByteArray("\x80\0\0\0\0\0\0\0\0\0\0", 11);
        QTest::newRow("31, zero") << 31 << Aes::ZERO << QByteArray(1, '\0');
        QTest::newRow("31, PKCS7") << 31 << Aes::PKCS7 << QByteArray(1, '\1');
        QTest::newRow("31, ISO") << 31 << Aes::ISO << QByteArray("\x80");
        QTest::newRow("17, PKCS7") << 17 << Aes::PKCS7 << QByteArray(15, '\x0f');
        QTest::newRow("15, other kind") << 15 << Aes::AesPadding(9) << QByteArray(1, '\0');
    }

    void pads()
    {
        QFETCH(int, size);
        QFETCH(Aes::AesPadding, padding);
        QFETCH(QByteArray, added);
        const QByteArray text(size, 'x');
        for (const auto mode : modes) {
            const QByteArray cipher = Aes::Crypt(Aes::AES_128, mode, text, ourKey, ourKey, padding);
            QCOMPARE(Aes::Decrypt(Aes::AES_128, mode, cipher, ourKey, ourKey, padding), text + added);
        }
    }

    void removesPadding_data()
    {
        QTest::addColumn<Aes::AesPadding>("padding");
        QTest::addColumn<QByteArray>("padded");
        QTest::addColumn<QByteArray>("text");

        const auto row = [](const char* name, Aes::AesPadding padding, const QByteArray& padded,
                             const QByteArray& text) { QTest::newRow(name) << padding << padded << text; };
        for (const auto padding : paddings)
            QTest::addRow("empty, kind %d", padding) << padding << QByteArray() << QByteArray();
        row("zero", Aes::ZERO, QByteArray("a\0b\0\0", 5), QByteArray("a\0b", 3));
        row("zero, nothing but padding", Aes::ZERO, QByteArray(16, '\0'), "");
        row("zero, none", Aes::ZERO, "abc", "abc");
        row("PKCS7", Aes::PKCS7, "abc\2\2", "abc");
        row("PKCS7, bytes are not compared", Aes::PKCS7, "abcde\3", "abc");
        row("PKCS7, all of it", Aes::PKCS7, QByteArray(16, '\x10'), "");
        row("PKCS7, beyond a block", Aes::PKCS7, QByteArray(32, ' '), "");
        row("PKCS7, more than there is", Aes::PKCS7, "ab\4", "ab\4");
        row("PKCS7, zero", Aes::PKCS7, QByteArray("abc\0", 4), QByteArray("abc\0", 4));
        row("PKCS7, negative", Aes::PKCS7, "abc\x80", "abc\x80");
        row("PKCS7, minus one", Aes::PKCS7, "abc\xff", "abc\xff");
        row("ISO", Aes::ISO, QByteArray("abc\x80\0\0", 6), "abc");
        row("ISO, the last mark counts", Aes::ISO,
            QByteArray("a\x80"
                       "b\x80\0",
                5),
            "a\x80"
            "b");
        row("ISO, no mark", Aes::ISO, "abc", "");
        row("ISO, a mark inside a character", Aes::ISO, "\xe4\xb8\x80x", "\xe4\xb8");
        row("other kind", Aes::AesPadding(9), QByteArray("abc\1\0", 5), QByteArray("abc\1\0", 5));
    }

    void removesPadding()
    {
        QFETCH(Aes::AesPadding, padding);
        QFETCH(QByteArray, padded);
        QTEST(Aes::RemovePadding(padded, padding), "text");
        QTEST(QAESEncryption(Aes::AES_256, Aes::OFB, padding).removePadding(padded), "text");
    }

    void isoIsTheDefault()
    {
        QCOMPARE(
            Aes::Decrypt(Aes::AES_128, Aes::ECB, Aes::Crypt(Aes::AES_128, Aes::ECB, "abc", ourKey), ourKey),
            QByteArray("abc\x80\0\0\0\0\0\0\0\0\0\0\0\0", 16));
        QCOMPARE(QAESEncryption(Aes::AES_128, Aes::ECB).removePadding("abc\x80"), QByteArray("abc"));
    }

    void faultsGiveNothing()
    {
        const QByteArray block(16, 'x');
        for (const auto mode : {Aes::CBC, Aes::CFB, Aes::OFB}) {
            for (const QByteArray& iv : {QByteArray(), QByteArray(15, 'i'), QByteArray(17, 'i')}) {
                QVERIFY(Aes::Crypt(Aes::AES_128, mode, block, ourKey, iv).isEmpty());
                QVERIFY(Aes::Decrypt(Aes::AES_128, mode, block, ourKey, iv).isEmpty());
            }
        }
        for (const auto mode : modes) {
            for (const auto level : levels) {
                for (const int length : {0, 15, 17, 20, 31, 33}) {
                    QVERIFY(Aes::Crypt(level, mode, block, QByteArray(length, 'k'), ourKey).isEmpty());
                    QVERIFY(Aes::Decrypt(level, mode, block, QByteArray(length, 'k'), ourKey).isEmpty());
                }
            }
        }
        for (const auto mode : {Aes::ECB, Aes::CBC})
            for (const int length : {1, 15, 17, 31})
                QVERIFY(Aes::Decrypt(Aes::AES_128, mode, QByteArray(length, 'x'), ourKey, ourKey).isEmpty());
    }

    void ecbIgnoresTheVector()
    {
        const QByteArray block(32, 'x');
        QCOMPARE(Aes::Crypt(Aes::AES_128, Aes::ECB, block, ourKey, "short"),
            Aes::Crypt(Aes::AES_128, Aes::ECB, block, ourKey));
    }

    void streamModesDecipherAnyLength()
    {
        const QByteArray text(48, 't');
        for (const auto mode : {Aes::CFB, Aes::OFB})
            for (int length = 0; length <= text.size(); ++length)
                QCOMPARE(
                    Aes::Decrypt(Aes::AES_128, mode,
                        Aes::Crypt(Aes::AES_128, mode, text, ourKey, ourKey).left(length), ourKey, ourKey),
                    text.left(length));
    }

    void anUnknownLevelIsAes128()
    {
        QAESEncryption unknown(Aes::AesLevel(7), Aes::CBC, Aes::PKCS7);
        QCOMPARE(unknown.encode("text", ourKey, ourKey),
            Aes::Crypt(Aes::AES_128, Aes::CBC, "text", ourKey, ourKey, Aes::PKCS7));
        QCOMPARE(unknown.expandKey(ourKey), Aes::ExpandKey(Aes::AES_128, Aes::CBC, ourKey));
    }

    void enciphersText_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("back");
        QTest::addColumn<int>("length");

        const auto row = [](const char* name, const QString& text, const QString& back, int length) {
            QTest::newRow(name) << text << back << length;
        };
        row("empty", "", "", 0);
        row("five bytes", "hello", "hello", 24);
        row("two characters, six bytes", "密码", "密码", 24);
        row("a whole block", "0123456789abcdef", "0123456789abcdef", 24);
        row("a whole block that ends like padding", "0123456789abcde\1", "0123456789abcde", 24);
        row("two blocks that end in a space", "0123456789abcdef0123456789abcde ", "", 44);
        row("seventeen bytes", "0123456789abcdefg", "0123456789abcdefg", 44);
    }

    void enciphersText()
    {
        QFETCH(QString, text);
        const QString cipher = aesEncryptText(text, ourKey, ourKey);
        QTEST(cipher.size(), "length");
        QCOMPARE(aesEncryptText(text, ourKey, ourKey), cipher);
        QTEST(aesDecryptText(cipher, ourKey, ourKey), "back");
    }

    /// printf hello | openssl enc -aes-128-cbc -K (ourKey in hex) -iv (the same) -base64
    void enciphersTextAsOthersDo()
    {
        QCOMPARE(aesEncryptText("hello", ourKey, ourKey), QString("MB+o8xg7mCBZ5F7ajwRQ4w=="));
        QCOMPARE(aesDecryptText(" MB+o8xg7\r\nmCBZ5F*7ajwRQ4w==", ourKey, ourKey), QString("hello"));
        QCOMPARE(aesDecryptText("MB+o8xg7", ourKey, ourKey), QString());
    }
};

QTEST_APPLESS_MAIN(TestQAESEncryption)
#include "tst_qaesencryption.moc"
