// SPDX-License-Identifier: MIT
#pragma once

#include "tav_cloud_platform_sdk_export.h"

#include <QString>

/// Why an operation failed, where getLastError() alone does not tell: 返回值解析失败 stands for a refused
/// connection, a certificate and a cut reply alike.
enum class CloudFailure
{
    None, ///< nothing has failed
    NoConnection, ///< the platform was not reached: refused, host not found, network or proxy not available
    NotTrusted, ///< no secure connection: the certificate is not trusted, or TLS is missing or failed
    TimedOut, ///< no complete reply in time
    Cancelled, ///< the wait was ended: the application quits, or the user closed the dialog of a conversion
    Unusable, ///< the connection was cut, or the reply is not one that the platform sends
    Unavailable, ///< the platform answered a download with an error: it does not give the file
    NotConverted, ///< the conversion service answered without a drawing
    NotWritten, ///< the file could not be written
    NoProject, ///< the operation needs a current project, and nothing was sent
    SignedOut, ///< the platform does not accept the token (any more), or nobody is signed in: sign in again
    Refused ///< the platform refused, for the reason in getLastError()
};

/// A failure as a sentence for the user, in the language of installCloudPlatformTranslation(). Where the
/// platform gave a reason, that is \a lastError, as it is; for CloudFailure::None the text is empty.
///
/// \param failure what getLastFailure() gave
/// \param lastError what getLastError() gave after the operation
///
/// Any thread; does not block.
TAV_CLOUD_PLATFORM_SDK_EXPORT QString cloudFailureText(CloudFailure failure, const QString& lastError);
