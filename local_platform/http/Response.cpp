// SPDX-License-Identifier: MIT
#include "http/Response.h"

#include "http/Ranges.h"

#include <nlohmann/json.hpp>

namespace local_platform {

namespace {

const char* reasonOf(int status)
{
    static const std::map<int, const char*> reasons = {{200, "OK"}, {206, "Partial Content"},
        {400, "Bad Request"}, {401, "Unauthorized"}, {403, "Forbidden"}, {404, "Not Found"},
        {408, "Request Timeout"}, {409, "Conflict"}, {413, "Payload Too Large"}, {414, "URI Too Long"},
        {415, "Unsupported Media Type"}, {416, "Range Not Satisfiable"}, {417, "Expectation Failed"},
        {429, "Too Many Requests"}, {431, "Request Header Fields Too Large"}, {500, "Internal Server Error"},
        {501, "Not Implemented"}, {503, "Service Unavailable"}, {505, "HTTP Version Not Supported"},
        {507, "Insufficient Storage"}};
    const auto found = reasons.find(status);
    return found == reasons.end() ? "" : found->second;
}

Response json(int status, const Json& document)
{
    return {status, {{"Content-Type", "application/json; charset=utf-8"}}, serialized(document)};
}

struct ResponseMaker
{
    const Call& call;

    Response operator()(const Json& document) const { return json(200, document); }

    Response operator()(Xml& xml) const
    {
        Response response{xml.status, {xml.headers.begin(), xml.headers.end()}, std::move(xml.text)};
        response.headers.emplace_back("Content-Type", "text/xml; charset=utf-8");
        return response;
    }

    Response operator()(Download& download) const
    {
        const std::string tag = '"' + download.sha256 + '"';
        const std::string& condition = call.header("If-Range");
        const bool isSameFile = condition.empty() || (!download.sha256.empty() && condition == tag);
        const std::uint64_t size = download.file.size();
        Response response;
        response.fileSize = size;
        try {
            if (const auto part = isSameFile ? partOf(size, call.header("Range")) : std::nullopt) {
                response.status = 206;
                response.fileAt = part->at;
                response.fileSize = part->size;
                response.headers.emplace_back("Content-Range",
                    "bytes " + std::to_string(part->at) + '-' + std::to_string(part->at + part->size - 1)
                        + '/' + std::to_string(size));
            }
        } catch (const Refusal& refusal) {
            response = responseTo(refusal);
            response.headers.emplace_back("Content-Range", "bytes */" + std::to_string(size));
            return response;
        }
        response.headers.emplace_back("Content-Type", "application/octet-stream");
        // One is of the bytes that come, the other of the whole file, whatever part of it was asked for.
        if (!download.sha256.empty()) {
            if (response.status == 200)
                response.headers.emplace_back("Content-Digest", "sha-256=:" + download.sha256 + ":");
            response.headers.emplace_back("Digest", "sha-256=" + download.sha256);
            response.headers.emplace_back("ETag", tag);
            response.headers.emplace_back("Accept-Ranges", "bytes");
        }
        response.file = std::make_shared<OpenFile>(std::move(download.file));
        return response;
    }
};

} // namespace

Response responseTo(Reply reply, const Call& call)
{
    return std::visit(ResponseMaker{call}, reply);
}

Response responseTo(const Refusal& refusal)
{
    Response response = json(refusal.status(), failure(refusal.code(), refusal.what()));
    if (refusal.retryAfter() > 0)
        response.headers.emplace_back("Retry-After", std::to_string(refusal.retryAfter()));
    return response;
}

Response failureOfPlatform()
{
    return json(500, failure(1, "The platform failed; its log says why"));
}

std::string headOf(const Response& response, int keepAlive)
{
    std::string head =
        "HTTP/1.1 " + std::to_string(response.status) + ' ' + reasonOf(response.status) + "\r\n";
    for (const auto& [name, value] : response.headers)
        head += name + ": " + value + "\r\n";
    head += "Content-Length: "
        + std::to_string(response.file ? response.fileSize : std::uint64_t{response.body.size()}) + "\r\n";
    if (keepAlive > 0)
        head += "Connection: keep-alive\r\nKeep-Alive: timeout=" + std::to_string(keepAlive) + "\r\n\r\n";
    else
        head += "Connection: close\r\n\r\n";
    return head;
}

} // namespace local_platform
