// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <QByteArray>

namespace qv::encrypted {

/// Appends the bytes of @p from between two offsets to @p to. Its reason for failing is in errno.
bool copyBytes(int from, qint64 begin, qint64 end, int to);

/// Copies the bytes of @p fd from @p offset to its end into a file of their own beside @p path, brings that to the disk
/// and cuts them off. Throws Failure and changes nothing where that cannot be.
void setTornBytesAside(int fd, QByteArray const& path, qint64 offset);

} // namespace qv::encrypted
