// SPDX-License-Identifier: LGPL-2.1-or-later
#include <qvbase/EncryptedFile_p.h>

#include <qvbase/Failure_p.h>
#include <qvbase/KeyCache_p.h>
#include <qvbase/TornBytes_p.h>

#include <QtEndian>

#include <algorithm>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace qv::encrypted {

namespace {

    constexpr qint64 maxHeaderSize = 4096;

    QString refusalText(FileEncrypt::HeaderError error)
    {
        switch (error) {
        case FileEncrypt::NotOurFormat:
            return QStringLiteral("Not an encrypted file");
        case FileEncrypt::Damaged:
            return QStringLiteral("The file's header is damaged");
        case FileEncrypt::UnknownVersion:
            return QStringLiteral("The file is of a later version");
        case FileEncrypt::WrongCredentials:
            return QStringLiteral("The file was made with another user or password");
        case FileEncrypt::NoHeaderError:
            break;
        }
        return {};
    }

    void requireHeader(FileEncrypt::HeaderError error)
    {
        if (error != FileEncrypt::NoHeaderError)
            throw Failure{refusalText(error), error};
    }

    template <typename Value> Value const& requireKey(std::optional<Value> const& value)
    {
        if (!value)
            throw Failure{QStringLiteral("The key cannot be derived: no memory or no random numbers")};
        return *value;
    }

    QByteArray readStart(int fd)
    {
        bool ok = false;
        QByteArray bytes = posix::readAt(fd, maxHeaderSize, 0, &ok);
        require(ok);
        return bytes;
    }

    QByteArray bytesOf(Bytes32 const& bytes)
    {
        return QByteArray(reinterpret_cast<char const*>(bytes.data()), int(bytes.size()));
    }

} // namespace

std::optional<std::pair<FileHeader, FileKeys>> readHeader(int fd, Credentials const& credentials)
{
    QByteArray const bytes = readStart(fd);
    if (FileHeader::isTorn(bytes))
        return std::nullopt;
    requireHeader(FileHeader::check(bytes));
    FileHeader const header = FileHeader::fromBytes(bytes);
    KeyCache::Kek const kek = requireKey(KeyCache::instance().kekFor(credentials, header));
    FileKeys const keys(kek.key, header.fileId());
    requireHeader(keys.fits(header) ? FileEncrypt::NoHeaderError : FileEncrypt::WrongCredentials);
    if (!kek.isKnown)
        KeyCache::instance().remember(credentials, header, kek.key);
    return std::make_pair(header, keys);
}

EncryptedFile::EncryptedFile(std::shared_ptr<Credentials const> credentials, bool followsName)
    : m_credentials(std::move(credentials))
    , m_followsName(followsName)
{
}

void EncryptedFile::openForReading(int fd, QByteArray const& path)
{
    m_file.attach(fd, path, O_RDONLY);
    refresh();
}

void EncryptedFile::openForWriting(int fd, QByteArray const& path, bool truncated)
{
    m_file.attach(fd, path, O_RDWR);
    posix::FileLock const lock(m_file, true);
    require(lock.isHeld());
    if (!truncated)
        return settle();
    settleHeader();
    m_tail = FileTail();
    m_tail.tail.tag = m_header.chainStart();
    cutAt(m_tail.tail);
}

bool EncryptedFile::loadHeader()
{
    auto const found = readHeader(m_file.fd(), *m_credentials);
    if (found)
        adopt(found->first, found->second);
    return found.has_value();
}

void EncryptedFile::makeHeader()
{
    if (posix::sizeOf(m_file.fd()) > 0)
        setTornBytesAside(m_file.fd(), m_file.path(), 0);
    auto const salted = requireKey(KeyCache::instance().kekForNewFile(*m_credentials, hooks().cost));
    FileHeader header(hooks().cost, salted.salt, requireKey(randomBytes32()));
    FileKeys const keys(salted.kek, header.fileId());
    header.setMac(keys.macOf(header));
    // On the disk before any record, so that no loss of power leaves records without it.
    if (!posix::writeAt(m_file.fd(), header.bytes().constData(), FileHeader::Length, 0) || !posix::syncData(m_file.fd())
        || !posix::syncFolderOf(m_file.path())) {
        int const error = errno;
        posix::truncate(m_file.fd(), 0);
        throw Failure{qt_error_string(error)};
    }
    KeyCache::instance().remember(*m_credentials, header, salted.kek);
    adopt(header, keys);
}

void EncryptedFile::adopt(FileHeader const& header, FileKeys const& keys)
{
    forget();
    m_reader.emplace(m_file.fd(), keys.fileKey);
    m_writer.emplace(keys.fileKey);
    m_header = header;
}

