// SPDX-License-Identifier: MIT
#pragma once

class QNetworkAccessManager;
class QNetworkProxy;
class QNetworkRequest;
class QUrl;

namespace tav {

/// Has \a manager read its connections through a buffer. Left alone it reads a plain http connection
/// unbuffered, byte by byte: it then takes some replies that were cut for whole ones, and as long as the peer
/// sends headers it can neither be stopped nor destroyed.
void bufferConnections(QNetworkAccessManager& manager);

/// The proxy that a request to \a url goes through; none has the type NoProxy.
QNetworkProxy proxyFor(const QUrl& url);

/// Gives \a request the user and password that the application set for its HTTP proxy, where the proxy sees
/// the request itself. It could not be sent again after the proxy has asked.
void authorizeAtProxy(QNetworkRequest& request);

/// Whether the process may open as many files as a request needs. With fewer, the event loop of the network
/// access manager's thread ends the process.
bool hasRoomForConnection();

} // namespace tav
