// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/properties/PropertySet.h>

#include <QVector>

#include <functional>

/// Writes the paths of @p rows of @p recordings to a new file, a line each, and logs how that went: start, written and
/// done, or abort, or error. Throws qv::ExceptionQt with one line for the user where the file exists or cannot be
/// written; a file that is not complete is taken away again. @p isInterrupted is asked before each line. Returns
/// whether it was not.
bool exportRows(QString const& target, QVector<int> const& rows, QVector<qvgen::PropertySet> const& recordings,
    QString const& folder, std::function<bool()> const& isInterrupted);
