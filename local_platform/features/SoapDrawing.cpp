// SPDX-License-Identifier: MIT
#include "features/SoapDrawing.h"

#include "http/Envelope.h"

#include <algorithm>
#include <array>
#include <sodium.h>
#include <vector>

namespace local_platform {

namespace {

constexpr std::size_t maxHead = 64u << 10;
constexpr std::size_t decodedAtOnce = 64u << 10;

/// The place after the start tag of this local name, or npos while it is not all there.
std::size_t afterStartTag(const std::string& xml, const std::string& localName)
{
    for (std::size_t open = xml.find('<'); open != std::string::npos; open = xml.find('<', open + 1)) {
        const std::size_t end = xml.find('>', open);
        if (end == std::string::npos)
            return end;
        std::string name = xml.substr(open + 1, xml.find_first_of(" \t\r\n>", open) - open - 1);
        name.erase(0, name.find(':') + 1);
        if (name == localName)
            return end + 1;
    }
    return std::string::npos;
}

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
    if (pending_.size() > maxHead)
        return;
    pending_.append(data, size);
    const std::size_t start = afterStartTag(pending_, "file");
    if (start == std::string::npos)
        return;
    for (const char* operation : {"ConDgn2Dwg", "ConDwg2Dgn"}) {
        if (afterStartTag(pending_.substr(0, start), operation) != std::string::npos)
            operation_ = operation;
    }
    phase_ = Phase::Drawing;
    const std::string rest = pending_.substr(start);
    pending_.clear();
    readDrawing(rest.data(), rest.size());
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
