// SPDX-License-Identifier: MIT
#include "features/SoapDrawing.h"

#include "http/Envelope.h"

#include <algorithm>
#include <sodium.h>
#include <vector>

namespace local_platform {

namespace {

constexpr std::size_t maxHead = 64u << 10;
constexpr std::size_t longestName = 64; ///< with its prefix; those that mean something are shorter
constexpr std::size_t decodedAtOnce = 64u << 10;

bool isSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

} // namespace

SoapDrawing::SoapDrawing(const std::filesystem::path& target, std::uint64_t maxSize)
    : target_(target, std::ios::binary)
    , maxSize_(maxSize)
{
}

void SoapDrawing::append(const char* data, std::size_t size)
{
    if (phase_ == Phase::Head)
        readHead(data, size);
    else if (phase_ == Phase::Drawing)
        readDrawing(data, size);
}

void SoapDrawing::readHead(const char* data, std::size_t size)
{
    for (std::size_t at = 0; at < size && headSize_ < maxHead; ++at, ++headSize_) {
        const char c = data[at];
        if (c == '<') {
            inTag_ = inName_ = true;
            name_.clear();
        } else if (c == '>' && inTag_) {
            inTag_ = inName_ = false;
            if (endTag())
                return readDrawing(data + at + 1, size - at - 1);
        } else if (isSpace(c)) {
            inName_ = false;
        } else if (inName_ && name_.size() < longestName) {
            name_ += c;
        }
    }
}

bool SoapDrawing::endTag()
{
    const std::string localName = name_.substr(name_.find(':') + 1);
    if (localName == "ConDgn2Dwg" || localName == "ConDwg2Dgn")
        operation_ = localName;
    if (localName == "file")
        phase_ = Phase::Drawing;
    return phase_ == Phase::Drawing;
}

void SoapDrawing::readDrawing(const char* data, std::size_t size)
{
    const char* const end = std::find(data, data + size, '<');
    std::remove_copy_if(data, end, std::back_inserter(pending_), isSpace);
    if (pending_.size() >= decodedAtOnce)
        decodePending();
    if (end == data + size)
        return;
    decodePending();
    valid_ = valid_ && pending_.empty();
    phase_ = Phase::Tail;
}

void SoapDrawing::decodePending()
{
    const std::size_t usable = pending_.size() / 4 * 4;
    if (usable == 0)
        return;
    std::vector<unsigned char> bytes(usable / 4 * 3);
    std::size_t decoded = 0;
    valid_ = valid_ && !padded_
        && sodium_base642bin(bytes.data(), bytes.size(), pending_.data(), usable, nullptr, &decoded, nullptr,
               sodium_base64_VARIANT_ORIGINAL)
            == 0;
    padded_ = pending_[usable - 1] == '=';
    pending_.erase(0, usable);
    size_ += decoded;
    if (valid_ && size_ <= maxSize_)
        target_.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(decoded));
}

void SoapDrawing::finish()
{
    target_.close();
    if (phase_ != Phase::Tail || operation_.empty())
        throw Refusal("The request holds no drawing to convert");
    if (!valid_)
        throw Refusal("The drawing is not valid Base64");
    if (size_ == 0)
        throw Refusal("The drawing is empty");
    if (size_ > maxSize_)
        throw Refusal("The drawing is too large; at most " + std::to_string(maxSize_) + " bytes are taken");
    if (!target_)
        throw Refusal("The platform has no room for the drawing");
}

} // namespace local_platform
