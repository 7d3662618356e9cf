// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/expressions/Expression.h>

/// Fits the functions of expressions to SQLite, for the whole process. To be called once, before the first search.
void addSqliteFunctions();

/// The number of characters of a text. The built-in `length` counts UTF-16 code units, so that it and SQLite differ on
/// characters beyond 16 bits.
qvgen::ExpressionHandle characters(qvgen::ExpressionHandle text);
/// What the operator `%` computes; that one prints as " mod ", which is not SQLite's.
qvgen::ExpressionHandle remainder(qvgen::ExpressionHandle dividend, qvgen::ExpressionHandle divisor);
