// SPDX-License-Identifier: MIT
#pragma once

#include "Accounts.h"
#include "AddressBook.h"
#include "Clock.h"
#include "Codes.h"
#include "Conversion.h"
#include "Database.h"
#include "FileStore.h"
#include "Groups.h"
#include "Options.h"
#include "Outbox.h"
#include "Projects.h"
#include "Routes.h"
#include "Sharing.h"
#include "SoftwareTables.h"
#include "Tokens.h"

namespace local_platform {

/// Everything behind the network: the parts of the platform, put together.
class Platform
{
public:
    /// Opens the data directory and brings it in order. Throws when it is unusable or another platform's.
    explicit Platform(const Options& options);
    ~Platform();
    Platform(const Platform&) = delete;
    Platform& operator=(const Platform&) = delete;

    /// @throws Refusal
    Reply answer(Call& call);

private:
    void tidyUp();

    Options options_;
    int lock_;
    Clock clock_;
    Database database_;
    FileStore files_;
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
