// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

namespace tav {

/// The text of the conversion result element in \a body, or a null array when there is none.
QByteArray conversionResult(QByteArray body);

} // namespace tav
