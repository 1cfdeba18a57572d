// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace local_platform {

/// Must run before anything else here; throws when the library has no randomness to offer.
void initializeSecrets();

/// 256 random bits as URL-safe text.
std::string randomToken();
/// Whether the text could be such a token.
bool looksLikeToken(const std::string& text);
/// Random text of characters that people do not confuse, for codes that are handed on.
std::string randomCode(int length);
/// Random decimal digits.
std::string randomDigits(int length);
/// What is stored of a token: enough to recognise it, useless to who reads the database.
std::string fingerprint(const std::string& token);
/// Comparison that takes the same time wherever the texts differ.
bool sameSecret(const std::string& a, const std::string& b);

/// Any bytes in standard Base64.
std::string base64(const std::string& bytes);

/// argon2id with its salt and limits, as one text.
std::string hashedPassword(const std::string& password);
/// Takes as long for an account that does not exist: pass an empty hash.
bool passwordMatches(const std::string& hash, const std::string& password);

/// Whether an earlier version made the hash, at less cost to who guesses.
bool isHashedAsOfOld(const std::string& hash);

} // namespace local_platform
