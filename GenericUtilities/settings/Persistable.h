// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/Export.h>

namespace qv {

class IPersistDestination;

/// Base of objects that save and load themselves. A class that overrides neither operation only complains in the log
/// (qv::Log, level 2) when it is asked to, and leaves the destination untouched.
class GENERICUTILITIES_EXPORT Persistable {
public:
    virtual ~Persistable();

    /// @p destination stays the caller's.
    virtual void load(IPersistDestination* destination);
    virtual void save(IPersistDestination* destination);
};

} // namespace qv
