// SPDX-License-Identifier: MIT
#include "net/WholeFile.h"

#include <QFileInfo>

#ifdef Q_OS_UNIX
#include <cerrno>
#include <unistd.h>
#elif defined(Q_OS_WIN)
#include <io.h>
#endif

namespace tav {

namespace {

/// Whether everything written to \a file is on the disk. QSaveFile syncs too, but ignores the result, and
/// some file systems report a full disk only here.
bool synced(QFileDevice& file)
{
    if (!file.flush())
        return false;
#ifdef Q_OS_UNIX
    return fsync(file.handle()) == 0 || errno == EINVAL || errno == ENOTSUP;
#elif defined(Q_OS_WIN)
    return _commit(file.handle()) == 0;
#else
    return true;
#endif
}

} // namespace

bool WholeFile::open(QFileDevice::Permissions rights)
{
    const QFileInfo target(file.fileName());
    good = (!target.exists() || target.isFile()) && file.open(QIODevice::WriteOnly | QIODevice::Unbuffered)
        && (!rights || file.setPermissions(rights));
    return good;
}

bool WholeFile::write(const QByteArray& bytes)
{
    good = good && file.write(bytes) == bytes.size();
    return good;
}

bool WholeFile::startOver()
{
    good = good && file.seek(0) && file.resize(0);
    return good;
}

bool WholeFile::commit()
{
    if (good && synced(file))
        return file.commit();
    file.cancelWriting();
    return false;
}

bool writeWholeFile(const QString& path, const QByteArray& bytes, QFileDevice::Permissions rights)
{
    WholeFile file(path);
    return file.open(rights) && file.write(bytes) && file.commit();
}

} // namespace tav
