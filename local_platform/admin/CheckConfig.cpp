// SPDX-License-Identifier: MIT
#include "admin/CheckConfig.h"

#include "base/Text.h"
#include "store/DataFolder.h"

#include <exception>
#include <filesystem>
#include <iostream>
#include <memory>
#include <openssl/ssl.h>

namespace local_platform {

namespace {

bool isUsablePair(const std::string& certificate, const std::string& key)
{
    const std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)> context(
        SSL_CTX_new(TLS_server_method()), SSL_CTX_free);
    return context && SSL_CTX_use_certificate_chain_file(context.get(), certificate.c_str()) == 1
        && SSL_CTX_use_PrivateKey_file(context.get(), key.c_str(), SSL_FILETYPE_PEM) == 1
        && SSL_CTX_check_private_key(context.get()) == 1;
}

} // namespace

int checkConfig(const Options& options)
{
    int faults = 0;
    const auto tell = [&](const char* kind, const std::string& what) {
        std::cout << kind << ": " << oneLine(what) << '\n';
        faults += std::string(kind) == "error" ? 1 : 0;
    };
    for (const std::string& reason : exposures(options))
        tell(options.allowInsecure ? "warning" : "error",
            "other machines can reach " + options.listen + ", and " + reason);
    if (!options.tlsCertificate.empty() && !isUsablePair(options.tlsCertificate, options.tlsKey))
        tell("error", "the TLS certificate or its key cannot be used, or they do not belong together");
    if (!std::filesystem::exists(options.converter))
        tell("warning", "drawings cannot be converted: there is no converter at " + options.converter);
    try {
        if (DataFolder::isFree(options.data))
            tell("note", "the data folder " + options.data.string() + " will be made new");
        else
            DataFolder(options.data, DataFolder::Use::Inspect);
    } catch (const std::exception& error) {
        tell("error", error.what());
    }
    std::cout << (faults == 0 ? "The configuration is good.\n" : "The platform would not start.\n");
    return faults == 0 ? 0 : 1;
}

} // namespace local_platform
