// SPDX-License-Identifier: MIT
#pragma once

#include "http/Routes.h"
#include "store/Database.h"

namespace local_platform {

/// Which file types a software works with, and which software accepts them from which. Every account reads
/// both tables; it changes only the rows that it saved itself.
class SoftwareTables
{
public:
    explicit SoftwareTables(Database& database);

    void addTo(Routes& routes);

private:
    Json listAdaptationTypes(Call& call);
    Json listSupportTypes(Call& call);
    Json save(Call& call);

    Database& database_;
};

} // namespace local_platform
