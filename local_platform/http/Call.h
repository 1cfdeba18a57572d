// SPDX-License-Identifier: MIT
#pragma once

#include "http/Intake.h"
#include "http/Request.h"

#include <functional>
#include <memory>
#include <string>

namespace local_platform {

/// Whether somebody still waits for an answer.
class Audience
{
public:
    virtual ~Audience() = default;
    virtual bool isGone() const = 0;
};

/// One request as an endpoint sees it, with its whole body.
class Call
{
public:
    /// @param audience null where nobody can go
    explicit Call(Request request, std::shared_ptr<const Audience> audience = nullptr);

    const std::string& method() const { return request_.method; }
    const std::string& path() const { return request_.path; }
    const std::string& header(const std::string& name) const { return request_.header(name); }
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

    /// The body of a route that spools it, piece by piece.
    void read(const std::function<void(const char*, std::size_t)>& take);
    /// The body as it is. Refuses one that is longer.
    std::string text(std::size_t limit);
    /// The body as a form, URL-encoded or multipart, without a file.
    Fields form();
    /// The body of a route for uploads: a multipart form with the part "file", which is on disk.
    Upload upload();

    /// Whether nobody waits for the answer any longer: long work may end then. Cheap, and for any thread.
    bool clientIsGone() const { return audience_ && audience_->isGone(); }

    /// What takes the body in from here on; null where the request has none.
    Intake* takeBodyAs(const BodyUse& use);

private:
    bool isMultipart() const;

    const Request request_;
    const std::shared_ptr<const Audience> audience_;
    const Fields query_;
    std::unique_ptr<Intake> intake_;
    std::string rest_;
    long long user_ = 0;
};

/// The network of an address: itself for IPv4, of an IPv6 address the half that one customer has.
std::string networkOf(const std::string& address);

} // namespace local_platform
