// SPDX-License-Identifier: MIT
#include "TestConstants.h"

#include "net/BuildConstants.h"

namespace {
QString& address()
{
    static QString value;
    return value;
}
} // namespace

void setPlatformAddress(const QString& value)
{
    address() = value;
}

namespace tav {

QString platformAddress()
{
    return address();
}

QString conversionAddress()
{
    return address();
}

QString clientCredential()
{
    return QStringLiteral("Basic dGVzdHM6YSAiY3JlZGVudGlhbCI=");
}

QString refreshBearer()
{
    return QStringLiteral("Bearer refresh-of-the-tests");
}

QByteArray accountCipherKey()
{
    return QByteArrayLiteral("a key for tests!");
}

} // namespace tav
