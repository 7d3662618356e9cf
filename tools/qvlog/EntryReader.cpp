// SPDX-License-Identifier: LGPL-2.1-or-later
#include "EntryReader.h"

#include "Failures.h"

#include <GenericUtilities/actionlog/LogEntry.h>
#include <GenericUtilities/actionlog/XmlWording_p.h>

namespace {

/// Has the entry's own times read as those of the log: its reader knows the locale of the environment only.
void setTimes(qv::LogEntry& entry, QXmlStreamAttributes const& attributes, LogTimes& times)
{
    for (qv::LogValue* const value : entry.values()) {
        if (auto* const time = dynamic_cast<qv::TLogValue<QDateTime>*>(value))
            time->setValue(times.read(attributes.value(qv::xml::reducedName(time->code())).toString()));
    }
}

bool isCommon(QString const& name)
{
    return name == QLatin1String("ID") || name == QLatin1String("Time") || name == QLatin1String("User");
}

QString listed(QVector<QPair<QString, QString>> const& values)
{
    QStringList texts;
    for (auto const& value : values)
        texts += value.first + QStringLiteral(": ") + value.second;
    return texts.join(QStringLiteral("; "));
}

void describe(LoggedEntry& logged, qv::LogEntry* entry)
{
    if (!entry) {
        logged.action = QLatin1Char('[') + logged.id + QLatin1Char(']');
        logged.description = listed(logged.values);
        return;
    }
    qv::LogCategory const category(entry->category());
    logged.category = qv::FourChars(category.code()).toString();
    logged.categoryName = category.name();
    logged.action = entry->action();
    logged.description = entry->description();
}

} // namespace

EntryReader::EntryReader(QString const& path, Access& access, QLocale const* logLocale)
    : m_file(path, access)
    , m_reader(&m_file.device(), path)
    , m_header(m_reader.readHeader())
{
    requireHeader();
    m_times = std::make_unique<LogTimes>(
        logLocale ? *logLocale : QLocale::system(), m_header ? m_header->date : QDateTime());
}

EntryReader::~EntryReader() = default;

void EntryReader::requireHeader()
{
    requireNoFailure();
    bool const isShort = m_reader.error() == QXmlStreamReader::PrematureEndOfDocumentError;
    if (!m_header && !isShort)
        throw DamageException(QStringLiteral("line 1, column 0: this is no log file"));
    if (m_header && !m_header->isCurrentVersion())
        throw DamageException(QStringLiteral("line %1, column %2: the header has the version '%3', not '%4'")
                                  .arg(m_reader.lineNumber())
                                  .arg(m_reader.columnNumber())
                                  .arg(m_header->version, qv::LogFileHeader::currentVersion()));
}

std::optional<LoggedEntry> EntryReader::next()
{
    do {
        std::unique_ptr<qv::LogEntry> const entry(m_reader.readNextLogEntry());
        requireNoFailure();
        // An entry of a type that is not known is none to the reader, which stands on it all the same.
        if (m_reader.isStartElement()) {
            ++m_count;
            return entryAtHand(entry.get());
        }
    } while (!m_reader.atEnd());
    return {};
}

void EntryReader::requireNoFailure()
{
    if (m_reader.hasError() && m_reader.error() != QXmlStreamReader::PrematureEndOfDocumentError)
        throwFailure(m_reader.errorString(), m_reader.lineNumber(), m_reader.columnNumber());
}

void EntryReader::throwFailure(QString const& reason, qint64 line, qint64 column)
{
    m_file.requireIntact(); // What the device knows tells more than what the text looks like.
    throw DamageException(QStringLiteral("line %1, column %2: %3").arg(line).arg(column).arg(reason.simplified()));
}

LoggedEntry EntryReader::entryAtHand(qv::LogEntry* entry) const
{
    QXmlStreamAttributes const attributes = m_reader.attributes();
    LoggedEntry logged;
    logged.file = m_file.path();
    logged.id = attributes.value(QLatin1String("ID")).toString();
    logged.loggedTime = attributes.value(QLatin1String("Time")).toString();
    logged.user = attributes.value(QLatin1String("User")).toString();
    logged.time = m_times->read(logged.loggedTime);
    logged.hasSeconds = m_times->hasSeconds();
    for (QXmlStreamAttribute const& attribute : attributes) {
        QString const name = attribute.qualifiedName().toString();
        if (!isCommon(name))
            logged.values.append({name, attribute.value().toString()});
    }
    if (entry)
        setTimes(*entry, attributes, *m_times);
    describe(logged, entry);
    return logged;
}
