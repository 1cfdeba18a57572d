// SPDX-License-Identifier: MIT
#include "Platform.h"

#include "base/Text.h"
#include "features/DemoAccounts.h"

#include <filesystem>
#include <nlohmann/json.hpp>
#include <spdlog/spdlog.h>
#include <stdexcept>
#include <system_error>
#include <vector>

namespace local_platform {

namespace {

constexpr long long secondsInADay = 86400;
constexpr std::uintmax_t leastRoom = 16u << 20;
constexpr int secondsUntilThereMayBeRoom = 60;

} // namespace

Platform::Platform(const Options& options)
    : options_(options)
    , folder_(options_.data, DataFolder::Use::Serve)
    , clock_(options_.clockOffset)
    , database_(folder_.database())
    , files_(folder_.path(), options_.maxFileSize)
    , trash_(database_, files_, clock_, options_.trashAge * secondsInADay)
    , upkeep_(folder_, database_, files_, trash_)
    , outbox_(options_.outbox.empty() ? folder_.outbox() : options_.outbox)
    , tokens_(database_, clock_, options_.tokenLifetime)
    , codes_(database_, clock_, outbox_, options_.codeLifetime)
    , accounts_(database_, tokens_, codes_, clock_, options_)
    , projects_(database_, files_, trash_)
    , sharing_(database_, files_, clock_)
    , addressBook_(database_)
    , groups_(database_, clock_)
    , softwareTables_(database_)
    , conversion_(options_, folder_.scratch(), clock_)
{
    accounts_.addTo(routes_);
    codes_.addTo(routes_);
    projects_.addTo(routes_);
    sharing_.addTo(routes_);
    addressBook_.addTo(routes_);
    groups_.addTo(routes_);
    softwareTables_.addTo(routes_);
    conversion_.addTo(routes_);

    // For a load balancer or a monitor: it runs, and it can do its work.
    routes_.add("GET", "/healthz", [](Call&) { return success(true); });
    routes_.add("GET", "/readyz", [this](Call&) {
        if (!hasRoom())
            throw Refusal("The data folder's disk is full", 503).retriedAfter(secondsUntilThereMayBeRoom);
        return success(database_.read().number("select 1") == 1);
    });
    routes_.each([](const std::string& route) { spdlog::debug("Route {}", route); });

    requireSafety();
    if (options_.demoAccounts)
        spdlog::info(addDemoAccounts(database_, options_.cipherKey));
}

void Platform::requireSafety()
{
    std::vector<std::string> reasons = exposures(options_);
    if (servesOthers(options_) && !options_.demoAccounts && hasDemoAccounts(database_, options_.cipherKey))
        reasons.emplace_back("demo accounts are in the data folder, and everybody knows their passwords");
    std::string all;
    for (const std::string& reason : reasons) {
        spdlog::warn("Other machines can reach {}, and {}", options_.listen, reason);
        all += (all.empty() ? "" : "; ") + reason;
    }
    if (!reasons.empty() && !options_.allowInsecure)
        throw std::runtime_error("Other machines can reach " + options_.listen + ", and " + all
            + ". Mend that, or say --allow-insecure.");
}

bool Platform::hasRoom() const
{
    std::error_code error;
    const auto space = std::filesystem::space(folder_.path(), error);
    return !error && space.available >= leastRoom;
}

const Route& Platform::admit(Call& call)
{
    if (startsWith(call.path(), "/project/"))
        call.setUser(tokens_.userOf(call.bearer()));
    return routes_.find(call);
}

} // namespace local_platform
