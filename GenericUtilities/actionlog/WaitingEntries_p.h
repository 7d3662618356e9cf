// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <QByteArray>

#include <sys/types.h>
#include <unistd.h>

namespace qv {

/// Entries that were taken but not written, as their bytes in the file. It is up to the process that took them to write
/// them: one that it forks has none.
class WaitingEntries {
public:
    QByteArray bytes() const { return m_process == ::getpid() ? m_bytes : QByteArray(); }
    bool isEmpty() const { return bytes().isEmpty(); }
    int size() const { return bytes().size(); }

    void add(QByteArray const& entry)
    {
        if (isEmpty())
            m_bytes.clear();
        m_bytes += entry;
        m_process = ::getpid();
    }
    void clear() { m_bytes.clear(); }

private:
    QByteArray m_bytes;
    pid_t m_process = 0; // that took the last one
};

} // namespace qv
