// SPDX-License-Identifier: MIT
#pragma once

#include "http/Fields.h"
#include "store/FileStore.h"

#include <functional>
#include <memory>
#include <string>

namespace httplib {
struct Request;
class ContentReader;
} // namespace httplib

namespace local_platform {

/// A form with one file, as it came in.
struct Upload
{
    Fields fields;
    std::string fileName;
    std::unique_ptr<IncomingFile> file; ///< null until a file part begins
};

/// One request as an endpoint sees it.
class Call
{
public:
    /// @param body null for methods that carry none
    Call(const httplib::Request& request, const httplib::ContentReader* body);

    const std::string& method() const;
    const std::string& path() const;
    std::string header(const std::string& name) const;
    /// The network that it comes from: an IPv4 address, or of an IPv6 address the half that one customer has.
    std::string client() const;
    /// The token of "Authorization: Bearer ..."; empty when there is none.
    std::string bearer() const;
    const Fields& query() const { return query_; }

    /// What the path holds beyond the route's own text.
    const std::string& rest() const { return rest_; }
    void setRest(const std::string& rest) { rest_ = rest; }
    /// The signed-in user, for every route that needs one.
    long long user() const { return user_; }
    void setUser(long long user) { user_ = user; }

    /// The body as it comes in, piece by piece. Refuses one that was cut short.
    void read(const std::function<void(const char*, std::size_t)>& take);
    /// The body as it is. Refuses one that is longer or was cut short.
    std::string text(std::size_t limit);
    /// The body as a form, URL-encoded or multipart, without a file.
    Fields form();
    /// The body as a multipart form with the part "file", streamed to disk.
    Upload upload(const FileStore& files);
    /// Whether nobody waits for the answer any longer: long work may end then. Cheap, and for any thread.
    bool clientIsGone() const { return false; } // the HTTP library keeps the connection to itself
    /// Reads off what the endpoint left unread, so that the connection can go on.
    void finish() noexcept;

private:
    bool isMultipart() const;
    void readMultipart(Upload& upload, const FileStore* files);

    const httplib::Request& request_;
    const httplib::ContentReader* body_;
    Fields query_;
    std::string rest_;
    long long user_ = 0;
};

} // namespace local_platform
