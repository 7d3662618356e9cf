// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include "Search.h"

#include <GenericUtilities/properties/PropertySet.h>

/// Makes sure that the SQL of a search from outside is nothing but a condition on columns of @p recording.
///
/// Names of values and functions, and texts that are no placeholders, are printed into the SQL, so they must not come
/// from outside: values must be columns without alias, functions registered ones, constants placeholders of a type that
/// fits into a column. Operators must have operands, or what they print runs together. Throws qv::ExceptionQt with
/// the reason. SQLite may still refuse the statement.
void checkSearch(Search const& search, qvgen::PropertySet const& recording);
