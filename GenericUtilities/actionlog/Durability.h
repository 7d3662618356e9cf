// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

namespace qv {

/// What is certain of an entry once it was logged. Stored; never renumber.
enum EDurability {
    DurabilityNone = 0, ///< nothing: entries are collected and written some 64 KiB at a time
    DurabilityFlush = 1, ///< the system has it: it outlives the process
    DurabilityData = 2 ///< the disk has it: it outlives a loss of power
};

} // namespace qv
