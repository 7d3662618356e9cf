// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/expressions/PatternBounds_p.h>

#include <QVariant>

/// What it costs to convert and to compare values; not installed.
///
/// Trees from damaged or hostile streams convert one large value again and again: each time it is taken from the
/// allowance of the evaluation at hand.
namespace qvgen {

template <class Type> qint64 sizeOf(QVariant const& value)
{
    return static_cast<Type const*>(value.constData())->size();
}

/// An estimate that lies above what was measured; 0 for what has no parts.
inline double conversionNanoseconds(QVariant const& value)
{
    constexpr double perUnit = 3;
    constexpr double perByte = 8; // of what is no UTF-8
    constexpr double perElement = 100;
    constexpr double perEntry = 2000;
    switch (value.type()) {
    case QVariant::String:
        return perUnit * static_cast<double>(sizeOf<QString>(value));
    case QVariant::ByteArray:
        return perByte * static_cast<double>(sizeOf<QByteArray>(value));
    case QVariant::StringList:
        return perElement * static_cast<double>(sizeOf<QStringList>(value));
    case QVariant::List:
        return perElement * static_cast<double>(sizeOf<QVariantList>(value));
    case QVariant::Map:
        return perEntry * static_cast<double>(sizeOf<QVariantMap>(value));
    case QVariant::Hash:
        return perEntry * static_cast<double>(sizeOf<QVariantHash>(value));
    default:
        return 0;
    }
}

/// An estimate of the part of @p value in one comparison with any other, the conversion of large ones apart.
inline double comparisonNanoseconds(QVariant const& value)
{
    constexpr double perValue = 1000;
    constexpr double perMoment = 10000; // from any time zone to UTC
    double nanoseconds = perValue;
    if (value.type() == QVariant::DateTime)
        nanoseconds = perMoment;
    else if (value.type() == QVariant::StringList)
        nanoseconds += perValue * static_cast<double>(sizeOf<QStringList>(value));
    else if (value.type() == QVariant::List)
        for (QVariant const& element : *static_cast<QVariantList const*>(value.constData()))
            nanoseconds += comparisonNanoseconds(element);
    return nanoseconds;
}

/// Takes the conversion of @p value from the allowance; false where it may not be done.
inline bool mayConvert(QVariant const& value)
{
    double const nanoseconds = conversionNanoseconds(value);
    return nanoseconds == 0 || Evaluation::allows(nanoseconds);
}

} // namespace qvgen
