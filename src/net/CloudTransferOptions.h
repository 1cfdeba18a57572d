// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <functional>

/// How far a transfer is: a backup or a share on its way up, a file on its way down, a conversion.
struct CloudTransferProgress
{
    /// What the transfer is at.
    enum class Stage
    {
        Sending,
        Waiting, ///< all has been sent; the platform or the conversion service is at work
        Receiving
    };

    Stage stage = Stage::Sending; ///< what it is at now
    QString filePath; ///< the local file that is read, or written
    /// Of what is sent or received in this stage, in bytes. A conversion carries its drawings as text, four
    /// bytes for three.
    qint64 bytesDone = 0;
    qint64 bytesTotal = -1; ///< -1 while that is not known
};

/// What a host may say of the operations that carry a file. Made without arguments they are as ever.
struct CloudTransferOptions
{
    /// What the limit counts from.
    enum class Limit
    {
        WholeExchange, ///< the beginning: everything must have come by then
        LastByte ///< the last byte that moved, either way: as long as something moves, a transfer may last
    };

    Limit limit = Limit::WholeExchange; ///< what limitMs counts from

    /// In milliseconds; 0 for the operation's own: 5000, and 30000 for a conversion. With Limit::LastByte it
    /// must be enough for what the platform does without a word, like putting a large file in its place.
    int limitMs = 0;

    /// Whether a download whose connection is lost goes on, in a further request, where it was cut. Only
    /// where the platform offers it (byte ranges, and a strong validator by which it is seen to be the same
    /// file still), and within the limit. Nothing that is sent to the platform is ever repeated.
    bool continueDownloads = false;

    /// Called ten times a second while the transfer runs, whether bytes move or not, in the thread that made
    /// the call or started the job. False gives the transfer up: the operation is false then, its last error
    /// is empty and its failure CloudFailure::Cancelled. It may run an event loop, as
    /// QProgressDialog::setValue() does; it is not called again before it returns, and what time it takes is
    /// the transfer's.
    std::function<bool(const CloudTransferProgress&)> progress;
};
