// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include "ReferenceNumbers.h"

#include <QDateTime>

#include <algorithm>

/// A second, slow and literal statement of the rules of qvgen::TypeTool, for tests to compare with. It shares no code
/// with the library.
namespace reference {

/// A result with the flag that tells whether there is one.
struct Outcome {
    QVariant value;
    bool ok;
};

struct Order {
    int result;
    bool ok;
};

inline Outcome failure()
{
    return {QVariant(), false};
}

inline Outcome success(QVariant const& value)
{
    return {value, true};
}

inline bool isDate(QVariant const& value)
{
    return value.type() == QVariant::Date || value.type() == QVariant::Time || value.type() == QVariant::DateTime;
}

inline bool isList(QVariant const& value)
{
    return value.type() == QVariant::List || value.type() == QVariant::StringList;
}

inline bool isText(QVariant const& value)
{
    return value.canConvert(QVariant::String);
}

inline Type coercedOther(QVariant const& a, QVariant const& b)
{
    if (b.canConvert(int(a.type())))
        return a.type();
    if (a.canConvert(int(b.type())))
        return b.type();
    return isText(a) && isText(b) ? QVariant::String : QVariant::Invalid;
}

inline QDateTime momentOfSecond(quint32 second)
{
    return QDateTime(QDate(1970, 1, 1), QTime(0, 0), Qt::UTC).addSecs(second);
}

/// Whole seconds that wrap at 32 bits, from a signed count of microseconds.
inline QDateTime momentOfMicros(quint64 micros)
{
    Whole const count = whole(signedBits(micros));
    return momentOfSecond(quint32(bits({count.negative, count.magnitude / 1000000}) & 0xFFFFFFFF));
}

/// The same from an unsigned count.
inline QDateTime momentOfFrame(quint64 frameTime)
{
    return momentOfSecond(quint32(frameTime / 1000000 & 0xFFFFFFFF));
}

inline quint64 microsOfMoment(QDateTime const& moment)
{
    int const millis = moment.time().isValid() ? moment.time().msec() : 0;
    return quint64(moment.toTimeSpec(Qt::UTC).toTime_t()) * 1000000 + quint64(millis) * 1000;
}

inline quint64 signedMicrosOfDays(double days)
{
    double const micros = days * 86400000000.0;
    if (std::isnan(micros) || micros <= -9223372036854775808.0)
        return Q_UINT64_C(0x8000000000000000);
    return micros >= 9223372036854775808.0 ? Limit63 : quint64(qint64(micros));
}

inline quint64 unsignedMicrosOfDays(double days)
{
    double const micros = days * 86400000000.0;
    if (std::isnan(micros) || micros <= 0)
        return 0;
    return micros >= 18446744073709551616.0 ? std::numeric_limits<quint64>::max() : quint64(micros);
}

/// The signed count of microseconds, as its bits.
inline quint64 micros(QVariant const& value)
{
    switch (int(value.type())) {
    case QVariant::Int:
    case QVariant::UInt:
        return bits(whole(value)) * 1000;
    case QVariant::LongLong:
    case QVariant::ULongLong:
        return bits(whole(value));
    case QVariant::Double:
        return signedMicrosOfDays(value.value<double>());
    case QVariant::Date:
        return quint64(value.toDate().isValid() ? value.toDate().toJulianDay() - 2440588 : 0) * MicrosPerDay;
    case QVariant::Time:
        return value.toTime().isValid() ? quint64(value.toTime().msecsSinceStartOfDay()) * 1000 : 0;
    case QVariant::DateTime:
        return microsOfMoment(value.toDateTime());
    default:
        return isText(value) ? microsOfMoment(QDateTime::fromString(value.toString(), Qt::TextDate)) : 0;
    }
}

inline QVariant wholeMillisOrMicros(quint64 count)
{
    Whole const number = whole(signedBits(count));
    if (number.magnitude % 1000 != 0)
        return count;
    return wrapped(bits({number.negative, number.magnitude / 1000}), QVariant::Int);
}

inline QVariant moved(QVariant const& value, quint64 distance)
{
    quint64 const m = micros(value) + distance;
    QDateTime const moment = momentOfMicros(m);
    switch (int(value.type())) {
    case QVariant::Int:
    case QVariant::UInt:
        return wrapped(m / 1000, QVariant::Int);
    case QVariant::LongLong:
    case QVariant::ULongLong:
        return wholeMillisOrMicros(m);
    case QVariant::Double:
        return double(m) / 86400000000.0;
    case QVariant::Date:
        return m % MicrosPerDay == 0 ? QVariant(moment.date()) : QVariant(moment);
    case QVariant::Time:
        return m < MicrosPerDay ? QVariant(moment.time()) : QVariant(moment);
    default:
        return moment;
    }
}

inline QVariant dateToNumber(QVariant const& date, Type target)
{
    quint64 const m = micros(date);
    if (target == QVariant::Int)
        return signedBits32(m) / 1000;
    if (target == QVariant::UInt)
        return uint(m & 0xFFFFFFFF) / 1000;
    return target == QVariant::Double ? QVariant(double(m) / 86400000000.0) : QVariant(m);
}

inline QVariant numberToDate(QVariant const& number, Type target)
{
    bool const isDays = number.type() == QVariant::Double;
    QDateTime const moment = momentOfFrame(isDays ? unsignedMicrosOfDays(number.value<double>()) : micros(number));
    if (target == QVariant::Date)
        return moment.date();
    return target == QVariant::Time ? QVariant(moment.time()) : QVariant(moment);
}

inline QVariant castDate(QVariant const& value, Type target)
{
    bool const toNumber = target >= QVariant::Int && target <= QVariant::Double;
    bool const toDate = target == QVariant::Date || target == QVariant::Time || target == QVariant::DateTime;
    if (isDate(value) && toNumber)
        return dateToNumber(value, target);
    return isNumber(value) && toDate ? numberToDate(value, target) : QVariant();
}

inline Outcome addOthers(QVariant const& a, QVariant const& b)
{
    if (isDate(a) && (isDate(b) || isNumber(b)))
        return success(moved(a, micros(b)));
    if (isDate(b) && isNumber(a))
        return success(moved(b, micros(a)));
    return isText(a) && isText(b) ? success(a.toString() + b.toString()) : failure();
}

inline Outcome add(QVariant const& a, QVariant const& b, Flags flags)
{
    Type const type = numberType(a, b, flags);
    if (type == QVariant::Invalid)
        return addOthers(a, b);
    if (type == QVariant::Double)
        return success(asDouble(a) + asDouble(b));
    return success(wrapped(bits(whole(a)) + bits(whole(b)), type));
}

inline Outcome subtractWhole(QVariant const& a, QVariant const& b, Type type)
{
    bool const isPositive = isBefore(whole(b), whole(a));
    if (type == QVariant::ULongLong && !isPositive)
        return success(asDouble(a) - asDouble(b));
    bool const widens = type == QVariant::UInt && !isPositive;
    return success(wrapped(bits(whole(a)) - bits(whole(b)), widens ? QVariant::LongLong : type));
}

inline Outcome subtract(QVariant const& a, QVariant const& b, Flags flags)
{
    Type const type = numberType(a, b, flags);
    if (type == QVariant::Double)
        return success(asDouble(a) - asDouble(b));
    if (type != QVariant::Invalid)
        return subtractWhole(a, b, type);
    return isDate(a) && (isDate(b) || isNumber(b)) ? success(moved(a, 0 - micros(b))) : failure();
}

inline Outcome multiply(QVariant const& a, QVariant const& b, Flags flags)
{
    Type const type = numberType(a, b, flags);
    if (type == QVariant::Invalid)
        return failure();
    if (type == QVariant::Double)
        return success(asDouble(a) * asDouble(b));
    return success(wrapped(bits(whole(a)) * bits(whole(b)), type));
}

inline Outcome divide(QVariant const& a, QVariant const& b, Flags flags)
{
    Type const type = numberType(a, b, flags);
    if (type == QVariant::Invalid || asDouble(b) == 0.0)
        return failure();
    if (type == QVariant::Double)
        return success(asDouble(a) / asDouble(b));
    Whole const l = whole(a);
    Whole const r = whole(b);
    return success(wrapped(bits({l.negative != r.negative, l.magnitude / r.magnitude}), type));
}

inline Outcome modulo(QVariant const& a, QVariant const& b, Flags flags)
{
    Type const type = numberType(a, b, flags);
    if (type == QVariant::Invalid || type == QVariant::Double || whole(b).magnitude == 0)
        return failure();
    return success(wrapped(bits({whole(a).negative, whole(a).magnitude % whole(b).magnitude}), type));
}

template <class Combine> Outcome combineBits(QVariant const& a, QVariant const& b, Flags flags, Combine combine)
{
    Type const type = numberType(a, b, flags);
    if (type == QVariant::Invalid || type == QVariant::Double)
        return success(QVariant());
    return success(wrapped(combine(bits(whole(a)), bits(whole(b))), type));
}

inline Outcome bitAnd(QVariant const& a, QVariant const& b, Flags flags)
{
    return combineBits(a, b, flags, [](quint64 l, quint64 r) { return l & r; });
}

inline Outcome bitOr(QVariant const& a, QVariant const& b, Flags flags)
{
    return combineBits(a, b, flags, [](quint64 l, quint64 r) { return l | r; });
}

inline Outcome bitXor(QVariant const& a, QVariant const& b, Flags flags)
{
    return combineBits(a, b, flags, [](quint64 l, quint64 r) { return l ^ r; });
}

Order order(QVariant const& a, QVariant const& b, Flags flags);

inline Order listOrder(QVariantList const& left, QVariantList const& right, Flags flags)
{
    int const common = std::min(left.size(), right.size());
    for (int i = 0; i < common; ++i) {
        Order const element = order(left.at(i), right.at(i), flags);
        if (element.result != 0 || !element.ok)
            return element;
    }
    if (left.size() == right.size())
        return {0, true};
    return {left.size() < right.size() ? std::numeric_limits<int>::min() : std::numeric_limits<int>::max(), true};
}

inline Order otherOrder(QVariant const& a, QVariant const& b, Flags flags)
{
    if ((isDate(a) && (isDate(b) || isNumber(b))) || (isDate(b) && isNumber(a)))
        return {clampedDifference(whole(signedBits(micros(a))), whole(signedBits(micros(b)))), true};
    if (isList(a) && isList(b))
        return listOrder(a.toList(), b.toList(), flags);
    if (isText(a) && isText(b))
        return {QString::compare(a.toString(), b.toString(), Qt::CaseSensitive), true};
    return {0, false};
}

inline Order order(QVariant const& a, QVariant const& b, Flags flags)
{
    switch (int(numberType(a, b, flags))) {
    case QVariant::Int:
    case QVariant::UInt:
    case QVariant::LongLong:
        return {clampedDifference(whole(a), whole(b)), true};
    case QVariant::ULongLong:
    case QVariant::Double:
        return {clampedDifference(asDouble(a), asDouble(b)), true};
    default:
        return otherOrder(a, b, flags);
    }
}

inline Outcome compare(QVariant const& a, QVariant const& b, Flags flags)
{
    Order const outcome = order(a, b, flags);
    return {outcome.result, outcome.ok};
}

inline bool converts(QVariant value, Type type)
{
    return value.convert(int(type));
}

inline Outcome equals(QVariant const& a, QVariant const& b, Flags flags)
{
    Order const outcome = order(a, b, flags);
    if (outcome.ok)
        return success(outcome.result == 0);
    Type const type = coercedOther(a, b);
    if (type == QVariant::Invalid)
        return {false, false};
    return success(converts(a, type) == converts(b, type));
}

} // namespace reference
