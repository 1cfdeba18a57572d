// SPDX-License-Identifier: MIT
#include "Settings.h"

#include <QDir>
#include <QFileInfo>

QString Settings::lastDirectory() const
{
    const QString directory = store.value("lastDirectory").toString();
    return QFileInfo(directory).isDir() ? directory : QDir::currentPath();
}

void Settings::setLastDirectory(const QString& directory)
{
    store.setValue("lastDirectory", directory);
}

QSize Settings::windowSize(const QString& window) const
{
    return store.value("sizes/" + window).toSize();
}

void Settings::setWindowSize(const QString& window, const QSize& size)
{
    store.setValue("sizes/" + window, size);
}

QByteArray Settings::mainWindow() const
{
    return store.value("mainWindow").toByteArray();
}

void Settings::setMainWindow(const QByteArray& geometry)
{
    store.setValue("mainWindow", geometry);
}
