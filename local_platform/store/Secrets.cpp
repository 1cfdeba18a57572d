// SPDX-License-Identifier: MIT
#include "store/Secrets.h"

#include "base/Places.h"
#include "base/Refusal.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <sodium.h>
#include <stdexcept>
#include <thread>

namespace local_platform {

namespace {

constexpr unsigned long long passwordPasses = crypto_pwhash_OPSLIMIT_INTERACTIVE;
constexpr std::size_t passwordMemory = crypto_pwhash_MEMLIMIT_INTERACTIVE;
// Clients wait for a quarter of a minute and more; whoever would have to wait longer is told at once.
constexpr std::chrono::seconds patience(20);
constexpr unsigned mayWait = 200;

/// As many hashings at a time as there are processors: more would only cost memory.
Places& hashingPlaces()
{
    static Places places(std::max(1u, std::thread::hardware_concurrency()));
    return places;
}

/// One of the places; refused when too many wait already.
class HashingPlace
{
public:
    HashingPlace()
        : waiting_(++count())
        , place_(hashingPlaces(), waiting_ > mayWait ? std::chrono::seconds(0) : patience)
    {
        --count();
        if (!place_.taken())
            throw Refusal("Too many people sign in at once; try again in a moment", 503);
    }

private:
    static std::atomic<unsigned>& count()
    {
        static std::atomic<unsigned> waiting{0};
        return waiting;
    }

    unsigned waiting_;
    Places::Place place_;
};

std::string randomText(const std::string& alphabet, int length)
{
    std::string text;
    for (int i = 0; i < length; ++i)
        text += alphabet[randombytes_uniform(static_cast<std::uint32_t>(alphabet.size()))];
    return text;
}

std::string encoded(
    const unsigned char* bytes, std::size_t size, int variant = sodium_base64_VARIANT_URLSAFE_NO_PADDING)
{
    std::string text(sodium_base64_encoded_len(size, variant), '\0');
    sodium_bin2base64(text.data(), text.size(), bytes, size, variant);
    text.pop_back(); // the terminating zero
    return text;
}

} // namespace

void initializeSecrets()
{
    if (sodium_init() < 0)
        throw std::runtime_error("The system offers no randomness");
}

std::string randomToken()
{
    std::array<unsigned char, 32> bytes;
    randombytes_buf(bytes.data(), bytes.size());
    return encoded(bytes.data(), bytes.size());
}

bool looksLikeToken(const std::string& text)
{
    constexpr std::size_t length = 43;
    return text.size() == length
        && text.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_")
        == std::string::npos;
}

std::string randomCode(int length)
{
    return randomText("ABCDEFGHJKMNPQRSTUVWXYZ23456789", length);
}

std::string randomDigits(int length)
{
    return randomText("0123456789", length);
}

std::string fingerprint(const std::string& token)
{
    std::array<unsigned char, crypto_generichash_BYTES> hash;
    crypto_generichash(hash.data(), hash.size(), reinterpret_cast<const unsigned char*>(token.data()),
        token.size(), nullptr, 0);
    return encoded(hash.data(), hash.size());
}

bool sameSecret(const std::string& a, const std::string& b)
{
    return a.size() == b.size() && sodium_memcmp(a.data(), b.data(), a.size()) == 0;
}

std::string base64(const std::string& bytes)
{
    return encoded(
        reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(), sodium_base64_VARIANT_ORIGINAL);
}

std::string hashedPassword(const std::string& password)
{
    const HashingPlace place;
    std::array<char, crypto_pwhash_STRBYTES> hash;
    if (crypto_pwhash_str(hash.data(), password.data(), password.size(), passwordPasses, passwordMemory) != 0)
        throw std::runtime_error("Not enough memory to hash a password");
    return hash.data();
}

bool passwordMatches(const std::string& hash, const std::string& password)
{
    static const std::string nobodys = hashedPassword(randomToken());
    const HashingPlace place;
    const std::string& against = hash.empty() ? nobodys : hash;
    return crypto_pwhash_str_verify(against.c_str(), password.data(), password.size()) == 0 && !hash.empty();
}

bool isHashedAsOfOld(const std::string& hash)
{
    return crypto_pwhash_str_needs_rehash(hash.c_str(), passwordPasses, passwordMemory) != 0;
}

} // namespace local_platform
