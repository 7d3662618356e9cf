// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/Export.h>
#include <GenericUtilities/actionlog/LogFileHeader.h>

#include <QByteArray>

namespace qv {
class LogEntry;
}

/// Pieces of a log file made in memory, each to be written at once: one that is cut by a crash is then the last one.
namespace qv::xml {

/// The bytes with which a file begins; @p header.version is not looked at.
GENERICUTILITIES_EXPORT QByteArray toXml(LogFileHeader const& header);
/// The element of an entry. Empty with *@p ok false where it would exceed what readers accept (XmlScanner).
GENERICUTILITIES_EXPORT QByteArray toXml(LogEntry const& entry, bool* ok = nullptr);

} // namespace qv::xml
