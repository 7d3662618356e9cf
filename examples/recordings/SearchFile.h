// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include "Search.h"

#include <GenericUtilities/properties/PropertySet.h>

#include <QByteArray>

/// A search as stored in a file. Written by QDataStream at Qt_5_15, big endian:
///
///   quint32  0x52537263, "RSrc"
///   quint32  version of this format, 1
///   record   the condition, as Expression::writeExpression() has it; an empty list for all recordings
///   record   the list of the sort terms
///   32 bytes SHA-256 of all that stands before
///
/// A later format begins with the same two numbers. Sort terms are columns and minuses of columns.
QByteArray encodedSearch(Search const& search);

/// The search that encodedSearch() made @p bytes of, for recordings like @p recording. Whatever else the bytes hold,
/// and whatever checkSearch() refuses, throws qv::ExceptionQt with the reason.
Search decodedSearch(QByteArray const& bytes, qvgen::PropertySet const& recording);

/// The same with a file. Both throw qv::ExceptionQt with one line for the user; a file that is no saved search is not
/// overwritten.
void writeSearchFile(QString const& file, Search const& search);
Search readSearchFile(QString const& file, qvgen::PropertySet const& recording);
