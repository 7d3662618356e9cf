// SPDX-License-Identifier: LGPL-2.1-or-later
#include "Catalogue.h"

#include "Recording.h"

#include <qvbase/Exceptions.h>

#include <QDir>
#include <QFileInfo>
#include <QStringList>

using namespace qvgen;

namespace {

bool canBeListed(QFileInfo const& folder)
{
    return folder.isReadable() && folder.isExecutable();
}

} // namespace

Catalogue::Catalogue(QString const& folder)
    : m_folder(folder)
{
    QFileInfo const info(folder);
    if (!info.exists())
        throw qv::ExceptionQt(QStringLiteral("there is no folder '%1'").arg(folder));
    if (!info.isDir())
        throw qv::ExceptionQt(QStringLiteral("'%1' is not a folder").arg(folder));
    if (!canBeListed(info))
        throw qv::ExceptionQt(QStringLiteral("the folder '%1' cannot be read").arg(folder));
}

void Catalogue::index(Progress const& progress)
{
    RecordingMaker maker(m_folder, QDateTime::currentDateTimeUtc().date());
    QStringList pending{m_folder};
    while (!pending.isEmpty())
        pending += indexFolder(pending.takeLast(), maker, progress);
}

QStringList Catalogue::indexFolder(QString const& path, RecordingMaker& maker, Progress const& progress)
{
    if (!canBeListed(QFileInfo(path))) {
        ++m_unreadableFolders;
        return {};
    }
    ++m_folders;
    PropertySet const folder = maker.folder(path);
    QStringList subfolders;
    auto const entries
        = QDir(path).entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
    for (QFileInfo const& entry : entries) {
        if (entry.isSymLink()) {
            ++m_symbolicLinks;
        } else if (entry.isDir()) {
            subfolders.prepend(entry.filePath());
        } else if (!entry.isFile()) {
            ++m_specialFiles;
        } else {
            m_recordings.append(maker.recording(folder, entry));
            countRefusals(m_recordings.constLast());
            progress(m_recordings.size());
        }
    }
    return subfolders;
}

void Catalogue::countRefusals(PropertySet const& recording)
{
    bool refused = false;
    for (auto const& property : recording) {
        if (property->isValid())
            continue;
        ++m_refusals[property->name()];
        refused = true;
    }
    m_refusedRecordings += refused;
}
