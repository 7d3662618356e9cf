// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/Export.h>
#include <GenericUtilities/actionlog/LogEntry.h>

/// A log file could not be read further. The values' names are crossed, as stored entries have them: `source` is what
/// the parser said and `error` the name of the file.
class GENERICUTILITIES_EXPORT ParseXMLLogEntry : public qv::LogEntry {
public:
    static char const* const sAction;
    static char const* const sDescriptionText;

    ParseXMLLogEntry();
    /// The caller owns the entry.
    static qv::LogEntry* create();

    qv::FourChars id() const override;
    qv::ELogCategory category() const override;
    QString descriptionText() const override;
    QString action() const override;

    qv::TLogValue<QString> source;
    qv::TLogValue<QString> error;
    qv::TLogValue<int> line;
    qv::TLogValue<int> column;

private:
    static qv::LogEntryFactoryRegistrar const sRegistrar;
};
