// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

/// The automaton that a regular expression becomes, reduced to what its size depends on: its states are the characters
/// and classes of the expression, its transitions lead from each to all that may come next. Not installed.
namespace qvgen {

/// A part of a pattern, by what joining it to its neighbours costs.
struct PatternPart {
    double first = 0; ///< Weights of the states that a text can begin with.
    double last = 0; ///< States that it can end with.
    bool isNullable = true;
    /// Into how many alternatives anchors have been combined: in front of a first state, behind a last one, and for the
    /// empty text.
    ///@{
    double anchorsBefore = 0;
    double anchorsBehind = 0;
    double anchorsOfEmpty = 0;
    ///@}
    double items = 0; ///< As in PatternShape.
    double transitions = 0;
    double lookaheads = 0; ///< As in PatternShape.

    static PatternPart state(double weight);
    /// A condition between two states.
    static PatternPart anchor();
    static PatternPart sequence(PatternPart const& a, PatternPart const& b);
    static PatternPart alternatives(PatternPart const& a, PatternPart const& b);
    /// Repeated without end; each way back counts as @p weight.
    static PatternPart looped(PatternPart const& part, double weight);
    static PatternPart optional(PatternPart const& part);
};

} // namespace qvgen
