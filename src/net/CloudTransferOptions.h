// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <functional>

/// The progress of a transfer: an upload, a download or a conversion.
struct CloudTransferProgress
{
    /// The stages of a transfer, in their order.
    enum class Stage
    {
        Sending,
        Waiting, ///< all has been sent; the platform or the conversion service is at work
        Receiving
    };

    Stage stage = Stage::Sending; ///< the current stage
    QString filePath; ///< the local file that is read, or written
    /// Of what is sent or received in this stage, in bytes. A conversion carries its drawings as text, four
    /// bytes for three.
    qint64 bytesDone = 0;
    qint64 bytesTotal = -1; ///< -1 while that is not known
};

/// Settings for the operations that transfer a file. The defaults keep the behaviour without options.
struct CloudTransferOptions
{
    /// What the limit counts from.
    enum class Limit
    {
        WholeExchange, ///< the start: the transfer must be complete within the limit
        LastByte ///< the last byte sent or received: a transfer may last as long as bytes move
    };

    Limit limit = Limit::WholeExchange; ///< what limitMs counts from

    /// In milliseconds; 0 for the operation's own: 5000, and 30000 for a conversion. With Limit::LastByte it
    /// must cover the time that the platform works without sending anything, such as storing a large file.
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
