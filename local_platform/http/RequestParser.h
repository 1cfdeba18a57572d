// SPDX-License-Identifier: MIT
#pragma once

#include "http/Request.h"

#include <cstddef>
#include <memory>
#include <string>

namespace local_platform {

/// Reads one request, first its head and then its body. What could be taken in two ways, by this server and
/// by another one before it, is refused.
class RequestParser
{
public:
    RequestParser();
    ~RequestParser();

    /// @param bytes the head with its empty line
    /// @throws Refusal
    Request head(const std::string& bytes);

    /// Takes what it can of \a bytes away, and adds what it holds of the body to \a content.
    /// @throws Refusal
    void body(std::string& bytes, std::string& content);
    /// Whether the body is all there.
    bool isDone() const;

private:
    class Parser;
    std::unique_ptr<Parser> parser_;
};

} // namespace local_platform
