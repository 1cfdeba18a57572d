// SPDX-License-Identifier: MIT
#pragma once

#include "ScriptedPeer.h"

/// One part of a multipart/form-data body.
struct FormPart
{
    QByteArray head; ///< its header lines, without the empty line
    QByteArray body;
};

/// Splits the body of \a request at its boundary. Strict: everything that the format does not allow, such as
/// a missing closing boundary, is reported in \a fault.
QVector<FormPart> parseForm(const RecordedRequest& request, QString& fault);

/// The head of a part that carries the field \a name.
QByteArray fieldHead(const QByteArray& name);
/// The head of the part that carries a file.
QByteArray fileHead(const QByteArray& fileName);

/// What \a request carries: the parts of its form, if it is a whole one, otherwise its content type and body.
QByteArray contentOf(const RecordedRequest& request);
/// A field of a form in contentOf().
QByteArray part(const QByteArray& name, const QByteArray& value);
/// The file of a form in contentOf().
QByteArray filePart(const QByteArray& fileName, const QByteArray& bytes);
