// SPDX-License-Identifier: MIT
#include "http/Transport.h"

#include <cerrno>
#include <csignal>
#include <limits>
#include <linux/sockios.h>
#include <openssl/err.h>
#include <openssl/ssl.h>
#include <stdexcept>
#include <sys/ioctl.h>
#include <sys/socket.h>

namespace local_platform {

Tls::Tls(const std::string& certificate, const std::string& key)
    : context_(SSL_CTX_new(TLS_server_method()), SSL_CTX_free)
{
    std::signal(SIGPIPE, SIG_IGN); // OpenSSL writes to sockets as to files
    SSL_CTX* const context = context_.get();
    if (!context || SSL_CTX_set_min_proto_version(context, TLS1_2_VERSION) != 1
        || SSL_CTX_set_cipher_list(context, "ECDHE+AESGCM:ECDHE+CHACHA20") != 1
        || SSL_CTX_use_certificate_chain_file(context, certificate.c_str()) != 1
        || SSL_CTX_use_PrivateKey_file(context, key.c_str(), SSL_FILETYPE_PEM) != 1
        || SSL_CTX_check_private_key(context) != 1)
        throw std::runtime_error("The TLS certificate or its key cannot be used");
    // A ticket would be enciphered with one key for as long as the platform runs.
    SSL_CTX_set_options(context, SSL_OP_NO_TICKET | SSL_OP_NO_RENEGOTIATION | SSL_OP_NO_COMPRESSION);
    SSL_CTX_set_session_cache_mode(context, SSL_SESS_CACHE_OFF);
    SSL_CTX_set_num_tickets(context, 0);
    SSL_CTX_set_mode(context,
        SSL_MODE_RELEASE_BUFFERS | SSL_MODE_ENABLE_PARTIAL_WRITE | SSL_MODE_ACCEPT_MOVING_WRITE_BUFFER);
}

ssl_st* Tls::session(int socket) const
{
    SSL* const session = SSL_new(context_.get());
    if (!session || SSL_set_fd(session, socket) != 1) {
        SSL_free(session);
        throw std::bad_alloc();
    }
    SSL_set_accept_state(session);
    return session;
}

Transport::Transport(const Tls* tls, int socket)
    : socket_(socket)
    , session_(tls ? tls->session(socket) : nullptr)
{
}

Transport::~Transport()
{
    SSL_free(session_);
}

Transport::Outcome Transport::outcomeOf(int result) const
{
    const int error = SSL_get_error(session_, result);
    ERR_clear_error();
    switch (error) {
    case SSL_ERROR_WANT_READ:
        return Outcome::WantsRead;
    case SSL_ERROR_WANT_WRITE:
        return Outcome::WantsWrite;
    case SSL_ERROR_ZERO_RETURN:
        return Outcome::Ended;
    default:
        return Outcome::Failed;
    }
}

Transport::Outcome Transport::handshake()
{
    if (!session_)
        return Outcome::Done;
    ERR_clear_error();
    const int result = SSL_do_handshake(session_);
    return result == 1 ? Outcome::Done : outcomeOf(result);
}

Transport::Outcome Transport::read(char* buffer, std::size_t size, std::size_t& got)
{
    got = 0;
    if (session_) {
        ERR_clear_error();
        const int result = SSL_read_ex(session_, buffer, size, &got);
        return result == 1 ? Outcome::Done : outcomeOf(result);
    }
    const ssize_t result = ::recv(socket_, buffer, size, 0);
    if (result > 0)
        got = static_cast<std::size_t>(result);
    if (result >= 0)
        return result > 0 ? Outcome::Done : Outcome::Ended;
    return errno == EAGAIN || errno == EINTR ? Outcome::WantsRead : Outcome::Failed;
}

Transport::Outcome Transport::write(const char* data, std::size_t size, std::size_t& written)
{
    written = 0;
    if (session_) {
        ERR_clear_error();
        const int result = SSL_write_ex(session_, data, size, &written);
        return result == 1 ? Outcome::Done : outcomeOf(result);
    }
    const ssize_t result = ::send(socket_, data, size, MSG_NOSIGNAL);
    if (result >= 0) {
        written = static_cast<std::size_t>(result);
        return Outcome::Done;
    }
    return errno == EAGAIN || errno == EINTR ? Outcome::WantsWrite : Outcome::Failed;
}

void Transport::shutDown()
{
    if (session_ && SSL_is_init_finished(session_)) {
        ERR_clear_error();
        SSL_shutdown(session_);
    }
    ::shutdown(socket_, SHUT_WR);
}

std::size_t Transport::underway() const
{
    int bytes = 0;
    return ::ioctl(socket_, SIOCOUTQ, &bytes) == 0 && bytes > 0 ? static_cast<std::size_t>(bytes) : 0;
}

} // namespace local_platform
