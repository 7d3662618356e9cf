// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <QDataStream>
#include <QVariant>

/// Not installed.
namespace qvgen {

/// Reads a variant as QDataStream's own operator does, but from bytes of any origin: only types that constants have are
/// read, sizes are believed only as far as the stream reaches, containers nest at most 100 deep. Anything else gives an
/// invalid variant and QDataStream::ReadCorruptData. Of a null value nothing but its type is kept, of several entries
/// with one key the last.
QVariant readVariant(QDataStream& in);

/// The data of a variant that holds a QDateTime.
QVariant readDateTime(QDataStream& in);

/// Sets QDataStream::ReadCorruptData; an invalid variant.
QVariant corrupt(QDataStream& in);

inline bool isOk(QDataStream const& in)
{
    return in.status() == QDataStream::Ok;
}

} // namespace qvgen
