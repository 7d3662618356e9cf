// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/actionlog/LogFile_p.h>

#include <GenericUtilities/actionlog/LogReader.h>
#include <GenericUtilities/actionlog/Translation_p.h>

#include <QFileInfo>

#include <cerrno>
#include <unistd.h>

namespace qv {

namespace {

    bool mayNotBeRead(QString const& path)
    {
        return ::access(QFile::encodeName(path).constData(), R_OK) != 0 && errno == EACCES;
    }

    /// Of a file that holds something; else the device failed when it was asked.
    bool isPlausible(LogFileEnd const& end, qint64 size)
    {
        bool const isWhole = end.kind == LogFileEnd::Open;
        bool const isCut = end.kind == LogFileEnd::Ended || end.kind == LogFileEnd::Torn;
        return end.kind == LogFileEnd::Damaged || (isWhole && end.offset == size)
            || (isCut && end.offset >= 0 && end.offset < size);
    }

} // namespace

/// Remembers whether the device failed, which readers take for damage.
class LogFileReader : public FileEncrypt {
public:
    using FileEncrypt::FileEncrypt;
    bool hasFailed() const { return m_hasFailed; }

protected:
    qint64 readData(char* data, qint64 maxSize) override
    {
        qint64 const count = FileEncrypt::readData(data, maxSize);
        m_hasFailed = m_hasFailed || count < 0;
        return count;
    }

private:
    bool m_hasFailed = false;
};

LogFile::LogFile() = default;

LogFile::~LogFile() = default;

void LogFile::setCredentials(QString const& user, QString const& password)
{
    m_user = user;
    m_password = password;
}

void LogFile::setVersions(QString const& application, QString const& language)
{
    m_applicationVersion = application;
    m_languageVersion = language;
}

std::unique_ptr<FileEncrypt> LogFile::newDevice(QString const& path) const
{
    auto device = std::make_unique<FileEncrypt>(path);
    device->setFileUserPassword(m_user, m_password);
    return device;
}

/// A pipe would keep us waiting for who is at its other end, and some devices have no end.
void LogFile::requireFile() const
{
    QFileInfo const info(m_path);
    if (info.exists() && !info.isFile())
        throw couldNotOpen();
}

std::unique_ptr<LogFileReader> LogFile::newReader()
{
    requireFile();
    auto file = std::make_unique<LogFileReader>(m_path);
    file->setFileUserPassword(m_user, m_password);
    if (!file->open(QIODevice::ReadOnly))
        refuse(*file);
    return file;
}

void LogFile::open()
{
    m_identity = FileIdentity::of(m_path);
    requireFile();
    auto device = newDevice(m_path);
    if (!device->open(QIODevice::Append))
        refuse(*device);
    m_device = std::move(device);
    m_size = -1;
}

bool LogFile::takeTurn()
{
    m_isBad = false;
    bool const wasOpen = isOpen();
    if (!wasOpen)
        open();
    bool isAnother = false;
    if (!m_device->lock(&isAnother))
        refuse(*m_device);
    if (isAnother)
        m_size = -1;
    try {
        look();
    } catch (ActionLogException const&) {
        endTurn();
        throw;
    }
    return wasOpen && isAnother;
}

void LogFile::endTurn()
{
    if (m_device)
        m_device->unlock();
}

/// A file that ends where this log left it was not touched by anybody.
void LogFile::look()
{
    qint64 const size = m_device->pos();
    if (size == m_size)
        return;
    m_size = -1;
    m_end = LogFileEnd();
    if (size > 0) {
        auto const file = newReader();
        m_end = findLogFileEnd(*file);
        bool const isUnread = file->hasFailed() || !isPlausible(m_end, size);
        if (m_end.kind == LogFileEnd::Damaged || (isUnread && isDamaged(*file)))
            refuseDamaged();
        if (isUnread)
            refuse(*file);
        if (m_end.kind == LogFileEnd::Torn)
            keepTorn(*file);
        if (isBegun())
            readHeader(*file);
    }
    m_size = m_device->pos();
}

void LogFile::refuseDamaged()
{
    LogFileContent content = read();
    if (!content.isDamaged)
        content.error = translated(QT_TRANSLATE_NOOP("ActionLog", "No action log"));
    content.isDamaged = true;
    requireSound(content);
}

void LogFile::readHeader(FileEncrypt& file)
{
    file.seek(0);
    XMLLogReader reader(&file);
    auto const header = reader.readHeader();
    if (!header)
        refuse(file);
    if (!header->isCurrentVersion())
        refuseHeader();
    m_date = header->date.isValid() ? header->date.toLocalTime() : QFileInfo(m_path).lastModified();
}

bool LogFile::moveBadAside(AsideName const& name)
{
    return moveAsideLocked(m_path, m_identity, name);
}

LogFileContent LogFile::read()
{
    auto const file = newReader();
    LogFileContent content = readLogFile(*file);
    // A disk that fails looks like damage to the reader.
    if (content.isDamaged && file->hasFailed() && !isDamaged(*file))
        throw couldNotOpen();
    if (content.header && !content.header->isCurrentVersion())
        refuseHeader();
    return content;
}

std::optional<ActionLogXmlException> LogFile::damageOf(LogFileContent const& content) const
{
    if (!content.isDamaged)
        return std::nullopt;
    QString const message
        = translated(QT_TRANSLATE_NOOP("ActionLog", "Error reading log file '%1'; Line '%2'; Column '%3'"))
              .arg(m_path, QString::number(content.line), QString::number(content.column));
    return ActionLogXmlException(message, content.error, content.line, content.column);
}

void LogFile::requireSound(LogFileContent const& content)
{
    auto const damage = damageOf(content);
    if (!damage)
        return;
    noteBad();
    throw ActionLogXmlException(*damage);
}

ActionLogFileException LogFile::couldNotOpen() const
{
    QString const message = translated(QT_TRANSLATE_NOOP("ActionLog", "Could not open file '%1'")).arg(m_path);
    return {message, m_path, ActionLogFileException::CouldNotOpen};
}

void LogFile::refuse(FileEncrypt& device)
{
    if (device.headerError() != FileEncrypt::NoHeaderError)
        refuseHeader();
    // A full disk, a lack of file handles and the like are not the file's fault.
    if (mayNotBeRead(m_path) || isDamaged(device))
        noteBad();
    else if (&device == m_device.get())
        m_device.reset(); // what it keeps of the file may be wrong from now on
    throw couldNotOpen();
}

void LogFile::refuseHeader()
{
    noteBad();
    QString const message
        = translated(QT_TRANSLATE_NOOP("ActionLog", "Action log '%1' invalid header version.")).arg(m_path);
    throw ActionLogFileException(message, m_path, ActionLogFileException::InvalidHeader);
}

/// Whether an encrypted file was changed by somebody else.
bool LogFile::isDamaged(FileEncrypt& device) const
{
    if (m_password.isEmpty())
        return false;
    using Found = FileEncrypt::VerifyResult;
    Found::Class const found = device.verify().result;
    return found == Found::RecordDamaged || found == Found::TornOrTampered;
}

void LogFile::noteBad()
{
    if (m_device)
        m_identity = FileIdentity::of(m_device->handle());
    m_device.reset();
    m_isBad = true;
}

} // namespace qv
