// SPDX-License-Identifier: MIT
#pragma once

#include "net/CloudTransferJob.h"
#include "net/HttpExchange.h"

#include <functional>

namespace tav {

/// What a transfer ended in, beyond its exchange.
struct TransferResult
{
    CloudFailure failure = CloudFailure::None;
    QString error;
    QString filePath;
    int logicalId = 0;
    CloudConversionReport report;
};

/// A transfer before it begins. Both faces are made from one: an operation runs it to its end, a job when it
/// is started.
struct TransferPlan
{
    /// The request; opens the file that is sent.
    std::function<HttpRequest()> request;
    /// What the exchange's end means: takes what a good reply brought.
    std::function<void(ReplyReader&, TransferResult&)> judge;
    /// A failure in it is an obstacle, and nothing is sent.
    TransferResult result;

    void conclude(const HttpExchange& exchange)
    {
        result.failure = exchange.failure();
        result.error = exchange.errorText();
        judge(exchange.reader(), result);
    }
};

/// Makes the jobs, whose constructor hosts do not have.
class TransferJobs
{
public:
    static CloudTransferJob* make(TransferPlan plan, QObject* parent)
    {
        return new CloudTransferJob(std::move(plan), parent);
    }
};

} // namespace tav
