// SPDX-License-Identifier: MIT
#include "toolkit/FileDialog.h"

#include "toolkit/ISystemSettings.h"

#include <QFileInfo>

namespace {

QString startDirectory(const ISystemSettings* settings, const QString& directory)
{
    return directory.isEmpty() && settings ? settings->lastDirectory() : directory;
}

void remember(ISystemSettings* settings, const QString& directory)
{
    if (settings)
        settings->setLastDirectory(directory);
}

} // namespace

QString FileDialog::getOpenFileName(ISystemSettings* settings, QWidget* parent, const QString& caption,
    const QString& directory, const QString& filter, QString* selectedFilter, QFileDialog::Options options)
{
    QString file = QFileDialog::getOpenFileName(
        parent, caption, startDirectory(settings, directory), filter, selectedFilter, options);
    if (!file.isEmpty())
        remember(settings, QFileInfo(file).absolutePath());
    return file;
}

QString FileDialog::getExistingDirectory(ISystemSettings* settings, QWidget* parent, const QString& caption,
    const QString& directory, QFileDialog::Options options)
{
    QString answer =
        QFileDialog::getExistingDirectory(parent, caption, startDirectory(settings, directory), options);
    if (!answer.isEmpty())
        remember(settings, answer);
    return answer;
}
