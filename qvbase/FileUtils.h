// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <qvbase/Export.h>

#include <QString>

namespace qv {

/// Where files of a user belong, by the XDG base directory rules. Every call looks at the
/// environment anew. The paths are absolute and clean (no "..", no slash at the end).
class QVBASE_EXPORT FileUtils {
public:
    FileUtils() = delete;

    /// The folder for what programs keep of their state: `$XDG_STATE_HOME`, or `.local/state` in the home folder where
    /// that is empty or not absolute. It is named, not created.
    static QString userDataDir();
    /// The log folder of this application: the one named after it in userDataDir(). Missing folders on the way are
    /// created, accessible to their owner alone (0700); those that exist keep their permissions. Where one cannot be
    /// created the path is returned all the same, and opening a file there tells why.
    ///
    /// The name is QCoreApplication::applicationName(), "application" where that is empty, "." or ".."; a slash or a
    /// NUL in it becomes "_", and what exceeds the 255 bytes of a file name is cut off.
    static QString userLogDir();
};

} // namespace qv
