// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

/// \file
/// The five values that a build fixes (the TAV_... cache variables). One generated source file defines them,
/// so that tests can link other definitions in its place.

namespace tav {

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
