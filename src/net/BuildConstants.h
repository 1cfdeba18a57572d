// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

namespace tav {

/// The five values that a build fixes (the TAV_... cache variables). Their definitions stand in one generated
/// source file, so that the tests can link definitions of their own in its place.

/// Scheme, host and port of the cloud platform, without a trailing slash.
QString platformAddress();

/// Scheme, host and port of the conversion service, without a trailing slash.
QString conversionAddress();

/// The whole Authorization value of the account requests, "Basic ...".
QString clientCredential();

/// The whole Authorization value of the token refresh request, "Bearer ...".
QString refreshBearer();

/// Key and initialisation vector of the account cipher, 16 bytes.
QByteArray accountCipherKey();

} // namespace tav
