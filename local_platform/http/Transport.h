// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <memory>
#include <string>

struct ssl_ctx_st;
struct ssl_st;

namespace local_platform {

/// The certificate and what is agreed on with clients: TLS 1.3, or 1.2 with forward secrecy.
class Tls
{
public:
    /// Throws when the files cannot be used.
    Tls(const std::string& certificate, const std::string& key);

    ssl_st* session(int socket) const;

private:
    std::shared_ptr<ssl_ctx_st> context_;
};

/// The bytes of a connection, over TLS or as they are. Nothing here waits; a connection that is idle keeps no
/// buffers.
class Transport
{
public:
    enum class Outcome
    {
        Done,
        WantsRead, ///< try again when there is something to read
        WantsWrite,
        Ended, ///< by the peer
        Failed
    };

    /// @param tls null for bytes as they are
    /// @param socket non-blocking; stays the caller's
    Transport(const Tls* tls, int socket);
    ~Transport();
    Transport(const Transport&) = delete;
    Transport& operator=(const Transport&) = delete;

    Outcome handshake();
    /// At least one byte, or another outcome.
    Outcome read(char* buffer, std::size_t size, std::size_t& got);
    Outcome write(const char* data, std::size_t size, std::size_t& written);
    /// Says that nothing more will be written, without a wait.
    void shutDown();
    /// Bytes that were written and have not arrived.
    std::size_t underway() const;

private:
    Outcome outcomeOf(int result) const;

    int socket_;
    ssl_st* session_ = nullptr;
};

} // namespace local_platform
