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
char const* const ExportStartLogEntry::sAction = QT_TRANSLATE_NOOP("ActionLog", "Export start");
char const* const ExportStartLogEntry::sDescriptionText = OnlyText;
char const* const ExportAbortLogEntry::sAction = QT_TRANSLATE_NOOP("ActionLog", "Export abort");
char const* const ExportAbortLogEntry::sDescriptionText = OnlyText;
char const* const ExportErrorLogEntry::sAction = QT_TRANSLATE_NOOP("ActionLog", "Export error");
char const* const ExportErrorLogEntry::sDescriptionText = OnlyText;
char const* const ExportDoneLogEntry::sAction = QT_TRANSLATE_NOOP("ActionLog", "Export done");
char const* const ExportDoneLogEntry::sDescriptionText = OnlyText;
char const* const ExportRenameLogEntry::sAction = QT_TRANSLATE_NOOP("ActionLog", "Export rename");
char const* const ExportRenameLogEntry::sDescriptionText = OnlyText;

template <class Entry>
qv::LogEntryFactoryRegistrar const ExportLogEntry<Entry>::sRegistrar(Entry::sId, &Entry::create, Entry::sAction);

template <class Entry> ExportLogEntry<Entry>::ExportLogEntry()
    : text("Text", QStringLiteral("text"))
{
    append(&text);
}

template <class Entry> qv::LogEntry* ExportLogEntry<Entry>::create()
{
    return new Entry;
}

template <class Entry> qv::FourChars ExportLogEntry<Entry>::id() const
{
    return Entry::sId;
}

template <class Entry> qv::ELogCategory ExportLogEntry<Entry>::category() const
{
    return qv::LogCategoryExport;
}

template <class Entry> QString ExportLogEntry<Entry>::descriptionText() const
{
    return qv::translated(Entry::sDescriptionText);
}

template <class Entry> QString ExportLogEntry<Entry>::action() const
{
    return qv::translated(Entry::sAction);
}

template <class Entry> ExportRangeLogEntry<Entry>::ExportRangeLogEntry()
    : format("Form", QStringLiteral("format"))
    , source("srcP", QStringLiteral("source"))
    , dest("dstP", QStringLiteral("dest"))
    , from("from", QStringLiteral("from"))
    , to("to  ", QStringLiteral("to"))
{
    for (qv::LogValue* const value : std::initializer_list<qv::LogValue*>{&format, &source, &dest, &from, &to})
        this->append(value);
}

ExportRenameLogEntry::ExportRenameLogEntry()
    : path("path", QStringLiteral("path"))
    , source(SourceCode, QStringLiteral("source"))
    , dest("dest", QStringLiteral("dest"))
{
    append(&path);
    append(&source);
    append(&dest);
}

template class ExportLogEntry<ExportWrittenLogEntry>;
template class ExportLogEntry<ExportStartLogEntry>;
template class ExportLogEntry<ExportAbortLogEntry>;
template class ExportLogEntry<ExportErrorLogEntry>;
template class ExportLogEntry<ExportDoneLogEntry>;
template class ExportLogEntry<ExportRenameLogEntry>;
template class ExportRangeLogEntry<ExportWrittenLogEntry>;
template class ExportRangeLogEntry<ExportStartLogEntry>;
