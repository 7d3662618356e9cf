// SPDX-License-Identifier: LGPL-2.1-or-later
#include "LogInput.h"

#include <GenericUtilities/actionlog/LogEntry.h>
#include <GenericUtilities/actionlog/LogFileEnd_p.h>
#include <GenericUtilities/actionlog/LogReader.h>
#include <GenericUtilities/actionlog/LogXml_p.h>
#include <GenericUtilities/actionlog/XmlScanner_p.h>

#include <QBuffer>

#include <algorithm>
#include <memory>
#include <vector>

using fuzz::require;
using qv::LogEntry;
using qv::LogFileEnd;
using qv::XMLLogReader;

/// Reads the input as a log file, writes what was read, and extends the file.
namespace {

struct Reading {
    std::vector<std::unique_ptr<LogEntry>> entries; // without the one that tells of the damage
    QXmlStreamReader::Error error = QXmlStreamReader::NoError;
    bool isDamaged() const
    {
        return error != QXmlStreamReader::NoError && error != QXmlStreamReader::PrematureEndOfDocumentError;
    }
};

Reading read(XMLLogReader& reader)
{
    Reading reading;
    while (!reader.atEnd() && !reader.hasError()) {
        std::unique_ptr<LogEntry> entry(reader.readNextLogEntry());
        if (entry)
            reading.entries.push_back(std::move(entry));
    }
    reading.error = reader.error();
    if (reading.isDamaged()) {
        require(!reading.entries.empty() && reading.entries.back()->id() == qv::FourChars("XmlP"), "damage is told");
        reading.entries.pop_back();
    }
    require(!reader.readNextLogEntry(), "nothing comes behind the end");
    return reading;
}

Reading read(QByteArray bytes)
{
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    XMLLogReader reader(&buffer, QString());
    return read(reader);
}

void checkEntry(LogEntry const& entry)
{
    entry.description();
    bool ok = false;
    QByteArray const bytes = qv::xml::toXml(entry, &ok);
    require(ok, "what was read can be written");
    Reading const again = read(qv::xml::toXml(qv::LogFileHeader()) + bytes);
    require(!again.isDamaged() && again.entries.size() == 1, "what was written is an entry");
    // An element without a time is stamped when it is read.
    bool const isSame = qv::xml::toXml(*again.entries.front()) == bytes;
    require(isSame || !entry.time().hasValue(), "an entry comes back as written");
}

void checkPieces(QByteArray const& bytes, int pieceSize, Reading const& whole)
{
    fuzz::Pieces pieces(bytes, pieceSize);
    XMLLogReader reader(&pieces, QString());
    Reading const reading = read(reader);
    require(reading.entries.size() == whole.entries.size(), "the size of pieces changes no entry");
    require(reading.isDamaged() == whole.isDamaged(), "the size of pieces changes no damage");
}

/// Whether a file is made of what writers write: a declaration, the root's tags and entries.
bool isPlain(QByteArray bytes)
{
    using qv::xml::XmlScanner;
    bytes.truncate(
        static_cast<int>(std::remove_if(bytes.begin(), bytes.end(), &XmlScanner::isDropped) - bytes.begin()));
    XmlScanner scanner;
    auto const isStartTag = [&](char byte) { return scanner.scan(byte) == XmlScanner::StartTag; };
    bool const isFlat = std::count_if(bytes.begin(), bytes.end(), isStartTag) <= 1;
    // A declaration that never ends hides the header: such a file is refused before its end is looked for.
    int const declaration = bytes.indexOf("<?");
    bool const isEnded = declaration < 0 || bytes.indexOf("?>", declaration) >= 0 || !bytes.contains('>');
    return isFlat && isEnded && !bytes.contains("<!") && bytes.count("<?") <= 1;
}

/// A file that is read can be extended where it ends, and keeps what was read.
void checkExtending(QByteArray bytes, Reading const& before)
{
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    LogFileEnd const end = qv::findLogFileEnd(buffer);
    buffer.seek(0);
    LogFileEnd const scanned = qv::scanLogFileEnd(buffer);
    require(scanned.offset <= bytes.size(), "the end is within the file");
    if (before.isDamaged() || scanned.kind == LogFileEnd::Damaged)
        return;
    require(end == scanned || !isPlain(bytes), "the last bytes tell what the whole file tells");
    QByteArray const kept = bytes.left(static_cast<int>(scanned.offset));
    QByteArray const header = kept.isEmpty() ? qv::xml::toXml(qv::LogFileHeader()) : QByteArray();
    Reading const after = read(kept + header + "<Entry ID=\"ExpD\" Text=\"more\"/></Entries>");
    require(!after.isDamaged(), "an extended file is well-formed");
    bool const isOneMore = after.entries.size() == before.entries.size() + 1;
    require(isOneMore || !isPlain(bytes), "an extended file has lost nothing");
    require(after.entries.back()->description() == QLatin1String("more"), "the last entry is the new one");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    if (size < 3)
        return 0;
    QByteArray const bytes = fuzz::logBytes(data, static_cast<int>(size));
    Reading const reading = read(bytes);
    for (std::unique_ptr<LogEntry> const& entry : reading.entries)
        checkEntry(*entry);
    checkPieces(bytes, 1 + data[0], reading);
    checkExtending(bytes, reading);
    return 0;
}
