// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <limits>

namespace qv {

/// @p value truncated toward zero, as the nearest Integer that there is; NaN gives the lowest. (A plain cast of a value
/// out of range, or of NaN, is undefined.)
template <class Integer> constexpr Integer clampTo(double value)
{
    using Limits = std::numeric_limits<Integer>;
    // 2^digits is exact as a double where the highest Integer is not.
    constexpr double beyond = 2.0 * static_cast<double>(Integer(1) << (Limits::digits - 1));
    constexpr double lowest = static_cast<double>(Limits::lowest());
    if (value >= beyond)
        return Limits::max();
    if (!(value > lowest))
        return Limits::lowest();
    return static_cast<Integer>(value);
}

} // namespace qv
