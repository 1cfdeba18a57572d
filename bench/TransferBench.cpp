// SPDX-License-Identifier: MIT
// The runners beside the same exchange written by hand.
#include "Memory.h"
#include "Transfer.h"
#include "net/HttpRunner.h"

#include <QBuffer>
#include <QEventLoop>
#include <QFile>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QTemporaryDir>
#include <QThread>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <unistd.h>

namespace {

constexpr int blobMiB = 256;
constexpr double timeoutMs = 60000;

/// A folder with a file to upload, made once.
const QTemporaryDir& folder()
{
    static const QTemporaryDir made;
    static const bool filled = [] {
        QFile file(made.filePath("blob"));
        const QByteArray block(1 << 20, 'b');
        bool good = file.open(QIODevice::WriteOnly);
        for (int i = 0; i < blobMiB; ++i)
            good = good && file.write(block) == block.size();
        return good;
    }();
    if (!filled)
        std::abort();
    return made;
}

void getOurs(benchmark::State& state)
{
    for (auto _ : state) {
        ResultMap result;
        QString error;
        if (!httpGet(result, error, peerAddress() + "/small", {}, timeoutMs))
            state.SkipWithError("failed");
    }
}

void getByHand(benchmark::State& state)
{
    for (auto _ : state) {
        if (!exchangeByHand(peerAddress() + "/small"))
            state.SkipWithError("failed");
    }
}

/// Runs \a exchange, of blobMiB each time, and records the throughput and how far memory rose.
template <typename Exchange>
void transfer(benchmark::State& state, const Exchange& exchange)
{
    folder();
    double peak = 0;
    for (auto _ : state) {
        const MemoryPeak memory;
        if (!exchange())
            state.SkipWithError("failed");
        peak = std::max(peak, memory.peakMiB());
    }
    state.SetBytesProcessed(state.iterations() * (qint64(blobMiB) << 20));
    state.counters["peak_MiB"] = peak;
}

void uploadOurs(benchmark::State& state)
{
    transfer(state, [] {
        ResultMap result;
        QString error;
        return httpPostMultipart(result, error, peerAddress() + "/sink", {}, {{"projectId", "1"}},
            folder().filePath("blob"), timeoutMs);
    });
}

/// The same on a bare QNetworkAccessManager, without a form around the file.
bool uploadByHand(QIODevice& body)
{
    QNetworkAccessManager manager;
    QNetworkRequest request(QUrl(peerAddress() + "/sink"));
    request.setHeader(QNetworkRequest::ContentTypeHeader, "application/octet-stream");
    QNetworkReply* reply = manager.post(request, &body);
    QEventLoop loop;
    QObject::connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
    loop.exec();
    return reply->error() == QNetworkReply::NoError;
}

void uploadQtFile(benchmark::State& state)
{
    transfer(state, [] {
        QFile file(folder().filePath("blob"));
        return file.open(QIODevice::ReadOnly) && uploadByHand(file);
    });
}

void uploadQtMemory(benchmark::State& state)
{
    QByteArray bytes(blobMiB << 20, 'b');
    transfer(state, [&] {
        QBuffer buffer(&bytes);
        return buffer.open(QIODevice::ReadOnly) && uploadByHand(buffer);
    });
}

/// With a manager that has a thread of its own.
void uploadQtThread(benchmark::State& state)
{
    transfer(state, [] {
        bool good = false;
        const std::unique_ptr<QThread> thread(QThread::create([&] {
            QFile file(folder().filePath("blob"));
            good = file.open(QIODevice::ReadOnly) && uploadByHand(file);
        }));
        thread->start();
        thread->wait();
        return good;
    });
}

size_t discard(char*, size_t size, size_t count, void*)
{
    return size * count;
}

void uploadCurl(benchmark::State& state)
{
    transfer(state, [] {
        return performWithCurl(peerAddress() + "/sink", [](CURL* curl) {
            curl_mime* form = curl_mime_init(curl);
            curl_mimepart* field = curl_mime_addpart(form);
            curl_mime_name(field, "projectId");
            curl_mime_data(field, "1", CURL_ZERO_TERMINATED);
            curl_mimepart* file = curl_mime_addpart(form);
            curl_mime_name(file, "file");
            curl_mime_filedata(file, folder().filePath("blob").toUtf8().constData());
            curl_easy_setopt(curl, CURLOPT_MIMEPOST, form);
            curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, discard);
            const bool good = curl_easy_perform(curl) == CURLE_OK;
            curl_mime_free(form);
            return good;
        });
    });
}

QString blobPath()
{
    return QStringLiteral("/blob/%1").arg(qint64(blobMiB) << 20);
}

void downloadOurs(benchmark::State& state)
{
    transfer(state, [] {
        ResultMap unused;
        QString error;
        return httpGetToFile(
            unused, error, peerAddress() + blobPath(), folder().filePath("ours"), {}, timeoutMs);
    });
}

void downloadCurl(benchmark::State& state)
{
    transfer(state, [] {
        return performWithCurl(peerAddress() + blobPath(), [](CURL* curl) {
            std::FILE* file = std::fopen(folder().filePath("curl").toUtf8().constData(), "wb");
            curl_easy_setopt(curl, CURLOPT_WRITEDATA, file);
            const bool good = curl_easy_perform(curl) == CURLE_OK;
            const bool written = std::fflush(file) == 0 && fsync(fileno(file)) == 0;
            return std::fclose(file) == 0 && written && good;
        });
    });
}

BENCHMARK(getOurs)->Name("small GET/ours")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(getByHand)->Name("small GET/bare Qt")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(uploadOurs)->Name("upload of 256 MiB/ours")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(uploadCurl)->Name("upload of 256 MiB/libcurl")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(uploadQtFile)
    ->Name("upload of 256 MiB/bare Qt, file")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(uploadQtMemory)
    ->Name("upload of 256 MiB/bare Qt, memory")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(uploadQtThread)
    ->Name("upload of 256 MiB/bare Qt, thread")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(downloadOurs)->Name("download of 256 MiB/ours")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(downloadCurl)->Name("download of 256 MiB/libcurl")->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
