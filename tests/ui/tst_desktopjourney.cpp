// SPDX-License-Identifier: MIT
// The desktop host's journey against the real local platform, with a drawing whose name and bytes are
// awkward.
#include "Journey.h"
#include "PlatformUnderTest.h"
#include "net/BuildConstants.h"
#include "support/TestConstants.h"

#include <QApplication>
#include <QDir>

using namespace tav;

int main(int argc, char* argv[])
{
    const QString pictures = QDir::current().filePath("journey-pictures");
    const QTemporaryDir work; // where accounts are remembered, and what file dialogs do
    QDir::setCurrent(work.path());
    qputenv("XDG_CONFIG_HOME", work.path().toLocal8Bit());
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    const QApplication application(argc, argv);
    qputenv("TAV_CLIENT_CREDENTIAL", clientCredential().toUtf8());
    qputenv("TAV_REFRESH_BEARER", refreshBearer().toUtf8());
    qputenv("TAV_CIPHER_KEY", accountCipherKey());
    PlatformUnderTest platform;
    setPlatformAddress(QStringLiteral("http://127.0.0.1:%1").arg(platform.port()));

    QFile drawing(work.filePath(QString::fromUtf8("site plan #1 & 2+3 (桥) 50%25.dgn")));
    drawing.open(QIODevice::WriteOnly);
    drawing.write(QByteArray("\r\n\0\xff--", 6).repeated(5000));
    drawing.close();

    const int result = journey(drawing.fileName(), pictures, platform.data() + "/outbox");
    return result == 0 ? platform.stop() : result;
}
