// SPDX-License-Identifier: LGPL-2.1-or-later
#include <qvbase/TornBytes_p.h>

#include <qvbase/Failure_p.h>
#include <qvbase/NamedFile_p.h>

#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <unistd.h>

namespace qv::encrypted {

namespace {

    /// "log.qvl" gives "log.qvl.torn", then "log (2).qvl.torn".
    QByteArray asideName(QByteArray const& path, int attempt)
    {
        QFileInfo const info(QFile::decodeName(path));
        QString const suffix = info.completeSuffix().isEmpty() ? QString() : QLatin1Char('.') + info.completeSuffix();
        QString const counted = attempt == 1 ? QString() : QStringLiteral(" (%1)").arg(attempt);
        return QFile::encodeName(
            info.path() + QLatin1Char('/') + info.baseName() + counted + suffix + QStringLiteral(".torn"));
    }

    /// Fails for another reason than a taken name only.
    int makeAside(QByteArray const& path, QByteArray* name)
    {
        int fd = -1;
        for (int attempt = 1; fd < 0 && (attempt == 1 || errno == EEXIST); ++attempt) {
            *name = asideName(path, attempt);
            fd = posix::open(*name, O_WRONLY | O_CREAT | O_EXCL);
        }
        return fd;
    }

} // namespace

bool copyBytes(int from, qint64 begin, qint64 end, int to)
{
    constexpr qint64 pieceSize = 65536;
    for (qint64 offset = begin; offset < end;) {
        bool ok = false;
        QByteArray const bytes = posix::readAt(from, qMin(pieceSize, end - offset), offset, &ok);
        if (!ok || bytes.isEmpty() || !posix::write(to, bytes.constData(), bytes.size()))
            return false;
        offset += bytes.size();
    }
    return true;
}

void setTornBytesAside(int fd, QByteArray const& path, qint64 offset)
{
    qint64 const size = posix::sizeOf(fd);
    require(size >= 0);
    QByteArray name;
    posix::Descriptor const aside(makeAside(path, &name));
    require(aside.isOpen());
    if (!copyBytes(fd, offset, size, aside.fd()) || !posix::syncData(aside.fd()) || !posix::syncFolderOf(name)) {
        Failure const failure = {qt_error_string(errno)};
        ::unlink(name.constData());
        throw Failure(failure);
    }
    require(posix::truncate(fd, offset) && posix::syncData(fd));
}

} // namespace qv::encrypted
