// SPDX-License-Identifier: MIT
#pragma once

#include "ScriptedPeer.h"

/// One part of a multipart/form-data body.
struct FormPart
{
    QByteArray head; ///< its header lines, without the empty line
    QByteArray body;
};

/// Splits the body of \a request at its boundary. Strict: anything that the format does not have, a body that
/// ends before the closing boundary included, is written to \a fault.
QVector<FormPart> parseForm(const RecordedRequest& request, QString& fault);

/// The head of a part that carries the field \a name.
QByteArray fieldHead(const QByteArray& name);
/// The head of the part that carries a file.
QByteArray fileHead(const QByteArray& fileName);
