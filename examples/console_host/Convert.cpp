// SPDX-License-Identifier: MIT
#include "Commands.h"
#include "convert/CadConversion.h"

#include <QDateTime>
#include <QFileInfo>

bool convert(const QStringList& drawing)
{
    const QFileInfo file(drawing[0]);
    if (!file.isReadable() || (file.suffix() != "dgn" && file.suffix() != "dwg"))
        return failed("Nothing was converted", "it takes a readable drawing named .dgn or .dwg");

    const bool fromDgn = file.suffix() == "dgn";
    QString result = fromDgn ? file.filePath() : file.path() + "/" + file.completeBaseName() + ".dgn";
    QString error;
    if (!(fromDgn ? dgn2Dwg(result, error, QString()) : dwg2Dgn(file.filePath(), error, result)))
        return failed("Nothing was converted", error);
    // A result that could not be written is not an error of the conversion.
    if (QFileInfo(result).lastModified() < file.lastModified())
        return failed("Nothing was converted", result + " could not be written");
    say(result);
    return true;
}
