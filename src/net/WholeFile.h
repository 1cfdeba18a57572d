// SPDX-License-Identifier: MIT
#pragma once

#include <QSaveFile>
#include <QString>

namespace tav {

/// A file that is whole or old: written beside its path, and put in place by commit() only. Links are
/// followed; anything but a regular file is refused, since renaming over a device or a pipe would take it
/// away.
class WholeFile
{
public:
    explicit WholeFile(const QString& path)
        : file(path)
    {
    }
    /// \param rights those of the file; by default those of the one that it replaces, or as the process makes
    /// files
    bool open(QFileDevice::Permissions rights = {});
    bool write(const QByteArray& bytes);
    /// False, with an older file untouched, if anything was not written.
    bool commit();

private:
    QSaveFile file;
    bool good = false;
};

/// \a bytes as the file at \a path; false, with an older file untouched, if that fails.
/// \param rights as for WholeFile::open()
bool writeWholeFile(const QString& path, const QByteArray& bytes, QFileDevice::Permissions rights = {});

} // namespace tav
