// SPDX-License-Identifier: MIT
#include "net/CloudFailure.h"

#include <QCoreApplication>
#include <QRegularExpression>

namespace {

struct Sentences
{
    Q_DECLARE_TR_FUNCTIONS(CloudFailure)
};

} // namespace

QString cloudFailureText(CloudFailure failure, const QString& lastError)
{
    switch (failure) {
    case CloudFailure::None:
        return QString();
    case CloudFailure::NoConnection:
        return Sentences::tr("There is no connection to the platform. Check the network.");
    case CloudFailure::NotTrusted:
        return Sentences::tr(
            "There is no secure connection to the platform. Ask your administrator about its "
            "certificate.");
    case CloudFailure::TimedOut:
        return Sentences::tr("It took too long. Try again later, or over a faster connection.");
    case CloudFailure::Cancelled:
        return Sentences::tr("It was given up.");
    case CloudFailure::Unavailable:
        return Sentences::tr("The platform does not give this file: it is no longer there, or not for you.");
    case CloudFailure::NotConverted:
        return Sentences::tr("The conversion service did not take the drawing, or its answer was cut.");
    case CloudFailure::Unusable:
        return Sentences::tr("The connection was cut, or the answer was not the platform's. Try again.");
    case CloudFailure::NotWritten:
        return Sentences::tr("The file could not be written. Check the folder and the room on the disk.");
    case CloudFailure::NoProject:
        return Sentences::tr("No cloud project is chosen.");
    case CloudFailure::SignedOut:
        return Sentences::tr("You are signed out. Sign in again.");
    case CloudFailure::Refused:
        break;
    }
    // The module wraps some of the platform's texts in one of its own.
    static const QRegularExpression wrapped(QStringLiteral("^网络错误:\\d+\\((.*)\\)$"));
    const QRegularExpressionMatch match = wrapped.match(lastError);
    const QString text = match.hasMatch() ? match.captured(1) : lastError;
    return text.isEmpty() ? Sentences::tr("The platform refused, and gave no reason.") : text;
}
