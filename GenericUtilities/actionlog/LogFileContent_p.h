// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/Export.h>
#include <GenericUtilities/actionlog/LogEntry.h>
#include <GenericUtilities/actionlog/LogFileHeader.h>

#include <QString>

#include <memory>
#include <optional>
#include <vector>

QT_BEGIN_NAMESPACE
class QFile;
QT_END_NAMESPACE

namespace qv {

using OwnedEntries = std::vector<std::unique_ptr<LogEntry>>;

/// What a log file holds, up to its end or its first damage.
struct LogFileContent {
    std::optional<LogFileHeader> header;
    /// The last one tells of the damage, if there is any.
    OwnedEntries entries;
    bool isDamaged = false;
    QString error;
    int line = 0;
    int column = 0;
};

/// Reads @p file, open for reading, from its start.
GENERICUTILITIES_EXPORT LogFileContent readLogFile(QFile& file);

} // namespace qv
