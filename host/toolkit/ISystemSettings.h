// SPDX-License-Identifier: MIT
#pragma once

#include "toolkit/tav_host_toolkit_export.h"

#include <QString>

/// What the host remembers for its users, as far as the file dialogs need it. GUI thread only.
class TAV_HOST_TOOLKIT_EXPORT ISystemSettings
{
public:
    /// The directory a file dialog was last used in; empty when there is none yet.
    virtual QString lastDirectory() const = 0;

    virtual void setLastDirectory(const QString& directory) = 0;

protected:
    ~ISystemSettings() = default;
};

/// The host's settings. Never null at start: it points to settings that remember until the process ends. A
/// host puts its own in place, keeps ownership of them, and sees to it that they outlive every dialog.
extern TAV_HOST_TOOLKIT_EXPORT ISystemSettings* pSystemSettings;
