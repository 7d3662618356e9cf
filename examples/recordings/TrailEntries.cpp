// SPDX-License-Identifier: LGPL-2.1-or-later
#include "TrailEntries.h"

#include <GenericUtilities/actionlog/LogEntryFactory.h>

namespace {

char const* const startTitle = "Start";
char const* const searchTitle = "Search";
char const* const quitTitle = "Quit";

qv::LogEntryFactoryRegistrar const registrars[] = {
    {"RStr", &StartLogEntry::create, startTitle},
    {"RSrc", &SearchLogEntry::create, searchTitle},
    {"RQit", &QuitLogEntry::create, quitTitle},
};

} // namespace

StartLogEntry::StartLogEntry()
    : folder("fold", QStringLiteral("folder"))
    , version("vers", QStringLiteral("version"))
{
    append(&folder);
    append(&version);
}

qv::LogEntry* StartLogEntry::create()
{
    return new StartLogEntry;
}

qv::FourChars StartLogEntry::id() const
{
    return "RStr";
}

qv::ELogCategory StartLogEntry::category() const
{
    return qv::LogCategorySystem;
}

QString StartLogEntry::descriptionText() const
{
    return QStringLiteral("Catalogued '%1' with version %2.");
}

QString StartLogEntry::action() const
{
    return QString::fromLatin1(startTitle);
}

SearchLogEntry::SearchLogEntry()
    : condition("cond", QStringLiteral("condition"))
    , rows("rows", QStringLiteral("rows"))
{
    append(&condition);
    append(&rows);
}

qv::LogEntry* SearchLogEntry::create()
{
    return new SearchLogEntry;
}

qv::FourChars SearchLogEntry::id() const
{
    return "RSrc";
}

qv::ELogCategory SearchLogEntry::category() const
{
    return qv::LogCategoryEventSearch;
}

QString SearchLogEntry::descriptionText() const
{
    return QString(); // Listed: a sentence would fill marks such as "%2" that stand in the condition.
}

QString SearchLogEntry::action() const
{
    return QString::fromLatin1(searchTitle);
}

QuitLogEntry::QuitLogEntry()
    : exitCode("exit", QStringLiteral("exitCode"))
{
    append(&exitCode);
}

qv::LogEntry* QuitLogEntry::create()
{
    return new QuitLogEntry;
}

qv::FourChars QuitLogEntry::id() const
{
    return "RQit";
}

qv::ELogCategory QuitLogEntry::category() const
{
    return qv::LogCategoryQuit;
}

QString QuitLogEntry::descriptionText() const
{
    return QStringLiteral("Exit status %1.");
}

QString QuitLogEntry::action() const
{
    return QString::fromLatin1(quitTitle);
}
