// SPDX-License-Identifier: MIT
#include "http/Call.h"

#include "base/Text.h"
#include "http/Envelope.h"
#include "http/Multipart.h"

#include <algorithm>
#include <arpa/inet.h>
#include <utility>

namespace local_platform {

Call::Call(Request request, std::shared_ptr<const Audience> audience)
    : request_(std::move(request))
    , audience_(std::move(audience))
    , query_(Fields::fromQuery(request_.query))
{
}

std::string Call::client() const
{
    return networkOf(request_.address);
}

std::string Call::bearer() const
{
    const std::string& authorization = header("Authorization");
    const std::string scheme = "Bearer ";
    return startsWith(authorization, scheme) ? authorization.substr(scheme.size()) : std::string();
}

Intake* Call::takeBodyAs(const BodyUse& use)
{
    if (request_.hasBody)
        intake_ = intakeFor(use, header("Content-Type"));
    return intake_.get();
}

void Call::read(const std::function<void(const char*, std::size_t)>& take)
{
    if (intake_)
        intake_->read(take);
}

std::string Call::text(std::size_t limit)
{
    return intake_ ? intake_->text(limit) : std::string();
}

Fields Call::form()
{
    if (intake_)
        return intake_->form().fields;
    if (isMultipart())
        throw Refusal("The request was cut short or is malformed");
    return {};
}

Upload Call::upload()
{
    Upload upload;
    if (isMultipart() && !intake_)
        throw Refusal("The request was cut short or is malformed");
    if (isMultipart())
        upload = intake_->form();
    if (!upload.file)
        throw Refusal("The upload has no file");
    return upload;
}

bool Call::isMultipart() const
{
    return Multipart::isTypeOf(header("Content-Type"));
}

std::string networkOf(const std::string& address)
{
    in6_addr six = {};
    if (::inet_pton(AF_INET6, address.c_str(), &six) != 1 || IN6_IS_ADDR_V4MAPPED(&six))
        return address;
    std::fill(six.s6_addr + 8, six.s6_addr + 16, std::uint8_t{0});
    char text[INET6_ADDRSTRLEN];
    return ::inet_ntop(AF_INET6, &six, text, sizeof text) ? text : address;
}

} // namespace local_platform
