// SPDX-License-Identifier: MIT
#include "Peer.h"

#include "support/PeerIdentity.h"

#include <algorithm>
#include <arpa/inet.h>
#include <csignal>
#include <cstdlib>
#include <netinet/tcp.h>
#include <openssl/ssl.h>
#include <string_view>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

namespace {

struct Stream
{
    int socket;
    SSL* tls; ///< null for a plain connection

    ssize_t receive(char* data, size_t most) const
    {
        return tls ? SSL_read(tls, data, int(most)) : recv(socket, data, most, 0);
    }
    void sendAll(std::string_view bytes) const
    {
        while (!bytes.empty()) {
            const ssize_t sent = tls ? SSL_write(tls, bytes.data(), int(bytes.size()))
                                     : send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
            if (sent <= 0)
                return;
            bytes.remove_prefix(size_t(sent));
        }
    }
};

size_t numberAfter(const std::string& text, const std::string& mark)
{
    const size_t at = text.find(mark);
    return at == std::string::npos ? 0 : std::strtoull(text.c_str() + at + mark.size(), nullptr, 10);
}

/// The reply to a request that is not for a blob: the drawing, as many projects as the target's name says, or
/// a small object.
std::string textFor(const std::string& head, const std::string& body)
{
    const size_t begin = body.find("<file>");
    if (begin != std::string::npos)
        return "<ConDgn2DwgResult>" + body.substr(begin + 6, body.find("</file>") - begin - 6)
            + "</ConDgn2DwgResult>";

    std::string items;
    if (head.find("/getProjectBySoftId?") != std::string::npos) {
        const size_t count = numberAfter(head, "targetClient=shares");
        for (size_t i = 0; i < count; ++i)
            items += (i > 0 ? "," : "") + std::string(R"({"id":)") + std::to_string(i)
                + R"(,"sourceClient":"bench","projectTitle":"project"})";
    } else if (head.find("/getByProject?") != std::string::npos) {
        items = R"({"id":1,"originalName":"plan.dgn"})";
    }
    return R"({"code":0,"msg":"ok","data":[)" + items + "]}";
}

/// Answers one request; false when the connection is at its end.
bool answer(const Stream& stream, std::vector<char>& buffer)
{
    std::string head;
    size_t end = std::string::npos;
    while ((end = head.find("\r\n\r\n")) == std::string::npos) {
        const ssize_t got = stream.receive(buffer.data(), 4096);
        if (got <= 0)
            return false;
        head.append(buffer.data(), size_t(got));
    }
    const bool echoes = head.find("/NrvConRnx.asmx") != std::string::npos;
    std::string body = echoes ? head.substr(end + 4) : "";
    size_t left = numberAfter(head, "Content-Length: ") - std::min(head.size() - end - 4, head.size());
    if (echoes)
        body.reserve(body.size() + left);
    if (head.find("Expect: 100-continue") != std::string::npos)
        stream.sendAll("HTTP/1.1 100 Continue\r\n\r\n");
    while (left > 0) {
        const ssize_t got = stream.receive(buffer.data(), std::min(left, buffer.size()));
        if (got <= 0)
            return false;
        left -= size_t(got);
        if (echoes)
            body.append(buffer.data(), size_t(got));
    }

    const size_t size = numberAfter(head, "GET /blob/");
    const std::string text = size > 0 ? "" : textFor(head, body);
    const std::string length = std::to_string(size > 0 ? size : text.size());
    stream.sendAll(
        "HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nContent-Length: " + length + "\r\n\r\n");
    stream.sendAll(text);
    for (size_t sent = 0; sent < size; sent += buffer.size())
        stream.sendAll({buffer.data(), std::min(buffer.size(), size - sent)});
    return true;
}

SSL_CTX* tlsContext()
{
    SSL_CTX* context = SSL_CTX_new(TLS_server_method());
    BIO* text = BIO_new_mem_buf(peerIdentity, -1);
    EVP_PKEY* key = PEM_read_bio_PrivateKey(text, nullptr, nullptr, nullptr);
    X509* certificate = PEM_read_bio_X509(text, nullptr, nullptr, nullptr);
    if (SSL_CTX_use_certificate(context, certificate) != 1 || SSL_CTX_use_PrivateKey(context, key) != 1)
        std::abort();
    return context;
}

[[noreturn]] void serve(int listener, bool overTls)
{
    std::signal(SIGPIPE, SIG_IGN);
    SSL_CTX* context = overTls ? tlsContext() : nullptr;
    std::vector<char> buffer(256 << 10);
    for (;;) {
        const int socket = accept(listener, nullptr, nullptr);
        const int on = 1;
        setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
        Stream stream{socket, nullptr};
        if (overTls) {
            stream.tls = SSL_new(context);
            SSL_set_fd(stream.tls, socket);
            SSL_accept(stream.tls);
        }
        while (answer(stream, buffer)) { }
        SSL_free(stream.tls);
        close(socket);
    }
}

} // namespace

std::string startPeer(bool overTls)
{
    const int listener = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    if (bind(listener, reinterpret_cast<sockaddr*>(&address), size) != 0 || listen(listener, 64) != 0)
        std::abort();
    getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size);

    if (fork() == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        serve(listener, overTls);
    }
    close(listener);
    return std::string(overTls ? "https" : "http")
        + "://127.0.0.1:" + std::to_string(ntohs(address.sin_port));
}
