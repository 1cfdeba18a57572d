// SPDX-License-Identifier: MIT
#pragma once

#include <QDir>
#include <QPixmap>
#include <QWidget>

/// A folder of pictures of windows, with their titles as on a desktop.
class Album
{
public:
    Album(const QString& folderPath, const QString& namePrefix)
        : folder(folderPath)
        , prefix(namePrefix)
    {
    }

    void shoot(QWidget& window, const QString& name) const;
    /// Presses \a button and takes a picture of the message box that it opens, in front of its window.
    void shootBox(QWidget& window, const QString& button, const QString& name) const;
    /// Presses \a button and takes a picture of the window while it waits for the platform.
    void shootWaiting(QWidget& window, const QString& button, const QString& name) const;
    static void press(QWidget& window, const QString& text);

private:
    void save(const QPixmap& picture, const QString& name) const;

    QDir folder;
    QString prefix;
};
