// SPDX-License-Identifier: MIT
#pragma once

#include "toolkit/tav_host_toolkit_export.h"

#include <QSize>
#include <QString>

/// What the host remembers for its users, as far as its dialogs need it. GUI thread only.
class TAV_HOST_TOOLKIT_EXPORT ISystemSettings
{
public:
    /// The directory a file dialog was last used in; empty when there is none yet.
    virtual QString lastDirectory() const = 0;

    virtual void setLastDirectory(const QString& directory) = 0;

    /// The size that the user last gave the window called \a window, in device-independent pixels; invalid
    /// when there is none. Settings that do not reimplement these two remember no sizes.
    virtual QSize windowSize(const QString& window) const
    {
        Q_UNUSED(window)
        return QSize();
    }

    /// Called again and again while the user drags the window's edge.
    virtual void setWindowSize(const QString& window, const QSize& size)
    {
        Q_UNUSED(window)
        Q_UNUSED(size)
    }

protected:
    ~ISystemSettings() = default;
};

/// The host's settings. Never null at start: it points to settings that remember until the process ends. A
/// host puts its own in place, keeps ownership of them, and sees to it that they outlive every dialog.
extern TAV_HOST_TOOLKIT_EXPORT ISystemSettings* pSystemSettings;
