// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/properties/PropertySet.h>

#include <QMap>
#include <QStringList>
#include <QVector>

#include <functional>

class RecordingMaker;

/// Told after each recording how many are done.
using Progress = std::function<void(int done)>;

/// The files beneath a folder as recordings, kept in memory. Symbolic links are not followed.
class Catalogue {
public:
    /// Throws qv::ExceptionQt where @p folder is none or cannot be read.
    explicit Catalogue(QString const& folder);

    /// Walks the folder, in the order of the names: the same files always give the same rows.
    void index(Progress const& progress);

    QString const& folder() const { return m_folder; }
    QVector<qvgen::PropertySet> const& recordings() const { return m_recordings; }

    /// What the walk met.
    int folders() const { return m_folders; }
    int symbolicLinks() const { return m_symbolicLinks; }
    int specialFiles() const { return m_specialFiles; }
    int unreadableFolders() const { return m_unreadableFolders; }
    /// How many recordings have a value that its validator refuses, by the name of the property.
    QMap<QString, int> const& refusals() const { return m_refusals; }
    int refusedRecordings() const { return m_refusedRecordings; }

private:
    /// Takes in the files of one folder; returns its subfolders, the first one last.
    QStringList indexFolder(QString const& path, RecordingMaker& maker, Progress const& progress);
    void countRefusals(qvgen::PropertySet const& recording);

    QString m_folder;
    QVector<qvgen::PropertySet> m_recordings;
    int m_folders = 0;
    int m_symbolicLinks = 0;
    int m_specialFiles = 0;
    int m_unreadableFolders = 0;
    QMap<QString, int> m_refusals;
    int m_refusedRecordings = 0;
};
