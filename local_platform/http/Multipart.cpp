// SPDX-License-Identifier: MIT
#include "http/Multipart.h"

#include "http/HeaderValue.h"

#include <cstring>
#include <utility>

namespace local_platform {

namespace {

constexpr std::size_t longestPartHead = 8u << 10;
constexpr std::size_t longestPadding = 64;
constexpr std::size_t longestBoundary = 70;

} // namespace

bool Multipart::isTypeOf(const std::string& contentType)
{
    return HeaderValue(contentType).token() == "multipart/form-data";
}

Multipart::Multipart(const std::string& contentType, BeginPart begin, TakeContent take)
    : begin_(std::move(begin))
    , take_(std::move(take))
    , matched_(2) // the first delimiter stands at the beginning, with no line before it
{
    const HeaderValue type(contentType);
    const std::string boundary = type.parameter("boundary");
    if (!type.isSound() || boundary.empty() || boundary.size() > longestBoundary
        || boundary.find_first_of("\r\n") != std::string::npos)
        phase_ = Phase::Malformed;
    delimiter_ = "\r\n--" + boundary;
}

void Multipart::append(const char* data, std::size_t size)
{
    for (std::size_t at = 0; at < size;) {
        switch (phase_) {
        case Phase::Content:
            at += readContent(data + at, size - at);
            break;
        case Phase::AfterDelimiter:
            readAfterDelimiter(data[at++]);
            break;
        case Phase::Head:
            readHead(data[at++]);
            break;
        case Phase::Done:
        case Phase::Malformed:
            return;
        }
    }
}

/// Only the first byte of a delimiter is a carriage return. So where a match fails, the next one cannot have
/// begun within it, and no byte is looked at twice.
std::size_t Multipart::readContent(const char* data, std::size_t size)
{
    if (matched_ == 0) {
        const void* const candidate = std::memchr(data, '\r', size);
        const std::size_t plain =
            candidate ? static_cast<std::size_t>(static_cast<const char*>(candidate) - data) : size;
        flush(data, plain);
        if (plain == size)
            return size;
        matched_ = 1;
        return plain + 1;
    }
    std::size_t used = 0;
    while (used < size && matched_ < delimiter_.size() && data[used] == delimiter_[matched_]) {
        ++used;
        ++matched_;
    }
    if (matched_ == delimiter_.size()) {
        matched_ = 0;
        line_.clear();
        phase_ = Phase::AfterDelimiter;
    } else if (used < size) {
        flush(delimiter_.data(), std::exchange(matched_, 0));
    }
    return used;
}

void Multipart::flush(const char* data, std::size_t size)
{
    if (!inPart_)
        phase_ = Phase::Malformed; // a form begins with its first part
    else if (size > 0)
        take_(data, size);
}

void Multipart::readAfterDelimiter(char c)
{
    line_ += c;
    if (line_ == "--")
        phase_ = Phase::Done;
    else if (c == '\n') {
        const bool isEmpty =
            line_.find_first_not_of(" \t") == line_.size() - 2 && line_[line_.size() - 2] == '\r';
        phase_ = isEmpty ? Phase::Head : Phase::Malformed;
        line_.clear();
        headSize_ = 0;
        named_ = false;
    } else if (line_.size() > longestPadding)
        phase_ = Phase::Malformed;
}

void Multipart::readHead(char c)
{
    if (++headSize_ > longestPartHead || c == '\0') {
        phase_ = Phase::Malformed;
        return;
    }
    line_ += c;
    if (c == '\n')
        endHeadLine();
}

void Multipart::endHeadLine()
{
    const std::string line = std::exchange(line_, {});
    if (line.size() < 2 || line[line.size() - 2] != '\r') {
        phase_ = Phase::Malformed;
    } else if (line.size() == 2) {
        phase_ = named_ ? Phase::Content : Phase::Malformed;
        inPart_ = true;
        if (named_)
            begin_(std::exchange(part_, {}));
    } else if (const std::size_t colon = line.find(':'); colon == std::string::npos) {
        phase_ = Phase::Malformed;
    } else if (sameHeaderName(line.substr(0, colon), "Content-Disposition")) {
        const HeaderValue disposition(line.substr(colon + 1, line.size() - colon - 3));
        if (named_ || !disposition.isSound() || disposition.token() != "form-data"
            || disposition.parameter("name").empty())
            phase_ = Phase::Malformed;
        part_ = {disposition.parameter("name"), disposition.parameter("filename")};
        named_ = true;
    }
}

} // namespace local_platform
