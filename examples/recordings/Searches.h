// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include "Options.h"
#include "Search.h"

#include <GenericUtilities/properties/PropertySet.h>

#include <QVector>

#include <optional>

/// Searches that show what conditions can be made of; addSqliteFunctions() must have been called. @p recording is any
/// recording: conditions refer to properties by name, not to their values.
QVector<Search> readyMadeSearches(qvgen::PropertySet const& recording, QDate const& today);

/// The search that the command line asks for; none where it names no condition, order or file. Throws qv::ExceptionQt
/// with one line for the user where they are of no use.
std::optional<Search> requestedSearch(qvgen::PropertySet const& recording, Options const& options);
