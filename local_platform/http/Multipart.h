// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <functional>
#include <string>

namespace local_platform {

/// Reads a body of the type multipart/form-data while it comes in, in linear time, and keeps nothing of it
/// but the head of a part.
class Multipart
{
public:
    struct Part
    {
        std::string name;
        std::string fileName; ///< empty where there is none
    };
    using BeginPart = std::function<void(const Part&)>;
    using TakeContent = std::function<void(const char*, std::size_t)>;

    static bool isTypeOf(const std::string& contentType);

    /// @param contentType with the boundary
    Multipart(const std::string& contentType, BeginPart begin, TakeContent take);

    /// Ignores what comes after something malformed.
    void append(const char* data, std::size_t size);
    /// Whether the form came to its end.
    bool isWhole() const { return phase_ == Phase::Done; }

private:
    enum class Phase
    {
        Content, ///< up to the next delimiter
        AfterDelimiter,
        Head,
        Done,
        Malformed
    };

    std::size_t readContent(const char* data, std::size_t size);
    void readAfterDelimiter(char c);
    void readHead(char c);
    void endHeadLine();
    void flush(const char* data, std::size_t size);

    const BeginPart begin_;
    const TakeContent take_;
    std::string delimiter_; ///< with the end of the line before it
    std::size_t matched_; ///< of the delimiter
    Phase phase_ = Phase::Content;
    bool inPart_ = false; ///< false before the first
    std::string line_;
    std::size_t headSize_ = 0;
    Part part_;
    bool named_ = false;
};

} // namespace local_platform
