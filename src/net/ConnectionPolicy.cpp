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

/// Instead of "no proxy" it says "the default one": the manager then buffers, and the connection, which looks
/// the default up by itself, finds that there is none.
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

/// Whether \a proxy is spoken HTTP to, and sees the requests that go through it.
bool seesRequests(const QNetworkProxy& proxy)
{
    return isHttpProxy(proxy) && proxy.capabilities().testFlag(QNetworkProxy::CachingCapability);
}

} // namespace

void bufferConnections(QNetworkAccessManager& manager)
{
    manager.setProxyFactory(new BufferedConnections);
}

/// The network access manager's own choice: the first that it can use.
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
    // Two event loops, a connection and a file, and some that another thread may take meanwhile.
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
