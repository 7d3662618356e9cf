// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/Export.h>

#include <QtGlobal>

QT_BEGIN_NAMESPACE
class QIODevice;
QT_END_NAMESPACE

namespace qv {

/// How a log file ends, and so where the next entry goes.
struct LogFileEnd {
    enum Kind {
        Empty, ///< no bytes; the file is to be begun
        Open, ///< behind the header or a whole entry: the next entry goes to the end of the file
        Ended, ///< an end tag: the next entry takes its place
        Torn, ///< a crash left half a header, half an entry, or bytes that no file holds
        Damaged, ///< no log file, or not well-formed before the end
        Unreadable ///< the device failed, or gave fewer bytes than its size() says
    };
    Kind kind = Empty;
    /// Byte from the start of the plain file behind which nothing whole stands: what follows is to be cut (Ended), kept
    /// aside and cut (Torn; at 0 the file is then to be begun), the piece in which the fault is (Damaged), or could not
    /// be read (Unreadable).
    qint64 offset = 0;

    bool operator==(LogFileEnd const& other) const { return kind == other.kind && offset == other.offset; }
};

/// Looks at the last bytes of @p device, an open random-access one, which it leaves anywhere. Only where these do not
/// show a whole entry, and behind it another one or the end tag, it scans the file. So damage before these may go
/// unseen.
GENERICUTILITIES_EXPORT LogFileEnd findLogFileEnd(QIODevice& device);

/// The same from the first byte to the last, also for sequential devices.
GENERICUTILITIES_EXPORT LogFileEnd scanLogFileEnd(QIODevice& device);

} // namespace qv
