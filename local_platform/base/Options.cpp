// SPDX-License-Identifier: MIT
#include "base/Options.h"

#include <arpa/inet.h>

namespace local_platform {

bool servesOthers(const Options& options)
{
    std::string host = options.listen.substr(0, options.listen.rfind(':'));
    if (host.size() > 2 && host.front() == '[' && host.back() == ']')
        host = host.substr(1, host.size() - 2);
    in_addr four = {};
    if (::inet_pton(AF_INET, host.c_str(), &four) == 1)
        return (ntohl(four.s_addr) >> 24) != 127;
    in6_addr six = {};
    if (::inet_pton(AF_INET6, host.c_str(), &six) == 1)
        return !IN6_IS_ADDR_LOOPBACK(&six);
    return host != "localhost";
}

std::vector<std::string> exposures(const Options& options)
{
    std::vector<std::string> reasons;
    if (!servesOthers(options))
        return reasons;
    const Options published;
    if (options.tlsCertificate.empty())
        reasons.emplace_back("passwords and drawings travel over plain HTTP (--tls-certificate, --tls-key)");
    if (options.clientCredential == published.clientCredential
        || options.refreshBearer == published.refreshBearer || options.cipherKey == published.cipherKey)
        reasons.emplace_back("the client credential, refresh bearer or cipher key is the published one "
                             "(TAV_CLIENT_CREDENTIAL, TAV_REFRESH_BEARER, TAV_CIPHER_KEY)");
    if (options.demoAccounts)
        reasons.emplace_back("everybody knows the passwords of the demo accounts (--demo-accounts)");
    return reasons;
}

} // namespace local_platform
