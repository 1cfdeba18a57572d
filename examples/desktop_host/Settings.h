// SPDX-License-Identifier: MIT
#pragma once

#include "toolkit/ISystemSettings.h"

#include <QByteArray>
#include <QSettings>

/// What this host remembers until it is started again. Put in place before the first dialog:
/// \code
/// Settings settings;
/// pSystemSettings = &settings;
/// \endcode
class Settings final : public ISystemSettings
{
public:
    /// The one remembered, while it exists; else the one that the host was started in.
    QString lastDirectory() const override;
    void setLastDirectory(const QString& directory) override;
    QSize windowSize(const QString& window) const override;
    void setWindowSize(const QString& window, const QSize& size) override;

    /// As QWidget::saveGeometry() has it; of the main window, which is no Dialog.
    QByteArray mainWindow() const;
    void setMainWindow(const QByteArray& geometry);

private:
    QSettings store{"tav-examples", "desktop-host"};
};
