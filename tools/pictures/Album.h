// SPDX-License-Identifier: MIT
#pragma once

#include <QDir>
#include <QPixmap>
#include <QWidget>

/// Where pictures of windows go, as a desktop shows them: with their titles.
class Album
{
public:
    Album(const QString& folderPath, const QString& namePrefix)
        : folder(folderPath)
        , prefix(namePrefix)
    {
    }

    void shoot(QWidget& window, const QString& name) const;
    /// Presses \a button and takes the box that it brings, in front of its window.
    void shootBox(QWidget& window, const QString& button, const QString& name) const;
    /// Presses \a button and takes the window while it waits for the platform.
    void shootWaiting(QWidget& window, const QString& button, const QString& name) const;
    static void press(QWidget& window, const QString& text);

private:
    void save(const QPixmap& picture, const QString& name) const;

    QDir folder;
    QString prefix;
};
