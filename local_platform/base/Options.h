// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace local_platform {

/// What the operator can choose; the defaults fit a client built with its own defaults.
struct Options
{
    std::string listen = "127.0.0.1:48620";
    std::filesystem::path data = "tav-local-platform-data";
    std::filesystem::path outbox; ///< empty: "outbox" inside data
    bool demoAccounts = false;
    bool allowInsecure = false; ///< serve other machines in spite of exposures()

    std::string tlsCertificate;
    std::string tlsKey;
    int maxConnections = 16384;
    int maxConnectionsPerAddress = 1024; ///< many clients may share one
    int headTimeLimit = 10; ///< seconds until the head of a request is there
    int stallTimeLimit = 30; ///< seconds over which a client moves 1 KiB/s

    std::string clientCredential = "Basic dGF2LWxvY2FsOnRhdi1sb2NhbC1zZWNyZXQ=";
    std::string refreshBearer = "Bearer tav-local-refresh";
    std::string cipherKey = "tav-local-key-16";

    std::uint64_t maxFileSize = 1ull << 30; ///< bytes of one uploaded file
    long long tokenLifetime = 43200; ///< seconds
    long long codeLifetime = 600; ///< seconds
    long long trashAge = 30; ///< days
    long long clockOffset = 0; ///< seconds

    std::string converter; ///< script run as: node SCRIPT IN OUT
    std::uint64_t maxDrawingSize = 64ull << 20; ///< bytes of one drawing
    int conversionTimeLimit = 25; ///< seconds; clients wait 30
    unsigned conversionsAtOnce = 0; ///< 0: as many as there are processors
    unsigned conversionQueue = 32; ///< drawings that wait for their turn
    long long conversionsPerHour = 1000; ///< of one address
    std::string drawingCodePage; ///< of texts in DGN files; empty: guessed from each file
};

/// Why other machines should not be served with these options, one reason each; nothing where only this one
/// is.
std::vector<std::string> exposures(const Options& options);
bool servesOthers(const Options& options);

} // namespace local_platform
