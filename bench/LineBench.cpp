// SPDX-License-Identifier: MIT
// Transfers over lines as people have them, beside libcurl. Peer, line and client are processes of their own.
#include "Memory.h"
#include "Peer.h"
#include "Transfer.h"
#include "cloud/CloudFileManger.h"
#include "core/ITreeElement.h"
#include "net/HttpRunner.h"
#include "support/Line.h"
#include "support/PeerIdentity.h"
#include "support/TestConstants.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QTemporaryDir>
#include <QUrl>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <functional>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr double patienceMs = 1e7;
constexpr int sharedProjects = 100;

/// A line in a process of its own, which ends with this object.
class LineProcess
{
public:
    LineProcess(const QString& peer, const LineSettings& settings)
    {
        int ends[2];
        if (::pipe(ends) != 0)
            std::abort();
        child = ::fork();
        if (child == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            std::signal(SIGPIPE, SIG_IGN);
            const Line line(std::uint16_t(QUrl(peer).port()), settings);
            const std::uint16_t port = line.port();
            if (::write(ends[1], &port, sizeof port) == sizeof port)
                ::pause();
            ::_exit(1);
        }
        std::uint16_t port = 0;
        if (::read(ends[0], &port, sizeof port) != sizeof port)
            std::abort();
        ::close(ends[0]);
        ::close(ends[1]);
        address = QStringLiteral("%1://127.0.0.1:%2").arg(QUrl(peer).scheme()).arg(port);
    }
    ~LineProcess()
    {
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
    }
    LineProcess(const LineProcess&) = delete;
    LineProcess& operator=(const LineProcess&) = delete;

    QString address;

private:
    pid_t child;
};

size_t discard(char*, size_t size, size_t count, void*)
{
    return size * count;
}

/// What is exchanged, in each of the ways that are compared.
struct Exchanges
{
    QString address;
    QTemporaryDir folder;
    qint64 size = 0;

    QString blob() const { return folder.filePath("blob"); }
    QString blobUrl() const { return address + QStringLiteral("/blob/%1").arg(size); }

    void makeBlob(qint64 bytes)
    {
        size = bytes;
        QFile file(blob());
        const QByteArray block(1 << 20, 'b');
        bool good = file.open(QIODevice::WriteOnly);
        for (qint64 left = bytes; left > 0; left -= block.size())
            good = good && file.write(block.constData(), std::min<qint64>(left, block.size())) > 0;
        if (!good)
            std::abort();
    }

    bool uploadOurs() const
    {
        ResultMap result;
        QString error;
        return httpPostMultipart(
            result, error, address + "/sink", {}, {{"projectId", "1"}}, blob(), patienceMs);
    }
    bool downloadOurs() const
    {
        ResultMap unused;
        QString error;
        return httpGetToFile(unused, error, blobUrl(), folder.filePath("ours"), {}, patienceMs);
    }
    bool postOurs() const
    {
        ResultMap result;
        QString error;
        return httpPost(result, error, address + "/small", {}, "a=b", patienceMs);
    }
    bool curl(const QString& url, const std::function<void(CURL*)>& setUp) const
    {
        return performWithCurl(url, [&](CURL* handle) {
            curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, discard);
            curl_blob trusted{const_cast<char*>(peerIdentity), sizeof peerIdentity - 1, CURL_BLOB_NOCOPY};
            curl_easy_setopt(handle, CURLOPT_CAINFO_BLOB, &trusted);
            setUp(handle);
            return curl_easy_perform(handle) == CURLE_OK;
        });
    }
    bool uploadCurl() const
    {
        curl_mime* form = nullptr;
        const bool good = curl(address + "/sink", [&](CURL* handle) {
            form = curl_mime_init(handle);
            curl_mimepart* file = curl_mime_addpart(form);
            curl_mime_name(file, "file");
            curl_mime_filedata(file, blob().toUtf8().constData());
            curl_easy_setopt(handle, CURLOPT_MIMEPOST, form);
        });
        curl_mime_free(form);
        return good;
    }
    bool downloadCurl() const
    {
        std::FILE* file = std::fopen(folder.filePath("curl").toUtf8().constData(), "wb");
        const bool good = curl(blobUrl(), [&](CURL* handle) {
            curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, nullptr);
            curl_easy_setopt(handle, CURLOPT_WRITEDATA, file);
        });
        const bool written = std::fflush(file) == 0 && ::fsync(::fileno(file)) == 0;
        return std::fclose(file) == 0 && written && good;
    }
    bool treeOurs() const
    {
        CloudFileManger client(
            address, "token", "", QStringLiteral("shares%1").arg(sharedProjects), {}, ".bak", "", "");
        ITreeElement* tree = client.getFileTree();
        const bool good = client.getLastFailure() == CloudFailure::None;
        tav_tree_element_release_instance(tree);
        return good;
    }
    /// The same requests, which could share a connection.
    bool treeCurl() const
    {
        return curl(address + "/small", [&](CURL* handle) {
            for (int i = 0; i < sharedProjects + 1; ++i)
                curl_easy_perform(handle);
        });
    }
    bool postCurl() const
    {
        return curl(
            address + "/small", [](CURL* handle) { curl_easy_setopt(handle, CURLOPT_POSTFIELDS, "a=b"); });
    }
};

