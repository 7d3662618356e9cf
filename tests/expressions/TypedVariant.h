// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <QDateTime>
#include <QRect>
#include <QStringList>
#include <QVariant>

#include <cmath>
#include <limits>

/// What tests of variants need: the ends of the number types, equality that converts nothing, and a text that tells
/// type and value.
namespace typed {

inline constexpr int IntMin = std::numeric_limits<int>::min();
inline constexpr int IntMax = std::numeric_limits<int>::max();
inline constexpr uint UIntMax = std::numeric_limits<uint>::max();
inline constexpr qint64 LongMin = std::numeric_limits<qint64>::min();
inline constexpr qint64 LongMax = std::numeric_limits<qint64>::max();
inline constexpr quint64 ULongMax = std::numeric_limits<quint64>::max();
inline constexpr double Inf = std::numeric_limits<double>::infinity();
inline constexpr double NaN = std::numeric_limits<double>::quiet_NaN();

inline bool sameDouble(double a, double b)
{
    return std::isnan(a) ? std::isnan(b) : a == b && std::signbit(a) == std::signbit(b);
}

/// Equal in type and in value; moments must also agree in their time zone.
inline bool same(QVariant const& a, QVariant const& b)
{
    if (a.type() != b.type())
        return false;
    if (a.type() == QVariant::Double)
        return sameDouble(a.toDouble(), b.toDouble());
    if (a.type() == QVariant::DateTime && a.toDateTime().timeSpec() != b.toDateTime().timeSpec())
        return false;
    return a == b;
}

QString describe(QVariant const& value);

inline QString describe(QDateTime const& moment)
{
    return moment.toString(Qt::ISODateWithMs) + QStringLiteral(" spec %1").arg(moment.timeSpec());
}

inline QString describe(QDate const& date)
{
    return QStringLiteral("%1 (Julian day %2)").arg(date.toString(Qt::ISODate)).arg(date.toJulianDay());
}

inline QString describe(QRect const& r)
{
    return QStringLiteral("%1,%2 %3x%4").arg(r.x()).arg(r.y()).arg(r.width()).arg(r.height());
}

inline QString describe(QVariantList const& list)
{
    QStringList texts;
    for (QVariant const& element : list)
        texts += describe(element);
    return QLatin1Char('[') + texts.join(QStringLiteral(", ")) + QLatin1Char(']');
}

inline QString valueText(QVariant const& value)
{
    switch (static_cast<int>(value.type())) {
    case QMetaType::Double:
    case QMetaType::Float:
        return QString::number(value.toDouble(), 'g', 17);
    case QMetaType::QDate:
        return describe(value.toDate());
    case QMetaType::QDateTime:
        return describe(value.toDateTime());
    case QMetaType::QRect:
        return describe(value.toRect());
    case QMetaType::QVariantList:
    case QMetaType::QStringList:
        return describe(value.toList());
    default:
        return QLatin1Char('"') + value.toString() + QLatin1Char('"');
    }
}

inline QString describe(QVariant const& value)
{
    if (!value.isValid())
        return QStringLiteral("invalid");
    return QLatin1String(value.typeName()) + QLatin1Char(' ') + valueText(value);
}

} // namespace typed
