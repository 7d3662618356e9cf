// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/expressions/Expression.h>
#include <GenericUtilities/expressions/TypeTool.h>

/// Rules that several node classes follow; not installed.
namespace qvgen {

/// Tells a caller who asked whether a value is constant.
inline void report(bool* isConstant, bool constant)
{
    if (isConstant)
        *isConstant = constant;
}

/// The value of a tree that is too deep to be evaluated.
inline QVariant tooDeep(bool* isConstant)
{
    report(isConstant, false);
    return {};
}

/// The reference by which a property stands in a tree.
inline ValueExpression reference(BaseProperty const& property)
{
    return {property, QString()};
}

/// What is bound to the "?" of @p value: dates as the microseconds that their SQL text would have.
inline QVariant bindValue(QVariant const& value)
{
    return TypeTool::isDate(value.type()) ? QVariant(TypeTool::dateMicroSeconds(value)) : value;
}

constexpr Expression::PrintStyle nested(Expression::PrintStyle style)
{
    return style | Expression::StyleNested;
}

constexpr Expression::PrintStyle notNested(Expression::PrintStyle style)
{
    return style & ~Expression::StyleNested;
}

} // namespace qvgen
