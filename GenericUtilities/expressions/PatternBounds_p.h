// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <QRegExp>
#include <QString>

/// What QRegExp is allowed to work on. It cannot be interrupted, its parser recurses with the nesting of a pattern, and
/// its time and memory can grow with the square of a pattern and a power of the subject: so patterns and subjects are
/// judged before it runs. Not installed.
namespace qvgen {

/// What the time and memory of a pattern depend on. QRegExp compiles it to an automaton whose states are the characters
/// and classes of the pattern, counted repeats multiplied out.
struct PatternShape {
    static constexpr int MaxLength = 1024;
    static constexpr double MaxItems = 2100;

    int length = 0; ///< Code units.
    int nesting = 0; ///< Parentheses open at once.
    int captures = 0; ///< Parentheses that capture.
    double lookaheads = 0; ///< Counted repeats multiplied out.
    /// How many times the time of a match is multiplied by the work of one more: 1 for a lookahead, and for each that
    /// it stands in, 1 for back-references.
    int detours = 0;
    double items = 0; ///< Characters, classes, groups and anchors, counted repeats multiplied out.
    double transitions = 0; ///< Ways from one state to the next; those that take longer count as several.

    static bool isWithinBounds(double items, double transitions);
    bool isBounded() const;
    /// Estimates, meant to lie above what was measured.
    double bytes() const;
    double compileNanoseconds() const;
    double matchNanoseconds(int subjectLength, Qt::CaseSensitivity sensitivity) const;

private:
    double stepNanoseconds(Qt::CaseSensitivity sensitivity) const;
};

/// The shape of a pattern. Where it exceeds the bounds, they may be all that is known of it.
PatternShape shapeOf(QString const& pattern, QRegExp::PatternSyntax syntax);
/// The shape of what a LIKE pattern becomes.
PatternShape shapeOfLike(QString const& pattern);

/// One evaluation of a tree, from the outermost operator down, on this thread; or one printing of it, with all values
/// that functions print. The patterns of one evaluation share an allowance of time, so that no tree, whatever its
/// origin, keeps the process busy.
class Evaluation {
public:
    Evaluation();
    ~Evaluation();
    Evaluation(Evaluation const&) = delete;
    Evaluation& operator=(Evaluation const&) = delete;

    /// Takes @p nanoseconds from the allowance of the evaluation at hand, if there is one; false where this one step,
    /// or all steps together, would take too long.
    static bool allows(double nanoseconds);

private:
    struct State {
        int nesting;
        double spentNanoseconds;
    };
    static thread_local State s_state __attribute__((tls_model("initial-exec")));
};

} // namespace qvgen
