// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

struct ISystemSettings
{
    QString folder;
};

extern ISystemSettings* pSystemSettings;
