// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/actionlog/LogXml_p.h>

#include <GenericUtilities/actionlog/LogEntry.h>
#include <GenericUtilities/actionlog/LogWriter.h>
#include <GenericUtilities/actionlog/XmlScanner_p.h>

#include <QBuffer>

namespace qv::xml {

namespace {

    /// What @p write makes an XMLLogWriter write; nothing where it met an error.
    template <typename Write> QByteArray written(QDateTime const& date, Write write)
    {
        QBuffer buffer;
        buffer.open(QIODevice::WriteOnly);
        XMLLogWriter writer(nullptr, {}, date);
        writer.setDevice(&buffer);
        write(writer);
        return writer.hasError() ? QByteArray() : buffer.data();
    }

    bool isReadable(QByteArray const& bytes)
    {
        XmlScanner scanner;
        for (char const byte : bytes)
            scanner.scan(byte);
        return !bytes.isEmpty() && scanner.fault() == XmlScanner::Sound;
    }

} // namespace

QByteArray toXml(LogFileHeader const& header)
{
    return written(header.date, [&](XMLLogWriter& writer) {
        writer.setStartDocumentName(header.logFile);
        writer.setAppVersion(header.applicationVersion);
        writer.setLngVersion(header.languageVersion);
        writer.writeStartDocument();
    });
}

QByteArray toXml(LogEntry const& entry, bool* ok)
{
    QByteArray const bytes = written({}, [&](XMLLogWriter& writer) { entry.writeTo(writer); });
    bool const isAccepted = isReadable(bytes);
    if (ok)
        *ok = isAccepted;
    return isAccepted ? bytes : QByteArray();
}

} // namespace qv::xml
