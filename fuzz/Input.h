// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/expressions/Expression.h>

#include <QByteArray>
#include <QDataStream>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iterator>

/// What the fuzzers share.
namespace fuzz {

/// A finding: what must hold did not.
inline void require(bool holds, char const* what)
{
    if (holds)
        return;
    std::fprintf(stderr, "does not hold: %s\n", what);
    std::abort();
}

/// The stream version that a byte of the input chooses: mostly the two that files have.
inline int streamVersion(quint8 choice)
{
    constexpr QDataStream::Version versions[]
        = {QDataStream::Qt_4_8, QDataStream::Qt_5_15, QDataStream::Qt_5_0, QDataStream::Qt_5_1, QDataStream::Qt_4_0};
    return versions[choice % std::size(versions)];
}

inline QByteArray bytesOf(qvgen::ExpressionHandle const& tree, int version)
{
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    out.setVersion(version);
    out << tree;
    require(out.status() == QDataStream::Ok, "what was read can be written");
    return bytes;
}

// The entries of hashes are written in any order, and values that hold a NaN are equal to nothing.
inline QByteArray inAnyOrder(QByteArray bytes)
{
    std::sort(bytes.begin(), bytes.end());
    return bytes;
}

struct Reading {
    qvgen::ExpressionHandle tree;
    QDataStream::Status status;
    qint64 length;
};

inline Reading read(QByteArray const& bytes, int version)
{
    QDataStream in(bytes);
    in.setVersion(version);
    qvgen::ExpressionHandle const tree = qvgen::Expression::readExpression(in);
    return {tree, in.status(), in.device()->pos()};
}

/// What must hold of whatever was read: a refused tree is the empty handle, any other can be stored and read back.
inline void checkReading(Reading const& reading, int version)
{
    if (reading.status == QDataStream::ReadCorruptData)
        require(reading.tree.equals(qvgen::ExpressionHandle()), "a refused tree is the empty handle");
    QByteArray const written = bytesOf(reading.tree, version);
    Reading const again = read(written, version);
    require(again.status == QDataStream::Ok, "what was written can be read");
    require(again.length == written.size(), "a record is read to its end");
    require(inAnyOrder(bytesOf(again.tree, version)) == inAnyOrder(written), "a tree comes back as written");
}

} // namespace fuzz
