// SPDX-License-Identifier: MIT
#include "Commands.h"
#include "convert/CadConversion.h"

#include <QFileInfo>

bool convert(const QStringList& drawing)
{
    const QFileInfo file(drawing[0]);
    if (!file.isReadable() || (file.suffix() != "dgn" && file.suffix() != "dwg"))
        return failed("Nothing was converted", "it takes a readable drawing named .dgn or .dwg");

    const bool fromDgn = file.suffix() == "dgn";
    QString result = fromDgn ? file.filePath() : file.path() + "/" + file.completeBaseName() + ".dgn";
    QString error;
    CloudConversionReport report;
    const bool done = fromDgn ? dgn2Dwg(result, error, QString(), {}, &report)
                              : dwg2Dgn(file.filePath(), error, result, {}, &report);
    if (!done)
        return failed("Nothing was converted", report.refusal.isEmpty() ? error : report.refusal);
    if (lastConversionFailure() == CloudFailure::NotWritten)
        return failed("Nothing was converted", result + " could not be written");
    say(result);
    if (!report.summary.isEmpty())
        say(report.summary);
    return true;
}
