// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <memory>
#include <string>

struct evp_md_ctx_st;

namespace local_platform {

/// The digest of bytes that come piece by piece.
class Sha256
{
public:
    Sha256();

    void add(const char* data, std::size_t size) noexcept;
    /// The digest of all that was added, in Base64. Nothing can be added afterwards.
    std::string finish();

private:
    std::unique_ptr<evp_md_ctx_st, void (*)(evp_md_ctx_st*)> context_;
    bool good_;
};

} // namespace local_platform
