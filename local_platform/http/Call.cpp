// SPDX-License-Identifier: MIT
#include "http/Call.h"

#include "base/Text.h"
#include "http/Envelope.h"

#include <algorithm>
#include <arpa/inet.h>
#include <httplib.h>
#include <utility>

namespace local_platform {

namespace {

constexpr std::size_t maxFields = 64;
constexpr std::size_t maxFieldSize = 64u << 10;

bool announcesBody(const httplib::Request& request)
{
    return request.has_header("Transfer-Encoding")
        || (request.has_header("Content-Length") && request.get_header_value("Content-Length") != "0");
}

std::string queryText(const std::string& target)
{
    const std::size_t mark = target.find('?');
    return mark == std::string::npos ? std::string() : target.substr(mark + 1);
}

[[noreturn]] void refuseCutBody()
{
    throw Refusal("The request was cut short or is malformed");
}

} // namespace

Call::Call(const httplib::Request& request, const httplib::ContentReader* body)
    : request_(request)
    , body_(announcesBody(request) ? body : nullptr)
    , query_(Fields::fromQuery(queryText(request.target)))
{
}

const std::string& Call::method() const
{
    return request_.method;
}

const std::string& Call::path() const
{
    return request_.path;
}

std::string Call::header(const std::string& name) const
{
    return request_.get_header_value(name);
}

std::string Call::client() const
{
    in6_addr six = {};
    if (::inet_pton(AF_INET6, request_.remote_addr.c_str(), &six) != 1 || IN6_IS_ADDR_V4MAPPED(&six))
        return request_.remote_addr;
    std::fill(six.s6_addr + 8, six.s6_addr + 16, std::uint8_t{0});
    char text[INET6_ADDRSTRLEN];
    return ::inet_ntop(AF_INET6, &six, text, sizeof text) ? text : request_.remote_addr;
}

std::string Call::bearer() const
{
    const std::string authorization = header("Authorization");
    const std::string scheme = "Bearer ";
    return startsWith(authorization, scheme) ? authorization.substr(scheme.size()) : std::string();
}

bool Call::isMultipart() const
{
    return request_.is_multipart_form_data();
}

void Call::read(const std::function<void(const char*, std::size_t)>& take)
{
    const httplib::ContentReader* body = std::exchange(body_, nullptr);
    if (!body)
        return;
    const auto receive = [&](const char* data, std::size_t size) {
        take(data, size);
        return true;
    };
    const bool whole = isMultipart()
        ? (*body)([](const httplib::MultipartFormData&) { return true; }, receive)
        : (*body)(receive);
    if (!whole)
        refuseCutBody();
}

std::string Call::text(std::size_t limit)
{
    std::string text;
    std::size_t size = 0;
    read([&](const char* data, std::size_t length) {
        size += length;
        if (size <= limit)
            text.append(data, length);
    });
    if (size > limit)
        throw Refusal("The request is too large; at most " + std::to_string(limit) + " bytes are taken", 413);
    return text;
}

Fields Call::form()
{
    if (!isMultipart())
        return Fields::fromQuery(text(maxFieldSize));
    Upload upload;
    readMultipart(upload, nullptr);
    return upload.fields;
}

Upload Call::upload(const FileStore& files)
{
    Upload upload;
    if (isMultipart())
        readMultipart(upload, &files);
    if (!upload.file)
        throw Refusal("The upload has no file");
    return upload;
}

void Call::readMultipart(Upload& upload, const FileStore* files)
{
    std::string name;
    std::string value;
    std::size_t fieldCount = 0;
    bool inFile = false;
    std::string refusal;
    const auto endField = [&] {
        if (!inFile && !name.empty())
            upload.fields.add(name, value);
        name.clear();
        value.clear();
    };
    const auto beginPart = [&](const httplib::MultipartFormData& part) {
        endField();
        inFile = files && part.name == "file";
        if (inFile && upload.file)
            refusal = "An upload holds one file";
        if (!inFile && ++fieldCount > maxFields)
            refusal = "The form has too many fields";
        if (!refusal.empty())
            return true;
        if (inFile) {
            upload.fileName = baseName(part.filename);
            upload.file = std::make_unique<IncomingFile>(files->incoming(), files->files(), files->maxSize());
        } else {
            name = part.name;
        }
        return true;
    };
    const auto take = [&](const char* data, std::size_t size) {
        if (!refusal.empty())
            return true;
        if (inFile)
            upload.file->append(data, size);
        else if (value.size() + size <= maxFieldSize)
            value.append(data, size);
        else
            refusal = "A field of the form is too long";
        return true;
    };

    // A refused form is read to its end all the same: clients look for an answer only after they have sent it
    // all.
    const httplib::ContentReader* body = std::exchange(body_, nullptr);
    if (!body || !(*body)(beginPart, take))
        refuseCutBody();
    endField();
    if (!refusal.empty())
        throw Refusal(refusal);
}

void Call::finish() noexcept
{
    try {
        read([](const char*, std::size_t) {});
    } catch (const std::exception&) {
        // The answer is decided already; a connection that breaks here has nobody to hear it.
    }
}

} // namespace local_platform
