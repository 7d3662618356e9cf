// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include "Options.h"

#include <GenericUtilities/expressions/Expression.h>
#include <GenericUtilities/properties/PropertySet.h>

#include <QVector>

#include <optional>

struct Search {
    QString title;
    qvgen::ExpressionHandle condition;
};

/// Searches that show what conditions can be made of. @p recording is any recording: conditions refer to properties
/// by name, not to their values.
QVector<Search> readyMadeSearches(qvgen::PropertySet const& recording, QDate const& today);

/// The search that the command line asks for; none where it names no condition.
std::optional<Search> requestedSearch(qvgen::PropertySet const& recording, Options const& options);
