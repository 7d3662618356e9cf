// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/Export.h>
#include <GenericUtilities/actionlog/LogEntry.h>

/// What the types of entry about exports share. @p Entry is the type that derives from this one; it has the static
/// texts and the id.
template <class Entry> class GENERICUTILITIES_EXPORT ExportLogEntry : public qv::LogEntry {
public:
    /// The caller owns the entry.
    static qv::LogEntry* create();

    qv::FourChars id() const override;
    qv::ELogCategory category() const override;
    QString descriptionText() const override;
    QString action() const override;

    /// What is shown of the entry; its placeholders are filled by the values behind it.
    qv::TLogValue<QString> text;

protected:
    ExportLogEntry();

private:
    static qv::LogEntryFactoryRegistrar const sRegistrar;
};

/// An export that concerns a range of recordings.
template <class Entry> class GENERICUTILITIES_EXPORT ExportRangeLogEntry : public ExportLogEntry<Entry> {
public:
    qv::TLogValue<QString> format;
    qv::TLogValue<QString> source;
    qv::TLogValue<QString> dest;
    qv::TLogValue<QDateTime> from;
    qv::TLogValue<QDateTime> to;

protected:
    ExportRangeLogEntry();
};

/// A finished export of images or video.
class GENERICUTILITIES_EXPORT ExportWrittenLogEntry : public ExportRangeLogEntry<ExportWrittenLogEntry> {
public:
    static char const* const sAction;
    static char const* const sDescriptionText;
    static constexpr qv::FourChars sId = "ExpW";
};

/// The start of an export of images or video.
class GENERICUTILITIES_EXPORT ExportStartLogEntry : public ExportRangeLogEntry<ExportStartLogEntry> {
public:
    static char const* const sAction;
    static char const* const sDescriptionText;
    static constexpr qv::FourChars sId = "ExpS";
};

/// An export that its user gave up.
class GENERICUTILITIES_EXPORT ExportAbortLogEntry : public ExportLogEntry<ExportAbortLogEntry> {
public:
    static char const* const sAction;
    static char const* const sDescriptionText;
    static constexpr qv::FourChars sId = "ExpA";
};

/// An export that failed.
class GENERICUTILITIES_EXPORT ExportErrorLogEntry : public ExportLogEntry<ExportErrorLogEntry> {
public:
    static char const* const sAction;
    static char const* const sDescriptionText;
    static constexpr qv::FourChars sId = "ExpE";
};

/// The end of a whole series of exports.
class GENERICUTILITIES_EXPORT ExportDoneLogEntry : public ExportLogEntry<ExportDoneLogEntry> {
public:
    static char const* const sAction;
    static char const* const sDescriptionText;
    static constexpr qv::FourChars sId = "ExpD";
};

/// An exported file that took another name: from `source` to `dest`, both within the folder `path`.
class GENERICUTILITIES_EXPORT ExportRenameLogEntry : public ExportLogEntry<ExportRenameLogEntry> {
public:
    static char const* const sAction;
    static char const* const sDescriptionText;
    static constexpr qv::FourChars sId = "ExpR";

    ExportRenameLogEntry();

    qv::TLogValue<QString> path;
    qv::TLogValue<QString> source;
    qv::TLogValue<QString> dest;
};

extern template class ExportLogEntry<ExportWrittenLogEntry>;
extern template class ExportLogEntry<ExportStartLogEntry>;
extern template class ExportLogEntry<ExportAbortLogEntry>;
extern template class ExportLogEntry<ExportErrorLogEntry>;
extern template class ExportLogEntry<ExportDoneLogEntry>;
extern template class ExportLogEntry<ExportRenameLogEntry>;
extern template class ExportRangeLogEntry<ExportWrittenLogEntry>;
extern template class ExportRangeLogEntry<ExportStartLogEntry>;
