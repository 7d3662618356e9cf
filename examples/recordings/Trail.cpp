// SPDX-License-Identifier: LGPL-2.1-or-later
#include "Trail.h"

#include "TrailEntries.h"

#include <GenericUtilities/actionlog/ActionLog.h>

#include <QCoreApplication>

#include <memory>
#include <pwd.h>
#include <unistd.h>
#include <utility>

using qv::ActionLog;

namespace {

/// The log calls the user by the variable that desktops of another system set.
void nameUser()
{
    passwd const* const account = getpwuid(getuid());
    if (account && !qEnvironmentVariableIsSet("USERNAME"))
        qputenv("USERNAME", account->pw_name);
}

/// Tells of the first failure only: what fails once fails for every entry.
void listen(ActionLog& log, Trail::Complain complain)
{
    auto const tell = [complain, isTold = std::make_shared<bool>(false)](QString const& message) {
        if (!std::exchange(*isTold, true))
            complain(message);
    };
    QObject::connect(&log, &ActionLog::errorFile,
        [tell](QString const& file, int) { tell(QStringLiteral("the action log '%1' cannot be used").arg(file)); });
    QObject::connect(&log, &ActionLog::errorXml, [tell](QString const& error, int line, int column) {
        tell(QStringLiteral("the action log is damaged in line %1, column %2: %3").arg(line).arg(column).arg(error));
    });
}

} // namespace

Trail::Trail(Options const& options, Complain complain)
{
    nameUser();
    ActionLog& log = *ActionLog::getInstance();
    log.setApplicationVersion(QCoreApplication::applicationVersion());
    if (!options.log.isEmpty())
        log.setFileInfo(QFileInfo(options.log));
    listen(log, complain);
    StartLogEntry entry;
    entry.folder.setValue(options.folder);
    entry.version.setValue(QCoreApplication::applicationVersion());
    log.log(entry);
}

Trail::~Trail()
{
    QuitLogEntry entry;
    entry.exitCode.setValue(m_exitCode);
    ActionLog::getInstance()->log(entry);
    ActionLog::deleteActionLog();
}

void Trail::searched(Search const& search, Answer const& answer)
{
    SearchLogEntry entry;
    if (!search.findsAll())
        entry.condition.setValue(search.condition.toString(qvgen::Expression::StyleCode).trimmed());
    entry.rows.setValue(answer.inMemory.size());
    ActionLog::getInstance()->log(entry);
}
