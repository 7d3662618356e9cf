// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/expressions/PatternBounds_p.h>

#include <algorithm>
#include <cmath>

/// The bounds and estimates that docs/expressions.md states. Those of time and memory are what was measured on random
/// and hostile patterns, and some more.
namespace qvgen {

namespace {

    constexpr double maxStepNanoseconds = 100e6;
    constexpr double maxEvaluationNanoseconds = 400e6;

} // namespace

bool PatternShape::isWithinBounds(double items, double transitions)
{
    constexpr double maxTransitions = 12000;
    return items <= MaxItems && transitions <= maxTransitions;
}

bool PatternShape::isBounded() const
{
    constexpr int maxNesting = 64;
    constexpr double maxBytes = 1e6;
    // QRegExp's own limit: it never frees what it compiled of those beyond.
    constexpr double maxLookaheads = 13;
    return length <= MaxLength && nesting <= maxNesting && lookaheads <= maxLookaheads
        && isWithinBounds(items, transitions) && bytes() <= maxBytes;
}

double PatternShape::bytes() const
{
    constexpr double perItem = 350;
    constexpr double perTransition = 50;
    constexpr double perCaptureOfItem = 16;
    // Where a lookahead is malformed, QRegExp goes on in the middle of it and may join what stands apart.
    double const joined = lookaheads > 0 ? std::max(transitions, items * items) : transitions;
    return perItem * items + perTransition * joined + perCaptureOfItem * items * captures;
}

double PatternShape::compileNanoseconds() const
{
    constexpr double perByte = 6;
    return perByte * bytes();
}

double PatternShape::stepNanoseconds(Qt::CaseSensitivity sensitivity) const
{
    // Where there are captures, those of each step are compared with those found before.
    if (captures > 0)
        return 40 + 0.25 * captures;
    return sensitivity == Qt::CaseSensitive ? 6 : 14;
}

double PatternShape::matchNanoseconds(int subjectLength, Qt::CaseSensitivity sensitivity) const
{
    constexpr double stepsPerUnit = 2;
    double const steps = (stepsPerUnit + transitions) * (subjectLength + 1.0);
    constexpr double shareInDetour = 1.0 / 64;
    return stepNanoseconds(sensitivity) * steps * std::pow(shareInDetour * steps, detours);
}

thread_local Evaluation::State Evaluation::s_state = {0, 0};

Evaluation::Evaluation()
{
    if (s_state.nesting++ == 0)
        s_state.spentNanoseconds = 0;
}

Evaluation::~Evaluation()
{
    --s_state.nesting;
}

bool Evaluation::allows(double nanoseconds)
{
    if (nanoseconds > maxStepNanoseconds)
        return false;
    if (s_state.nesting == 0)
        return true;
    s_state.spentNanoseconds += nanoseconds;
    return s_state.spentNanoseconds <= maxEvaluationNanoseconds;
}

} // namespace qvgen
