// SPDX-License-Identifier: LGPL-2.1-or-later
#include "Follower.h"

#include "Failures.h"
#include "Sources.h"

#include <QFileInfo>

namespace {

constexpr int SearchPause = 10; // Searching reads whole files.

QString fileName(QString const& path)
{
    return QFileInfo(path).fileName();
}

QString value(LoggedEntry const& entry, char const* name)
{
    for (auto const& value : entry.values) {
        if (value.first == QLatin1String(name))
            return value.second;
    }
    return {};
}

void tell(QString const& path)
{
    printError(QStringLiteral("going on in '%1'").arg(path));
}

} // namespace

Follower::Follower(Options const& options, Access& access, Take const& take)
    : m_access(access)
    , m_logLocale(options.logLocale ? &*options.logLocale : nullptr)
    , m_take(take)
    , m_path(options.sources.constFirst())
    , m_reader(open(m_path))
    , m_state(FileState::of(m_path))
{
    noteFolder();
}

void Follower::skip()
{
    for (; m_reader && m_reader->next(); ++m_done) { }
}

void Follower::advance()
{
    FileState const now = FileState::of(m_path);
    if (!now.isSameFile(m_state)) {
        finish();
        if (now.exists())
            goOnInFreshFile(now);
        return;
    }
    readOn(m_path, now);
    noteFolder();
    if (m_reader && m_reader->hasEnded() && --m_patience < 0)
        goOnWhereSwitched();
}

/// Null where the file has no whole header so far.
Follower::Reader Follower::open(QString const& path) const
{
    auto reader = std::make_unique<EntryReader>(path, m_access, m_logLocale);
    return reader->header() ? std::move(reader) : nullptr;
}

/// Whether no file was at fault; else what was is told.
template <typename Read> bool Follower::succeeds(QString const& name, Read const& read)
{
    QString failure;
    try {
        read();
        return true;
    } catch (OutputException const&) {
        throw;
    } catch (qv::ExceptionQt const& exception) {
        failure = QStringLiteral("'%1': %2").arg(name, exception.message());
    }
    if (failure != m_told)
        printError(failure);
    m_told = failure;
    return false;
}

/// Leaves the reader null where another file has taken the name meanwhile: the next look finds this one by its new
/// name.
void Follower::reopen(QString const& name, FileState const& now)
{
    m_reader.reset();
    Reader reader = open(name);
    if (!FileState::of(name).isSameFile(now)) {
        m_state.modified = {};
        return;
    }
    for (qint64 passed = 0; reader && passed < m_done && reader->next(); ++passed) { }
    m_reader = std::move(reader);
}

void Follower::readNew()
{
    while (m_reader) {
        auto const entry = m_reader->next();
        if (!entry)
            break;
        ++m_done;
        m_lastTime = entry->time;
        m_take(*entry);
    }
}

/// @p name is that of the file at present, which need not be the path that is followed.
void Follower::readOn(QString const& name, FileState const& now)
{
    bool const hasChanged = !now.isUnchanged(m_state);
    bool const isPast = !m_reader || m_reader->hasEnded() || now.size < m_state.size;
    m_state = now;
    if (hasChanged && isPast && !succeeds(name, [&] { reopen(name, now); }))
        return;
    try {
        readNew();
    } catch (DamageException const&) {
        // Half an entry that a crash has left may have been cut off where the reader stood.
        auto const readAgain = [&] {
            reopen(name, now);
            readNew();
        };
        if (!succeeds(name, readAgain))
            m_reader.reset();
    }
}

/// The file that was read has another name now, or none.
void Follower::finish()
{
    for (FolderFile const& file : logFilesBeside(m_path)) {
        if (file.state.isSameFile(m_state))
            return readOn(file.path, file.state);
    }
    succeeds(m_path, [&] { readNew(); });
}

void Follower::goOnInFreshFile(FileState const& fresh)
{
    Reader reader;
    bool const isOpen = succeeds(m_path, [&] { reader = open(m_path); });
    QVector<FolderFile> const files = logFilesBeside(m_path);
    // As long as the path still names the fresh file, the others are older.
    if (!isOpen || !reader || !FileState::of(m_path).isSameFile(fresh))
        return;
    readFilesBefore(files, *reader, fresh);
    m_reader = std::move(reader);
    m_state = fresh;
    m_done = 0;
    m_folder = {};
    m_known.insert(fresh.identity());
    tell(m_path);
    readOn(m_path, fresh);
    noteFolder();
}

/// Those that were begun and moved aside between two looks at the path.
void Follower::readFilesBefore(QVector<FolderFile> const& files, EntryReader const& freshReader, FileState const& fresh)
{
    QStringList between;
    for (FolderFile const& file : files) {
        bool const isNew = !m_known.contains(file.state.identity()) && !file.state.isSameFile(m_state)
            && !file.state.isSameFile(fresh);
        if (isNew && isOfThisLog(file.path, freshReader))
            between += file.path;
        m_known.insert(file.state.identity());
    }
    for (QString const& path : between.isEmpty() ? QStringList() : sourceFiles(between, m_access)) {
        tell(path);
        succeeds(path, [&] {
            EntryReader reader(path, m_access, m_logLocale);
            while (auto const entry = reader.next())
                m_take(*entry);
        });
    }
}

bool Follower::isOfThisLog(QString const& path, EntryReader const& freshReader) const
{
    try {
        Reader const reader = open(path);
        return reader && fileName(reader->header()->logFile) == fileName(freshReader.header()->logFile)
            && reader->header()->date <= freshReader.header()->date;
    } catch (qv::ExceptionQt const&) {
        return false;
    }
}

/// As long as the path names the file that is read, whatever else is there does not belong between it and the next.
void Follower::noteFolder()
{
    FileState const folder = FileState::of(QFileInfo(m_path).path());
    if (folder.isUnchanged(m_folder))
        return;
    QVector<FolderFile> const files = logFilesBeside(m_path);
    if (!FileState::of(m_path).isSameFile(m_state))
        return;
    m_known.clear();
    for (FolderFile const& file : files)
        m_known.insert(file.state.identity());
    m_folder = folder;
}

void Follower::goOnWhereSwitched()
{
    m_patience = SearchPause;
    for (FolderFile const& file : logFilesBeside(m_path)) {
        if (file.state.isSameFile(m_state) || file.state.isModifiedBefore(m_state))
            continue;
        qint64 const place = switchIn(file.path);
        if (place < 0)
            continue;
        m_path = file.path;
        m_state = file.state;
        m_done = place;
        m_folder = {};
        tell(m_path);
        if (succeeds(m_path, [&] { reopen(m_path, file.state); }))
            readOn(m_path, file.state);
        return noteFolder();
    }
}

/// The number of entries before the last one that tells of a switch from the present file to this one; -1 for none.
qint64 Follower::switchIn(QString const& path) const
{
    qint64 place = -1;
    try {
        EntryReader reader(path, m_access, m_logLocale);
        while (auto const entry = reader.next()) {
            if (isSwitchTo(path, *entry))
                place = reader.count() - 1;
        }
    } catch (qv::ExceptionQt const&) {
        // What it held so far counts.
    }
    return place;
}

bool Follower::isSwitchTo(QString const& path, LoggedEntry const& entry) const
{
    // By their names alone: the folder may stand elsewhere now. An earlier switch of the same files does not count.
    return entry.id == QLatin1String("ALog") && fileName(value(entry, "filO")) == fileName(m_path)
        && fileName(value(entry, "filN")) == fileName(path)
        && (!m_lastTime.isValid() || !entry.time.isValid() || entry.lastMoment() >= m_lastTime);
}