void EncryptedFile::forget()
{
    m_header = FileHeader();
    m_reader.reset();
    m_writer.reset();
    m_plain.forget();
    m_tail = FileTail();
    m_isSettled = false;
}

/// Without the lock: for readers, whom a write in progress may show half a record.
void EncryptedFile::refresh()
{
    if (!hasHeader() && !loadHeader())
        return;
    if (m_tail.tail.end > FileHeader::Length && m_reader->fileSize() == m_tail.fileSize
        && m_reader->tagBefore(m_tail.tail.end) == m_tail.tail.tag)
        return;
    m_plain.forget();
    m_isSettled = false;
    // A fault at the end of a file that grows may be a write in progress; but faults may come without end, too.
    constexpr int maxLooks = 100;
    int looks = 0;
    do
        m_tail = findTail(*m_reader, m_header);
    while (!m_tail.isClean() && m_reader->fileSize() != m_tail.fileSize && ++looks < maxLooks);
}

qint64 EncryptedFile::size()
{
    refresh();
    return hasHeader() ? m_tail.readableSize() : 0;
}

qint64 EncryptedFile::read(qint64 position, char* to, qint64 maxSize)
{
    if (position >= m_tail.tail.plainSize)
        refresh();
    if (!hasHeader() || position >= m_tail.readableSize())
        return 0;
    if (position >= m_tail.tail.plainSize)
        throw Failure{QStringLiteral("The end of the file is torn or was tampered with")};
    return m_plain.read(*m_reader, m_tail.tail, position, to, maxSize);
}

void EncryptedFile::settle()
{
    noticeForkOrSwitch();
    if (hasHeader() && m_isSettled && m_reader->endsAt(m_tail.tail))
        return;
    settleHeader();
    settleTail();
}

void EncryptedFile::noticeForkOrSwitch()
{
    if (m_file.switches() != m_knownSwitches)
        forget();
    else if (m_file.forks() != m_knownForks && m_writer)
        m_writer->endSession();
    m_knownSwitches = m_file.switches();
    m_knownForks = m_file.forks();
}

void EncryptedFile::settleHeader()
{
    if (hasHeader() && readStart(m_file.fd()).startsWith(m_header.bytes()))
        return;
    if (!loadHeader())
        makeHeader();
}

void EncryptedFile::settleTail()
{
    m_plain.forget();
    m_isSettled = false;
    m_tail = findTail(*m_reader, m_header);
    if (m_tail.rest == FileEncrypt::VerifyResult::RecordDamaged)
        throw Failure{QStringLiteral("The end of the file is damaged")};
    if (!m_tail.isClean())
        setTornBytesAside(m_file.fd(), m_file.path(), m_tail.tail.end);
    if (!m_writer->isSessionIn(m_file.fd()))
        m_writer->endSession();
    m_tail = {m_tail.tail, m_tail.tail.end, FileEncrypt::VerifyResult::Intact};
    m_isSettled = true;
}

void EncryptedFile::requireWritable() const
{
    if (m_hasSyncFailed)
        throw Failure{QStringLiteral("What the disk holds is unknown since a sync failed: open the file anew")};
}

qint64 EncryptedFile::append(char const* text, qint64 size, std::optional<qint64> position)
{
    requireWritable();
    posix::FileLock const lock(m_file, m_followsName);
    require(lock.isHeld());
    settle();
    if (position && *position != m_tail.tail.plainSize)
        throw Failure{QStringLiteral("An encrypted file is written at its end only")};
    return appendLocked(text, size);
}

qint64 EncryptedFile::appendLocked(char const* text, qint64 size)
{
    qint64 done = 0;
    try {
        while (done < size) {
            qint64 const piece = std::min(size - done, RecordWriter::MaxSize);
            appendPiece(text + done, piece);
            done += piece;
        }
    } catch (Failure const&) {
        if (done == 0)
            throw;
    }
    return done;
}

void EncryptedFile::appendPiece(char const* text, qint64 size)
{
    Tail tail = m_tail.tail;
    bool hasWritten = false;
    try {
        RecordWriter::Bytes const records = m_writer->seal(tail, text, size);
        hasWritten = true;
        require(posix::writeAt(m_file.fd(), records.data, records.size, m_tail.tail.end));
    } catch (Failure const&) {
        m_writer->endSession();
        // What cannot be cut off now is torn, and repaired by the next write.
        m_isSettled = !hasWritten || posix::truncate(m_file.fd(), m_tail.tail.end);
        throw;
    }
    m_tail = {tail, tail.end, FileEncrypt::VerifyResult::Intact};
}

