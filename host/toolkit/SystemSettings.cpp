// SPDX-License-Identifier: MIT
#include "toolkit/ISystemSettings.h"

#include <QHash>

namespace {

class ProcessSettings final : public ISystemSettings
{
public:
    QString lastDirectory() const override { return m_lastDirectory; }
    void setLastDirectory(const QString& directory) override { m_lastDirectory = directory; }
    QSize windowSize(const QString& window) const override { return m_sizes.value(window); }
    void setWindowSize(const QString& window, const QSize& size) override { m_sizes[window] = size; }

private:
    QString m_lastDirectory;
    QHash<QString, QSize> m_sizes;
};

ProcessSettings processSettings;

} // namespace

ISystemSettings* pSystemSettings = &processSettings;
