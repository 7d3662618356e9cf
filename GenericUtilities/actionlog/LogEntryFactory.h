// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/Export.h>
#include <GenericUtilities/actionlog/FourChars.h>

#include <QMap>
#include <QStringList>

namespace qv {

class LogEntry;

/// Makes entries from the ids of their types. It is filled while the library and its clients are loaded; from then on
/// it is only read, in any thread.
class GENERICUTILITIES_EXPORT LogEntryFactory {
public:
    using Creator = LogEntry* (*)();

    /// Replaces creator and name where the id is registered already. @p name is the untranslated title of the action,
    /// in the translation context "ActionLog"; it must outlive the factory.
    void registerCreator(FourChars const& id, Creator creator, char const* name);
    /// A new entry that the caller owns; null where the id is not registered.
    LogEntry* create(FourChars id) const;
    /// The translated names of all registered types, sorted.
    QStringList entryNames() const;

private:
    QMap<FourChars, Creator> m_creators;
    QMap<FourChars, char const*> m_names;
};

/// The factory of this process.
GENERICUTILITIES_EXPORT LogEntryFactory& logEntryFactory();

/// Registers a type of entry; each type has a static one.
class GENERICUTILITIES_EXPORT LogEntryFactoryRegistrar {
public:
    LogEntryFactoryRegistrar(FourChars const& id, LogEntryFactory::Creator creator, char const* name);
};

} // namespace qv
