// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/actionlog/ActionLog_p.h>

#include <qvbase/FileUtils.h>

#include <atomic>
#include <mutex>

namespace qv {

namespace {

    /// Of the instance. Neither is ever destroyed: a log that is still there when the process ends is left as it is.
    struct Global {
        std::mutex mutex;
        std::shared_ptr<ActionLog> log;
    };

    Global& global()
    {
        static auto* const global = new Global;
        return *global;
    }

    std::atomic<bool> isActiveByDefault{true};

} // namespace

ActionLog::ActionLog()
    : m_d(std::make_unique<Private>(*this))
{
}

ActionLog::~ActionLog() = default;

ActionLog* ActionLog::getInstance()
{
    std::lock_guard const guard(global().mutex);
    auto& log = global().log;
    if (!log) {
        log = std::shared_ptr<ActionLog>(new ActionLog, [](ActionLog* ended) { delete ended; });
        log->m_d->self = log;
    }
    return log.get();
}

void ActionLog::deleteActionLog()
{
    std::shared_ptr<ActionLog> log;
    {
        std::lock_guard const guard(global().mutex);
        log.swap(global().log);
    }
    if (log)
        log->m_d->call([&log] { log->m_d->file.leave(); });
}

QFileInfo ActionLog::defaultFileInfo()
{
    return QFileInfo(FileUtils::userLogDir() + QStringLiteral("/ActionLog.qvl"));
}

bool ActionLog::defaultActive()
{
    return isActiveByDefault;
}

void ActionLog::setDefaultActive(bool active)
{
    isActiveByDefault = active;
}

void ActionLog::log(LogEntry const& entry)
{
    m_d->call([&] {
        if (m_d->isActive)
            m_d->log(entry);
    });
}

bool ActionLog::isActive() const
{
    MutexLocker const locker(m_d->mutex);
    return m_d->isActive;
}

void ActionLog::activate()
{
    MutexLocker const locker(m_d->mutex);
    m_d->isActive = true;
}

void ActionLog::readLog()
{
    m_d->call([this] { m_d->readLog(); });
}

bool ActionLog::readEntries(QIODevice::OpenMode mode)
{
    std::optional<ActionLogXmlException> damage;
    bool const isOpen = m_d->call([&] { return m_d->readEntries(mode, damage); });
    if (damage)
        throw ActionLogXmlException(*damage);
    return isOpen;
}

int ActionLog::entryCount() const
{
    MutexLocker const locker(m_d->mutex);
    return m_d->list.count();
}

LogEntry* ActionLog::entry(int row) const
{
    MutexLocker const locker(m_d->mutex);
    return m_d->list.at(row);
}

QList<LogEntry*> ActionLog::entries() const
{
    MutexLocker const locker(m_d->mutex);
    return m_d->list.all();
}

QList<QSharedPointer<LogEntry const>> ActionLog::snapshot() const
{
    MutexLocker const locker(m_d->mutex);
    QList<QSharedPointer<LogEntry const>> copies;
    for (LogEntry const* const entry : m_d->list.all())
        copies.append(QSharedPointer<LogEntry const>(entry->clone()));
    return copies;
}

void ActionLog::removeAllLogEntries()
{
    m_d->call([this] { m_d->list.clear(); });
}

void ActionLog::deleteEntries(QList<LogEntry*>& entries)
{
    m_d->call([&] { m_d->deleteEntries(entries); });
}

bool ActionLog::backupEntries(QList<LogEntry*>& entries, QString const& fileName)
{
    return m_d->call([&] { return m_d->backupEntries(entries, fileName); });
}

void ActionLog::switchFileHandle(QString const& newFile)
{
    m_d->call([&] { m_d->switchFileHandle(newFile); });
}

QFileInfo ActionLog::fileInfo() const
{
    MutexLocker const locker(m_d->mutex);
    return m_d->fileInfo;
}

void ActionLog::setFileInfo(QFileInfo const& fileInfo)
{
    m_d->call([&] { m_d->useFile(fileInfo); });
}

void ActionLog::setFileUserPassword(QString const& user, QString const& password)
{
    m_d->call([&] { m_d->useCredentials(user, password); });
}

QString ActionLog::userName() const
{
    MutexLocker const locker(m_d->mutex);
    return m_d->userName();
}

void ActionLog::setApplicationVersion(QString const& version)
{
    MutexLocker const locker(m_d->mutex);
    m_d->applicationVersion = version;
    m_d->useVersions();
}

void ActionLog::setLanguageVersion(QString const& version)
{
    MutexLocker const locker(m_d->mutex);
    m_d->languageVersion = version;
    m_d->useVersions();
}

ESplitPolicy ActionLog::splitPolicy() const
{
    MutexLocker const locker(m_d->mutex);
    return m_d->splitPolicy;
}

int ActionLog::splitSize() const
{
    MutexLocker const locker(m_d->mutex);
    return m_d->splitSize;
}

void ActionLog::setSplitPolicy(ESplitPolicy policy, int size)
{
    MutexLocker const locker(m_d->mutex);
    m_d->splitPolicy = policy;
    m_d->splitSize = size;
}

EDurability ActionLog::durability() const
{
    MutexLocker const locker(m_d->mutex);
    return m_d->durability;
}

void ActionLog::setDurability(EDurability durability)
{
    MutexLocker const locker(m_d->mutex);
    m_d->durability = durability;
    m_d->file.setDurability(durability);
}

void ActionLog::incompatibleHeader() { }

} // namespace qv
