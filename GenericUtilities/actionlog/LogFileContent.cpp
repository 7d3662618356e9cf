// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/actionlog/LogFileContent_p.h>

#include <GenericUtilities/actionlog/LogReader.h>

#include <QFile>

namespace qv {

namespace {

    /// A file that merely ends early is being written, or was when its writer died.
    bool isDamage(QXmlStreamReader::Error error)
    {
        return error != QXmlStreamReader::NoError && error != QXmlStreamReader::PrematureEndOfDocumentError;
    }

} // namespace

LogFileContent readLogFile(QFile& file)
{
    LogFileContent content;
    file.seek(0);
    XMLLogReader reader(&file);
    content.header = reader.readHeader();
    while (!reader.atEnd() && !reader.hasError()) {
        if (std::unique_ptr<LogEntry> entry{reader.readNextLogEntry()})
            content.entries.push_back(std::move(entry));
    }
    content.isDamaged = isDamage(reader.error());
    if (content.isDamaged) {
        content.error = reader.errorString();
        content.line = int(reader.lineNumber());
        content.column = int(reader.columnNumber());
    }
    return content;
}

} // namespace qv
