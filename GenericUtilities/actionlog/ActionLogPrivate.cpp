// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/actionlog/ActionLog_p.h>

#include <GenericUtilities/actionlog/ActionLogTesting_p.h>
#include <GenericUtilities/actionlog/LogXml_p.h>
#include <GenericUtilities/actionlog/SplitPolicy_p.h>
#include <GenericUtilities/actionlog/Translation_p.h>

#include <QCoreApplication>

#include <utility>

namespace qv {

namespace {

    /// Told as damage is, though no file is at fault.
    class EntryRefusal : public ActionLogXmlException {
    public:
        using ActionLogXmlException::ActionLogXmlException;
    };

    EntryRefusal cannotBeReadBack()
    {
        QString const text
            = translated(QT_TRANSLATE_NOOP("ActionLog", "The entry is too large, or of a type that is not registered"));
        return {text, text, 0, 0};
    }

    std::unique_ptr<LogEntry> copyOf(LogEntry const& entry)
    {
        std::unique_ptr<LogEntry> copy(entry.clone());
        if (!copy)
            throw cannotBeReadBack();
        return copy;
    }

    QByteArray elementOf(LogEntry const& entry)
    {
        bool isReadable = false;
        QByteArray element = xml::toXml(entry, &isReadable);
        if (!isReadable)
            throw cannotBeReadBack();
        return element;
    }

} // namespace

ActionLog::Private::Private(ActionLog& log)
    : q(log)
    , list(log, announcer)
    , fileInfo(defaultFileInfo())
{
    file.setPath(fileInfo.absoluteFilePath());
}

void ActionLog::Private::log(LogEntry const& entry)
{
    // Anew where a bad file was moved aside, though not for ever where each is bad.
    constexpr int maxAttempts = 3;
    int attempt = 0;
    while (attempt < maxAttempts && !tryToLog(entry))
        ++attempt;
}

/// False where another attempt may do better.
bool ActionLog::Private::tryToLog(LogEntry const& entry)
{
    try {
        write(entry);
        return true;
    } catch (ActionLogImpersonateException const& failure) {
        announcer.addError([this, failure] { emit q.errorLogon(failure.user(), failure.number()); });
        return true;
    } catch (ActionLogFileException const& failure) {
        tell(failure);
        bool const isHeader = failure.type() == ActionLogFileException::InvalidHeader;
        return !moveBadAside(isHeader ? ".qvl.invalidHeader" : ".qvl.corrupt", !isHeader);
    } catch (EntryRefusal const& failure) {
        tell(failure);
        return true;
    } catch (ActionLogXmlException const& failure) {
        tell(failure);
        return !moveBadAside(".qvl.corrupt", false);
    } catch (std::exception const& failure) {
        // Out of memory, as a rule.
        tell(ActionLogFileException(
            QString::fromUtf8(failure.what()), file.path(), ActionLogFileException::CouldNotOpen));
        return true;
    }
}

void ActionLog::Private::write(LogEntry const& entry)
{
    logOn();
    OwnedEntries copy;
    copy.push_back(copyOf(entry));
    copy.front()->user().setValue(userName());
    QByteArray const element = elementOf(*copy.front());
    m_isLoaded = m_isLoaded && file.isOpen();
    {
        LogFileTurn const turn(file);
        if (turn.isAnother())
            list.clear();
        splitIfDue();
        if (!m_isLoaded)
            load();
        file.append(element);
    }
    list.append(std::move(copy));
}

void ActionLog::Private::logOn()
{
    if (user.isEmpty() || m_logon)
        return;
    QString reason;
    int number = 0;
    m_logon = FileUserLogon::logon(user, password, &reason, &number);
    if (!m_logon)
        throw ActionLogImpersonateException(user, reason, number);
}

void ActionLog::Private::splitIfDue()
{
    // Asking for the moment costs more than all else here.
    if (!file.isBegun() || splitPolicy == SplitNone)
        return;
    QDateTime const now = actionLogTime();
    if (!split::isDue(splitPolicy, splitSize, file.date(), now, file.size()))
        return;
    QString const name = split::movedAsideName(
        splitPolicy, file.date(), now, fileInfo.baseName(), QCoreApplication::applicationName());
    if (!file.moveAside({name, QStringLiteral(".qvl")}))
        return;
    list.clear();
    file.takeTurn();
}

/// What the file holds takes the place of what the list held.
void ActionLog::Private::load()
{
    file.flush();
    LogFileContent content = file.read();
    file.requireSound(content);
    list.clear();
    list.append(std::move(content.entries));
    m_isLoaded = true;
}

/// Whether the entry at hand may go into a fresh file. That the bad one stays in its way is told, unless it was
/// already.
bool ActionLog::Private::moveBadAside(char const* suffix, bool isRefusalTold)
{
    if (!file.isBad())
        return false;
    QString const name = split::momentName(actionLogTime()) + QLatin1Char(' ') + fileInfo.baseName();
    if (file.moveBadAside({name, QLatin1String(suffix)})) {
        list.clear();
        return true;
    }
    if (!isRefusalTold)
        tell(file.couldNotOpen());
    return false;
}

void ActionLog::Private::tell(ActionLogFileException const& failure)
{
    announcer.addError([this, failure] { emit q.errorFile(failure.file(), failure.type()); });
}

void ActionLog::Private::tell(ActionLogXmlException const& failure)
{
    announcer.addError([this, failure] { emit q.errorXml(failure.error(), failure.line(), failure.colum()); });
}

} // namespace qv
