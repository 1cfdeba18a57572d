// SPDX-License-Identifier: MIT
#include "features/AccountCipher.h"

#include <memory>
#include <openssl/evp.h>
#include <stdexcept>

namespace local_platform {

namespace {

constexpr std::size_t blockSize = 16;

const unsigned char* bytes(const std::string& text)
{
    return reinterpret_cast<const unsigned char*>(text.data());
}

} // namespace

std::string clientCipherText(const std::string& password, const std::string& key)
{
    if (key.size() != blockSize)
        throw std::invalid_argument("The account cipher key must have 16 bytes");
    std::string padded = password;
    if (const std::size_t rest = password.size() % blockSize; rest != 0)
        padded.append(blockSize - rest, static_cast<char>(blockSize - rest));

    const std::unique_ptr<EVP_CIPHER_CTX, decltype(&EVP_CIPHER_CTX_free)> context(
        EVP_CIPHER_CTX_new(), EVP_CIPHER_CTX_free);
    std::string cipherText(padded.size(), '\0');
    int written = 0;
    if (!context || EVP_EncryptInit_ex(context.get(), EVP_aes_128_cbc(), nullptr, bytes(key), bytes(key)) != 1
        || EVP_CIPHER_CTX_set_padding(context.get(), 0) != 1
        || EVP_EncryptUpdate(context.get(), reinterpret_cast<unsigned char*>(cipherText.data()), &written,
               bytes(padded), static_cast<int>(padded.size()))
            != 1)
        throw std::runtime_error("The account cipher failed");

    std::string text(4 * ((cipherText.size() + 2) / 3) + 1, '\0');
    text.resize(EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()), bytes(cipherText),
        static_cast<int>(cipherText.size())));
    return text;
}

} // namespace local_platform
