// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/expressions/Expression.h>
#include <GenericUtilities/properties/PropertySet.h>

#include <QMetaType>

Q_DECLARE_METATYPE(qvgen::ExpressionHandle)
Q_DECLARE_METATYPE(qvgen::Expression::PrintStyle)

/// Short names for what the tests build trees from.
namespace nodes {

constexpr auto Plain = qvgen::Expression::PrintStyle(0);
constexpr auto Code = qvgen::Expression::StyleCode;
constexpr auto Sql = qvgen::Expression::StyleSql;
constexpr auto Bound = qvgen::Expression::StyleSql | qvgen::Expression::StylePlaceholders;
constexpr auto Nested = qvgen::Expression::StyleNested;

inline qvgen::ConstExpression constant(QVariant const& value)
{
    return {value, false};
}

inline qvgen::ConstExpression placeholder(QVariant const& value)
{
    return {value, true};
}

inline qvgen::ValueExpression value(char const* name)
{
    return {QString::fromLatin1(name), QString()};
}

/// The node of class @p Node that @p handle holds; null where it holds none.
template <class Node> Node const* held(qvgen::ExpressionHandle const& handle)
{
    return dynamic_cast<Node const*>(handle.constData());
}

inline int operandCount(qvgen::ExpressionHandle const& handle)
{
    auto const* const node = held<qvgen::Operator>(handle);
    return node ? node->operands().size() : -1;
}

template <class Property, class Value> void add(qvgen::PropertySet& set, char const* name, Value const& value)
{
    set.add(qvm::smart<qvgen::BaseProperty>(new Property(QString::fromLatin1(name), QString(), value)));
}

} // namespace nodes
