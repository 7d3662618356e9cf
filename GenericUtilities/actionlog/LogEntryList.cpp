// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/actionlog/LogEntryList_p.h>

#include <GenericUtilities/actionlog/ActionLog.h>
#include <GenericUtilities/actionlog/Announcer_p.h>

#include <QSet>

#include <iterator>
#include <utility>

namespace qv {

LogEntryList::LogEntryList(ActionLog& log, Announcer& announcer)
    : m_log(log)
    , m_announcer(announcer)
{
}

LogEntry* LogEntryList::at(int row) const
{
    return row >= 0 && row < count() ? m_entries[size_t(row)].get() : nullptr;
}

QList<LogEntry*> LogEntryList::all() const
{
    QList<LogEntry*> entries;
    entries.reserve(count());
    for (auto const& entry : m_entries)
        entries.append(entry.get());
    return entries;
}

void LogEntryList::append(OwnedEntries entries)
{
    // A step can be copied, what it owns cannot.
    auto const shared = std::make_shared<OwnedEntries>(std::move(entries));
    m_announcer.add([this, shared] {
        for (auto& entry : *shared)
            appendOne(std::move(entry));
    });
}

void LogEntryList::appendOne(std::unique_ptr<LogEntry> entry)
{
    int const row = count();
    emit m_log.addingLogEntries(row, row);
    m_entries.push_back(std::move(entry));
    emit m_log.logEntriesAdded(row, row);
}

void LogEntryList::clear()
{
    m_announcer.add([this] {
        if (count() > 0)
            removeRows(0, count() - 1);
    });
}

void LogEntryList::remove(QList<LogEntry*> const& entries)
{
    m_announcer.add([this, entries] { removeNow(entries); });
}

/// From the end, one run of neighbours after the other.
void LogEntryList::removeNow(QList<LogEntry*> const& entries)
{
    QSet<LogEntry*> const wanted(entries.begin(), entries.end());
    for (int last = count() - 1; last >= 0; --last) {
        if (!wanted.contains(at(last)))
            continue;
        int first = last;
        while (first > 0 && wanted.contains(at(first - 1)))
            --first;
        removeRows(first, last);
        last = first;
    }
}

void LogEntryList::removeRows(int first, int last)
{
    emit m_log.removingLogEntries(first, last);
    m_entries.erase(std::next(m_entries.begin(), first), std::next(m_entries.begin(), last + 1));
    emit m_log.logEntriesRemoved(first, last);
}

} // namespace qv
