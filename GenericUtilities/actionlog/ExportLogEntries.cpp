// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/actionlog/ExportLogEntries.h>

#include <GenericUtilities/actionlog/Translation_p.h>

namespace {

/// The description of an export is its first value, which the others may fill.
constexpr char const* OnlyText = QT_TRANSLATE_NOOP("ActionLog", "%1");

/// Three characters behind a zero byte: stored files carry this code.
constexpr qv::FourChars SourceCode(0x00737263);

} // namespace

char const* const ExportWrittenLogEntry::sAction = QT_TRANSLATE_NOOP("ActionLog", "Export written");
char const* const ExportWrittenLogEntry::sDescriptionText = OnlyText;
qv::LogEntryFactoryRegistrar const ExportWrittenLogEntry::sRegistrar("ExpW", &ExportWrittenLogEntry::create, sAction);

ExportWrittenLogEntry::ExportWrittenLogEntry()
    : text("Text", QStringLiteral("text"))
    , format("Form", QStringLiteral("format"))
    , source("srcP", QStringLiteral("source"))
    , dest("dstP", QStringLiteral("dest"))
    , from("from", QStringLiteral("from"))
    , to("to  ", QStringLiteral("to"))
{
    append(&text);
    append(&format);
    append(&source);
    append(&dest);
    append(&from);
    append(&to);
}

qv::LogEntry* ExportWrittenLogEntry::create()
{
    return new ExportWrittenLogEntry;
}

qv::FourChars ExportWrittenLogEntry::id() const
{
    return "ExpW";
}

qv::ELogCategory ExportWrittenLogEntry::category() const
{
    return qv::LogCategoryExport;
}

QString ExportWrittenLogEntry::descriptionText() const
{
    return qv::translated(sDescriptionText);
}

QString ExportWrittenLogEntry::action() const
{
    return qv::translated(sAction);
}

char const* const ExportStartLogEntry::sAction = QT_TRANSLATE_NOOP("ActionLog", "Export start");
char const* const ExportStartLogEntry::sDescriptionText = OnlyText;
qv::LogEntryFactoryRegistrar const ExportStartLogEntry::sRegistrar("ExpS", &ExportStartLogEntry::create, sAction);

ExportStartLogEntry::ExportStartLogEntry()
    : text("Text", QStringLiteral("text"))
    , format("Form", QStringLiteral("format"))
    , source("srcP", QStringLiteral("source"))
    , dest("dstP", QStringLiteral("dest"))
    , from("from", QStringLiteral("from"))
    , to("to  ", QStringLiteral("to"))
{
    append(&text);
    append(&format);
    append(&source);
    append(&dest);
    append(&from);
    append(&to);
}

qv::LogEntry* ExportStartLogEntry::create()
{
    return new ExportStartLogEntry;
}

qv::FourChars ExportStartLogEntry::id() const
{
    return "ExpS";
}

qv::ELogCategory ExportStartLogEntry::category() const
{
    return qv::LogCategoryExport;
}

QString ExportStartLogEntry::descriptionText() const
{
    return qv::translated(sDescriptionText);
}

QString ExportStartLogEntry::action() const
{
    return qv::translated(sAction);
}

char const* const ExportAbortLogEntry::sAction = QT_TRANSLATE_NOOP("ActionLog", "Export abort");
char const* const ExportAbortLogEntry::sDescriptionText = OnlyText;
qv::LogEntryFactoryRegistrar const ExportAbortLogEntry::sRegistrar("ExpA", &ExportAbortLogEntry::create, sAction);

ExportAbortLogEntry::ExportAbortLogEntry()
    : text("Text", QStringLiteral("text"))
{
    append(&text);
}

qv::LogEntry* ExportAbortLogEntry::create()
{
    return new ExportAbortLogEntry;
}

qv::FourChars ExportAbortLogEntry::id() const
{
    return "ExpA";
}

qv::ELogCategory ExportAbortLogEntry::category() const
{
    return qv::LogCategoryExport;
}

QString ExportAbortLogEntry::descriptionText() const
{
    return qv::translated(sDescriptionText);
}

QString ExportAbortLogEntry::action() const
{
    return qv::translated(sAction);
}

char const* const ExportErrorLogEntry::sAction = QT_TRANSLATE_NOOP("ActionLog", "Export error");
char const* const ExportErrorLogEntry::sDescriptionText = OnlyText;
qv::LogEntryFactoryRegistrar const ExportErrorLogEntry::sRegistrar("ExpE", &ExportErrorLogEntry::create, sAction);

ExportErrorLogEntry::ExportErrorLogEntry()
    : text("Text", QStringLiteral("text"))
{
    append(&text);
}

qv::LogEntry* ExportErrorLogEntry::create()
{
    return new ExportErrorLogEntry;
}

qv::FourChars ExportErrorLogEntry::id() const
{
    return "ExpE";
}

qv::ELogCategory ExportErrorLogEntry::category() const
{
    return qv::LogCategoryExport;
}

QString ExportErrorLogEntry::descriptionText() const
{
    return qv::translated(sDescriptionText);
}

QString ExportErrorLogEntry::action() const
{
    return qv::translated(sAction);
}

char const* const ExportDoneLogEntry::sAction = QT_TRANSLATE_NOOP("ActionLog", "Export done");
char const* const ExportDoneLogEntry::sDescriptionText = OnlyText;
qv::LogEntryFactoryRegistrar const ExportDoneLogEntry::sRegistrar("ExpD", &ExportDoneLogEntry::create, sAction);

ExportDoneLogEntry::ExportDoneLogEntry()
    : text("Text", QStringLiteral("text"))
{
    append(&text);
}

qv::LogEntry* ExportDoneLogEntry::create()
{
    return new ExportDoneLogEntry;
}

qv::FourChars ExportDoneLogEntry::id() const
{
    return "ExpD";
}

qv::ELogCategory ExportDoneLogEntry::category() const
{
    return qv::LogCategoryExport;
}

QString ExportDoneLogEntry::descriptionText() const
{
    return qv::translated(sDescriptionText);
}

QString ExportDoneLogEntry::action() const
{
    return qv::translated(sAction);
}

char const* const ExportRenameLogEntry::sAction = QT_TRANSLATE_NOOP("ActionLog", "Export rename");
char const* const ExportRenameLogEntry::sDescriptionText = OnlyText;
qv::LogEntryFactoryRegistrar const ExportRenameLogEntry::sRegistrar("ExpR", &ExportRenameLogEntry::create, sAction);

ExportRenameLogEntry::ExportRenameLogEntry()
    : text("Text", QStringLiteral("text"))
    , path("path", QStringLiteral("path"))
    , source(SourceCode, QStringLiteral("source"))
    , dest("dest", QStringLiteral("dest"))
{
    append(&text);
    append(&path);
    append(&source);
    append(&dest);
}

qv::LogEntry* ExportRenameLogEntry::create()
{
    return new ExportRenameLogEntry;
}

qv::FourChars ExportRenameLogEntry::id() const
{
    return "ExpR";
}

qv::ELogCategory ExportRenameLogEntry::category() const
{
    return qv::LogCategoryExport;
}

QString ExportRenameLogEntry::descriptionText() const
{
    return qv::translated(sDescriptionText);
}

QString ExportRenameLogEntry::action() const
{
    return qv::translated(sAction);
}
