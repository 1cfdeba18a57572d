// SPDX-License-Identifier: MIT
#include "toolkit/ISystemSettings.h"

#include <QHash>

namespace {

class ProcessSettings final : public ISystemSettings
{
public:
    QString lastDirectory() const override { return lastUsed; }
    void setLastDirectory(const QString& directory) override { lastUsed = directory; }
    QSize windowSize(const QString& window) const override { return sizes.value(window); }
    void setWindowSize(const QString& window, const QSize& size) override { sizes[window] = size; }

private:
    QString lastUsed;
    QHash<QString, QSize> sizes;
};

ProcessSettings processSettings;

} // namespace

ISystemSettings* pSystemSettings = &processSettings;
