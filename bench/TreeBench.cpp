// SPDX-License-Identifier: MIT
// The file tree beside a bare loop of the same requests.
#include "Transfer.h"
#include "cloud/CloudFileManger.h"
#include "core/ITreeElement.h"

#include <benchmark/benchmark.h>

namespace {

/// The backups, the shares of the software itself, and the files of each shared project.
qint64 requestsFor(const benchmark::State& state)
{
    return 2 + state.range(0);
}

void countRequests(benchmark::State& state)
{
    state.counters["per_request"] = benchmark::Counter(double(requestsFor(state)),
        benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void treeOurs(benchmark::State& state)
{
    const QString softName = QStringLiteral("shares%1").arg(state.range(0));
    CloudFileManger client(peerAddress(), "token", "", softName, {}, ".bak", "", "");
    for (auto _ : state)
        tav_tree_element_release_instance(client.getFileTree());
    countRequests(state);
}

void treeByHand(benchmark::State& state)
{
    const QString base = peerAddress() + "/project/cloudProjectShare/";
    const QString listing = base + "getProjectBySoftId?sourceClient=x&targetClient=shares%1";
    for (auto _ : state) {
        exchangeByHand(base + "getProjectList");
        exchangeByHand(listing.arg(state.range(0)));
        for (qint64 i = 0; i < state.range(0); ++i)
            exchangeByHand(base + QStringLiteral("getByProject?projectId=%1&sourceClient=x").arg(i));
    }
    countRequests(state);
}

const std::vector<std::vector<int64_t>> shares{{0, 10, 100, 1000}};

BENCHMARK(treeOurs)
    ->Name("file tree of shared projects/ours")
    ->ArgsProduct(shares)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(treeByHand)
    ->Name("file tree of shared projects/bare Qt")
    ->ArgsProduct(shares)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

} // namespace
