// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/Export.h>

#include <QDateTime>

#include <functional>

/// Hooks for tests of qv::ActionLog, process wide, not guarded: set them before anything is logged.
namespace qv::ActionLogTesting {

/// Where the log takes the current moment from, instead of the system; an empty function restores that.
using Clock = std::function<QDateTime()>;
GENERICUTILITIES_EXPORT void setClock(Clock clock);

} // namespace qv::ActionLogTesting

namespace qv {

/// The current moment, local time, for everything that the log dates but the entries themselves.
QDateTime actionLogTime();

} // namespace qv
