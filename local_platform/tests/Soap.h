// SPDX-License-Identifier: MIT
#pragma once

#include "PlatformUnderTest.h"

QByteArray request(const QByteArray& operation, const QByteArray& base64);
/// The text of the first element with this name; null when there is none or the answer is not XML to its end.
QString elementText(const QByteArray& xml, const QString& name);
Answer convert(const Client& client, const QByteArray& operation, const QByteArray& request);
