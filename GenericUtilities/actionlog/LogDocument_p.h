// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/actionlog/LogFileHeader.h>

#include <QByteArray>
#include <QList>

namespace qv {

class FileEncrypt;
class LogEntry;

/// What ends a log file.
QByteArray logEndTag();

/// Writes a whole log to @p device, which must not be open, into a file that does not exist yet, and brings it to the
/// disk. False where it cannot be; no file is left then that was not there.
bool writeLogDocument(FileEncrypt& device, LogFileHeader const& header, QList<LogEntry*> const& entries);

} // namespace qv
