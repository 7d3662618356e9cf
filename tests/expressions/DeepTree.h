// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/expressions/BooleanOperators.h>
#include <GenericUtilities/expressions/Comparator.h>

#include "Nodes.h"

/// Trees of any depth, each level around the one below, and what is to come out of walking them.
namespace deep {

/// One way to put a level around a tree. Around the leaf, the placeholder true, every even number of levels has the
/// value true (a list: at its front).
struct Level {
    char const* name;
    qvgen::ExpressionHandle (*around)(qvgen::ExpressionHandle const& tree);
    int characters; ///< that it adds to the text in SQL with placeholders
    int charactersOnTop; ///< that the topmost level does without
    int placeholders; ///< that it adds
};

using Tree = qvgen::ExpressionHandle;

inline Tree leaf()
{
    return nodes::placeholder(true);
}

inline qvgen::ConstExpression yes()
{
    return nodes::constant(true);
}

inline Tree membership(Tree const& value, Tree const& candidate)
{
    qvgen::ElementOf node(value);
    node.append(candidate);
    return node;
}

inline qvgen::SwitchCase switchOn(Tree const& selector)
{
    return qvgen::SwitchCase(selector);
}

// clang-format off
inline Level const levels[] = {
    {"casts",             [](Tree const& t) -> Tree { return qvgen::toBool(t); },                           14, 0, 0},
    {"negations",         [](Tree const& t) -> Tree { return !t; },                                          5, 0, 0},
    {"AND to the left",   [](Tree const& t) -> Tree { return t && leaf(); },                                 8, 2, 1},
    {"AND to the right",  [](Tree const& t) -> Tree { return leaf() && t; },                                 8, 2, 1},
    {"OR to the right",   [](Tree const& t) -> Tree { return nodes::constant(0) || t; },                     7, 2, 0},
    {"lists, first",      [](Tree const& t) -> Tree { return t << leaf(); },                                 2, 0, 1},
    {"lists, last",       [](Tree const& t) -> Tree { return leaf() << t; },                                 2, 0, 1},
    {"members",           [](Tree const& t) -> Tree { return membership(t, yes()); },                       12, 0, 0},
    {"candidates",        [](Tree const& t) -> Tree { return membership(yes(), t); },                       12, 0, 0},
    {"comparisons, left", [](Tree const& t) -> Tree { return t == true; },                                   4, 0, 1},
    {"comparisons, right",[](Tree const& t) -> Tree { return true == t; },                                   4, 0, 1},
    {"selectors",         [](Tree const& t) -> Tree { return switchOn(t).switchCase(yes(), yes()); },       33, 0, 0},
    {"cases",             [](Tree const& t) -> Tree { return switchOn(yes()).switchCase(t, yes()); },       33, 0, 0},
    {"results",           [](Tree const& t) -> Tree { return switchOn(yes()).switchCase(yes(), t); },       33, 0, 0},
    {"defaults",          [](Tree const& t) -> Tree { return switchOn(yes()).defaultCase(t); },             21, 0, 0},
};
// clang-format on

inline Level const& listsLast = levels[6];

inline Tree tree(Level const& level, int depth)
{
    Tree result = leaf();
    for (int i = 1; i < depth; ++i)
        result = level.around(result);
    return result;
}

/// What comes out of every walk down a tree.
struct Results {
    QVariant value;
    int characters = 0;
    int placeholders = 0;
    bool equalsTwin = false;
};

inline QVariant front(QVariant value)
{
    while (value.type() == QVariant::List) {
        QVariantList const list = value.toList();
        value = list.isEmpty() ? QVariant() : list.first();
    }
    return value;
}

inline Results walk(Tree const& tree, Tree const& twin)
{
    return {front(tree.evaluate({})), tree.toString(nodes::Bound).size(), tree.collectPlaceholders().size(),
        tree.equals(twin)};
}

} // namespace deep
