// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/Export.h>
#include <GenericUtilities/actionlog/LogEntry.h>

/// A finished export of images or video. `text` is a sentence with placeholders that the values behind it fill.
class GENERICUTILITIES_EXPORT ExportWrittenLogEntry : public qv::LogEntry {
public:
    static char const* const sAction;
    static char const* const sDescriptionText;

    ExportWrittenLogEntry();
    /// The caller owns the entry.
    static qv::LogEntry* create();

    qv::FourChars id() const override;
    qv::ELogCategory category() const override;
    QString descriptionText() const override;
    QString action() const override;

    qv::TLogValue<QString> text;
    qv::TLogValue<QString> format;
    qv::TLogValue<QString> source;
    qv::TLogValue<QString> dest;
    qv::TLogValue<QDateTime> from;
    qv::TLogValue<QDateTime> to;

private:
    static qv::LogEntryFactoryRegistrar const sRegistrar;
};

/// The start of an export of images or video. `text` is a sentence with placeholders that the values behind it fill.
class GENERICUTILITIES_EXPORT ExportStartLogEntry : public qv::LogEntry {
public:
    static char const* const sAction;
    static char const* const sDescriptionText;

    ExportStartLogEntry();
    /// The caller owns the entry.
    static qv::LogEntry* create();

    qv::FourChars id() const override;
    qv::ELogCategory category() const override;
    QString descriptionText() const override;
    QString action() const override;

    qv::TLogValue<QString> text;
    qv::TLogValue<QString> format;
    qv::TLogValue<QString> source;
    qv::TLogValue<QString> dest;
    qv::TLogValue<QDateTime> from;
    qv::TLogValue<QDateTime> to;

private:
    static qv::LogEntryFactoryRegistrar const sRegistrar;
};

/// An export that its user gave up.
class GENERICUTILITIES_EXPORT ExportAbortLogEntry : public qv::LogEntry {
public:
    static char const* const sAction;
    static char const* const sDescriptionText;

    ExportAbortLogEntry();
    /// The caller owns the entry.
    static qv::LogEntry* create();

    qv::FourChars id() const override;
    qv::ELogCategory category() const override;
    QString descriptionText() const override;
    QString action() const override;

    qv::TLogValue<QString> text;

private:
    static qv::LogEntryFactoryRegistrar const sRegistrar;
};

/// An export that failed.
class GENERICUTILITIES_EXPORT ExportErrorLogEntry : public qv::LogEntry {
public:
    static char const* const sAction;
    static char const* const sDescriptionText;

    ExportErrorLogEntry();
    /// The caller owns the entry.
    static qv::LogEntry* create();

    qv::FourChars id() const override;
    qv::ELogCategory category() const override;
    QString descriptionText() const override;
    QString action() const override;

    qv::TLogValue<QString> text;

private:
    static qv::LogEntryFactoryRegistrar const sRegistrar;
};

/// The end of a whole series of exports.
class GENERICUTILITIES_EXPORT ExportDoneLogEntry : public qv::LogEntry {
public:
    static char const* const sAction;
    static char const* const sDescriptionText;

    ExportDoneLogEntry();
    /// The caller owns the entry.
    static qv::LogEntry* create();

    qv::FourChars id() const override;
    qv::ELogCategory category() const override;
    QString descriptionText() const override;
    QString action() const override;

    qv::TLogValue<QString> text;

private:
    static qv::LogEntryFactoryRegistrar const sRegistrar;
};

/// An exported file that took another name: from `source` to `dest`, both within the folder `path`.
class GENERICUTILITIES_EXPORT ExportRenameLogEntry : public qv::LogEntry {
public:
    static char const* const sAction;
    static char const* const sDescriptionText;

    ExportRenameLogEntry();
    /// The caller owns the entry.
    static qv::LogEntry* create();

    qv::FourChars id() const override;
    qv::ELogCategory category() const override;
    QString descriptionText() const override;
    QString action() const override;

    qv::TLogValue<QString> text;
    qv::TLogValue<QString> path;
    qv::TLogValue<QString> source;
    qv::TLogValue<QString> dest;

private:
    static qv::LogEntryFactoryRegistrar const sRegistrar;
};
