// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/actionlog/FileIdentity_p.h>

#include <QFile>

#include <sys/stat.h>

namespace qv {

FileIdentity FileIdentity::of(QString const& path)
{
    struct stat status = {};
    bool const isThere = ::stat(QFile::encodeName(path).constData(), &status) == 0;
    return isThere ? FileIdentity{status.st_dev, status.st_ino} : FileIdentity();
}

FileIdentity FileIdentity::of(int fd)
{
    struct stat status = {};
    bool const isThere = ::fstat(fd, &status) == 0;
    return isThere ? FileIdentity{status.st_dev, status.st_ino} : FileIdentity();
}

} // namespace qv
