// SPDX-License-Identifier: MIT
#include "Fuzz.h"

#include "crypto/AccountCipher.h"
#include "crypto/QAESEncryption.h"

#include <fuzzer/FuzzedDataProvider.h>

/// The input is a level, a mode, a padding, a key, a vector and a text.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzedDataProvider input(data, size);
    const auto upTo = [&](int most) { return input.ConsumeIntegralInRange(0, most); };
    const auto bytes = [&](int count) {
        return QByteArray::fromStdString(input.ConsumeBytesAsString(count));
    };
    QAESEncryption cipher(QAESEncryption::AesLevel(upTo(3)), QAESEncryption::AesMode(upTo(3)),
        QAESEncryption::AesPadding(upTo(2)));
    const QByteArray key = bytes(upTo(33));
    const QByteArray iv = bytes(upTo(17));
    const QByteArray text = bytes(4096);

    const QByteArray clear = cipher.decode(text, key, iv);
    require(clear.isEmpty() || clear.size() == text.size());
    require(clear.startsWith(cipher.removePadding(clear)));
    const QByteArray secret = cipher.encode(text, key, iv);
    require(secret.isEmpty() || cipher.decode(secret, key, iv).startsWith(text));
    aesDecryptText(QString::fromLocal8Bit(text), key, iv);
    aesDecryptText(QString::fromLatin1(text.toBase64()), key, iv);
    return 0;
}
