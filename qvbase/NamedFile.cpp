// SPDX-License-Identifier: LGPL-2.1-or-later
#include <qvbase/NamedFile_p.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <new>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace qv::posix {

namespace {

    /// Repeats what a signal interrupted, but not for ever.
    template <typename Call> auto retry(Call call)
    {
        constexpr int maxInterruptions = 100000;
        auto result = call();
        for (int i = 0; result < 0 && errno == EINTR && i < maxInterruptions; ++i)
            result = call();
        return result;
    }

    template <typename Call> bool writeAll(qint64 size, Call call)
    {
        for (qint64 done = 0; done < size;) {
            ssize_t const count = retry([&] { return call(done, size_t(size - done)); });
            if (count == 0)
                errno = EIO;
            if (count <= 0)
                return false;
            done += count;
        }
        return true;
    }

    using Number = std::atomic<quint64>;

    /// Zero in this process and again in each that is forked from it; nothing where the system cannot do that.
    Number* makeWiped()
    {
        void* const memory
            = ::mmap(nullptr, sizeof(Number), PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (memory == MAP_FAILED)
            return nullptr;
        // An emulated system may take any advice and follow none: where nonsense is not refused, nothing is believed.
        constexpr int noAdvice = -1;
        if (::madvise(memory, sizeof(Number), noAdvice) != 0 && ::madvise(memory, sizeof(Number), MADV_WIPEONFORK) == 0)
            return new (memory) Number(0);
        ::munmap(memory, sizeof(Number));
        return nullptr;
    }

} // namespace

qint64 readSomeAt(int fd, void* to, qint64 size, qint64 offset)
{
    return retry([&] { return ::pread(fd, to, size_t(size), off_t(offset)); });
}

qint64 readAt(int fd, void* to, qint64 size, qint64 offset)
{
    qint64 done = 0;
    while (done < size) {
        qint64 const count = readSomeAt(fd, static_cast<char*>(to) + done, size - done, offset + done);
        if (count < 0)
            return -1;
        if (count == 0)
            break;
        done += count;
    }
    return done;
}

QByteArray readAt(int fd, qint64 size, qint64 offset, bool* ok)
{
    QByteArray bytes(int(size), Qt::Uninitialized);
    qint64 const count = readAt(fd, bytes.data(), size, offset);
    if (ok)
        *ok = count >= 0;
    bytes.truncate(int(qMax(count, qint64(0))));
    return bytes;
}

bool writeAt(int fd, void const* from, qint64 size, qint64 offset)
{
    return writeAll(size, [&](qint64 done, size_t left) {
        return ::pwrite(fd, static_cast<char const*>(from) + done, left, off_t(offset + done));
    });
}

bool write(int fd, void const* from, qint64 size)
{
    return writeAll(
        size, [&](qint64 done, size_t left) { return ::write(fd, static_cast<char const*>(from) + done, left); });
}

qint64 sizeOf(int fd)
{
    struct stat status;
    return ::fstat(fd, &status) == 0 ? qint64(status.st_size) : -1;
}

bool isRegular(int fd)
{
    struct stat status;
    return ::fstat(fd, &status) == 0 && S_ISREG(status.st_mode);
}

bool truncate(int fd, qint64 size)
{
    return retry([&] { return ::ftruncate(fd, off_t(size)); }) == 0;
}

bool syncData(int fd)
{
    // Not repeated: a second call may succeed although the bytes of the first are lost.
    return ::fdatasync(fd) == 0;
}

bool syncFolderOf(QByteArray const& path)
{
    int const slash = path.lastIndexOf('/');
    Descriptor const folder(open(slash < 0 ? QByteArray(".") : path.left(slash + 1), O_RDONLY | O_DIRECTORY));
    // Some file systems cannot sync folders and say so.
    return folder.isOpen() && (::fsync(folder.fd()) == 0 || errno == EINVAL);
}

Descriptor::~Descriptor()
{
    int const error = errno;
    if (isOpen())
        ::close(m_fd);
    errno = error;
}

int open(QByteArray const& path, int flags)
{
    return retry([&] { return ::open(path.constData(), flags | O_CLOEXEC, 0666); });
}

std::chrono::milliseconds& lockWait()
{
    static std::chrono::milliseconds wait = MaxLockWait;
    return wait;
}

quint64 processNumber()
{
    static Number* const wiped = makeWiped();
    // Goes over a fork, so that none given before comes again behind it.
    static Number last(0);
    if (!wiped)
        return quint64(::getpid());
    quint64 number = *wiped;
    if (number != 0)
        return number;
    quint64 const fresh = ++last;
    return wiped->compare_exchange_strong(number, fresh) ? fresh : number;
}

void NamedFile::attach(int fd, QByteArray const& path, int reopenFlags)
{
    m_fd = fd;
    m_path = path;
    m_reopenFlags = reopenFlags;
    m_process = processNumber();
    rememberIdentity();
}

void NamedFile::rememberIdentity()
{
    struct stat status;
    bool const isKnown = ::fstat(m_fd, &status) == 0;
    m_device = isKnown ? status.st_dev : 0;
    m_inode = isKnown ? status.st_ino : 0;
}

bool NamedFile::isNamed() const
{
    struct stat status;
    return ::stat(m_path.constData(), &status) == 0 && status.st_dev == m_device && status.st_ino == m_inode;
}

bool NamedFile::exchange(int fresh)
{
    if (fresh < 0 || ::dup3(fresh, m_fd, O_CLOEXEC) < 0)
        return false;
    dev_t const device = m_device;
    ino_t const inode = m_inode;
    rememberIdentity();
    m_switches += device != m_device || inode != m_inode;
    return m_locks == 0 || waitForLock();
}

bool NamedFile::reopen()
{
    return exchange(Descriptor(open(m_path, m_reopenFlags | O_CREAT)).fd());
}

/// The lock of a descriptor that came over a fork is shared with the parent: takes one of our own.
bool NamedFile::parryFork(bool followName)
{
    if (processNumber() == m_process)
        return true;
    m_locks = 0;
    if (!followName && !isNamed()) {
        errno = ESTALE;
        return false;
    }
    if (!reopen())
        return false;
    m_process = processNumber();
    ++m_forks;
    return true;
}

bool NamedFile::waitForLock()
{
    using namespace std::chrono;
    auto const deadline = steady_clock::now() + lockWait();
    auto pause = microseconds(10);
    while (::flock(m_fd, LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK && errno != EINTR)
            return false;
        if (steady_clock::now() > deadline) {
            errno = ETIMEDOUT;
            return false;
        }
        std::this_thread::sleep_for(pause);
        pause = std::min(2 * pause, microseconds(1000));
    }
    return true;
}

bool NamedFile::lock(bool followName)
{
    bool const isHeld = parryFork(followName) && (m_locks > 0 || lockOutermost(followName));
    m_locks += isHeld;
    return isHeld;
}

bool NamedFile::lockOutermost(bool followName)
{
    constexpr int maxSwitches = 1000;
    for (int i = 0; i < maxSwitches; ++i) {
        if (!waitForLock())
            return false;
        if (!followName || isNamed())
            return true;
        ::flock(m_fd, LOCK_UN);
        if (!reopen())
            return false;
    }
    errno = EAGAIN;
    return false;
}

void NamedFile::unlock()
{
    // A fork took no part in a lock that was held then.
    if (m_locks == 0 || processNumber() != m_process || --m_locks > 0)
        return;
    int const error = errno;
    ::flock(m_fd, LOCK_UN);
    errno = error;
}

FileLock::~FileLock()
{
    if (m_isHeld)
        m_file.unlock();
}

} // namespace qv::posix
