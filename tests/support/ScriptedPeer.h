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

/// One request as it came over the wire, whole or in part.
struct RecordedRequest
{
    QByteArray raw; ///< every byte of it
    QByteArray method;
    QByteArray target;
    QVector<QPair<QByteArray, QByteArray>> headers; ///< in their order, names as they were written
    QByteArray body;
    bool complete = false; ///< head and body came as long as Content-Length says

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

    /// All of these return false once the client has gone.
    bool waitForBytes();
    bool readHead();
    /// Reads until at least \a bytes of the body are here, or, by default, all of it.
    bool readBody(int bytes = -1);
    bool send(const QByteArray& bytes);
    /// Waits until the client has gone, reading nothing that it sends, and closes.
    void waitForClient();
    /// False as well once the peer wants the connection to end.
    bool pause(int milliseconds);
    void close();
    /// Closes with a reset instead of an orderly end.
    void reset();
    /// Unblocks whatever the connection's thread waits for; for any thread.
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

/// What a peer does with a request. All but those that say otherwise read the whole request first.
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
/// Has \a meanwhile run in the thread of the application object, where the call waits; then answers,
/// unless \a body is null.
Behaviour answerAfter(const QByteArray& body, const std::function<void()>& meanwhile);
} // namespace behaviour

/// An HTTP peer on a loopback port that answers by a script and records what it gets.
///
/// The script is a queue: each request takes the next exchange. A request that the script does not have,
/// another one than it has, or an exchange that nobody asked for fails the running test when the peer goes,
/// or is told by reset().
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
    /// Expects nothing of what is still to come.
    void expectNothing();

    /// Waits until no client is connected any more, or throws out those that stay.
    void settle();
    /// Settles, forgets the script and the requests, and returns what was wrong, for the next test to begin
    /// with nothing of this one; what is returned here no longer fails the test.
    QStringList reset();
    /// The same, and ends the peer.
    QStringList finish();

    /// The requests of which at least one byte came, in the order in which they began. Settles first.
    QVector<RecordedRequest> requests();
    /// The only request; an empty one when there was another number of them.
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
    int emptyRounds = 0; ///< how often nobody was at the door
    std::atomic<bool> stopping{false};
    std::thread acceptor;
};
