// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include "Access.h"

#include <QStringList>

/// The log files that @p arguments name, in the order of time: by the date of their headers; those of one second by
/// their names, in which " (2)" stands behind none. A file that tells no date comes last. Of a folder these are its
/// files "*.qvl", not those of folders in it. No file comes twice.
///
/// Throws RefusalException where there is none of a name, or where a folder has none.
QStringList sourceFiles(QStringList const& arguments, Access& access);

/// The order of names within a second.
bool isNamedEarlier(QString const& left, QString const& right);
