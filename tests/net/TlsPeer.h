// SPDX-License-Identifier: MIT
#pragma once

#include "support/PeerIdentity.h"

#include <QByteArray>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QSslKey>
#include <QSslSocket>
#include <QTcpServer>

#include <unistd.h>

/// Answers a request without a body over TLS, with a certificate that is not trusted before trustTlsPeers().
/// Runs in the thread that makes it.
class TlsPeer : public QTcpServer
{
public:
    enum class End
    {
        Cut, ///< the connection ends without close_notify
        Announced ///< close_notify, and the connection stays open
    };

    explicit TlsPeer(const QByteArray& reply = QByteArray(), End end = End::Cut)
        : answer(reply)
        , ending(end)
    {
        listen(QHostAddress::LocalHost);
    }
    ~TlsPeer() override { ::close(kept); }

    QString address() const { return QStringLiteral("https://127.0.0.1:%1").arg(serverPort()); }

protected:
    void incomingConnection(qintptr descriptor) override
    {
        if (ending == End::Announced)
            kept = ::dup(int(descriptor));
        auto* socket = new QSslSocket(this);
        // Whoever offers it gets what no HTTP/2 begins with.
        QSslConfiguration configuration = socket->sslConfiguration();
        configuration.setAllowedNextProtocols({QByteArrayLiteral("h2")});
        socket->setSslConfiguration(configuration);
        socket->setSocketDescriptor(descriptor);
        socket->setPrivateKey(QSslKey(peerIdentity, QSsl::Ec));
        socket->setLocalCertificate(QSslCertificate(peerIdentity));
        connect(socket, &QSslSocket::readyRead, this, [this, socket] {
            if (!socket->peek(socket->bytesAvailable()).endsWith("\r\n\r\n"))
                return;
            socket->readAll();
            socket->write(answer);
            socket->flush();
            ending == End::Cut ? socket->abort() : socket->disconnectFromHost();
        });
        socket->startServerEncryption();
    }

private:
    QByteArray answer;
    End ending;
    int kept = -1;
};

inline void trustTlsPeers()
{
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.setCaCertificates({QSslCertificate(peerIdentity)});
    QSslConfiguration::setDefaultConfiguration(configuration);
}
