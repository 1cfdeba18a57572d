// SPDX-License-Identifier: MIT
#include "http/RequestParser.h"

#include "base/Refusal.h"
#include "base/Text.h"

#include <algorithm>
#include <array>
#include <boost/beast/http/basic_parser.hpp>
#include <limits>

namespace local_platform {

namespace {

namespace http = boost::beast::http;
using boost::beast::error_code;
using boost::beast::iequals;
using boost::beast::string_view;

constexpr std::size_t longestChunkHead = 8u << 10; // or trailer
constexpr std::size_t mostExtensions = 16u << 10;

std::string text(string_view view)
{
    return {view.data(), view.size()};
}

Refusal notUnderstood()
{
    return Refusal("The request cannot be understood");
}

void requireKnownMethod(const std::string& method)
{
    constexpr std::array<const char*, 7> known{"GET", "HEAD", "POST", "PUT", "PATCH", "DELETE", "OPTIONS"};
    if (std::find(known.begin(), known.end(), method) == known.end())
        throw Refusal("There is no such method here", 501);
}

/// Path and query, also of a target that names the server.
std::string withoutServer(const std::string& target)
{
    for (const std::string scheme : {"http://", "https://"})
        if (iequals(target.substr(0, scheme.size()), scheme)) {
            const std::size_t path = target.find_first_of("/?", scheme.size());
            return path == std::string::npos ? "/" : (target[path] == '?' ? "/" : "") + target.substr(path);
        }
    if (target.empty() || (target.front() != '/' && target != "*"))
        throw notUnderstood();
    return target;
}

} // namespace

const std::string& Request::header(const std::string& name) const
{
    static const std::string none;
    for (const auto& [key, value] : headers)
        if (iequals(key, name))
            return value;
    return none;
}

class RequestParser::Parser final : public http::basic_parser<true>
{
public:
    Parser()
    {
        header_limit(std::numeric_limits<std::uint32_t>::max()); // counted where the head comes in
        body_limit(std::numeric_limits<std::uint64_t>::max()); // counted by who takes the body
    }

    Request request;
    std::string target;
    int version = 0;
    std::string* content = nullptr;

    std::size_t count(http::field name) const
    {
        const auto isIt = [&](const auto& header) { return http::string_to_field(header.first) == name; };
        return static_cast<std::size_t>(std::count_if(request.headers.begin(), request.headers.end(), isIt));
    }

private:
    void on_request_impl(
        http::verb, string_view method, string_view wanted, int httpVersion, error_code&) override
    {
        request.method = text(method);
        target = text(wanted);
        version = httpVersion;
    }
    void on_response_impl(int, string_view, int, error_code&) override { }
    void on_field_impl(http::field, string_view name, string_view value, error_code&) override
    {
        // Nobody asks for what stands in a trailer.
        if (!is_header_done())
            request.headers.emplace_back(text(name), text(value));
    }
    void on_header_impl(error_code&) override { }
    void on_body_init_impl(const boost::optional<std::uint64_t>&, error_code&) override { }
    std::size_t on_body_impl(string_view piece, error_code&) override
    {
        content->append(piece.data(), piece.size());
        return piece.size();
    }
    void on_chunk_header_impl(std::uint64_t, string_view extensions, error_code& error) override
    {
        extensions_ += extensions.size();
        if (extensions_ > mostExtensions)
            error = http::error::bad_chunk_extension;
    }
    std::size_t on_chunk_body_impl(std::uint64_t, string_view piece, error_code&) override
    {
        content->append(piece.data(), piece.size());
        return piece.size();
    }
    void on_finish_impl(error_code&) override { }

    std::size_t extensions_ = 0;
};

RequestParser::RequestParser()
    : parser_(std::make_unique<Parser>())
{
}

RequestParser::~RequestParser() = default;

Request RequestParser::head(const std::string& bytes)
{
    Parser& parser = *parser_;
    Request& request = parser.request;
    error_code error;
    parser.put(boost::asio::buffer(bytes), error);
    if (error == http::error::bad_version)
        throw Refusal("The request is none of HTTP/1.0 or HTTP/1.1", 505);
    if (error || !parser.is_header_done())
        throw notUnderstood();
    requireKnownMethod(request.method);

    const std::size_t hosts = parser.count(http::field::host);
    if (hosts > 1 || (hosts == 0 && parser.version >= 11))
        throw Refusal("The request must name its host once");
    const bool inChunks = parser.count(http::field::transfer_encoding) != 0;
    if (inChunks && (parser.count(http::field::content_length) != 0 || parser.version < 11))
        throw notUnderstood();
    if (inChunks && !iequals(request.header("Transfer-Encoding"), "chunked"))
        throw Refusal("The transfer encoding of the request is not known", 501);

    const std::string pathAndQuery = withoutServer(parser.target);
    const std::size_t mark = std::min(pathAndQuery.find('?'), pathAndQuery.size());
    request.path = percentDecoded(pathAndQuery.substr(0, mark));
    request.query = pathAndQuery.substr(std::min(mark + 1, pathAndQuery.size()));
    request.hasBody = !parser.is_done();
    request.bodySize = parser.content_length().value_or(0);
    request.keepsAlive = parser.keep_alive();
    const std::string& expected = request.header("Expect");
    if (!expected.empty() && !iequals(expected, "100-continue"))
        throw Refusal("What the request expects is not known", 417);
    request.awaitsContinue = request.hasBody && !expected.empty() && parser.version >= 11;
    for (const auto& [name, value] : request.headers)
        if (request.hasBody && iequals(name, "Content-Encoding") && !iequals(value, "identity"))
            throw Refusal("The body of the request must come as it is, not packed", 415);
    return std::move(request);
}

void RequestParser::body(std::string& bytes, std::string& content)
{
    parser_->content = &content;
    std::size_t used = 0;
    while (used < bytes.size() && !parser_->is_done()) {
        error_code error;
        const std::size_t taken =
            parser_->put(boost::asio::buffer(bytes.data() + used, bytes.size() - used), error);
        used += taken;
        if (error && error != http::error::need_more)
            throw Refusal("The request was cut short or is malformed");
        if (taken == 0 && error == http::error::need_more)
            break;
    }
    bytes.erase(0, used);
    if (!parser_->is_done() && bytes.size() > longestChunkHead)
        throw Refusal("The request was cut short or is malformed");
}

bool RequestParser::isDone() const
{
    return parser_->is_done();
}

} // namespace local_platform
