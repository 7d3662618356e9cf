// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <qvbase/NamedFile_p.h>

namespace qv::encrypted {

/// Throws Failure where the file that @p path names bears the magic of encrypted ones, or the system cannot tell.
void requirePlain(QByteArray const& path);

/// Appending to a plain file that other processes append to as well: under its lock, one call for each write, to the
/// file that the path names. Throws Failure.
class PlainAppend {
public:
    /// @p fd stays the caller's.
    PlainAppend(int fd, QByteArray const& path, bool isReadable);
    void append(char const* text, qint64 size);
    /// Around several appends that nobody else's may come between. Returns where the file ends.
    qint64 lock();
    void unlock() { m_file.unlock(); }
    /// How often another file had taken the path.
    int switches() const { return m_knownSwitches; }

private:
    void noticeSwitch();
    qint64 end() const;

    posix::NamedFile m_file;
    int m_knownSwitches = 0;
};

} // namespace qv::encrypted
