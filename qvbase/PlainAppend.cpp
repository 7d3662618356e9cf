// SPDX-License-Identifier: LGPL-2.1-or-later
#include <qvbase/PlainAppend_p.h>

#include <qvbase/EncryptedFormat_p.h>
#include <qvbase/Failure_p.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>

namespace qv::encrypted {

namespace {

    /// What keeps a file from being read, but not QFile from telling so, or from writing to it.
    bool isForQFileToTell(int error)
    {
        constexpr std::array<int, 6> errors = {ENOENT, EACCES, ENOTDIR, ENAMETOOLONG, ELOOP, ENXIO};
        return std::find(errors.begin(), errors.end(), error) != errors.end();
    }

    bool bearsMagic(int fd)
    {
        struct stat status;
        require(::fstat(fd, &status) == 0);
        if (!S_ISREG(status.st_mode))
            return false;
        bool isRead = false;
        QByteArray const bytes = posix::readAt(fd, 8, 0, &isRead);
        require(isRead);
        return FileHeader::bearsMagic(bytes);
    }

} // namespace

void requirePlain(QByteArray const& path)
{
    // A pipe without a writer would keep us waiting.
    posix::Descriptor const file(posix::open(path, O_RDONLY | O_NONBLOCK));
    require(file.isOpen() || isForQFileToTell(errno));
    if (file.isOpen() && bearsMagic(file.fd()))
        throw Failure{QStringLiteral("The file is encrypted and no password is given"), FileEncrypt::NotOurFormat};
}

PlainAppend::PlainAppend(int fd, QByteArray const& path, bool isReadable)
{
    m_file.attach(fd, path, O_APPEND | (isReadable ? O_RDWR : O_WRONLY));
}

void PlainAppend::noticeSwitch()
{
    if (m_file.switches() != m_knownSwitches)
        requirePlain(m_file.path());
    m_knownSwitches = m_file.switches();
}

qint64 PlainAppend::lock()
{
    require(m_file.lock(true));
    try {
        noticeSwitch();
        return end();
    } catch (Failure const&) {
        m_file.unlock();
        throw;
    }
}

qint64 PlainAppend::end() const
{
    qint64 const size = posix::sizeOf(m_file.fd());
    require(size >= 0);
    return size;
}

void PlainAppend::append(char const* text, qint64 size)
{
    posix::FileLock const lock(m_file, true);
    require(lock.isHeld());
    noticeSwitch();

    qint64 const before = end();
    if (posix::write(m_file.fd(), text, size))
        return;
    int const error = errno;
    posix::truncate(m_file.fd(), before);
    throw Failure{qt_error_string(error)};
}

} // namespace qv::encrypted
