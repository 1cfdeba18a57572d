// SPDX-License-Identifier: MIT
#include "cloud/CloudFileManger_p.h"

using namespace tav;

TransferPlan CloudFileManger::Private::upload(
    const QString& path, const Fields& fields, const QString& filePath) const
{
    TransferPlan plan;
    plan.result.filePath = filePath;
    plan.request = [url = baseAddress + path, headers = bearer(), fields, filePath,
                       options = transferOptions] {
        return HttpRequest{"POST", url, headers, std::make_unique<RequestBody>(fields, filePath),
            std::make_unique<JsonReader>(), platformTimeoutMs, filePath, options};
    };
    plan.judge = [](ReplyReader& reader, TransferResult& result) {
        if (result.failure != CloudFailure::None)
            return;
        const ResultMap& reply = static_cast<JsonReader&>(reader).object;
        if (!checkReply(reply, result.error))
            result.failure = refusalIn(reply, result.error);
        else
            result.logicalId =
                reply.value(QStringLiteral("data")).toMap().value(QStringLiteral("logicalId")).toInt();
    };
    return plan;
}

TransferPlan CloudFileManger::Private::download(
    const QString& path, const QString& query, const QString& savePath) const
{
    TransferPlan plan;
    plan.result.filePath = savePath;
    plan.request = [url = baseAddress + path + '?' + query, headers = bearer(), savePath,
                       options = transferOptions] {
        return HttpRequest{"GET", url, headers, std::make_unique<RequestBody>(),
            std::make_unique<FileReader>(savePath), platformTimeoutMs, savePath, options};
    };
    plan.judge = [](ReplyReader&, TransferResult&) {};
    return plan;
}

TransferPlan CloudFileManger::Private::ofProject(TransferPlan plan) const
{
    if (projectId.isEmpty())
        plan.result.failure = CloudFailure::NoProject;
    return plan;
}
