// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/settings/Persistable.h>

#include <qvbase/Log.h>

#include <ostream>
#include <typeinfo>

namespace qv {

namespace {

    void complain(char const* operation)
    {
        constexpr int warning = 2;
        Log* const log = Log::instance();
        MutexLocker const locker(log->mutex());
        std::ostream* const stream = log->getStream(warning);
        if (!stream || log->logLevel() > warning)
            return;
        auto const width = stream->width(0);
        // The name of the pointer type, whatever the object is: those who search the log know this text.
        *stream << log->pre(warning) << "You should overwrite Persistable::" << operation << " for class "
                << typeid(Persistable*).name() << std::endl;
        stream->width(width);
    }

} // namespace

Persistable::~Persistable() = default;

void Persistable::load(IPersistDestination*)
{
    complain("load");
}

void Persistable::save(IPersistDestination*)
{
    complain("save");
}

} // namespace qv