qint64 EncryptedFile::lock()
{
    require(m_file.lock(m_followsName));
    try {
        settle();
        return m_tail.tail.plainSize;
    } catch (Failure const&) {
        m_file.unlock();
        throw;
    }
}

void EncryptedFile::sync()
{
    requireWritable();
    m_hasSyncFailed = !posix::syncData(m_file.fd());
    require(!m_hasSyncFailed);
}

Tail EncryptedFile::startTail() const
{
    Tail start;
    start.tag = m_header.chainStart();
    return start;
}

Tail EncryptedFile::tailWithin(qint64 size)
{
    if (size >= m_tail.tail.plainSize)
        return m_tail.tail;
    if (size <= 0)
        return startTail();
    GoodRecord const record = m_plain.recordAt(*m_reader, m_tail.tail, size - 1);
    if (record.tail().plainSize == size)
        return record.tail();
    Tail before = Tail::before(record.header, record.offset);
    before.tag = m_reader->tagBefore(record.offset);
    return before;
}

QByteArray EncryptedFile::anchor(qint64 size)
{
    refresh();
    if (!hasHeader())
        return {};
    Tail const tail = tailWithin(size);
    QByteArray count(8, '\0');
    qToLittleEndian(tail.index, count.data());
    auto const* const tag = reinterpret_cast<char const*>(tail.tag.data());
    return bytesOf(m_header.fileId()) + count + QByteArray(tag, int(sizeof(Tag)));
}

void EncryptedFile::resize(qint64 size)
{
    requireWritable();
    posix::FileLock const lock(m_file, m_followsName);
    require(lock.isHeld());
    settle();
    if (size > m_tail.tail.plainSize)
        enlarge(size);
    else if (size < m_tail.tail.plainSize)
        shrink(size);
}

void EncryptedFile::enlarge(qint64 size)
{
    QByteArray const zeros(int(std::min(size - m_tail.tail.plainSize, RecordWriter::MaxSize)), '\0');
    while (m_tail.tail.plainSize < size)
        appendPiece(zeros.constData(), std::min(size - m_tail.tail.plainSize, qint64(zeros.size())));
}

void EncryptedFile::shrink(qint64 size)
{
    if (size == 0)
        return cutAt(startTail());
    GoodRecord const record = m_plain.recordAt(*m_reader, m_tail.tail, size - 1);
    if (record.tail().plainSize == size)
        cutAt(record.tail());
    else
        cutWithin(record, size);
}

void EncryptedFile::cutAt(Tail const& tail)
{
    m_plain.forget();
    m_writer->endSession();
    m_isSettled = false;
    // On the disk before anything follows: else a loss of power may leave old records behind new ones.
    require(posix::truncate(m_file.fd(), tail.end) && posix::syncData(m_file.fd()));
    m_tail = {tail, tail.end, FileEncrypt::VerifyResult::Intact};
    m_isSettled = true;
}

/// A copy takes the file's name, so that a crash leaves the one or the other.
void EncryptedFile::cutWithin(GoodRecord const& record, qint64 size)
{
    if (!m_file.isNamed())
        throw Failure{QStringLiteral("The file was moved: it cannot be cut within a record")};
    QByteArray const name = m_file.path() + ".resize";
    posix::Descriptor const copy(posix::open(name, O_RDWR | O_CREAT | O_TRUNC));
    require(copy.isOpen());
    try {
        writeCopy(copy.fd(), record, size);
        require(std::rename(name.constData(), m_file.path().constData()) == 0);
    } catch (Failure const&) {
        ::unlink(name.constData());
        throw;
    }
    require(m_file.reopen());
    m_plain.forget();
    m_isSettled = false;
    require(posix::syncFolderOf(m_file.path()));
}

void EncryptedFile::writeCopy(int copy, GoodRecord const& record, qint64 size)
{
    struct stat status;
    require(::fstat(m_file.fd(), &status) == 0 && ::fchmod(copy, status.st_mode & 07777) == 0);
    require(copyBytes(m_file.fd(), 0, record.offset, copy));
    Tail tail = Tail::before(record.header, record.offset);
    tail.tag = m_reader->tagBefore(record.offset);
    m_writer->endSession();
    RecordWriter::Bytes const records
        = m_writer->seal(tail, record.plain.constData(), size - qint64(record.header.plainOffset));
    m_writer->endSession();
    require(posix::writeAt(copy, records.data, records.size, record.offset) && posix::syncData(copy));
}

} // namespace qv::encrypted
