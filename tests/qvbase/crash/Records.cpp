// SPDX-License-Identifier: LGPL-2.1-or-later
#include "Records.h"

#include <cstring>
#include <numeric>

namespace records {

namespace {

    constexpr int headSize = 12;
    constexpr int checksumSize = 4;

    void append(QByteArray& bytes, quint32 number)
    {
        bytes.append(reinterpret_cast<char const*>(&number), sizeof number);
    }

    quint32 numberAt(QByteArray const& bytes, int offset)
    {
        quint32 number = 0;
        std::memcpy(&number, bytes.constData() + offset, sizeof number);
        return number;
    }

    /// FNV-1a.
    quint32 checksum(char const* bytes, int size)
    {
        return std::accumulate(bytes, bytes + size, 2166136261U,
            [](quint32 sum, char byte) { return (sum ^ static_cast<uchar>(byte)) * 16777619U; });
    }

    /// Most are as long as a log entry, every 97th needs more than a page.
    quint32 textSize(quint32 index)
    {
        return index % 97 == 96 ? 9000 : index * 2654435761U % 400;
    }

} // namespace

QByteArray make(quint32 writer, quint32 index)
{
    QByteArray bytes;
    quint32 const size = textSize(index);
    bytes.reserve(headSize + static_cast<int>(size) + checksumSize);
    append(bytes, writer);
    append(bytes, index);
    append(bytes, size);
    for (quint32 i = 0; i < size; ++i)
        bytes.append(static_cast<char>('a' + (writer + index + i) % 26));
    append(bytes, checksum(bytes.constData(), bytes.size()));
    return bytes;
}

Found parse(QByteArray const& bytes)
{
    Found found;
    int at = 0;
    while (bytes.size() - at >= headSize) {
        Name const name = {numberAt(bytes, at), numberAt(bytes, at + 4)};
        QByteArray const expected = make(name.writer, name.index);
        if (bytes.size() - at < expected.size()
            || std::memcmp(bytes.constData() + at, expected.constData(), static_cast<size_t>(expected.size())) != 0)
            break;
        found.names.append(name);
        at += expected.size();
    }
    found.rest = bytes.mid(at);
    return found;
}

QVector<quint32> indicesOf(QVector<Name> const& names, quint32 writer)
{
    QVector<quint32> indices;
    for (Name const& name : names) {
        if (name.writer == writer)
            indices.append(name.index);
    }
    return indices;
}

QVector<quint32> run(quint32 first, quint32 count)
{
    QVector<quint32> indices(static_cast<int>(count));
    std::iota(indices.begin(), indices.end(), first);
    return indices;
}

} // namespace records
