// SPDX-License-Identifier: MIT
// The values that tests/package/CMakeLists.txt configures, as they must arrive.
#include "net/BuildConstants.h"

#include <QDebug>

using namespace tav;

int main()
{
    const bool good = clientCredential() == QStringLiteral("Basic \"quoted\" \\ and $ {x} @y@ ?\?/")
        && refreshBearer() == QStringLiteral("Bearer with spaces")
        && accountCipherKey() == QByteArrayLiteral("16 \"chars\" \\here");
    if (!good)
        qInfo() << clientCredential() << refreshBearer() << accountCipherKey();
    return good ? 0 : 1;
}
