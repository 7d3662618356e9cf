// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include "EntryReader.h"
#include "FollowedFolder.h"
#include "Options.h"

#include <QSet>

#include <functional>
#include <memory>

/// Reads what is added to a log: to its file; to the fresh one at the same path and those in between, after splits; to
/// the file in the same folder whose entry tells that the log was switched to it.
class Follower {
public:
    using Take = std::function<void(LoggedEntry const&)>;

    /// Entries go to @p take. Throws what EntryReader throws.
    Follower(Options const& options, Access& access, Take const& take);

    /// Passes over the entries that are there.
    void skip();
    /// Hands over what has come since the last call, to be called some times a second. Tells on standard error where it
    /// goes on in another file, and what cannot be read. Throws what the taker of entries throws.
    void advance();

private:
    using Reader = std::unique_ptr<EntryReader>;

    Reader open(QString const& path) const;
    void reopen(QString const& name, FileState const& now);
    void readOn(QString const& name, FileState const& now);
    void readNew();
    void finish();
    void goOnInFreshFile(FileState const& fresh);
    void readFilesBefore(QVector<FolderFile> const& files, EntryReader const& freshReader, FileState const& fresh);
    bool isOfThisLog(QString const& path, EntryReader const& freshReader) const;
    void noteFolder();
    void goOnWhereSwitched();
    qint64 switchIn(QString const& path) const;
    bool isSwitchTo(QString const& path, LoggedEntry const& entry) const;
    template <typename Read> bool succeeds(QString const& name, Read const& read);

    Access& m_access;
    QLocale const* m_logLocale; ///< Of the options.
    Take m_take;
    QString m_path;
    Reader m_reader; ///< Null where the file cannot be read so far.
    FileState m_state; ///< Of the file that is read, when it was last looked at.
    qint64 m_done = 0; ///< How many of its entries have been handed over.
    QDateTime m_lastTime; ///< Of the last entry.
    FileState m_folder;
    QSet<QPair<quint64, quint64>>
        m_known; ///< Log files that are read, or were in the folder before the present one was moved aside.
    int m_patience = 0; ///< Calls of advance() before a switch is looked for again.
    QString m_told; ///< The last failure, so that it is told once.
};
