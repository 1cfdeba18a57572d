// SPDX-License-Identifier: MIT
#pragma once

#include <QSaveFile>
#include <QString>

namespace tav {

/// A file that is replaced as a whole or not at all: written beside its path, and renamed over it by commit()
/// only. Symbolic links are followed; anything but a regular file is refused, since renaming would remove a
/// device or a pipe.
class WholeFile
{
public:
    explicit WholeFile(const QString& path)
        : file(path)
    {
    }
    /// \param rights the file's permissions; by default those of the file that it replaces, or those that the
    /// process gives new files
    bool open(QFileDevice::Permissions rights = {});
    bool write(const QByteArray& bytes);
    /// Forgets what was written.
    bool startOver();
    /// False, with an older file untouched, if anything was not written.
    bool commit();

private:
    QSaveFile file;
    bool good = false;
};

/// Writes \a bytes as the file at \a path; false, with an older file untouched, if that fails.
/// \param rights as for WholeFile::open()
bool writeWholeFile(const QString& path, const QByteArray& bytes, QFileDevice::Permissions rights = {});

} // namespace tav
