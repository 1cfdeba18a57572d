// SPDX-License-Identifier: MIT
// A conversion against a service that gives the drawing back, beside the same exchange by libcurl.
#include "Memory.h"
#include "Transfer.h"
#include "convert/CadConversion.h"

#include <QFile>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>
#include <openssl/evp.h>

#include <algorithm>
#include <unistd.h>

namespace {

class Drawing
{
public:
    explicit Drawing(qint64 mebibytes)
    {
        QFile file(path());
        if (file.open(QIODevice::WriteOnly))
            file.write(QByteArray(int(mebibytes << 20), 'd'));
    }
    QString path() const { return folder.filePath("drawing.dgn"); }
    QString result() const { return folder.filePath("drawing.dwg"); }
    bool cameBack() const { return QFile(path()).size() == QFile(result()).size(); }

private:
    QTemporaryDir folder;
};

template <typename Convert>
void conversion(benchmark::State& state, const Convert& convert)
{
    const Drawing drawing(state.range(0));
    double peak = 0;
    for (auto _ : state) {
        const MemoryPeak memory;
        if (!convert(drawing) || !drawing.cameBack())
            state.SkipWithError("failed");
        peak = std::max(peak, memory.peakMiB());
    }
    state.SetBytesProcessed(state.iterations() * (state.range(0) << 20));
    state.counters["peak_MiB"] = peak;
}

void conversionOurs(benchmark::State& state)
{
    conversion(state, [](const Drawing& drawing) {
        QString path = drawing.path();
        QString error;
        return dgn2Dwg(path, error, QString());
    });
}

size_t keep(char* bytes, size_t size, size_t count, void* body)
{
    static_cast<std::string*>(body)->append(bytes, size * count);
    return size * count;
}

std::string encoded(const QByteArray& bytes)
{
    std::string text(size_t(bytes.size()) / 3 * 4 + 5, '\0');
    const int size = EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()),
        reinterpret_cast<const unsigned char*>(bytes.constData()), bytes.size());
    text.resize(size_t(size));
    return text;
}

void conversionCurl(benchmark::State& state)
{
    conversion(state, [](const Drawing& drawing) {
        QFile in(drawing.path());
        std::string body = in.open(QIODevice::ReadOnly) ? "<file>" + encoded(in.readAll()) + "</file>" : "";
        std::string reply;
        const bool good = performWithCurl(peerAddress() + "/NrvConRnx.asmx", [&](CURL* curl) {
            curl_easy_setopt(curl, CURLOPT_POSTFIELDS, body.data());
            curl_easy_setopt(curl, CURLOPT_POSTFIELDSIZE_LARGE, curl_off_t(body.size()));
            curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, keep);
            curl_easy_setopt(curl, CURLOPT_WRITEDATA, &reply);
            return curl_easy_perform(curl) == CURLE_OK;
        });
        const size_t begin = reply.find('>') + 1;
        const size_t size = reply.find('<', begin) - begin;
        QByteArray result(int(size / 4 * 3), Qt::Uninitialized);
        EVP_DecodeBlock(reinterpret_cast<unsigned char*>(result.data()),
            reinterpret_cast<const unsigned char*>(reply.data() + begin), int(size));
        result.chop(int(
            std::count(reply.begin() + qint64(begin + size - 2), reply.begin() + qint64(begin + size), '=')));
        QFile out(drawing.result());
        return good && out.open(QIODevice::WriteOnly) && out.write(result) == result.size() && out.flush()
            && fsync(out.handle()) == 0;
    });
}

BENCHMARK(conversionOurs)
    ->Name("conversion MiB/ours")
    ->Arg(1)
    ->Arg(16)
    ->Arg(64)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(conversionCurl)
    ->Name("conversion MiB/libcurl")
    ->Arg(1)
    ->Arg(16)
    ->Arg(64)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

} // namespace
