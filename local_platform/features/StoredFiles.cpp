// SPDX-License-Identifier: MIT
#include "features/StoredFiles.h"

#include "store/Sha256.h"

#include <spdlog/spdlog.h>
#include <stdexcept>
#include <vector>

namespace local_platform {

namespace {

std::string digestOf(const OpenFile& file)
{
    Sha256 digest;
    std::vector<char> buffer(1u << 20);
    for (std::uint64_t at = 0; at < file.size();) {
        const long got = file.read(at, buffer.data(), buffer.size());
        if (got <= 0)
            throw std::runtime_error("A stored file cannot be read to its end");
        digest.add(buffer.data(), static_cast<std::size_t>(got));
        at += static_cast<std::uint64_t>(got);
    }
    return digest.finish();
}

} // namespace

Download openDownload(Database& database, const FileStore& files, const std::string& table,
    const std::function<StoredFile(Database::Work&)>& find)
{
    // Opened while no upload can replace it; read at leisure.
    const auto opened = [&](Database::Work db) {
        StoredFile stored = find(db);
        return std::make_pair(files.open(stored.name), std::move(stored));
    };
    auto [file, stored] = opened(database.work());
    if (stored.sha256)
        return {std::move(file), *stored.sha256};

    // Stored before digests were kept.
    const std::string digest = digestOf(file);
    try {
        auto db = database.work();
        db.run("update " + table + " set sha256 = :digest where stored_name = :name", {digest, stored.name});
        db.commit();
    } catch (const std::exception& error) {
        spdlog::warn(
            "A file's digest could not be kept: {}", error.what()); // the next download takes it anew
    }
    return {std::move(file), digest};
}

} // namespace local_platform
