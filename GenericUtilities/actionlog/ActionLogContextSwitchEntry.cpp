// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/actionlog/ActionLogContextSwitchEntry.h>

#include <GenericUtilities/actionlog/Translation_p.h>

namespace qv {

char const* const ActionLogContextSwitchEntry::sAction = QT_TRANSLATE_NOOP("ActionLog", "Switched log");
char const* const ActionLogContextSwitchEntry::sDescriptionText
    = QT_TRANSLATE_NOOP("ActionLog", "Switched logging from '%1' to '%2'.");
LogEntryFactoryRegistrar const ActionLogContextSwitchEntry::sRegistrar(
    "ALog", &ActionLogContextSwitchEntry::create, sAction);

ActionLogContextSwitchEntry::ActionLogContextSwitchEntry()
    : oldFile("filO", QStringLiteral("oldFile"))
    , newFile("filN", QStringLiteral("newFile"))
{
    append(&oldFile);
    append(&newFile);
}

LogEntry* ActionLogContextSwitchEntry::create()
{
    return new ActionLogContextSwitchEntry;
}

FourChars ActionLogContextSwitchEntry::id() const
{
    return "ALog";
}

ELogCategory ActionLogContextSwitchEntry::category() const
{
    return LogCategoryActionLogging;
}

QString ActionLogContextSwitchEntry::descriptionText() const
{
    return translated(sDescriptionText);
}

QString ActionLogContextSwitchEntry::action() const
{
    return translated(sAction);
}

} // namespace qv
