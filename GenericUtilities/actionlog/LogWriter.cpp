// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/actionlog/LogWriter.h>

#include <GenericUtilities/actionlog/LogEntry.h>
#include <GenericUtilities/actionlog/LogFileHeader.h>
#include <GenericUtilities/actionlog/XmlWording_p.h>

#include <QTextStream>

namespace qv {

ILogWriter::~ILogWriter() = default;

LogWriter::LogWriter(QTextStream* stream)
    : m_stream(stream)
{
}

LogWriter::~LogWriter() = default;

XMLLogWriter::XMLLogWriter(QTextStream* stream, QString const&, QDateTime const& date)
    : LogWriter(stream)
    , m_date(date)
{
    setAutoFormatting(false);
    setAutoFormattingIndent(0);
    setDevice(stream ? stream->device() : nullptr);
}

XMLLogWriter::~XMLLogWriter() = default;

void XMLLogWriter::setDevice(QIODevice* device)
{
    QXmlStreamWriter::setDevice(device);
}

bool XMLLogWriter::hasError() const
{
    return QXmlStreamWriter::hasError();
}

void XMLLogWriter::writeStartDocument()
{
    QXmlStreamWriter::writeStartDocument(QStringLiteral("1.0"));
    QXmlStreamWriter::writeStartElement(QStringLiteral("Entries"));
    m_names.clear();
    writeNamed(QStringLiteral("Version"), LogFileHeader::currentVersion());
    writeNamed(QStringLiteral("LogFile"), startDocumentName());
    writeNamed(QStringLiteral("Date"), m_date.toString(Qt::ISODate));
    if (!appVersion().isEmpty())
        writeNamed(QStringLiteral("ApplicationVersion"), appVersion());
    if (!lngVersion().isEmpty())
        writeNamed(QStringLiteral("LanguageVersion"), lngVersion());
    // Qt holds back the ">" until something follows.
    writeCharacters(QString());
}

void XMLLogWriter::writeEndDocument()
{
    QXmlStreamWriter::writeEndDocument();
}

void XMLLogWriter::writeStartElement(LogEntry const& entry)
{
    QXmlStreamWriter::writeStartElement(QStringLiteral("Entry"));
    m_names.clear();
    writeNamed(QStringLiteral("ID"), entry.id().toString());
}

void XMLLogWriter::writeEndElement(LogEntry const&)
{
    QXmlStreamWriter::writeEndElement();
}

void XMLLogWriter::writeAttribute(LogValue const& value)
{
    if (value.hasValue())
        writeNamed(xml::writtenName(value.code()), value.toString());
}

void XMLLogWriter::writeNamed(QString const& name, QString const& text)
{
    QString const plain = name.trimmed();
    if (plain.isEmpty() || m_names.contains(plain))
        return;
    m_names.append(plain);
    QXmlStreamWriter::writeAttribute(name, xml::writtenText(text));
}

ProsaLogWriter::ProsaLogWriter(QTextStream& stream, char separator)
    : LogWriter(&stream)
    , m_separator(separator)
{
}

ProsaLogWriter::~ProsaLogWriter() = default;

void ProsaLogWriter::writeStartDocument() { }

void ProsaLogWriter::writeEndDocument() { }

void ProsaLogWriter::writeStartElement(LogEntry const&) { }

void ProsaLogWriter::writeEndElement(LogEntry const& entry)
{
    *stream() << entry.action() << Qt::endl;
}

void ProsaLogWriter::writeAttribute(LogValue const& value)
{
    *stream() << value.name() << QLatin1String(": ");
    value.writeTo(*stream());
    *stream() << QLatin1Char(m_separator);
}

} // namespace qv
