// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/expressions/Expression.h>

#include <QByteArray>
#include <QDataStream>
#include <QVector>

/// Records of expression trees: written, read, and put together by hand.
namespace stream {

inline constexpr int Old = QDataStream::Qt_4_8;
inline constexpr int Recent = QDataStream::Qt_5_15;

inline QByteArray hex(char const* digits)
{
    return QByteArray::fromHex(digits);
}

/// A record from its three pieces; lengths and fields in hexadecimal digits.
inline QByteArray record(char const* keyLength, char const* key, char const* fields = "")
{
    return hex(keyLength) + key + '\0' + hex(fields);
}

/// The record of a constant that is no placeholder.
inline QByteArray constantRecord(QByteArray const& variant)
{
    return record("0000001a", "N5qvgen15ConstExpressionE", "00000001 00") + variant;
}

struct Writing {
    QByteArray bytes;
    QDataStream::Status status;
};

inline Writing write(qvgen::ExpressionHandle const& tree, int version)
{
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    out.setVersion(version);
    out << tree;
    return {bytes, out.status()};
}

inline QByteArray written(qvgen::ExpressionHandle const& tree, int version)
{
    Writing const writing = write(tree, version);
    return writing.status == QDataStream::Ok ? writing.bytes : QByteArray("not written");
}

struct Reading {
    qvgen::ExpressionHandle tree;
    QDataStream::Status status;
    qint64 length; ///< bytes taken from the stream
};

inline Reading read(QByteArray const& bytes, int version)
{
    QDataStream in(bytes);
    in.setVersion(version);
    qvgen::ExpressionHandle const tree = qvgen::Expression::readExpression(in);
    return {tree, in.status(), in.device()->pos()};
}

inline bool isEmptyHandle(qvgen::ExpressionHandle const& tree)
{
    return tree.constData() == qvgen::ExpressionHandle().constData();
}

/// The placeholder flags of all constants, from left to right.
inline void collectFlags(qvgen::Expression const* node, QVector<bool>& flags)
{
    if (auto const* const constant = dynamic_cast<qvgen::ConstExpression const*>(node))
        flags.append(constant->isPlaceholder());
    else if (auto const* const cast = dynamic_cast<qvgen::CastExpression const*>(node))
        collectFlags(cast->operand().constData(), flags);
    else if (auto const* const parent = dynamic_cast<qvgen::Operator const*>(node))
        for (qvgen::ExpressionHandle const& each : parent->operands())
            collectFlags(each.constData(), flags);
}

inline QVector<bool> flagsOf(qvgen::ExpressionHandle const& tree)
{
    QVector<bool> flags;
    collectFlags(tree.constData(), flags);
    return flags;
}

} // namespace stream
