// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/actionlog/ActionLogTesting_p.h>
#include <GenericUtilities/actionlog/LogDocument_p.h>
#include <GenericUtilities/actionlog/LogFile_p.h>
#include <GenericUtilities/actionlog/LogXml_p.h>
#include <GenericUtilities/actionlog/TornText_p.h>

#include <QFileInfo>

namespace qv {

void LogFile::append(QByteArray const& entry)
{
    constexpr int maxWaitingBytes = 65536;
    if (m_durability == DurabilityNone && m_waiting.size() + entry.size() <= maxWaitingBytes)
        m_waiting.add(entry);
    else
        writeWaiting(entry);
}

void LogFile::flush()
{
    if (m_waiting.isEmpty())
        return;
    LogFileTurn const turn(*this);
    writeWaiting({});
}

void LogFile::writeWaiting(QByteArray const& more)
{
    QByteArray const bytes = m_waiting.bytes() + more;
    if (bytes.isEmpty())
        return;
    makeReady();
    put(bytes);
    m_waiting.clear();
}

void LogFile::makeReady()
{
    if (m_end.kind == LogFileEnd::Empty)
        begin();
    else if (m_end.kind == LogFileEnd::Ended)
        cutAt(m_end.offset);
}

LogFileHeader LogFile::newHeader(QString const& path) const
{
    LogFileHeader header;
    header.logFile = QFileInfo(path).absoluteFilePath();
    header.date = actionLogTime();
    header.applicationVersion = m_applicationVersion;
    header.languageVersion = m_languageVersion;
    return header;
}

void LogFile::begin()
{
    LogFileHeader const header = newHeader(m_path);
    put(xml::toXml(header));
    m_end.kind = LogFileEnd::Open;
    m_date = header.date;
}

/// As one write, so that an encrypted file can be cut there in place.
void LogFile::finish()
{
    writeWaiting({});
    if (m_end.kind != LogFileEnd::Open)
        return;
    qint64 const end = m_size;
    put(logEndTag());
    m_end = {LogFileEnd::Ended, end};
}

void LogFile::put(QByteArray const& bytes)
{
    qint64 const before = m_size;
    // Until it is known to be there.
    m_size = -1;
    qint64 const count = m_device->write(bytes);
    if (count != bytes.size() || !m_device->flush()) {
        if (count > 0)
            m_device->resize(before);
        throw couldNotOpen();
    }
    sync();
    m_size = before + count;
}

void LogFile::cutAt(qint64 offset)
{
    m_size = -1;
    if (!m_device->resize(offset))
        throw couldNotOpen();
    sync();
    m_end = {offset > 0 ? LogFileEnd::Open : LogFileEnd::Empty, offset};
    m_size = offset;
}

void LogFile::keepTorn(FileEncrypt& file)
{
    qint64 const offset = m_end.offset;
    if (!keepTornText(file, offset, [this](QString const& path) { return newDevice(path); }))
        throw couldNotOpen();
    cutAt(offset);
}

void LogFile::sync()
{
    if (m_durability != DurabilityData || m_device->sync())
        return;
    // What the disk holds is unknown: the file is read anew before anything else is written.
    m_device.reset();
    throw couldNotOpen();
}

bool LogFile::moveAside(AsideName const& name)
{
    if (!canMoveAside(m_path))
        return false;
    finish();
    if (qv::moveAside(m_path, name).isNull())
        return false;
    endTurn();
    return true;
}

void LogFile::leave()
{
    if (!isOpen())
        return;
    try {
        // Where another process moved the file aside, it has ended it.
        if (QFileInfo::exists(m_path) || !m_waiting.isEmpty()) {
            LogFileTurn const turn(*this);
            finish();
        }
    } catch (ActionLogException const&) {
        // The entries are there; readers do without the end tag.
    }
    m_device.reset();
    m_waiting.clear();
}

} // namespace qv
