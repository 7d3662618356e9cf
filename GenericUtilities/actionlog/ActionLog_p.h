// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/actionlog/ActionLog.h>
#include <GenericUtilities/actionlog/Announcer_p.h>
#include <GenericUtilities/actionlog/LogEntryList_p.h>
#include <GenericUtilities/actionlog/LogFile_p.h>
#include <qvbase/FileUserLogon.h>
#include <qvbase/Mutex.h>

#include <memory>
#include <optional>
#include <type_traits>

namespace qv {

/// What the log does under its mutex.
class ActionLog::Private {
public:
    explicit Private(ActionLog& log);

    /// Does @p work under the mutex, then announces what came of it. The log lives until this is done.
    template <typename Work> auto call(Work work);

    void log(LogEntry const& entry);
    void readLog();
    /// @p damage is set where the file is damaged.
    bool readEntries(QIODevice::OpenMode mode, std::optional<ActionLogXmlException>& damage);
    void deleteEntries(QList<LogEntry*>& entries);
    bool backupEntries(QList<LogEntry*>& entries, QString const& fileName);
    void switchFileHandle(QString const& newFile);
    void useFile(QFileInfo const& target);
    void useCredentials(QString const& fileUser, QString const& filePassword);
    void useVersions();
    QString userName() const;

    ActionLog& q;
    std::weak_ptr<ActionLog> self;
    Mutex mutex;
    Announcer announcer;
    LogEntryList list;
    LogFile file;
    QFileInfo fileInfo;
    QString applicationVersion;
    QString languageVersion;
    QString user;
    QString password;
    ESplitPolicy splitPolicy = SplitNone;
    int splitSize = 0;
    EDurability durability = DurabilityFlush;
    bool isActive = defaultActive();

private:
    bool tryToLog(LogEntry const& entry);
    void write(LogEntry const& entry);
    void splitIfDue();
    void load();
    /// Lists what the file holds, up to its damage, which it returns. Leaves a sound file open to be extended.
    std::optional<ActionLogXmlException> read(bool isToBeExtended);
    void logOn();
    bool moveBadAside(char const* suffix, bool isRefusalTold);
    void tell(ActionLogFileException const& failure);
    void tell(ActionLogXmlException const& failure);

    std::unique_ptr<FileUserLogon> m_logon;
    bool m_isLoaded = false;
};

template <typename Work> auto ActionLog::Private::call(Work work)
{
    std::shared_ptr<ActionLog> const log = self.lock();
    MutexLocker const locker(mutex);
    if constexpr (std::is_void_v<decltype(work())>) {
        work();
        announcer.run();
    } else {
        auto const result = work();
        announcer.run();
        return result;
    }
}

} // namespace qv
