// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <QtGlobal>

namespace qv {

/// CRC-32C (RFC 3720, appendix B.4), by the processor's instruction where it has one.
quint32 crc32c(uchar const* bytes, qint64 size);
/// The same on any processor.
quint32 crc32cByTables(uchar const* bytes, qint64 size);

} // namespace qv
