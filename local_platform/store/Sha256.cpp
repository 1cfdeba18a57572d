// SPDX-License-Identifier: MIT
#include "store/Sha256.h"

#include "store/Secrets.h"

#include <openssl/evp.h>
#include <stdexcept>

namespace local_platform {

Sha256::Sha256()
    : context_(EVP_MD_CTX_new(), EVP_MD_CTX_free)
    , good_(context_ && EVP_DigestInit_ex(context_.get(), EVP_sha256(), nullptr) == 1)
{
}

void Sha256::add(const char* data, std::size_t size) noexcept
{
    good_ = good_ && EVP_DigestUpdate(context_.get(), data, size) == 1;
}

std::string Sha256::finish()
{
    std::string digest(32, '\0');
    if (!good_
        || EVP_DigestFinal_ex(context_.get(), reinterpret_cast<unsigned char*>(digest.data()), nullptr) != 1)
        throw std::runtime_error("The digest of a file failed");
    return base64(digest);
}

} // namespace local_platform
