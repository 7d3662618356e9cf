// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/Export.h>
#include <GenericUtilities/actionlog/LogFileHeader.h>
#include <GenericUtilities/actionlog/ParseXMLLogEntry.h>

#include <QString>
#include <QXmlStreamReader>

#include <memory>
#include <optional>

QT_BEGIN_NAMESPACE
class QFile;
class QIODevice;
QT_END_NAMESPACE

namespace qv {

class LogFileFilter;

/// Reads a log file back, entry by entry. Control characters that older writers left in it are skipped.
///
/// These are damage, as is what is not well-formed: an entry above 16 MiB or with more than 1,000 attributes, a
/// document type, elements more than 100 deep, an encoding other than UTF-8, and what the device fails to read. A file
/// that merely ends early is none: the end tag is missing while a file is being written.
class GENERICUTILITIES_EXPORT XMLLogReader : public QXmlStreamReader {
public:
    static constexpr int MaxDepth = 100;

    /// Reads @p file from where it stands. It stays the caller's, is open for reading and outlives this object. Null
    /// reads as an empty file does.
    explicit XMLLogReader(QFile* file);
    /// The same for any device; @p name is how messages call it.
    XMLLogReader(QIODevice* device, QString const& name);
    ~XMLLogReader();

    /// The next entry, which the caller owns. Null where its id is not registered, and at the end; atEnd() and
    /// hasError() tell which. Damage gives one ParseXMLLogEntry. After the end of a file that ends early, another call
    /// goes on with what has been appended since.
    ///
    /// An attribute is the value whose code it gives, else the one whose code gives it when written. Those before "ID"
    /// are ignored, as are all from one that is no value of the entry.
    LogEntry* readNextLogEntry();

    /// What the start tag of the root tells. Reads up to it where that is still ahead. Nothing where there is none.
    std::optional<LogFileHeader> readHeader();

private:
    void advance();
    void noteStartElement();
    void refuse(char const* text);
    LogEntry* failureEntry(QString const& message, qint64 line, qint64 column);

    QString m_name;
    std::unique_ptr<LogFileFilter> m_filter;
    std::optional<LogFileHeader> m_header;
    int m_depth = 0;
    bool m_isFailureTold = false;
};

} // namespace qv
