// SPDX-License-Identifier: MIT
#include "crypto/AccountCipher.h"

#include "crypto/QAESEncryption.h"

QString aesEncryptText(QString text, QByteArray key, QByteArray iv)
{
    const QByteArray enciphered = QAESEncryption::Crypt(
        QAESEncryption::AES_128, QAESEncryption::CBC, text.toLocal8Bit(), key, iv, QAESEncryption::PKCS7);
    return QString::fromLatin1(enciphered.toBase64());
}

QString aesDecryptText(QString text, QByteArray key, QByteArray iv)
{
    const QByteArray deciphered = QAESEncryption::Decrypt(QAESEncryption::AES_128, QAESEncryption::CBC,
        QByteArray::fromBase64(text.toLocal8Bit()), key, iv, QAESEncryption::PKCS7);
    return QString::fromLocal8Bit(QAESEncryption::RemovePadding(deciphered, QAESEncryption::PKCS7));
}
