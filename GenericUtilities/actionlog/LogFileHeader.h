// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/Export.h>

#include <QDateTime>
#include <QString>

namespace qv {

/// What the start of a log file tells of the whole.
struct GENERICUTILITIES_EXPORT LogFileHeader {
    /// "v0.1", which is written and the only one that is read.
    static QString currentVersion();
    bool isCurrentVersion() const { return version == currentVersion(); }

    QString version = currentVersion();
    QString logFile; ///< absolute path under which the file was begun
    QDateTime date; ///< when it was begun, local time in whole seconds; null where the file does not say
    QString applicationVersion; ///< empty where the file does not say
    QString languageVersion; ///< empty where the file does not say
};

} // namespace qv
