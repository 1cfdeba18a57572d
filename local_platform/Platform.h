// SPDX-License-Identifier: MIT
#pragma once

#include "base/Clock.h"
#include "base/Options.h"
#include "features/Accounts.h"
#include "features/AddressBook.h"
#include "features/Codes.h"
#include "features/Conversion.h"
#include "features/Groups.h"
#include "features/Projects.h"
#include "features/Sharing.h"
#include "features/SoftwareTables.h"
#include "features/Tokens.h"
#include "http/Routes.h"
#include "store/DataFolder.h"
#include "store/Database.h"
#include "store/FileStore.h"
#include "store/Outbox.h"
#include "store/Trash.h"
#include "store/Upkeep.h"

namespace local_platform {

/// Everything behind the network: the parts of the platform, put together.
class Platform
{
public:
    /// Opens the data directory and brings it in order. Throws when it is unusable or none of this
    /// platform's.
    explicit Platform(const Options& options);
    Platform(const Platform&) = delete;
    Platform& operator=(const Platform&) = delete;

    /// @throws Refusal
    const Route& admit(Call& call);

private:
    void requireSafety();
    bool hasRoom() const;

    Options options_;
    DataFolder folder_;
    Clock clock_;
    Database database_;
    FileStore files_;
    Trash trash_;
    Upkeep upkeep_;
    Outbox outbox_;
    Tokens tokens_;
    Codes codes_;
    Accounts accounts_;
    Projects projects_;
    Sharing sharing_;
    AddressBook addressBook_;
    Groups groups_;
    SoftwareTables softwareTables_;
    Conversion conversion_;
    Routes routes_;
};

} // namespace local_platform
