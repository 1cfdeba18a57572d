// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QPair>
#include <QString>
#include <QStringList>
#include <QVector>

#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <list>
#include <mutex>
#include <thread>

/// One request as it was received, whole or in part.
struct RecordedRequest
{
    QByteArray raw; ///< every byte of it
    QByteArray method;
    QByteArray target;
    QVector<QPair<QByteArray, QByteArray>> headers; ///< in their order, names as they were written
    QByteArray body;
    bool complete = false; ///< the head came, and as many bytes of the body as Content-Length says

    /// The value of the only header of that name, whatever its case; null when there is none or another.
    QByteArray header(const QByteArray& name) const;
};

/// The peer's end of one connection, as a behaviour sees it. Runs in the connection's own thread.
class PeerConnection
{
public:
    explicit PeerConnection(int socket);
    ~PeerConnection();
    PeerConnection(const PeerConnection&) = delete;
    PeerConnection& operator=(const PeerConnection&) = delete;

    /// All of these return false once the client has disconnected.
    bool waitForBytes();
    bool readHead();
    /// Reads until at least \a bytes of the body are here, or, by default, all of it.
    bool readBody(int bytes = -1);
    bool send(const QByteArray& bytes);
    /// Waits until the client disconnects, without reading what it sends, and closes.
    void waitForClient();
    /// False as well once the peer wants the connection to end.
    bool pause(int milliseconds);
    void close();
    /// Closes with a reset instead of an orderly end.
    void reset();
    /// Unblocks the connection's thread, whatever it waits for. Any thread may call it.
    void interrupt();

    RecordedRequest request;

private:
    bool readMore(int atMost);
    int contentLength() const;

    std::mutex closing;
    int fd;
    std::atomic<bool> interrupted{false};
};

using Behaviour = std::function<void(PeerConnection&)>;

/// What a peer does with a request. Unless they say otherwise, they read the whole request first.
namespace behaviour {
QByteArray response(const QByteArray& body, int status = 200, const QByteArray& headerLines = QByteArray());

Behaviour answer(const QByteArray& body, int status = 200, const QByteArray& headerLines = QByteArray());
/// Sends \a bytes as they stand and keeps the connection open.
Behaviour answerRaw(const QByteArray& bytes);
Behaviour silent();
/// Sends \a bytes as they stand, then closes (nothing but closes by default).
Behaviour closeAfter(const QByteArray& bytes = QByteArray());
Behaviour resetAfter(const QByteArray& bytes = QByteArray());
/// Closes without having read a byte.
Behaviour closeUnread();
/// Runs \a meanwhile in the thread of the application object, where the call waits; then answers, unless
/// \a body is null.
Behaviour answerAfter(const QByteArray& body, const std::function<void()>& meanwhile);
} // namespace behaviour

/// An HTTP peer on a loopback port that answers by a script and records what it gets.
///
/// The script is a queue: each request takes the next exchange. A request that is not in the script, one that
/// differs from it, and an exchange that no request took fail the running test when the peer is destroyed,
/// unless reset() or finish() has returned them.
class ScriptedPeer
{
public:
    ScriptedPeer();
    ~ScriptedPeer();
    ScriptedPeer(const ScriptedPeer&) = delete;
    ScriptedPeer& operator=(const ScriptedPeer&) = delete;

    /// http://127.0.0.1:port
    QString address() const;
    /// An address at which nobody listens.
    static QString refusedAddress();

    void expect(const QByteArray& method, const QByteArray& target, Behaviour behaviour);
    /// Drops what was expected and has not come yet.
    void expectNothing();

    /// Waits until no client is connected any more; disconnects those that stay.
    void settle();
    /// Settles, forgets the script and the requests, and returns what was wrong, which then no longer fails
    /// the test.
    QStringList reset();
    /// The same, and ends the peer.
    QStringList finish();

    /// The requests of which at least one byte came, in the order in which they began. Settles first.
    QVector<RecordedRequest> requests();
    /// The request if there was exactly one, otherwise an empty one.
    RecordedRequest onlyRequest();

private:
    struct Exchange
    {
        QByteArray method;
        QByteArray target;
        Behaviour behaviour;
    };
    struct Client
    {
        explicit Client(int socket)
            : connection(socket)
        {
        }
        PeerConnection connection;
        bool gone = false;
        std::thread thread;
    };

    void acceptClients();
    void serve(Client& client);
    void serveOne(PeerConnection& connection);
    void complain(const QString& text);

    quint16 port = 0;
    int listener;
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<Exchange> script;
    std::list<Client> clients;
    QVector<RecordedRequest> recorded;
    QStringList complaints;
    int idlePolls = 0; ///< how often no client was waiting to connect
    std::atomic<bool> stopping{false};
    std::thread acceptor;
};
