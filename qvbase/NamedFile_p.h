// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <QByteArray>
#include <QtGlobal>

#include <chrono>
#include <sys/types.h>

/// Calls of the system for files. What fails leaves its reason in errno.
namespace qv::posix {

/// Fewer bytes than @p size only where the file ends; -1 where it cannot be read.
qint64 readAt(int fd, void* to, qint64 size, qint64 offset);
QByteArray readAt(int fd, qint64 size, qint64 offset, bool* ok = nullptr);
/// One call: fewer bytes also where the system gives less than all.
qint64 readSomeAt(int fd, void* to, qint64 size, qint64 offset);
/// One call, but where the system takes less than all.
bool writeAt(int fd, void const* from, qint64 size, qint64 offset);
/// As writeAt(), at the place where the descriptor stands, which with O_APPEND is the file's end.
bool write(int fd, void const* from, qint64 size);
/// -1 where it cannot be told.
qint64 sizeOf(int fd);
bool isRegular(int fd);
bool truncate(int fd, qint64 size);
bool syncData(int fd);
bool syncFolderOf(QByteArray const& path);

/// A descriptor that is closed where it ends.
class Descriptor {
public:
    explicit Descriptor(int fd = -1)
        : m_fd(fd)
    {
    }
    Descriptor(Descriptor const&) = delete;
    Descriptor& operator=(Descriptor const&) = delete;
    ~Descriptor();
    int fd() const { return m_fd; }
    bool isOpen() const { return m_fd >= 0; }

private:
    int m_fd;
};

int open(QByteArray const& path, int flags);

/// Tells a process from those it was forked off: what was returned before a fork is not returned behind it. As cheap as
/// a variable where the system can wipe memory at a fork (Linux 4.14), else the number that the system has for it.
quint64 processNumber();

/// How long a lock is waited for: longer than any write takes, so that who holds it then will not give it back soon.
constexpr std::chrono::milliseconds MaxLockWait{10000};
/// The same, as tests may have shortened it.
std::chrono::milliseconds& lockWait();

/// A descriptor and the path that it was opened by. The lock belongs to what was opened, so that devices of one process
/// exclude each other as processes do; a forked process opens the path again before it locks.
class NamedFile {
public:
    /// @p fd stays the caller's; what it refers to is exchanged when another file is opened under the path.
    void attach(int fd, QByteArray const& path, int reopenFlags);
    void detach() { m_fd = -1; }

    int fd() const { return m_fd; }
    QByteArray const& path() const { return m_path; }

    /// Waits for the lock, at most so long that a stopped process which holds it is not waited for in vain. With
    /// @p followName the file is then the one that the path names, made where there is none. Each lock() needs its own
    /// unlock(); within another one it changes nothing.
    bool lock(bool followName);
    void unlock();
    /// Whether the path still names the file.
    bool isNamed() const;
    /// Takes the file that the path names now, and its lock if that of the former one was held.
    bool reopen();
    /// How often another file was taken; to be compared with an earlier value.
    int switches() const { return m_switches; }
    /// How often this process turned out to be forked off the one that attached.
    int forks() const { return m_forks; }

private:
    bool parryFork(bool followName);
    bool waitForLock();
    bool lockOutermost(bool followName);
    bool exchange(int fresh);
    void rememberIdentity();

    QByteArray m_path;
    int m_fd = -1;
    int m_reopenFlags = 0;
    dev_t m_device = 0;
    ino_t m_inode = 0;
    quint64 m_process = 0;
    int m_switches = 0;
    int m_forks = 0;
    int m_locks = 0;
};

/// Holds the lock of a NamedFile to the end of its scope.
class FileLock {
public:
    FileLock(NamedFile& file, bool followName)
        : m_file(file)
        , m_isHeld(file.lock(followName))
    {
    }
    FileLock(FileLock const&) = delete;
    FileLock& operator=(FileLock const&) = delete;
    ~FileLock();
    bool isHeld() const { return m_isHeld; }

private:
    NamedFile& m_file;
    bool m_isHeld;
};

} // namespace qv::posix
