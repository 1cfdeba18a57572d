// SPDX-License-Identifier: MIT
#include "Fuzz.h"

#include "convert/CadConversion.h"
#include "net/SoapReply.h"

#include <QFile>

using namespace tav;

/// The input is the body of the conversion service's reply.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray reply = bytesOf(data, size);
    replies = {reply};
    QString path = QStringLiteral("a.dgn");
    QString error;
    if (!dgn2Dwg(path, error, QString()))
        return 0;
    // Whole groups of four, none of them left out.
    const QByteArray text = conversionResult(reply).simplified().replace(' ', "");
    require(text.size() % 4 == 0 && QFile(path).size() == text.size() / 4 * 3 - text.count('='));
    return 0;
}
