// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/expressions/TypeTool.h>

/// What arithmetic, dates and order of the type tool share; not installed.
namespace qvgen {

inline bool isDateWithPartner(QVariant::Type date, QVariant::Type partner)
{
    return TypeTool::isDate(date) && (TypeTool::isDate(partner) || TypeTool::isNumeric(partner));
}

inline bool isText(QVariant const& value)
{
    return value.type() == QVariant::String || value.canConvert(QVariant::String);
}

// Sums and products of microseconds wrap around, as all integers of the type tool do.
inline qint64 wrappedProduct(qint64 a, qint64 b)
{
    return static_cast<qint64>(static_cast<quint64>(a) * static_cast<quint64>(b));
}

inline qint64 wrappedSum(qint64 a, qint64 b)
{
    return static_cast<qint64>(static_cast<quint64>(a) + static_cast<quint64>(b));
}

} // namespace qvgen
