// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <QByteArray>
#include <QVector>

/// Records whose content follows from who wrote them and which one they are, so that a reader knows every byte.
namespace records {

struct Name {
    quint32 writer;
    quint32 index;
};

inline bool operator==(Name const& a, Name const& b)
{
    return a.writer == b.writer && a.index == b.index;
}

/// What a reader found: whole records in order, and the bytes behind the last of them.
struct Found {
    QVector<Name> names;
    QByteArray rest;
};

/// 12 bytes of writer, index and length of the text (in the machine's byte order), the text, 4 bytes of checksum.
QByteArray make(quint32 writer, quint32 index);

/// Stops at the first byte that is not what make() writes.
Found parse(QByteArray const& bytes);

/// Those of one writer, in the order of the file.
QVector<quint32> indicesOf(QVector<Name> const& names, quint32 writer);

/// first, first + 1, … count of them.
QVector<quint32> run(quint32 first, quint32 count);

} // namespace records
