// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <QVariant>

QT_BEGIN_NAMESPACE
class QDataStream;
QT_END_NAMESPACE

namespace qvgen {

/// Reads a variant as QDataStream's own operator does, but from bytes of any origin: only types that constants have are
/// read, sizes are believed only as far as the stream reaches, containers nest at most 100 deep. Anything else gives an
/// invalid variant and QDataStream::ReadCorruptData.
QVariant readVariant(QDataStream& in);

} // namespace qvgen
