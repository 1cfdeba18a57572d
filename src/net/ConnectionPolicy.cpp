// SPDX-License-Identifier: MIT
#include "net/ConnectionPolicy.h"

#include <QFile>
#include <QNetworkAccessManager>
#include <QNetworkProxy>
#include <QNetworkRequest>
#include <QProcess>
#include <QUrl>

#include <algorithm>
#include <array>

namespace tav {

namespace {

/// Answers DefaultProxy instead of NoProxy: the manager then buffers, and the connection, which resolves the
/// default by itself, finds that there is none.
class BufferedConnections : public QNetworkProxyFactory
{
public:
    QList<QNetworkProxy> queryProxy(const QNetworkProxyQuery& query) override
    {
        const QList<QNetworkProxy> proxies = proxyForQuery(query);
        if (query.url().scheme() != QLatin1String("http") || !isDirect(proxies))
            return proxies;
        const QNetworkProxyQuery ofConnection(
            query.url().host(), query.url().port(80), QString(), QNetworkProxyQuery::TcpSocket);
        return isDirect(proxyForQuery(ofConnection)) ? QList<QNetworkProxy>{QNetworkProxy::DefaultProxy}
                                                     : proxies;
    }

private:
    static bool isDirect(const QList<QNetworkProxy>& proxies)
    {
        return proxies.value(0).type() == QNetworkProxy::NoProxy;
    }
};

bool isHttpProxy(const QNetworkProxy& proxy)
{
    return proxy.type() == QNetworkProxy::HttpProxy || proxy.type() == QNetworkProxy::HttpCachingProxy;
}

/// Whether \a proxy speaks HTTP and reads the requests that go through it.
bool seesRequests(const QNetworkProxy& proxy)
{
    return isHttpProxy(proxy) && proxy.capabilities().testFlag(QNetworkProxy::CachingCapability);
}

} // namespace

void bufferConnections(QNetworkAccessManager& manager)
{
    manager.setProxyFactory(new BufferedConnections);
}

/// Chooses as the network access manager does: the first that it can use.
QNetworkProxy proxyFor(const QUrl& url)
{
    const bool plain = url.scheme() == QLatin1String("http");
    const QList<QNetworkProxy> proxies = QNetworkProxyFactory::proxyForQuery(QNetworkProxyQuery(url));
    const auto usable = std::find_if(proxies.begin(), proxies.end(), [plain](const QNetworkProxy& proxy) {
        return (plain && seesRequests(proxy)) || proxy.isTransparentProxy();
    });
    return usable == proxies.end() ? QNetworkProxy(QNetworkProxy::NoProxy) : *usable;
}

void authorizeAtProxy(QNetworkRequest& request)
{
    const QNetworkProxy proxy = proxyFor(request.url());
    // In a tunnel the header would reach the platform; there the connection answers the proxy by itself.
    const bool asked = request.url().scheme() == QLatin1String("http") && seesRequests(proxy);
    if (asked && !proxy.user().isEmpty())
        request.setRawHeader("Proxy-Authorization",
            "Basic " + (proxy.user() + QLatin1Char(':') + proxy.password()).toUtf8().toBase64());
}

bool hasRoomForConnection()
{
#ifdef Q_OS_UNIX
    // For two event loops, a connection and a file, with some to spare for other threads.
    std::array<QFile, 8> files;
    return std::all_of(files.begin(), files.end(), [](QFile& file) {
        file.setFileName(QProcess::nullDevice());
        return file.open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    });
#else
    return true;
#endif
}

} // namespace tav
