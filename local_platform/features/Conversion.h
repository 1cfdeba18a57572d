// SPDX-License-Identifier: MIT
#pragma once

#include "base/Budgets.h"
#include "base/Clock.h"
#include "base/Options.h"
#include "base/Turns.h"
#include "features/Cage.h"
#include "http/Routes.h"

#include <filesystem>
#include <string>

namespace local_platform {

/// The drawing conversion service: SOAP 1.1 outside, a converter in a process of its own inside.
class Conversion
{
public:
    /// @param scratch a folder for what is being converted
    Conversion(const Options& options, const std::filesystem::path& scratch, const Clock& clock);

    void addTo(Routes& routes);

private:
    Xml answer(Call& call);
    Xml convert(Call& call, const std::filesystem::path& folder);
    void runConverter(const Call& call, const std::string& input, const std::string& output,
        const std::filesystem::path& folder);

    const Options& options_;
    const Clock& clock_;
    std::filesystem::path converter_;
    std::filesystem::path node_;
    Cage cage_;
    std::filesystem::path scratch_;
    Turns turns_;
    Budgets budgets_; ///< requests of each client
};

} // namespace local_platform
