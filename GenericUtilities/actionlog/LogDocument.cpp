// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/actionlog/LogDocument_p.h>

#include <GenericUtilities/actionlog/LogXml_p.h>
#include <qvbase/FileEncrypt.h>

namespace qv {

namespace {

    constexpr int blockBytes = 65536;

    bool write(QIODevice& device, QByteArray const& bytes)
    {
        return device.write(bytes) == bytes.size();
    }

    /// Some entries at a time, the end tag by itself, so that it can be taken off.
    bool writeAll(FileEncrypt& device, LogFileHeader const& header, QList<LogEntry*> const& entries)
    {
        QByteArray block = xml::toXml(header);
        for (LogEntry const* const entry : entries) {
            bool isReadable = false;
            block += xml::toXml(*entry, &isReadable);
            if (!isReadable)
                return false;
            if (block.size() < blockBytes)
                continue;
            if (!write(device, block))
                return false;
            block.clear();
        }
        return (block.isEmpty() || write(device, block)) && write(device, logEndTag());
    }

} // namespace

QByteArray logEndTag()
{
    return QByteArrayLiteral("\n</Entries>\n");
}

bool writeLogDocument(FileEncrypt& device, LogFileHeader const& header, QList<LogEntry*> const& entries)
{
    if (!device.open(QIODevice::WriteOnly | QIODevice::NewOnly))
        return false;
    bool const isWritten = writeAll(device, header, entries) && device.sync();
    device.close();
    if (!isWritten)
        device.remove();
    return isWritten;
}

} // namespace qv
