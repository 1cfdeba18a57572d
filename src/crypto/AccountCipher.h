// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

/// \a text in the local 8-bit encoding, enciphered with AES-128-CBC under \a key and \a iv (16 bytes each),
/// as Base64 text. A text whose bytes fill whole blocks gets no padding: stored data depends on it.
QString aesEncryptText(QString text, QByteArray key, QByteArray iv);

/// The reverse of aesEncryptText(). There is no integrity check: a wrong key gives garbage, and a text of
/// whole blocks whose last byte looks like padding comes back shortened.
QString aesDecryptText(QString text, QByteArray key, QByteArray iv);
