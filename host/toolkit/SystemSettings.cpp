// SPDX-License-Identifier: MIT
#include "toolkit/ISystemSettings.h"

namespace {

class ProcessSettings final : public ISystemSettings
{
public:
    QString lastDirectory() const override { return m_lastDirectory; }
    void setLastDirectory(const QString& directory) override { m_lastDirectory = directory; }

private:
    QString m_lastDirectory;
};

ProcessSettings processSettings;

} // namespace

ISystemSettings* pSystemSettings = &processSettings;
