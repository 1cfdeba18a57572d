// SPDX-License-Identifier: MIT
#pragma once

#include "http/Routes.h"
#include "store/Database.h"

namespace local_platform {

/// Each user's own list of friends, who need not agree to be on it.
class AddressBook
{
public:
    explicit AddressBook(Database& database);

    void addTo(Routes& routes);

private:
    Json list(Call& call);
    Json add(Call& call);
    Json remove(Call& call);

    Database& database_;
};

} // namespace local_platform
