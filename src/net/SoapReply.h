// SPDX-License-Identifier: MIT
#pragma once

#include "net/CloudConversionReport.h"

#include <QByteArray>

namespace tav {

/// The text of the conversion result element in \a body, or a null array when there is none.
QByteArray conversionResult(QByteArray body);

/// What \a body says beside the result: a fault, or a report in the SOAP header.
/// \param encodedReport the report in Base64, as an HTTP header carries it; taken where the body has none
CloudConversionReport conversionReport(const QByteArray& body, const QByteArray& encodedReport);

} // namespace tav
