// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/actionlog/ActionLogContextSwitchEntry.h>
#include <GenericUtilities/actionlog/ExportLogEntries.h>
#include <GenericUtilities/actionlog/LogXml_p.h>
#include <GenericUtilities/actionlog/ParseXMLLogEntry.h>

#include <QLocale>
#include <QMetaType>

#include <memory>

/// An entry of each type with every value set, and what stands in a file for it.
namespace entries {

using Entry = std::shared_ptr<qv::LogEntry>;

/// Early enough in a minute for every short format to lose nothing.
inline QDateTime time()
{
    return {QDate(2020, 2, 29), QTime(12, 34)};
}

/// In the short format of the system's locale.
inline QByteArray timeText()
{
    return QLocale::system().toString(time(), QLocale::ShortFormat).toUtf8();
}

template <typename Type> std::shared_ptr<Type> entryOf(QString const& user = QStringLiteral("Ann (Smith)"))
{
    auto entry = std::make_shared<Type>();
    entry->time().setValue(time());
    entry->user().setValue(user);
    return entry;
}

inline Entry contextSwitch()
{
    auto entry = entryOf<qv::ActionLogContextSwitchEntry>();
    entry->oldFile.setValue(QStringLiteral("/var/a.qvl"));
    entry->newFile.setValue(QStringLiteral("/var/b.qvl"));
    return entry;
}

template <typename Type> Entry span()
{
    auto entry = entryOf<Type>();
    entry->text.setValue(QStringLiteral("%1 from %2 to %3"));
    entry->format.setValue(QStringLiteral("MP4"));
    entry->source.setValue(QStringLiteral("Gate"));
    entry->dest.setValue(QStringLiteral("/mnt/x"));
    entry->from.setValue(time());
    entry->to.setValue(time());
    return entry;
}

template <typename Type> Entry text()
{
    auto entry = entryOf<Type>();
    entry->text.setValue(QStringLiteral("Disk full"));
    return entry;
}

inline Entry rename()
{
    auto entry = entryOf<ExportRenameLogEntry>();
    entry->text.setValue(QStringLiteral("renamed"));
    entry->path.setValue(QStringLiteral("/mnt/"));
    entry->source.setValue(QStringLiteral("a.mp4"));
    entry->dest.setValue(QStringLiteral("b.mp4"));
    return entry;
}

inline Entry parseError()
{
    auto entry = entryOf<ParseXMLLogEntry>(QStringLiteral("Unknown"));
    entry->source.setValue(QStringLiteral("Opening and ending tag mismatch."));
    entry->error.setValue(QStringLiteral("/var/a.qvl"));
    entry->line.setValue(3);
    entry->column.setValue(17);
    return entry;
}

struct Sample {
    char const* name;
    Entry entry;
    QByteArray xml;
};

inline QList<Sample> samples()
{
    QByteArray const when = timeText();
    auto const element = [&](char const* id, QByteArray const& values) {
        return "<Entry ID=\"" + QByteArray(id) + "\" Time=\"" + when + "\" User=\"" + values + "/>";
    };
    QByteArray const spanValues
        = "Ann (Smith)\" Text=\"%1 from %2 to %3\" Form=\"MP4\" srcP=\"Gate\" dstP=\"/mnt/x\" from=\"" + when
        + "\" to  =\"" + when + "\"";
    QByteArray const textValues = "Ann (Smith)\" Text=\"Disk full\"";
    return {
        {"switch", contextSwitch(), element("ALog", "Ann (Smith)\" filO=\"/var/a.qvl\" filN=\"/var/b.qvl\"")},
        {"export written", span<ExportWrittenLogEntry>(), element("ExpW", spanValues)},
        {"export start", span<ExportStartLogEntry>(), element("ExpS", spanValues)},
        {"export abort", text<ExportAbortLogEntry>(), element("ExpA", textValues)},
        {"export error", text<ExportErrorLogEntry>(), element("ExpE", textValues)},
        {"export done", text<ExportDoneLogEntry>(), element("ExpD", textValues)},
        {"export rename", rename(),
            element("ExpR", "Ann (Smith)\" Text=\"renamed\" path=\"/mnt/\" src=\"a.mp4\" dest=\"b.mp4\"")},
        {"parse error", parseError(),
            element("XmlP",
                "Unknown\" srcP=\"Opening and ending tag mismatch.\" errT=\"/var/a.qvl\" errL=\"3\" errC=\"17\"")},
    };
}

/// The text forms of all values, for comparisons.
inline QStringList texts(qv::LogEntry const& entry)
{
    QStringList result{entry.id().toString()};
    for (qv::LogValue const* value : entry.values())
        result.append(value->toString());
    return result;
}

} // namespace entries

Q_DECLARE_METATYPE(entries::Entry)
