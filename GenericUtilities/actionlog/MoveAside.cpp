// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/actionlog/MoveAside_p.h>

#include <QByteArray>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdio>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace qv {

namespace {

    bool isTaken(QString const& path)
    {
        struct stat status;
        return ::lstat(QFile::encodeName(path).constData(), &status) == 0;
    }

    /// The first attempt whose name is free, found without trying each: a thousand files may bear one moment.
    int firstFreeAttempt(QString const& folder, AsideName const& name)
    {
        auto const isAttemptTaken = [&](int attempt) { return isTaken(folder + name.fileName(attempt)); };
        int taken = 0;
        int free = 1;
        while (isAttemptTaken(free) && free < INT_MAX / 2) {
            taken = free;
            free *= 2;
        }
        while (free - taken > 1) {
            int const middle = taken + (free - taken) / 2;
            (isAttemptTaken(middle) ? taken : free) = middle;
        }
        return free;
    }

    /// For file systems that cannot refuse to replace a file while they rename.
    bool linkAndUnlink(char const* from, char const* to)
    {
        if (::link(from, to) != 0)
            return false;
        if (::unlink(from) == 0)
            return true;
        int const error = errno;
        ::unlink(to);
        errno = error;
        return false;
    }

    bool rename(QByteArray const& from, QByteArray const& to)
    {
        if (::renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), RENAME_NOREPLACE) == 0)
            return true;
        bool const isUnknown = errno == EINVAL || errno == ENOSYS;
        return isUnknown && linkAndUnlink(from.constData(), to.constData());
    }

    /// Where this fails the file was renamed all the same.
    void syncFolder(QString const& folder)
    {
        int const fd = ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (fd < 0)
            return;
        ::fsync(fd);
        ::close(fd);
    }

    /// Waits some seconds for whoever has it.
    bool lock(int fd)
    {
        constexpr int maxWaits = 500;
        for (int i = 0; i < maxWaits; ++i) {
            if (::flock(fd, LOCK_EX | LOCK_NB) == 0)
                return true;
            if (errno != EWOULDBLOCK && errno != EINTR)
                return false;
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return false;
    }

} // namespace

QString AsideName::fileName(int attempt) const
{
    QString const end = (attempt == 1 ? QString() : QStringLiteral(" (%1)").arg(attempt)) + suffix;
    QString start = stem;
    start.replace(QLatin1Char('/'), QLatin1Char('_')).replace(QChar(QChar::Null), QLatin1Char('_'));
    while (!start.isEmpty() && QFile::encodeName(start + end).size() > NAME_MAX)
        start.chop(qAsConst(start).back().isLowSurrogate() ? 2 : 1);
    return start + end;
}

bool canMoveAside(QString const& path)
{
    QFileInfo const file(path);
    return file.isFile() && file.isWritable() && QFileInfo(file.absolutePath()).isWritable();
}

QString moveAside(QString const& path, AsideName const& name)
{
    if (!canMoveAside(path))
        return {};
    QString const folder = QFileInfo(path).absolutePath() + QLatin1Char('/');
    // Again where somebody takes the name in between.
    constexpr int maxRaces = 1000;
    for (int race = 0; race < maxRaces; ++race) {
        QString target = folder + name.fileName(firstFreeAttempt(folder, name));
        if (rename(QFile::encodeName(path), QFile::encodeName(target))) {
            syncFolder(folder);
            return target;
        }
        if (errno != EEXIST)
            return {};
    }
    return {};
}

bool moveAsideLocked(QString const& path, FileIdentity const& identity, AsideName const& name)
{
    // For writing: a file that may be written but not read is one of those moved aside.
    int const fd = ::open(QFile::encodeName(path).constData(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0)
        return errno == ENOENT;
    bool const isLocked = lock(fd);
    bool const isThere = FileIdentity::of(path) == identity;
    bool const isDone = isLocked && (!isThere || !moveAside(path, name).isNull());
    ::close(fd);
    return isDone;
}

} // namespace qv
