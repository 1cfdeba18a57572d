// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// Asks the platform at \a baseUrl whether \a token is still valid; blocks for at most 5000 ms.
/// On false \a error is the transport's text or "error:error_description" as the platform named them.
bool checkToken(QString baseUrl, QString token, QString& error);

/// Exchanges \a refreshToken for a new pair of tokens, updating both arguments on success only; blocks
/// for at most 5000 ms. On false \a error is the transport's or the platform's text.
bool refreshAccessToken(QString baseUrl, QString& refreshToken, QString& token, QString& error);
