// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/Export.h>
#include <GenericUtilities/actionlog/LogEntry.h>

namespace qv {

/// The log went on in another file.
class GENERICUTILITIES_EXPORT ActionLogContextSwitchEntry : public LogEntry {
public:
    static char const* const sAction;
    static char const* const sDescriptionText;

    ActionLogContextSwitchEntry();
    /// The caller owns the entry.
    static LogEntry* create();

    FourChars id() const override;
    ELogCategory category() const override;
    QString descriptionText() const override;
    QString action() const override;

    TLogValue<QString> oldFile;
    TLogValue<QString> newFile;

private:
    static LogEntryFactoryRegistrar const sRegistrar;
};

} // namespace qv
