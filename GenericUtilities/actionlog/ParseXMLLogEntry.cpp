// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/actionlog/ParseXMLLogEntry.h>

#include <GenericUtilities/actionlog/Translation_p.h>

char const* const ParseXMLLogEntry::sAction = QT_TRANSLATE_NOOP("ActionLog", "Action log error");
char const* const ParseXMLLogEntry::sDescriptionText
    = QT_TRANSLATE_NOOP("ActionLog", "Error '%1' reading action log '%2' in line '%3', column '%4'.");
qv::LogEntryFactoryRegistrar const ParseXMLLogEntry::sRegistrar("XmlP", &ParseXMLLogEntry::create, sAction);

ParseXMLLogEntry::ParseXMLLogEntry()
    : source("srcP", QStringLiteral("source"))
    , error("errT", QStringLiteral("error"))
    , line("errL", QStringLiteral("line"))
    // Misspelt since the first version; who searches printed logs knows it so.
    , column("errC", QStringLiteral("colunm"))
{
    append(&source);
    append(&error);
    append(&line);
    append(&column);
}

qv::LogEntry* ParseXMLLogEntry::create()
{
    return new ParseXMLLogEntry;
}

qv::FourChars ParseXMLLogEntry::id() const
{
    return "XmlP";
}

qv::ELogCategory ParseXMLLogEntry::category() const
{
    return qv::LogCategoryError;
}

QString ParseXMLLogEntry::descriptionText() const
{
    return qv::translated(sDescriptionText);
}

QString ParseXMLLogEntry::action() const
{
    return qv::translated(sAction);
}
