// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <QRegExp>
#include <QString>

/// What QRegExp is allowed to work on. It cannot be interrupted, its parser recurses with the nesting of a pattern, and
/// its time and memory can grow with the cube of one: so patterns and subjects are judged before it runs. Not
/// installed.
namespace qvgen {

/// What the time and memory of a pattern depend on.
struct PatternShape {
    int length = 0; ///< Code units.
    int nesting = 0; ///< Parentheses open at once.
    int lookaheads = 0;
    qint64 items = 0; ///< Characters and classes, counted repeats multiplied out.
    qint64 optional = 0; ///< Those of them that may be left out or repeated.
    qint64 repeated = 0; ///< Those of them inside groups that are repeated.

    bool isBounded() const;
    /// Estimates, meant to lie above what was measured.
    double compileNanoseconds() const;
    double matchNanoseconds(int subjectLength) const;
};

/// The shape of a regular expression (or, by their own rules, of a wildcard pattern or a fixed text).
PatternShape shapeOf(QString const& pattern, QRegExp::PatternSyntax syntax);

/// One evaluation of a tree, from the outermost operator down, on this thread. The patterns of one evaluation share an
/// allowance of time, so that no tree, whatever its origin, keeps the process busy.
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
