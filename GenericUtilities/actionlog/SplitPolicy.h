// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

namespace qv {

/// When a log file is moved aside and a fresh one begun. Stored; never renumber.
///
/// The calendar policies compare the number of the day, week or month alone, not the year: a log begun late in one year
/// is split by them when that number is passed in the next.
enum ESplitPolicy {
    SplitNone = 0,
    SplitDaily = 1,
    SplitWeekly = 2, ///< ISO 8601 weeks
    SplitMonthly = 4,
    SplitBySize = 8
};

} // namespace qv
