// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>

namespace local_platform {

/// Reads a conversion request as it comes in and writes the drawing in it to disk, so that a large one is
/// never in memory.
class SoapDrawing
{
public:
    SoapDrawing(const std::filesystem::path& target, std::uint64_t maxSize);

    void append(const char* data, std::size_t size);
    /// Call after the last piece. Refuses a request that holds no whole drawing.
    void finish();

    /// The operation's element without its namespace prefix, such as ConDgn2Dwg.
    const std::string& operation() const { return operation_; }

private:
    enum class Phase
    {
        Head,
        Drawing,
        Tail
    };

    void readHead(const char* data, std::size_t size);
    /// Whether the drawing begins behind it.
    bool endTag();
    void readDrawing(const char* data, std::size_t size);
    void decodePending();

    std::ofstream target_;
    std::uint64_t maxSize_;
    std::uint64_t size_ = 0;
    Phase phase_ = Phase::Head;
    std::string operation_;
    std::size_t headSize_ = 0; ///< bytes before the drawing, each of which is looked at once
    bool inTag_ = false;
    bool inName_ = false;
    std::string name_; ///< of the tag in the head
    std::string pending_; ///< Base64 that is read but not used yet
    bool padded_ = false; ///< Base64 ends with its padding
    bool valid_ = true;
};

} // namespace local_platform
