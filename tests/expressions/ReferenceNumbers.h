// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <QVariant>

#include <cmath>
#include <limits>

/// The part of the reference that knows numbers: exact whole numbers, and the common type of two numbers.
///
/// Whole numbers are held as sign and magnitude, so that no step can overflow, and are brought to a type as the very
/// last step.
namespace reference {

using Type = QVariant::Type;

struct Flags {
    bool left;
    bool right;
};

struct Whole {
    bool negative;
    quint64 magnitude;
};

inline quint64 const Limit31 = 0x7FFFFFFF;
inline quint64 const Limit63 = Q_UINT64_C(0x7FFFFFFFFFFFFFFF);
inline quint64 const MicrosPerDay = Q_UINT64_C(86400000000);

inline Whole whole(qint64 number)
{
    return number < 0 ? Whole{true, quint64(-(number + 1)) + 1} : Whole{false, quint64(number)};
}

inline Whole whole(QVariant const& number)
{
    if (number.type() == QVariant::ULongLong)
        return {false, number.value<quint64>()};
    if (number.type() == QVariant::LongLong)
        return whole(number.value<qint64>());
    return number.type() == QVariant::UInt ? Whole{false, number.value<uint>()} : whole(qint64(number.value<int>()));
}

/// The number modulo 2^64.
inline quint64 bits(Whole number)
{
    return number.negative ? 0 - number.magnitude : number.magnitude;
}

inline qint64 signedBits(quint64 pattern)
{
    return pattern <= Limit63 ? qint64(pattern) : -qint64(~pattern) - 1;
}

inline int signedBits32(quint64 pattern)
{
    quint64 const low = pattern & 0xFFFFFFFF;
    return low <= Limit31 ? int(low) : int(qint64(low) - Q_INT64_C(0x100000000));
}

/// The low bits of @p pattern as a variant of @p type.
inline QVariant wrapped(quint64 pattern, Type type)
{
    if (type == QVariant::Int)
        return signedBits32(pattern);
    if (type == QVariant::UInt)
        return uint(pattern & 0xFFFFFFFF);
    return type == QVariant::LongLong ? QVariant(signedBits(pattern)) : QVariant(pattern);
}

inline bool isBefore(Whole a, Whole b)
{
    if (a.negative != b.negative)
        return a.negative;
    return a.negative ? b.magnitude < a.magnitude : a.magnitude < b.magnitude;
}

/// a - b, held to the range of 32 bits.
inline int clampedDifference(Whole a, Whole b)
{
    if (isBefore(a, b)) {
        quint64 const distance = bits(b) - bits(a);
        return distance > Limit31 ? std::numeric_limits<int>::min() : -int(distance);
    }
    quint64 const distance = bits(a) - bits(b);
    return distance > Limit31 ? std::numeric_limits<int>::max() : int(distance);
}

inline double asDouble(QVariant const& number)
{
    if (number.type() == QVariant::Double)
        return number.value<double>();
    Whole const value = whole(number);
    return value.negative ? -double(value.magnitude) : double(value.magnitude);
}

inline int clampedDifference(double a, double b)
{
    double const difference = a - b;
    if (std::isnan(difference) || difference < -2147483648.0)
        return std::numeric_limits<int>::min();
    return difference > 2147483647.0 ? std::numeric_limits<int>::max() : int(difference);
}

inline bool isNumber(QVariant const& value)
{
    Type const t = value.type();
    return t == QVariant::Int || t == QVariant::UInt || t == QVariant::LongLong || t == QVariant::ULongLong
        || t == QVariant::Double;
}

/// A constant that may be rewritten for the other side: not negative and below @p limit.
inline bool fits(bool isConstant, Whole number, quint64 limit)
{
    return isConstant && !number.negative && number.magnitude < limit;
}

inline Type coercedFromInt(Whole a, Type tb, Whole b, Flags flags)
{
    if (tb == QVariant::LongLong)
        return QVariant::LongLong;
    if (fits(flags.right, b, Limit31))
        return QVariant::Int;
    if (tb == QVariant::UInt)
        return flags.left && !a.negative ? QVariant::UInt : QVariant::LongLong;
    return flags.left && !a.negative ? QVariant::ULongLong : QVariant::Invalid;
}

inline Type coercedFromUInt(Whole a, Type tb, Whole b, Flags flags)
{
    if (tb != QVariant::Int)
        return tb;
    if (fits(flags.left, a, Limit31))
        return QVariant::Int;
    return flags.right && !b.negative ? QVariant::UInt : QVariant::LongLong;
}

inline Type coercedFromLongLong(Whole a, Type tb, Whole b, Flags flags)
{
    if (tb != QVariant::ULongLong || fits(flags.right, b, Limit63))
        return QVariant::LongLong;
    return flags.left && !a.negative ? QVariant::ULongLong : QVariant::Invalid;
}

inline Type coercedFromULongLong(Whole a, Type tb, Whole b, Flags flags)
{
    if (tb == QVariant::UInt || (flags.right && !b.negative))
        return QVariant::ULongLong;
    return fits(flags.left, a, tb == QVariant::Int ? Limit31 : Limit63) ? tb : QVariant::Invalid;
}

inline Type coercedNumber(QVariant const& a, QVariant const& b, Flags flags)
{
    Type const ta = a.type();
    Type const tb = b.type();
    if (ta == tb)
        return ta;
    if (ta == QVariant::Double || tb == QVariant::Double)
        return QVariant::Double;
    if (ta == QVariant::Int)
        return coercedFromInt(whole(a), tb, whole(b), flags);
    if (ta == QVariant::UInt)
        return coercedFromUInt(whole(a), tb, whole(b), flags);
    if (ta == QVariant::LongLong)
        return coercedFromLongLong(whole(a), tb, whole(b), flags);
    return coercedFromULongLong(whole(a), tb, whole(b), flags);
}

/// Invalid where the two are not both numbers, too.
inline Type numberType(QVariant const& a, QVariant const& b, Flags flags)
{
    return isNumber(a) && isNumber(b) ? coercedNumber(a, b, flags) : QVariant::Invalid;
}

} // namespace reference
