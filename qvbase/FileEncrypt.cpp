// SPDX-License-Identifier: LGPL-2.1-or-later
#include <qvbase/FileEncrypt.h>

#include <qvbase/EncryptedFile_p.h>
#include <qvbase/Failure_p.h>
#include <qvbase/FileVerifier_p.h>
#include <qvbase/PlainAppend_p.h>

#include <QFileInfo>

#include <fcntl.h>
#include <limits>
#include <optional>
#include <unistd.h>

namespace qv {

using encrypted::Failure;

namespace {

    QIODevice::OpenMode completed(QIODevice::OpenMode mode)
    {
        return mode & (QIODevice::Append | QIODevice::NewOnly) ? mode | QIODevice::WriteOnly : mode;
    }

    bool isTruncating(QIODevice::OpenMode mode)
    {
        bool const isWriteOnly
            = (mode & QIODevice::WriteOnly) && !(mode & (QIODevice::ReadOnly | QIODevice::Append | QIODevice::NewOnly));
        return isWriteOnly || (mode & QIODevice::Truncate);
    }

    /// How an encrypted file is opened underneath: a writer reads it too, and nothing is emptied unseen.
    QIODevice::OpenMode underlying(QIODevice::OpenMode mode)
    {
        if (mode & QIODevice::WriteOnly)
            return QIODevice::ReadWrite | (mode & (QIODevice::NewOnly | QIODevice::ExistingOnly));
        return mode & QIODevice::Truncate ? QIODevice::ReadWrite | QIODevice::ExistingOnly : mode;
    }

} // namespace

class FileEncrypt::Private {
public:
    explicit Private(FileEncrypt* device)
        : q(device)
    {
    }

    bool openEncrypted(OpenMode mode);
    bool openPlain(OpenMode mode);
    void attach(OpenMode mode);
    qint64 readRecords(char* data, qint64 maxSize);
    bool hasLineAhead();
    qint64 append(char const* data, qint64 size);
    void syncPlain();
    bool lock();
    qint64 sizeOfClosed() const;
    VerifyResult verify(QByteArray const& anchor) const;

    bool isEncrypted() const { return !credentials->password.isEmpty(); }
    QByteArray path() const { return QFile::encodeName(QFileInfo(*q).absoluteFilePath()); }
    void tell(Failure const& failure);
    /// The result of @p call, or @p otherwise where it fails, which is then told.
    template <typename Call, typename Result> Result guarded(Call call, Result otherwise);

