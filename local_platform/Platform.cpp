// SPDX-License-Identifier: MIT
#include "Platform.h"

#include "base/Text.h"
#include "features/DemoAccounts.h"

#include <cstring>
#include <fcntl.h>
#include <nlohmann/json.hpp>
#include <set>
#include <spdlog/spdlog.h>
#include <stdexcept>
#include <sys/file.h>
#include <unistd.h>

namespace local_platform {

namespace {

/// One platform for one data directory: a second would take the first one's uploads for orphans.
int lockedDirectory(const std::filesystem::path& data)
{
    std::filesystem::create_directories(data);
    const std::filesystem::path file = data / "lock";
    const int descriptor = ::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (descriptor < 0)
        throw std::runtime_error(
            "The data directory cannot be used: " + file.string() + ": " + std::strerror(errno));
    if (::flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
        ::close(descriptor);
        throw std::runtime_error("The data directory is in use by another platform: " + data.string());
    }
    return descriptor;
}

} // namespace

Platform::Platform(const Options& options)
    : options_(options)
    , lock_(lockedDirectory(options_.data))
    , clock_(options_.clockOffset)
    , database_(options_.data / "platform.sqlite")
    , files_(options_.data, options_.maxFileSize)
    , outbox_(options_.outbox.empty() ? options_.data / "outbox" : options_.outbox)
    , tokens_(database_, clock_, options_.tokenLifetime)
    , codes_(database_, clock_, outbox_, options_.codeLifetime)
    , accounts_(database_, tokens_, codes_, options_)
    , projects_(database_, files_)
    , sharing_(database_, files_, clock_)
    , addressBook_(database_)
    , groups_(database_)
    , softwareTables_(database_)
    , conversion_(options_)
{
    accounts_.addTo(routes_);
    codes_.addTo(routes_);
    projects_.addTo(routes_);
    sharing_.addTo(routes_);
    addressBook_.addTo(routes_);
    groups_.addTo(routes_);
    softwareTables_.addTo(routes_);
    conversion_.addTo(routes_);

    tidyUp();
    if (options_.demoAccounts)
        spdlog::info(addDemoAccounts(database_, options_.cipherKey));
}

Platform::~Platform()
{
    ::close(lock_);
}

void Platform::tidyUp()
{
    std::set<std::string> known;
    database_.work().each("select stored_name from backups union all select stored_name from shared_files",
        {}, [&](Database::Row& row) {
            known.insert(row.text());
            return true;
        });
    if (const int orphans = files_.removeOrphans(known))
        spdlog::info("Removed {} unfinished or replaced files", orphans);
}

Reply Platform::answer(Call& call)
{
    if (startsWith(call.path(), "/project/"))
        call.setUser(tokens_.userOf(call.bearer()));
    return routes_.find(call)(call);
}

} // namespace local_platform
