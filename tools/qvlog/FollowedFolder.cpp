// SPDX-License-Identifier: LGPL-2.1-or-later
#include "FollowedFolder.h"

#include <QDir>
#include <QFile>

#include <tuple>

FileState FileState::of(QString const& path)
{
    struct stat found = {};
    if (stat(QFile::encodeName(path).constData(), &found) != 0)
        return {};
    return {found.st_dev, found.st_ino, found.st_size, found.st_mtim};
}

bool FileState::isUnchanged(FileState const& other) const
{
    return isSameFile(other) && size == other.size && modified.tv_sec == other.modified.tv_sec
        && modified.tv_nsec == other.modified.tv_nsec;
}

bool FileState::isModifiedBefore(FileState const& other) const
{
    return std::tie(modified.tv_sec, modified.tv_nsec) < std::tie(other.modified.tv_sec, other.modified.tv_nsec);
}

QVector<FolderFile> logFilesBeside(QString const& path)
{
    QDir const folder = QFileInfo(path).dir();
    QVector<FolderFile> files;
    for (QString const& name : folder.entryList({QStringLiteral("*.qvl")}, QDir::Files | QDir::Hidden)) {
        FolderFile const file{folder.filePath(name), FileState::of(folder.filePath(name))};
        if (file.state.exists())
            files.append(file);
    }
    return files;
}
