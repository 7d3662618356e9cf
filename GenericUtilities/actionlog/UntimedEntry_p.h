// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/actionlog/LogEntry.h>

#include <memory>

namespace qv {

/// A new entry of that type, for who sets its time anyway: the present one is left out, as asking for local time looks
/// at the file of the time zone again and again, which is much of what an entry costs. Null where the id is not
/// registered.
std::unique_ptr<LogEntry> newUntimedEntry(FourChars id);

} // namespace qv
