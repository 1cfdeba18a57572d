// SPDX-License-Identifier: MIT
#include "ScriptedPeer.h"

#include <QCoreApplication>
#include <QTest>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>

namespace {
constexpr int pieceSize = 64 * 1024;
constexpr auto settleLimit = std::chrono::seconds(2);

int listenOnLoopback(quint16& port)
{
    const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    auto* generic = reinterpret_cast<sockaddr*>(&address);
    if (::bind(fd, generic, length) != 0 || ::listen(fd, 64) != 0 || ::getsockname(fd, generic, &length) != 0)
        qFatal("The scripted peer cannot listen on a loopback port.");
    port = ntohs(address.sin_port);
    return fd;
}

QString addressOf(quint16 port)
{
    return QStringLiteral("http://127.0.0.1:%1").arg(port);
}
} // namespace

QByteArray RecordedRequest::header(const QByteArray& name) const
{
    QList<QByteArray> found;
    for (const auto& [key, value] : headers)
        if (key.compare(name, Qt::CaseInsensitive) == 0)
            found.append(value);
    return found.size() == 1 ? found.first() : QByteArray();
}

PeerConnection::PeerConnection(int socket)
    : fd(socket)
{
    const int on = 1;
    ::setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

PeerConnection::~PeerConnection()
{
    close();
}

bool PeerConnection::waitForBytes()
{
    char byte;
    return fd >= 0 && ::recv(fd, &byte, 1, MSG_PEEK) == 1;
}

bool PeerConnection::readMore(int atMost)
{
    char piece[pieceSize];
    const ssize_t got = fd < 0 ? -1 : ::recv(fd, piece, size_t(qMin(atMost, pieceSize)), 0);
    if (got <= 0)
        return false;
    request.raw.append(piece, int(got));
    return true;
}

bool PeerConnection::readHead()
{
    // Byte by byte, so that nothing of the body is read that a behaviour has not asked for.
    while (!request.raw.endsWith("\r\n\r\n"))
        if (!readMore(1))
            return false;

    QList<QByteArray> lines = request.raw.chopped(4).split('\n');
    const QList<QByteArray> requestLine = lines.takeFirst().trimmed().split(' ');
    request.method = requestLine.value(0);
    request.target = requestLine.value(1);
    for (const QByteArray& line : qAsConst(lines)) {
        const int colon = line.indexOf(':');
        request.headers.append({line.left(colon), line.mid(colon + 1).trimmed()});
    }
    request.complete = contentLength() == 0;
    return true;
}

int PeerConnection::contentLength() const
{
    return request.header("Content-Length").toInt();
}

bool PeerConnection::readBody(int bytes)
{
    const int length = contentLength();
    const int wanted = bytes < 0 ? length : qMin(bytes, length);
    const int head = request.raw.size() - request.body.size();
    bool more = true;
    while (more && request.raw.size() - head < wanted)
        more = readMore(wanted - (request.raw.size() - head));
    request.body = request.raw.mid(head);
    request.complete = request.body.size() == length;
    return more;
}

bool PeerConnection::send(const QByteArray& bytes)
{
    for (int sent = 0; sent < bytes.size();) {
        const ssize_t now =
            fd < 0 ? -1 : ::send(fd, bytes.constData() + sent, size_t(bytes.size() - sent), MSG_NOSIGNAL);
        if (now <= 0)
            return false;
        sent += int(now);
    }
    return true;
}

void PeerConnection::waitForClient()
{
    pollfd watched{fd, POLLRDHUP, 0};
    while (!interrupted && ::poll(&watched, 1, 50) == 0) { }
    close();
}

bool PeerConnection::pause(int milliseconds)
{
    for (int waited = 0; waited < milliseconds && !interrupted; waited += 5)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    return !interrupted;
}

void PeerConnection::close()
{
    const std::lock_guard lock(closing);
    if (fd >= 0)
        ::close(fd);
    fd = -1;
}

void PeerConnection::reset()
{
    const linger abortive{1, 0};
    ::setsockopt(fd, SOL_SOCKET, SO_LINGER, &abortive, sizeof abortive);
    close();
}

void PeerConnection::interrupt()
{
    const std::lock_guard lock(closing);
    interrupted = true;
    if (fd >= 0)
        ::shutdown(fd, SHUT_RDWR);
}

QByteArray behaviour::response(const QByteArray& body, int status, const QByteArray& headerLines)
{
    return "HTTP/1.1 " + QByteArray::number(status) + " Scripted\r\nContent-Type: application/json\r\n"
        + headerLines + "Content-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body;
}

Behaviour behaviour::answer(const QByteArray& body, int status, const QByteArray& headerLines)
{
    return answerRaw(response(body, status, headerLines));
}

Behaviour behaviour::answerRaw(const QByteArray& bytes)
{
    return [bytes](PeerConnection& c) {
        if (c.readHead() && c.readBody())
            c.send(bytes);
    };
}

Behaviour behaviour::silent()
{
    return [](PeerConnection& c) {
        if (c.readHead() && c.readBody())
            c.waitForClient();
    };
}

Behaviour behaviour::closeAfter(const QByteArray& bytes)
{
    return [bytes](PeerConnection& c) {
        if (c.readHead() && c.readBody())
            c.send(bytes);
        c.close();
    };
}

Behaviour behaviour::resetAfter(const QByteArray& bytes)
{
    return [bytes](PeerConnection& c) {
        if (c.readHead() && c.readBody() && c.send(bytes) && !bytes.isEmpty())
            c.pause(50); // a reset throws away what the client has not read yet
        c.reset();
    };
}

Behaviour behaviour::closeUnread()
{
    return [](PeerConnection& c) { c.close(); };
}

Behaviour behaviour::answerAfter(const QByteArray& body, const std::function<void()>& meanwhile)
{
    return [=](PeerConnection& c) {
        if (!c.readHead() || !c.readBody())
            return;
        QMetaObject::invokeMethod(QCoreApplication::instance(), meanwhile, Qt::BlockingQueuedConnection);
        if (!body.isNull())
            c.send(response(body));
    };
}

ScriptedPeer::ScriptedPeer()
    : listener(listenOnLoopback(port))
    , acceptor([this] { acceptClients(); })
{
}

ScriptedPeer::~ScriptedPeer()
{
    const QStringList wrong = finish();
    if (!wrong.isEmpty() && !QTest::currentTestFailed())
        QTest::qFail(qPrintable(wrong.join(QStringLiteral("; "))), __FILE__, __LINE__);
}

QString ScriptedPeer::address() const
{
    return addressOf(port);
}

QString ScriptedPeer::refusedAddress()
{
    quint16 unused = 0;
    ::close(listenOnLoopback(unused));
    return addressOf(unused);
}

void ScriptedPeer::expect(const QByteArray& method, const QByteArray& target, Behaviour behaviour)
{
    const std::lock_guard lock(mutex);
    script.push_back({method, target, std::move(behaviour)});
}

void ScriptedPeer::expectNothing()
{
    const std::lock_guard lock(mutex);
    script.clear();
}

void ScriptedPeer::settle()
{
    if (stopping)
        return;
    std::unique_lock lock(mutex);
    const int polls = idlePolls; // after one more, a client that connects now has been accepted
    const auto allGone = [this, polls] {
        return idlePolls != polls
            && std::all_of(clients.begin(), clients.end(), [](const Client& client) { return client.gone; });
    };
    if (changed.wait_for(lock, settleLimit, allGone))
        return;
    for (Client& client : clients)
        client.connection.interrupt();
    changed.wait(lock, allGone);
}

QStringList ScriptedPeer::reset()
{
    settle();
    const std::lock_guard lock(mutex);
    for (const Exchange& missing : script)
        complain(QStringLiteral("never came: ") + QString::fromUtf8(missing.method + ' ' + missing.target));
    script.clear();
    recorded.clear();
    return std::exchange(complaints, {});
}

QStringList ScriptedPeer::finish()
{
    if (stopping)
        return {};
    settle();
    stopping = true;
    acceptor.join();
    ::close(listener);
    for (Client& client : clients) {
        client.connection.interrupt(); // one that connected at the last moment; what it sent is still read
        client.thread.join();
    }
    return reset();
}

QVector<RecordedRequest> ScriptedPeer::requests()
{
    settle();
    const std::lock_guard lock(mutex);
    return recorded;
}

RecordedRequest ScriptedPeer::onlyRequest()
{
    const QVector<RecordedRequest> all = requests();
    return all.size() == 1 ? all.first() : RecordedRequest();
}

void ScriptedPeer::complain(const QString& text)
{
    complaints.append(text);
}

void ScriptedPeer::acceptClients()
{
    pollfd watched{listener, POLLIN, 0};
    while (!stopping) {
        if (::poll(&watched, 1, 1) == 0) {
            const std::lock_guard lock(mutex);
            ++idlePolls;
            changed.notify_all();
            continue;
        }
        const int fd = ::accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (fd < 0)
            continue;
        const std::lock_guard lock(mutex);
        Client& client = clients.emplace_back(fd);
        client.thread = std::thread([this, &client] { serve(client); });
    }
}

void ScriptedPeer::serve(Client& client)
{
    while (client.connection.waitForBytes())
        serveOne(client.connection);
    client.connection.close();
    const std::lock_guard lock(mutex);
    client.gone = true;
    changed.notify_all();
}

void ScriptedPeer::serveOne(PeerConnection& connection)
{
    connection.request = {};
    Exchange exchange{{}, {}, behaviour::answer(R"({"code":1,"msg":"unexpected"})", 500)};
    std::unique_lock lock(mutex);
    const int place = recorded.size();
    recorded.append(RecordedRequest());
    const bool expected = !script.empty();
    if (expected) {
        exchange = std::move(script.front());
        script.pop_front();
    }
    lock.unlock();
    exchange.behaviour(connection);

    lock.lock();
    const RecordedRequest& got = connection.request;
    recorded[place] = got;
    const QString came = QString::fromUtf8(got.method + ' ' + got.target);
    if (!expected)
        complain(QStringLiteral("unexpected: ") + came);
    else if (!got.method.isEmpty() && (got.method != exchange.method || got.target != exchange.target))
        complain(QStringLiteral("%1 came instead of %2")
                     .arg(came, QString::fromUtf8(exchange.method + ' ' + exchange.target)));
}