    FileEncrypt* const q;
    std::shared_ptr<encrypted::Credentials const> credentials = std::make_shared<encrypted::Credentials const>();
    HeaderError headerError = NoHeaderError;
    /// While the device is open with a password.
    std::optional<encrypted::EncryptedFile> file;
    /// While it is open without one, for appending.
    std::optional<encrypted::PlainAppend> plain;
    bool hasSyncFailed = false;
    /// Which file's name is known to be on the disk, as PlainAppend counts them; -1 none.
    int syncedName = -1;
    /// Which file's name was locked last, counted likewise.
    int lockedName = -1;
    /// Whether the caller opened it as a buffered device.
    bool isReadingAhead = false;
    /// Where the next byte is read or written; pos() lags behind by what was read ahead.
    qint64 position = 0;
};

void FileEncrypt::Private::tell(Failure const& failure)
{
    headerError = failure.header;
    q->setErrorString(failure.text);
}

template <typename Call, typename Result> Result FileEncrypt::Private::guarded(Call call, Result otherwise)
{
    try {
        return call();
    } catch (Failure const& failure) {
        tell(failure);
        return otherwise;
    }
}

bool FileEncrypt::Private::openPlain(OpenMode mode)
{
    encrypted::requirePlain(path());
    if (!q->QFile::open(mode))
        return false;
    if ((mode & Append) && posix::isRegular(q->handle()))
        plain.emplace(q->handle(), path(), bool(mode & ReadOnly));
    return true;
}

bool FileEncrypt::Private::openEncrypted(OpenMode mode)
{
    if (!q->QFile::open(underlying(mode)))
        return false;
    try {
        attach(mode);
    } catch (Failure const&) {
        file.reset();
        q->QFile::close();
        if (mode & NewOnly)
            ::unlink(path().constData());
        throw;
    }
    // QFile's putChar() would leave its character, as it is, in a buffer that goes to the file past writeData().
    q->setOpenMode(mode & WriteOnly ? mode | Unbuffered : mode);
    isReadingAhead = !(mode & Unbuffered);
    return !(mode & Append) || q->seek(file->appendedSize());
}

void FileEncrypt::Private::attach(OpenMode mode)
{
    if (!posix::isRegular(q->handle()))
        throw Failure{QStringLiteral("Only a regular file can be encrypted")};
    file.emplace(credentials, bool(mode & Append));
    if (mode & (WriteOnly | Truncate))
        file->openForWriting(q->handle(), path(), isTruncating(mode));
    else
        file->openForReading(q->handle(), path());
}

qint64 FileEncrypt::Private::readRecords(char* data, qint64 maxSize)
{
    qint64 done = 0;
    while (done < maxSize) {
        auto const readMore = [&] { return file->read(position, data + done, maxSize - done); };
        qint64 const count = guarded(readMore, qint64(-1));
        if (count <= 0)
            return done > 0 ? done : count;
        done += count;
        position += count;
    }
    return done;
}

/// As far as a buffered device reads ahead.
bool FileEncrypt::Private::hasLineAhead()
{
    QByteArray ahead(16384, Qt::Uninitialized);
    qint64 const before = position;
    ahead.truncate(int(qMax(readRecords(ahead.data(), ahead.size()), qint64(0))));
    position = before;
    return ahead.contains('\n');
}

qint64 FileEncrypt::Private::append(char const* data, qint64 size)
{
    bool const isAppending = q->openMode() & Append;
    qint64 const count = file->append(data, size, isAppending ? std::nullopt : std::make_optional(position));
    position = file->appendedSize();
    return count;
}

void FileEncrypt::Private::syncPlain()
{
    hasSyncFailed = !posix::syncData(q->handle());
    encrypted::require(!hasSyncFailed);
    int const name = plain ? plain->switches() : 0;
    encrypted::require(syncedName == name || posix::syncFolderOf(path()));
    syncedName = name;
}

/// Whether the file is another than at the last time.
bool FileEncrypt::Private::lock()
{
    if (!(q->openMode() & Append) || !(file || plain))
        throw Failure{QStringLiteral("Only a regular file open for appending can be locked")};
    qint64 const end = file ? file->lock() : plain->lock();
    if (q->isSequential() || !q->seek(end)) {
        q->unlock();
        throw Failure{QStringLiteral("The end of the file cannot be told")};
    }
    int const before = lockedName;
    lockedName = file ? file->switches() : plain->switches();
    return lockedName != before;
}

qint64 FileEncrypt::Private::sizeOfClosed() const
{
    posix::Descriptor const descriptor(posix::open(path(), O_RDONLY | O_NONBLOCK));
    if (!posix::isRegular(descriptor.fd()))
        return 0;
    encrypted::EncryptedFile closed(credentials, false);
    closed.openForReading(descriptor.fd(), path());
    return closed.size();
}

FileEncrypt::VerifyResult FileEncrypt::Private::verify(QByteArray const& anchor) const
{
    if (!isEncrypted())
        throw Failure{QStringLiteral("Without a password there is nothing to verify"), NotOurFormat};
    if (file)
        return encrypted::verifyFile(q->handle(), *credentials, anchor);
    posix::Descriptor const descriptor(posix::open(path(), O_RDONLY | O_NONBLOCK));
    encrypted::require(descriptor.isOpen());
    return encrypted::verifyFile(descriptor.fd(), *credentials, anchor);
}

FileEncrypt::FileEncrypt(QString const& fileName)
    : QFile(fileName)
    , m_d(std::make_unique<Private>(this))
{
}

FileEncrypt::~FileEncrypt()
{
    FileEncrypt::close();
}

void FileEncrypt::setFileUserPassword(QString const& user, QString const& password)
{
    m_d->credentials = std::make_shared<encrypted::Credentials const>(user, password);
}

FileEncrypt::HeaderError FileEncrypt::headerError() const
{
    return m_d->headerError;
}

bool FileEncrypt::open(OpenMode mode)
{
    if (isOpen())
        return QFile::open(mode);
    m_d->headerError = NoHeaderError;
    m_d->hasSyncFailed = false;
    m_d->syncedName = -1;
    m_d->lockedName = -1;
    m_d->position = 0;
    auto const openIt = [&] { return m_d->isEncrypted() ? m_d->openEncrypted(completed(mode)) : m_d->openPlain(mode); };
    return m_d->guarded(openIt, false);
}

void FileEncrypt::close()
{
    // Whoever listens to aboutToClose() may still write.
    QFile::close();
    m_d->file.reset();
    m_d->plain.reset();
}

qint64 FileEncrypt::size() const
{
    if (!m_d->isEncrypted() || (isOpen() && !m_d->file))
        return QFile::size();
    try {
        return m_d->file ? m_d->file->size() : m_d->sizeOfClosed();
    } catch (Failure const&) {
        return 0;
    }
}

// With a password, these pass over QFileDevice, which would ask the encrypted file.
// NOLINTBEGIN(bugprone-parent-virtual-call)

bool FileEncrypt::seek(qint64 position)
{
    if (!m_d->file)
        return QFile::seek(position);
    if (!QIODevice::seek(position))
        return false;
    m_d->position = position;
    return true;
}

bool FileEncrypt::atEnd() const
{
    return m_d->file ? QIODevice::atEnd() : QFile::atEnd();
}

bool FileEncrypt::canReadLine() const
{
    if (QIODevice::canReadLine() || !m_d->file || !m_d->isReadingAhead || !isReadable())
        return QIODevice::canReadLine();
    return m_d->hasLineAhead();
}

// NOLINTEND(bugprone-parent-virtual-call)

bool FileEncrypt::isSequential() const
{
    return !m_d->file && QFile::isSequential();
}

bool FileEncrypt::resize(qint64 size)
{
    if (!isOpen() && m_d->isEncrypted()) {
        bool const isDone = open(ReadWrite | ExistingOnly) && resize(size);
        close();
        return isDone;
    }
    if (!m_d->file)
        return QFile::resize(size);
    if (!isWritable() || size < 0)
        return false;
    if (m_d->position > size)
        seek(size);
    return m_d->guarded([&] { return m_d->file->resize(size), true; }, false);
}

bool FileEncrypt::sync()
{
    if (m_d->file)
        return m_d->guarded([&] { return m_d->file->sync(), true; }, false);
    return isOpen() && !m_d->hasSyncFailed && flush() && m_d->guarded([&] { return m_d->syncPlain(), true; }, false);
}

bool FileEncrypt::lock(bool* isAnother)
{
    auto const lockIt = [&] {
        bool const hasChanged = m_d->lock();
        if (isAnother)
            *isAnother = hasChanged;
        return true;
    };
    return m_d->guarded(lockIt, false);
}

void FileEncrypt::unlock()
{
    if (m_d->file)
        m_d->file->unlock();
    else if (m_d->plain)
        m_d->plain->unlock();
}

FileEncrypt::VerifyResult FileEncrypt::verify(QByteArray const& anchor)
{
    m_d->headerError = NoHeaderError;
    try {
        return m_d->verify(anchor);
    } catch (Failure const& failure) {
        m_d->headerError = failure.header;
        return {failure.header ? VerifyResult::HeaderRefused : VerifyResult::NotReadable, 0, 0, failure.text};
    }
}

QByteArray FileEncrypt::anchor() const
{
    return anchor(std::numeric_limits<qint64>::max());
}

QByteArray FileEncrypt::anchor(qint64 size) const
{
    try {
        return m_d->file ? m_d->file->anchor(size) : QByteArray();
    } catch (Failure const&) {
        return {};
    }
}

qint64 FileEncrypt::readData(char* data, qint64 maxSize)
{
    return m_d->file ? m_d->readRecords(data, maxSize) : QFile::readData(data, maxSize);
}

qint64 FileEncrypt::readLineData(char* data, qint64 maxSize)
{
    // NOLINTNEXTLINE(bugprone-parent-virtual-call): as above
    return m_d->file ? QIODevice::readLineData(data, maxSize) : QFile::readLineData(data, maxSize);
}

qint64 FileEncrypt::writeData(char const* data, qint64 size)
{
    if (m_d->file)
        return m_d->guarded([&] { return m_d->append(data, size); }, qint64(-1));
    if (m_d->hasSyncFailed)
        return -1;
    if (!m_d->plain)
        return QFile::writeData(data, size);
    // Single characters wait in QFile's buffer.
    return flush() ? m_d->guarded([&] { return m_d->plain->append(data, size), size; }, qint64(-1)) : -1;
}

} // namespace qv
