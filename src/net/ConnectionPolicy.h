// SPDX-License-Identifier: MIT
#pragma once

class QNetworkAccessManager;
class QNetworkProxy;
class QNetworkRequest;
class QUrl;

namespace tav {

/// Makes \a manager read its connections through a buffer. By default it reads plain http connections
/// unbuffered, byte by byte: some replies that were cut then count as whole, and while the peer keeps sending
/// headers the manager can neither be stopped nor destroyed.
void bufferConnections(QNetworkAccessManager& manager);

/// The proxy that a request to \a url goes through; of the type NoProxy for a direct connection.
QNetworkProxy proxyFor(const QUrl& url);

/// Adds the user and password that the application set for its HTTP proxy to \a request, if the proxy reads
/// the request itself: the body cannot be rewound to send the request again after the proxy has asked.
void authorizeAtProxy(QNetworkRequest& request);

/// Whether the process has enough free file descriptors for a request. Without them, the event loop of
/// the network access manager's thread aborts the process.
bool hasRoomForConnection();

} // namespace tav
