// SPDX-License-Identifier: MIT
// The runners beside the same exchange written by hand.
#include "Memory.h"
#include "Transfer.h"
#include "net/HttpRunner.h"

#include <QEventLoop>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>
#include <curl/curl.h>

#include <cstdio>

namespace {

constexpr int blobMiB = 256;
constexpr double patience = 60000;

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
    Q_ASSERT(filled);
    return made;
}

QString url(const QString& path)
{
    return peerAddress() + path;
}

void getOurs(benchmark::State& state)
{
    for (auto _ : state) {
        ResultMap result;
        QString error;
        if (!httpGet(result, error, url("/small"), {}, patience))
            state.SkipWithError("failed");
    }
}

void getByHand(benchmark::State& state)
{
    for (auto _ : state) {
        QNetworkAccessManager manager;
        QNetworkReply* reply = manager.get(QNetworkRequest(QUrl(url("/small"))));
        QEventLoop loop;
        QObject::connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
        loop.exec();
        if (QJsonDocument::fromJson(reply->readAll()).object().toVariantMap().isEmpty())
            state.SkipWithError("failed");
    }
}

/// Runs \a exchange of blobMiB bytes a time, and records the throughput and how far memory rose.
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
        return httpPostMultipart(
            result, error, url("/sink"), {}, {{"projectId", "1"}}, folder().filePath("blob"), patience);
    });
}

/// An exchange by libcurl, set up by \a prepare.
template <typename Prepare>
bool perform(const QString& address, const Prepare& prepare)
{
    CURL* curl = curl_easy_init();
    const QByteArray text = address.toUtf8();
    curl_easy_setopt(curl, CURLOPT_URL, text.constData());
    curl_easy_setopt(curl, CURLOPT_PROXY, "");
    const bool good = prepare(curl);
    curl_easy_cleanup(curl);
    return good;
}

size_t discard(char*, size_t size, size_t count, void*)
{
    return size * count;
}

void uploadCurl(benchmark::State& state)
{
    transfer(state, [] {
        return perform(url("/sink"), [](CURL* curl) {
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
        return httpGetToFile(unused, error, url(blobPath()), folder().filePath("ours"), {}, patience);
    });
}

void downloadCurl(benchmark::State& state)
{
    transfer(state, [] {
        return perform(url(blobPath()), [](CURL* curl) {
            std::FILE* file = std::fopen(folder().filePath("curl").toUtf8().constData(), "wb");
            curl_easy_setopt(curl, CURLOPT_WRITEDATA, file);
            const bool good = curl_easy_perform(curl) == CURLE_OK;
            return std::fclose(file) == 0 && good;
        });
    });
}

BENCHMARK(getOurs)->Name("small GET/ours")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(getByHand)->Name("small GET/bare Qt")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(uploadOurs)->Name("upload of 256 MiB/ours")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(uploadCurl)->Name("upload of 256 MiB/libcurl")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(downloadOurs)->Name("download of 256 MiB/ours")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(downloadCurl)->Name("download of 256 MiB/libcurl")->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
