// SPDX-License-Identifier: MIT
#include "net/CloudTransferJob.h"

#include "net/TransferPlan.h"

#include <QPointer>

#include <optional>

using namespace tav;

struct TAV_CLOUD_PLATFORM_SDK_NO_EXPORT CloudTransferJob::Private
{
    TransferPlan plan;
    std::optional<HttpExchange> exchange;
    bool started = false;
    bool running = false;
};

CloudTransferJob::CloudTransferJob(TransferPlan plan, QObject* parent)
    : QObject(parent)
    , d(std::make_unique<Private>())
{
    qRegisterMetaType<CloudTransferProgress>();
    d->plan = std::move(plan);
}

CloudTransferJob::~CloudTransferJob() = default;

void CloudTransferJob::start()
{
    if (d->started)
        return;
    d->started = d->running = true;
    if (d->plan.result.failure != CloudFailure::None) {
        QMetaObject::invokeMethod(this, &CloudTransferJob::conclude, Qt::QueuedConnection);
        return;
    }
    HttpRequest request = d->plan.request();
    request.options.progress = [job = QPointer<CloudTransferJob>(this), hosts = request.options.progress](
                                   const CloudTransferProgress& progress) {
        emit job->progressed(progress);
        return !job || !hosts || hosts(progress);
    };
    d->exchange.emplace(std::move(request));
    connect(&*d->exchange, &HttpExchange::finished, this, &CloudTransferJob::conclude);
    d->exchange->start();
}

void CloudTransferJob::cancel()
{
    if (!d->running)
        return;
    if (d->exchange)
        d->exchange->cancel();
    else
        conclude();
}

void CloudTransferJob::conclude()
{
    if (!d->running)
        return;
    if (d->exchange)
        d->plan.conclude(*d->exchange);
    d->running = false;
    emit finished(d->plan.result.failure == CloudFailure::None);
}

bool CloudTransferJob::isRunning() const
{
    return d->running;
}

CloudFailure CloudTransferJob::failure() const
{
    return d->started && !d->running ? d->plan.result.failure : CloudFailure::None;
}

QString CloudTransferJob::errorText() const
{
    return d->plan.result.error;
}

QString CloudTransferJob::filePath() const
{
    return d->plan.result.filePath;
}

int CloudTransferJob::logicalId() const
{
    return d->plan.result.logicalId;
}

CloudConversionReport CloudTransferJob::conversionReport() const
{
    return d->plan.result.report;
}
