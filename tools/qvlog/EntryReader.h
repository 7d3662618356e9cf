// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include "LogFile.h"
#include "LogTimes.h"
#include "LoggedEntry.h"

#include <GenericUtilities/actionlog/LogReader.h>

#include <memory>
#include <optional>

namespace qv {
class LogEntry;
}

/// Reads the entries of a log file, one at a time. What it meets of damage throws DamageException, which names the
/// place; what the system refuses throws RefusalException.
class EntryReader {
public:
    /// @p path is read under the locale in which its times stand; null for that of the environment.
    EntryReader(QString const& path, Access& access, QLocale const* logLocale);
    ~EntryReader();

    /// Nothing at the end of what is there. Where the file has no end tag, another call may find what was appended.
    std::optional<LoggedEntry> next();
    /// Whether the end tag has been read.
    bool hasEnded() const { return m_reader.atEnd() && !m_reader.hasError(); }
    /// How many entries have been read.
    qint64 count() const { return m_count; }

    LogFile& file() { return m_file; }
    /// Nothing where the file is too short to have one.
    std::optional<qv::LogFileHeader> const& header() const { return m_header; }

private:
    void requireHeader();
    void requireNoFailure();
    [[noreturn]] void throwFailure(QString const& reason, qint64 line, qint64 column);
    LoggedEntry entryAtHand(qv::LogEntry* entry) const;

    LogFile m_file;
    qv::XMLLogReader m_reader;
    std::optional<qv::LogFileHeader> m_header;
    std::unique_ptr<LogTimes> m_times;
    qint64 m_count = 0;
};
