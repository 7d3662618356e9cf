// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/actionlog/LogFileContent_p.h>

#include <QList>

#include <memory>

namespace qv {

class ActionLog;
class Announcer;

/// The entries in memory. Each change is a step of the announcer, in which the log's signals tell of it.
class LogEntryList {
public:
    /// Both must outlive this object.
    LogEntryList(ActionLog& log, Announcer& announcer);

    void append(OwnedEntries entries);
    void clear();
    /// Those that are still there when it comes to it.
    void remove(QList<LogEntry*> const& entries);

    int count() const { return int(m_entries.size()); }
    /// Null where there is no such row.
    LogEntry* at(int row) const;
    QList<LogEntry*> all() const;

private:
    void appendOne(std::unique_ptr<LogEntry> entry);
    void removeRows(int first, int last);
    void removeNow(QList<LogEntry*> const& entries);

    ActionLog& m_log;
    Announcer& m_announcer;
    OwnedEntries m_entries;
};

} // namespace qv
