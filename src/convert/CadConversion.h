// SPDX-License-Identifier: MIT
#pragma once

#include "net/CloudConversionReport.h"
#include "net/CloudFailure.h"
#include "net/CloudTransferOptions.h"
#include "tav_cloud_platform_sdk_export.h"

#include <QString>

class CloudTransferJob;
class QObject;

/// \file
/// Conversion of drawings by the conversion service. The whole drawing is sent and the whole result received;
/// the module converts nothing itself. A drawing of n bytes needs up to about 4 n of memory meanwhile.
///
/// Both functions wait for at most 30 s, and read and write the files besides. On the GUI thread they show a
/// modal "Waiting" dialog, which Escape closes: the conversion is given up then. They return true once the
/// result has been received, and write \a error on false only: "连接超时" (no answer in time, or given up) or
/// "返回值解析失败" (no usable result: the service refused the drawing, or the answer was cut).
/// lastConversionFailure() tells the kinds of failure apart.
///
/// The result replaces an older file only once all of it is on the disk. Problems with files do not make the
/// result false: a drawing that cannot be read, is larger than 1 GiB or has an empty path is sent as an empty
/// one, which the service refuses; and where the result cannot be written (no such folder, an empty path) an
/// older file stays, true is returned, and lastConversionFailure() is CloudFailure::NotWritten.
///
/// Any thread may call them, several at once too; there must be an application object. Off the GUI thread no
/// dialog is shown. The arguments by reference must live until the call returns: on the GUI thread timers run
/// meanwhile.

/// Converts the DGN drawing \a path to DWG.
/// \param path the drawing; on success the path of the result
/// \param error receives the reason of a failure
/// \param outLocation Empty: the result stands beside the drawing, every ".dgn" in \a path replaced by
/// ".dwg". Mind that a path without ".dgn" in lower case keeps its name, so that the result takes the
/// drawing's place. Not empty: the result goes into the folder that contains \a outLocation (a folder named
/// with a trailing "/" is itself meant), named after the drawing up to its first ".", plus ".dwg".
TAV_CLOUD_PLATFORM_SDK_EXPORT bool dgn2Dwg(QString& path, QString& error, QString outLocation);

/// Converts the DWG drawing \a inPath to DGN and writes exactly \a outPath. A failure is also sent to the
/// host's log.
TAV_CLOUD_PLATFORM_SDK_EXPORT bool dwg2Dgn(QString inPath, QString& error, QString outPath);

/// What kind of failure the last conversion on the calling thread ended in; CloudFailure::None when the
/// result is in its file.
TAV_CLOUD_PLATFORM_SDK_EXPORT CloudFailure lastConversionFailure();

/// \name Large drawings, and what became of a drawing
/// @{

/// dgn2Dwg() with a limit and a progress function of the caller's; see CloudTransferOptions. With a progress
/// function it shows no dialog; one that gives the conversion up makes it false with an empty \a error. What
/// the service says about the conversion, whether it succeeded or not, is put into \a report, which may be
/// null.
TAV_CLOUD_PLATFORM_SDK_EXPORT bool dgn2Dwg(QString& path, QString& error, QString outLocation,
    const CloudTransferOptions& options, CloudConversionReport* report = nullptr);
/// dwg2Dgn() in the same manner.
TAV_CLOUD_PLATFORM_SDK_EXPORT bool dwg2Dgn(QString inPath, QString& error, QString outPath,
    const CloudTransferOptions& options, CloudConversionReport* report = nullptr);

/// dgn2Dwg() as a job, which shows no dialog; for the caller to start, and to destroy unless \a parent does.
/// A result that cannot be written is a failure of it.
TAV_CLOUD_PLATFORM_SDK_EXPORT CloudTransferJob* dgn2DwgJob(
    QString path, QString outLocation, const CloudTransferOptions& options = {}, QObject* parent = nullptr);
/// dwg2Dgn() as a job in the same manner.
TAV_CLOUD_PLATFORM_SDK_EXPORT CloudTransferJob* dwg2DgnJob(
    QString inPath, QString outPath, const CloudTransferOptions& options = {}, QObject* parent = nullptr);

/// @}
