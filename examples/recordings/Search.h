// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/expressions/Expression.h>

/// What is searched for, and in which order it is shown.
struct Search {
    QString title;
    qvgen::ExpressionHandle condition; ///< The empty handle stands for all recordings.
    /// Sort terms: expressions, those that sort downwards under a unary minus. Rows that are equal in all of them, and
    /// all rows where there are none, come in ascending order.
    qvgen::ExpressionList order = {};
    QString note = {}; ///< What is to be known of its SQL.

    bool findsAll() const { return condition.equals(qvgen::ExpressionHandle()); }
};
