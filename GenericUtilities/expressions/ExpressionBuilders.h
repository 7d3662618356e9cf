// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/expressions/Expression.h>

#include <type_traits>

/// How the operators of Comparator.h and NumericOperators.h take their arguments.
///
/// One argument is an expression (a node or a handle) or a property, which becomes a reference to its value. The other
/// is one of these, too, or a plain value: whatever converts to QVariant, or any integer. A plain value becomes a
/// placeholder constant. The operators are templates so that no argument is ever converted to find them.
namespace qvgen {
namespace detail {

    template <class T> using IsTerm = std::disjunction<std::is_base_of<BaseProperty, T>, std::is_base_of<Expression, T>,
        std::is_base_of<ExpressionHandle, T>>;

    // Any other pointer would convert to QVariant as a truth value.
    template <class T> using IsText = std::conjunction<std::is_pointer<std::decay_t<T>>,
        std::is_same<std::remove_cv_t<std::remove_pointer_t<std::decay_t<T>>>, char>>;

    template <class T> using IsPlainValue = std::disjunction<std::is_integral<T>,
        std::conjunction<std::disjunction<std::is_class<T>, std::is_enum<T>, std::is_arithmetic<T>, IsText<T>>,
            std::is_convertible<T const&, QVariant>>>;

    template <class T> using IsOperand = std::disjunction<IsTerm<T>, IsPlainValue<T>>;

    template <class Left, class Right> using AreOperands
        = std::disjunction<std::conjunction<IsTerm<Left>, IsOperand<Right>>,
            std::conjunction<IsTerm<Right>, IsOperand<Left>>>;

    template <class Left, class Right> using IfOperands = std::enable_if_t<AreOperands<Left, Right>::value, bool>;

    template <class T> using IfTerm = std::enable_if_t<IsTerm<T>::value, bool>;

    template <class T> ExpressionHandle operand(T const& argument)
    {
        if constexpr (std::is_base_of_v<BaseProperty, T>)
            return ValueExpression(argument, QString());
        else if constexpr (IsTerm<T>::value)
            return argument;
        else if constexpr (std::is_convertible_v<T const&, QVariant>)
            return ConstExpression(argument, true);
        else if constexpr (std::is_signed_v<T>)
            return ConstExpression(static_cast<qlonglong>(argument), true);
        else
            return ConstExpression(static_cast<qulonglong>(argument), true);
    }

} // namespace detail
} // namespace qvgen
