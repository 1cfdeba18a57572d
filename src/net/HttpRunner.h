// SPDX-License-Identifier: MIT
#pragma once

#include "net/CloudFailure.h"
#include "net/HttpExchange.h"

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QVariant>

/// \file
/// One blocking HTTP exchange per call. Every network call of the module goes through here.
///
/// Each function sends one request to \a url (parsed tolerantly, never re-encoded by the caller) with the
/// headers of \a headers, and waits in a local event loop, which leaves user input in the queue, until the
/// reply is complete or \a timeoutMs milliseconds have passed. It returns true and writes \a result, or
/// returns false, leaves \a result as it was and writes \a error:
///   - "连接超时": no complete reply in time, or the wait was ended from outside (the event loop of the
///   calling thread quits, as the application's does, or Escape closed the dialog of httpPostSoap());
///   - "返回值解析失败": the reply cannot be used (refused, reset or cut connections end here too).
///
/// Neither the HTTP status nor the transport's error decides about a reply whose body is a JSON object: it is
/// returned as it is and judged by checkReply(). Redirects are not followed. A request is written to the
/// network once at most. Replies that are read into memory are limited in size (8 MiB of JSON, 512 MiB of
/// SOAP).
///
/// Any thread may call; there must be a QCoreApplication. No state survives a call but
/// lastTransportFailure().

/// The time-out of every request to the platform, in milliseconds.
constexpr double platformTimeoutMs = 5000.0;

/// The kind of failure of the last call on this thread; CloudFailure::None after a success. The next call
/// overwrites it.
CloudFailure lastTransportFailure();

using HeaderMap = tav::HeaderMap;
using ResultMap = QMap<QString, QVariant>;

namespace tav {

enum class BusyDialog
{
    Hidden,
    Shown ///< modal, where the application has widgets and the call is on the GUI thread
};

/// Starts \a exchange and waits for its end. Result and errors are those of the functions below.
bool runToEnd(HttpExchange& exchange, QString& error, BusyDialog busy = BusyDialog::Hidden);

} // namespace tav

/// GET; \a result is the reply's JSON object.
bool httpGet(ResultMap& result, QString& error, QString url, const HeaderMap& headers, double timeoutMs);

/// GET; the body is streamed into a temporary file beside \a savePath, which takes the place of \a savePath
/// only when the whole body has arrived and has been written; until then, and after any failure, an older
/// file there stays untouched. A body of no bytes, every reply but a 2xx one, and over https one that does
/// not say where it ends (by length, chunks or a digest) fail with "返回值解析失败". When the file cannot be
/// written, the result is false and \a error is left unchanged. \a unused is never touched.
bool httpGetToFile(ResultMap& unused, QString& error, QString url, QString savePath, const HeaderMap& headers,
    double timeoutMs);

/// DELETE; \a result is the reply's JSON object.
bool httpDelete(ResultMap& result, QString& error, QString url, const HeaderMap& headers, double timeoutMs);

/// POST of \a body; without a "Content-Type" in \a headers it travels as application/x-www-form-urlencoded.
bool httpPost(ResultMap& result, QString& error, QString url, const HeaderMap& headers,
    const QByteArray& body, double timeoutMs);

/// PUT of \a body, otherwise like httpPost().
bool httpPut(ResultMap& result, QString& error, QString url, const HeaderMap& headers, const QByteArray& body,
    double timeoutMs);

/// POST of a multipart/form-data body: one part for each entry of \a fields in key order, then, unless \a
/// filePath is empty, a part named "file" with the file's bytes, streamed from disk. A file that cannot be
/// opened is sent as a part without bytes; one that gets shorter while it is sent ends the call with
/// "返回值解析失败".
bool httpPostMultipart(ResultMap& result, QString& error, QString url, const HeaderMap& headers,
    const QMap<QString, QVariant>& fields, QString filePath, double timeoutMs);

/// PUT of a multipart/form-data body without a file.
bool httpPutMultipart(ResultMap& result, QString& error, QString url, const HeaderMap& headers,
    const QMap<QString, QVariant>& fields, double timeoutMs);

/// POST of a SOAP envelope to the conversion service, with a modal busy dialog while it waits (without one
/// where the application has no widgets). \a result is the text of the conversion result element as it stands
/// in the reply, in the local 8-bit encoding.
bool httpPostSoap(QByteArray& result, QString& error, QString url, const HeaderMap& headers,
    const QByteArray& body, double timeoutMs);
