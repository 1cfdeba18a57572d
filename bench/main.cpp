// SPDX-License-Identifier: MIT
#include "Peer.h"
#include "Transfer.h"
#include "support/TestConstants.h"

#include <QCoreApplication>
#include <QMap>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <unistd.h>
#include <vector>

namespace {

QString address;

/// Prints what Google Benchmark prints, and then, for every pair "what/ours" and "what/other", the ratio of
/// their median times.
class RatioReporter : public benchmark::ConsoleReporter
{
public:
    void ReportRuns(const std::vector<Run>& runs) override
    {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            if (run.aggregate_name != "median")
                continue;
            const QString name = QString::fromStdString(run.run_name.function_name);
            const QString what = name.section('/', 0, 0) + QString::fromStdString(" " + run.run_name.args);
            medians[what.trimmed()][name.section('/', 1)] = run.GetAdjustedRealTime();
        }
    }

    void Finalize() override
    {
        ConsoleReporter::Finalize();
        std::printf("\n%-36s %10s %10s %10s\n", "median time", "ours", "other", "ratio");
        for (auto what = medians.begin(); what != medians.end(); ++what) {
            const double ours = what->value("ours");
            for (auto other = what->begin(); other != what->end(); ++other) {
                if (other.key() != "ours")
                    std::printf("%-36s %10.3f %10.3f %10.2f  (%s)\n", qUtf8Printable(what.key()), ours,
                        other.value(), ours / other.value(), qUtf8Printable(other.key()));
            }
        }
    }

private:
    QMap<QString, QMap<QString, double>> medians;
};

} // namespace

QString peerAddress()
{
    return address;
}

int main(int argc, char* argv[])
{
    // Read by the OpenSSL library before main(): without the processor's AES and carry-less multiplication.
    if (setenv("OPENSSL_ia32cap", "~0x200000200000000", 0) == 0 && !getenv("TAV_BENCH_STARTED")) {
        setenv("TAV_BENCH_STARTED", "1", 1);
        execv("/proc/self/exe", argv);
    }
    address = QString::fromStdString(startPeer());
    setPlatformAddress(address);
    QCoreApplication application(argc, argv);
    // Several repetitions in mixed order, so that the medians compare although the machine's speed drifts.
    std::vector<char*> arguments{argv[0], const_cast<char*>("--benchmark_repetitions=5"),
        const_cast<char*>("--benchmark_enable_random_interleaving=true"),
        const_cast<char*>("--benchmark_display_aggregates_only=true"),
        const_cast<char*>("--benchmark_min_time=0.2")};
    arguments.insert(arguments.end(), argv + 1, argv + argc);
    int count = int(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    return 0;
}
