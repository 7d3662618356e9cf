// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <QPair>
#include <QString>
#include <QVector>

#include <sys/stat.h>

/// A file as the system knows it, whatever its name is.
struct FileState {
    dev_t device = 0;
    ino_t number = 0; ///< 0 where there is no such file.
    off_t size = 0;
    timespec modified = {};

    static FileState of(QString const& path);
    bool exists() const { return number != 0; }
    /// What tells it from other files.
    QPair<quint64, quint64> identity() const { return {device, number}; }
    bool isSameFile(FileState const& other) const { return identity() == other.identity(); }
    bool isUnchanged(FileState const& other) const;
    bool isModifiedBefore(FileState const& other) const;
};

struct FolderFile {
    QString path;
    FileState state;
};

/// The log files "*.qvl" in the folder of @p path, in no order.
QVector<FolderFile> logFilesBeside(QString const& path);
