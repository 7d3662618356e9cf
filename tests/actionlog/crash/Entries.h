// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <qvbase/crash/Folder.h>

#include <QMap>
#include <QString>
#include <QVector>

namespace qv {
class ActionLog;
}

/// Entries whose text follows from who logged them and which one they are, and what a reader finds of them.
namespace entries {

/// Where the log of this process makes its default folder, and not among the user's own files.
void keepStateIn(QString const& folder);

/// The log of this process, in that file, kept as @p mode says, split by size where @p splitSize is above 0.
qv::ActionLog& openLog(QString const& path, crash::Mode mode, int splitSize);

/// The text of an entry: some are short, some need more than a page.
QString text(int writer, int index);
void log(int writer, int index);

/// What the log files of a folder hold, in all of them together.
struct Found {
    /// Of each writer, in the order of the files (by their first entry) and within them.
    QMap<int, QVector<int>> indices;
    int files = 0;
    /// The first thing that should not be; empty where all is well.
    QString fault;
};

/// Reads the files of a folder whose names end in ".qvl".
Found findAll(crash::Folder const& folder, crash::Mode mode);

/// first, first + 1, … count of them.
QVector<int> run(int first, int count);

/// Empty where the files of a folder hold the entries of one writer, each once and in order: at least the first
/// @p certain, and at most one more.
QString faultOf(crash::Folder const& folder, crash::Mode mode, int certain, int* count = nullptr);

} // namespace entries
