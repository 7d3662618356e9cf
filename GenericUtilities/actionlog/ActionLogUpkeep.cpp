// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/actionlog/ActionLog_p.h>

#include <GenericUtilities/actionlog/LogDocument_p.h>

#include <QSet>

#include <algorithm>
#include <utility>

namespace qv {

namespace {

    QString systemUserName()
    {
        constexpr char const* variable = "USERNAME";
        return qEnvironmentVariableIsSet(variable) ? qEnvironmentVariable(variable) + QStringLiteral(" (System)")
                                                   : QString();
    }

    /// Takes those in the list out of @p entries, in the order of the list.
    QList<LogEntry*> takeListed(QList<LogEntry*>& entries, LogEntryList const& list)
    {
        QSet<LogEntry*> const wanted(entries.begin(), entries.end());
        QList<LogEntry*> listed;
        for (LogEntry* const entry : list.all()) {
            if (wanted.contains(entry))
                listed.append(entry);
        }
        QSet<LogEntry*> const found(listed.begin(), listed.end());
        entries.erase(std::remove_if(entries.begin(), entries.end(), [&](LogEntry* e) { return found.contains(e); }),
            entries.end());
        return listed;
    }

} // namespace

std::optional<ActionLogXmlException> ActionLog::Private::read(bool isToBeExtended)
{
    std::optional<ActionLogXmlException> damage;
    try {
        if (isToBeExtended)
            LogFileTurn const turn(file);
        file.flush();
    } catch (ActionLogXmlException const& failure) {
        // What waits is written to the fresh file that takes the place of the damaged one.
        damage = failure;
    }
    LogFileContent content = file.read();
    if (auto const found = file.damageOf(content))
        damage = found;
    list.clear();
    list.append(std::move(content.entries));
    // The next entry has a damaged file read again, and moved aside.
    m_isLoaded = !damage;
    return damage;
}

void ActionLog::Private::readLog()
{
    if (!QFileInfo::exists(file.path()))
        return list.clear();
    try {
        if (auto const damage = read(false))
            tell(*damage);
    } catch (ActionLogFileException const& failure) {
        tell(failure);
    }
}

bool ActionLog::Private::readEntries(QIODevice::OpenMode mode, std::optional<ActionLogXmlException>& damage)
{
    if (!(mode & QIODevice::ReadOnly))
        return false;
    try {
        damage = read(mode & QIODevice::WriteOnly);
        return true;
    } catch (ActionLogFileException const&) {
        return false;
    }
}

void ActionLog::Private::deleteEntries(QList<LogEntry*>& entries)
{
    list.remove(takeListed(entries, list));
}

bool ActionLog::Private::backupEntries(QList<LogEntry*>& entries, QString const& fileName)
{
    QList<LogEntry*> others = entries;
    QList<LogEntry*> const listed = takeListed(others, list);
    if (!writeLogDocument(*file.newDevice(fileName), file.newHeader(fileName), listed)) {
        tell(ActionLogFileException({}, fileName, ActionLogFileException::CouldNotOpen));
        return false;
    }
    list.remove(listed);
    entries = others;
    return true;
}

void ActionLog::Private::switchFileHandle(QString const& newFile)
{
    QFileInfo const target(newFile);
    if (newFile.isEmpty() || target.absoluteFilePath() == fileInfo.absoluteFilePath())
        return;
    ActionLogContextSwitchEntry entry;
    entry.oldFile.setValue(fileInfo.filePath());
    entry.newFile.setValue(newFile);
    useFile(target);
    if (isActive)
        log(entry);
    announcer.add([this, newFile] { emit q.switchedFileHandle(newFile); });
}

void ActionLog::Private::useFile(QFileInfo const& target)
{
    if (target.absoluteFilePath() == fileInfo.absoluteFilePath())
        return;
    file.leave();
    list.clear();
    fileInfo = target;
    file.setPath(fileInfo.absoluteFilePath());
}

void ActionLog::Private::useCredentials(QString const& fileUser, QString const& filePassword)
{
    if (fileUser == user && filePassword == password)
        return;
    file.leave();
    m_logon.reset();
    user = fileUser;
    password = filePassword;
    file.setCredentials(user, password);
}

void ActionLog::Private::useVersions()
{
    file.setVersions(applicationVersion, languageVersion);
}

QString ActionLog::Private::userName() const
{
    if (!m_logon)
        return systemUserName();
    bool const isNamed = !m_logon->secondName().isEmpty();
    QString const name
        = isNamed ? QStringLiteral("%1 (%2)").arg(m_logon->firstName(), m_logon->secondName()) : m_logon->firstName();
    return name.isEmpty() ? systemUserName() : name;
}

} // namespace qv