struct Measured
{
    double seconds = 0;
    double peakMiB = 0;
};

Measured measured(const std::function<bool()>& exchange)
{
    const MemoryPeak memory;
    QElapsedTimer timer;
    timer.start();
    if (!exchange())
        std::printf("failed: ");
    return {double(timer.nsecsElapsed()) / 1e9, memory.peakMiB()};
}

/// The medians of \a times turns of each.
std::pair<Measured, Measured> compared(
    const std::function<bool()>& ours, const std::function<bool()>& other, int times)
{
    const auto faster = [](const Measured& a, const Measured& b) { return a.seconds < b.seconds; };
    std::vector<Measured> one, two;
    for (int i = 0; i < times; ++i) {
        one.push_back(measured(ours));
        two.push_back(measured(other));
    }
    std::sort(one.begin(), one.end(), faster);
    std::sort(two.begin(), two.end(), faster);
    return {one[one.size() / 2], two[two.size() / 2]};
}

QVector<double> numbers(const QString& text)
{
    QVector<double> all;
    for (const QString& one : text.split(','))
        all += one.toDouble();
    return all;
}

} // namespace

int main(int argc, char* argv[])
{
    const std::string peers[] = {startPeer(), startPeer(true)};
    QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.addHelpOption();
    parser.addOptions({{"mbits", "Bandwidths in Mbit/s.", "list", "2,20,100,1000"},
        {"delays", "Delays each way in ms.", "list", "1,25,100"},
        {"sizes", "Sizes in MB.", "list", "1,10,100"},
        {"tree", "Fetches the file tree of 100 shared projects as well."},
        {"longest", "Leaves out what takes the line longer than this, in s.", "s", "60"}});
    parser.process(application);
    QSslConfiguration trusting = QSslConfiguration::defaultConfiguration();
    trusting.setCaCertificates({QSslCertificate(peerIdentity)});
    QSslConfiguration::setDefaultConfiguration(trusting);

    Exchanges exchanges;
    std::printf("%-8s %7s %5s %6s %-9s %9s %9s %6s %9s\n", "", "Mbit/s", "ms", "MB", "", "ours s",
        "libcurl s", "ratio", "peak MiB");
    for (const double mbits : numbers(parser.value("mbits"))) {
        for (const double delay : numbers(parser.value("delays"))) {
            for (const std::string& peer : peers) {
                LineSettings settings;
                settings.bitsPerSecond = mbits * 1e6;
                settings.delay = std::chrono::milliseconds(int(delay));
                const LineProcess line(QString::fromStdString(peer), settings);
                exchanges.address = line.address;
                const auto show = [&](double megabytes, const char* what, auto pair) {
                    std::printf("%-8s %7g %5g %6g %-9s %9.3f %9.3f %6.2f %9.1f\n",
                        qUtf8Printable(QUrl(line.address).scheme()), mbits, delay, megabytes, what,
                        pair.first.seconds, pair.second.seconds, pair.second.seconds / pair.first.seconds,
                        pair.first.peakMiB);
                    std::fflush(stdout);
                };
                show(0, "POST",
                    compared([&] { return exchanges.postOurs(); }, [&] { return exchanges.postCurl(); }, 9));
                if (parser.isSet("tree"))
                    show(0, "tree",
                        compared(
                            [&] { return exchanges.treeOurs(); }, [&] { return exchanges.treeCurl(); }, 3));
                for (const double megabytes : numbers(parser.value("sizes"))) {
                    const double seconds = megabytes * 8 / mbits;
                    if (seconds > parser.value("longest").toDouble())
                        continue;
                    const int times = seconds < 3 ? 5 : 1;
                    exchanges.makeBlob(qint64(megabytes * 1e6));
                    show(megabytes, "upload",
                        compared([&] { return exchanges.uploadOurs(); },
                            [&] { return exchanges.uploadCurl(); }, times));
                    show(megabytes, "download",
                        compared([&] { return exchanges.downloadOurs(); },
                            [&] { return exchanges.downloadCurl(); }, times));
                }
            }
        }
    }
}
