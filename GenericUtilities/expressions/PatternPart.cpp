// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/expressions/PatternPart_p.h>

#include <algorithm>

namespace qvgen {

namespace {

    // Two anchors in a row: each alternative of one with each of the other.
    double combined(double a, double b)
    {
        return a == 0 && b == 0 ? 0 : std::max(1.0, a) * std::max(1.0, b);
    }

    double waysBetween(double from, double to, double anchors)
    {
        constexpr double weightOfAnchor = 8;
        return from * to * (1 + weightOfAnchor * anchors);
    }

} // namespace

PatternPart PatternPart::state(double weight)
{
    PatternPart result;
    result.first = weight;
    result.last = 1;
    result.isNullable = false;
    result.items = weight;
    return result;
}

PatternPart PatternPart::anchor()
{
    PatternPart result;
    result.items = 1;
    result.anchorsOfEmpty = 1;
    return result;
}

PatternPart PatternPart::sequence(PatternPart const& a, PatternPart const& b)
{
    PatternPart result;
    result.first = a.first + (a.isNullable ? b.first : 0);
    result.last = b.last + (b.isNullable ? a.last : 0);
    result.isNullable = a.isNullable && b.isNullable;
    result.anchorsBefore = std::max(a.anchorsBefore, a.isNullable ? combined(a.anchorsOfEmpty, b.anchorsBefore) : 0);
    result.anchorsBehind = std::max(b.anchorsBehind, b.isNullable ? combined(a.anchorsBehind, b.anchorsOfEmpty) : 0);
    result.anchorsOfEmpty = result.isNullable ? combined(a.anchorsOfEmpty, b.anchorsOfEmpty) : 0;
    result.items = a.items + b.items;
    result.lookaheads = a.lookaheads + b.lookaheads;
    result.transitions = a.transitions + b.transitions
        + waysBetween(a.last, b.first, combined(a.anchorsBehind, b.anchorsBefore)) + result.anchorsOfEmpty
        + (a.anchorsOfEmpty > 0 ? b.first * result.anchorsBefore : 0)
        + (b.anchorsOfEmpty > 0 ? a.last * result.anchorsBehind : 0);
    return result;
}

PatternPart PatternPart::alternatives(PatternPart const& a, PatternPart const& b)
{
    PatternPart result;
    result.first = a.first + b.first;
    result.last = a.last + b.last;
    result.isNullable = a.isNullable || b.isNullable;
    result.anchorsBefore = std::max(a.anchorsBefore, b.anchorsBefore);
    result.anchorsBehind = std::max(a.anchorsBehind, b.anchorsBehind);
    result.anchorsOfEmpty = a.anchorsOfEmpty + b.anchorsOfEmpty;
    result.items = a.items + b.items;
    result.lookaheads = a.lookaheads + b.lookaheads;
    result.transitions = a.transitions + b.transitions;
    return result;
}

PatternPart PatternPart::looped(PatternPart const& part, double weight)
{
    PatternPart result = part;
    result.transitions += weight * waysBetween(part.last, part.first, combined(part.anchorsBehind, part.anchorsBefore));
    return result;
}

PatternPart PatternPart::optional(PatternPart const& part)
{
    PatternPart result = part;
    result.isNullable = true;
    result.anchorsOfEmpty = 0;
    return result;
}

} // namespace qvgen
