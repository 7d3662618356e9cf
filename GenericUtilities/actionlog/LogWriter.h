// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/Export.h>
#include <GenericUtilities/settings/Settings.h>

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <QXmlStreamWriter>

QT_BEGIN_NAMESPACE
class QIODevice;
class QTextStream;
QT_END_NAMESPACE

namespace qv {

class LogEntry;
class LogValue;

/// Turns entries into text. LogEntry::writeTo() makes the calls for an entry: start, each value, end.
class GENERICUTILITIES_EXPORT ILogWriter : public IInterface {
public:
    ~ILogWriter() override;

    virtual void writeStartDocument() = 0;
    virtual void writeEndDocument() = 0;
    virtual void writeStartElement(LogEntry const& entry) = 0;
    virtual void writeEndElement(LogEntry const& entry) = 0;
    virtual void writeAttribute(LogValue const& value) = 0;
};

/// What the writers share: the stream and the texts of a document's header.
class GENERICUTILITIES_EXPORT LogWriter : public ILogWriter {
public:
    ~LogWriter() override;

    /// Empty unless set, as are the versions.
    void setStartDocumentName(QString const& name) { m_startDocumentName = name; }
    void setAppVersion(QString const& version) { m_appVersion = version; }
    void setLngVersion(QString const& version) { m_lngVersion = version; }

protected:
    /// @p stream stays the caller's; it may be null.
    explicit LogWriter(QTextStream* stream);

    QTextStream* stream() const { return m_stream; }
    QString const& startDocumentName() const { return m_startDocumentName; }
    QString const& appVersion() const { return m_appVersion; }
    QString const& lngVersion() const { return m_lngVersion; }

private:
    QTextStream* m_stream;
    QString m_startDocumentName;
    QString m_appVersion;
    QString m_lngVersion;
};

/// Writes the log file, which docs/formats.md describes: one XML element per entry, one attribute per value.
///
/// Code units that XML cannot hold (control characters, halves of surrogate pairs, U+FFFE, U+FFFF) are written as
/// U+FFFD, so that no text spoils the file. A value whose attribute would have no name, or one that the entry has
/// already, is left out for the same reason.
class GENERICUTILITIES_EXPORT XMLLogWriter : public LogWriter, private QXmlStreamWriter {
public:
    /// Writes to the device of @p stream, past the stream itself; to none, until setDevice(), where there is no stream
    /// or the stream has no device. @p date is the header's. The name of the file comes from setStartDocumentName().
    XMLLogWriter(QTextStream* stream, QString const& name, QDateTime const& date);
    ~XMLLogWriter() override;

    /// @p device stays the caller's. Elements that are open stay so: take a new writer for a new file.
    void setDevice(QIODevice* device);
    /// Whether the device refused something; it stays so.
    bool hasError() const;

    /// The XML declaration and the start tag of the root, complete with its ">".
    void writeStartDocument() override;
    /// Closes what is open.
    void writeEndDocument() override;
    void writeStartElement(LogEntry const& entry) override;
    void writeEndElement(LogEntry const& entry) override;
    /// Writes nothing where the value has none.
    void writeAttribute(LogValue const& value) override;

private:
    void writeNamed(QString const& name, QString const& text);

    QDateTime m_date;
    QStringList m_names; // of the attributes in the open element, without trailing blanks
};

/// Writes a line for people: name, ": ", value and the separator for each value, and in the end the action.
class GENERICUTILITIES_EXPORT ProsaLogWriter : public LogWriter {
public:
    /// @p stream stays the caller's and must outlive this object; @p separator is Latin-1.
    ProsaLogWriter(QTextStream& stream, char separator);
    ~ProsaLogWriter() override;

    void writeStartDocument() override;
    void writeEndDocument() override;
    void writeStartElement(LogEntry const& entry) override;
    /// Ends the line and flushes the stream.
    void writeEndElement(LogEntry const& entry) override;
    /// Also where the value has none.
    void writeAttribute(LogValue const& value) override;

private:
    char m_separator;
};

} // namespace qv
