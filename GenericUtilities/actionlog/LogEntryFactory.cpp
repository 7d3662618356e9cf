// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/actionlog/LogEntryFactory.h>

#include <GenericUtilities/actionlog/Translation_p.h>

namespace qv {

void LogEntryFactory::registerCreator(FourChars const& id, Creator creator, char const* name)
{
    m_creators[id] = creator;
    m_names[id] = name;
}

LogEntry* LogEntryFactory::create(FourChars id) const
{
    Creator const creator = m_creators.value(id);
    return creator ? creator() : nullptr;
}

QStringList LogEntryFactory::entryNames() const
{
    QStringList names;
    for (char const* name : m_names)
        names.append(translated(name));
    names.sort();
    return names;
}

LogEntryFactory& logEntryFactory()
{
    static LogEntryFactory factory;
    return factory;
}

LogEntryFactoryRegistrar::LogEntryFactoryRegistrar(
    FourChars const& id, LogEntryFactory::Creator creator, char const* name)
{
    logEntryFactory().registerCreator(id, creator, name);
}

} // namespace qv
