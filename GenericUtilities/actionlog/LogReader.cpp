// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/actionlog/LogReader.h>

#include <GenericUtilities/actionlog/LogFileFilter_p.h>
#include <GenericUtilities/actionlog/Translation_p.h>
#include <GenericUtilities/actionlog/UntimedEntry_p.h>
#include <GenericUtilities/actionlog/XmlWording_p.h>

#include <QFile>

#include <algorithm>
#include <limits>

namespace qv {

namespace {

    LogFileHeader headerOf(QXmlStreamAttributes const& attributes)
    {
        auto const text = [&](char const* name) { return attributes.value(QLatin1String(name)).toString(); };
        LogFileHeader header;
        header.version = text("Version");
        header.logFile = text("LogFile");
        header.date = QDateTime::fromString(text("Date"), Qt::ISODate);
        header.applicationVersion = text("ApplicationVersion");
        header.languageVersion = text("LanguageVersion");
        return header;
    }

    LogValue* valueNamed(LogEntry& entry, QString const& name)
    {
        if (LogValue* const value = entry.logValue(FourChars(name)))
            return value;
        auto const isWrittenSo = [&](LogValue const* value) { return xml::reducedName(value->code()) == name; };
        auto const found = std::find_if(entry.values().begin(), entry.values().end(), isWrittenSo);
        return found != entry.values().end() ? *found : nullptr;
    }

    std::unique_ptr<LogEntry> entryOf(QXmlStreamAttributes const& attributes)
    {
        std::unique_ptr<LogEntry> entry;
        bool isTimed = false;
        for (QXmlStreamAttribute const& attribute : attributes) {
            QString const text = attribute.value().toString();
            if (attribute.qualifiedName() == QLatin1String("ID")) {
                entry = newUntimedEntry(FourChars(text));
                continue;
            }
            LogValue* const value = entry ? valueNamed(*entry, attribute.qualifiedName().toString()) : nullptr;
            if (value) {
                value->setValue(text);
                isTimed = isTimed || value == &entry->time();
            } else if (entry) {
                break;
            }
        }
        if (entry && !isTimed)
            entry->time().setValue(QDateTime::currentDateTime());
        return entry;
    }

    int clamped(qint64 number)
    {
        return static_cast<int>(std::min<qint64>(number, std::numeric_limits<int>::max()));
    }

} // namespace

XMLLogReader::XMLLogReader(QFile* file)
    : XMLLogReader(file, file ? file->fileName() : QString())
{
}

XMLLogReader::XMLLogReader(QIODevice* device, QString const& name)
    : m_name(name)
    , m_filter(device ? std::make_unique<LogFileFilter>(device) : nullptr)
{
    setDevice(m_filter.get());
    // No name of a log file has a namespace, and looking for them costs a hostile file's reader much time.
    setNamespaceProcessing(false);
}

XMLLogReader::~XMLLogReader() = default;

LogEntry* XMLLogReader::readNextLogEntry()
{
    QString message = QStringLiteral("Unknown Error");
    qint64 line = 0;
    qint64 column = 0;
    if (m_filter)
        m_filter->retry();
    while (!atEnd()) {
        advance();
        if (isStartElement() && qualifiedName() == QLatin1String("Entry"))
            return entryOf(attributes()).release();
        if (tokenType() == Invalid) {
            message = errorString();
            line = lineNumber();
            column = columnNumber();
        }
    }
    return failureEntry(message, line, column);
}

std::optional<LogFileHeader> XMLLogReader::readHeader()
{
    while (m_depth == 0 && !atEnd())
        advance();
    return m_header;
}

void XMLLogReader::advance()
{
    readNext();
    if (isStartElement())
        noteStartElement();
    else if (isEndElement())
        --m_depth;
    else if (isStartDocument() && !documentEncoding().isEmpty()
        && documentEncoding().compare(QLatin1String("UTF-8"), Qt::CaseInsensitive) != 0)
        refuse(QT_TRANSLATE_NOOP("ActionLog", "A log file is written in UTF-8."));
    else if (error() == PrematureEndOfDocumentError && m_filter && m_filter->hasFailed())
        raiseError(m_filter->failure());
}

void XMLLogReader::noteStartElement()
{
    if (++m_depth > MaxDepth)
        refuse(QT_TRANSLATE_NOOP("ActionLog", "Elements are nested too deeply."));
    else if (m_depth == 1 && qualifiedName() == QLatin1String("Entries"))
        m_header = headerOf(attributes());
}

void XMLLogReader::refuse(char const* text)
{
    raiseError(translated(text));
}

LogEntry* XMLLogReader::failureEntry(QString const& message, qint64 line, qint64 column)
{
    if (!hasError() || error() == PrematureEndOfDocumentError || std::exchange(m_isFailureTold, true))
        return nullptr;
    auto entry = std::make_unique<ParseXMLLogEntry>();
    entry->source.setValue(message);
    entry->error.setValue(m_name.isEmpty() ? QStringLiteral("Unknown") : m_name);
    entry->line.setValue(clamped(line));
    entry->column.setValue(clamped(column));
    entry->user().setValue(QStringLiteral("Unknown"));
    return entry.release();
}

} // namespace qv
