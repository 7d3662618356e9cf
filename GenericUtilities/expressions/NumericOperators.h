// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/expressions/Expression.h>
#include <GenericUtilities/expressions/ExpressionBuilders.h>

namespace qvgen {

/// Joins any number of operands by one arithmetic or bit operation, from left to right by the rules of TypeTool.
/// Without operands, or where a step fails, the value is invalid.
class GENERICUTILITIES_EXPORT NumericOperator : public Operator {
public:
    /// Stored; never renumber.
    enum NumOp : int { Add = 0, Subtract = 1, Multiply = 2, Divide = 3, Modulo = 4, BitAnd = 5, BitOr = 6, BitXor = 7 };

    explicit NumericOperator(NumOp op);
    /// Two operands, even where one is an operator of the same kind: nothing is flattened.
    NumericOperator(ExpressionHandle left, NumOp op, ExpressionHandle right);

    NumOp op() const { return m_op; }
    NumericOperator& append(ExpressionHandle operand);

    /// Append to an operator of the same kind; one of another kind becomes the first operand of a new one.
    ///@{
    NumericOperator& operator+=(ExpressionHandle operand) { return extend(Add, operand); }
    NumericOperator& operator-=(ExpressionHandle operand) { return extend(Subtract, operand); }
    NumericOperator& operator*=(ExpressionHandle operand) { return extend(Multiply, operand); }
    NumericOperator& operator/=(ExpressionHandle operand) { return extend(Divide, operand); }
    NumericOperator& operator%=(ExpressionHandle operand) { return extend(Modulo, operand); }
    NumericOperator& operator&=(ExpressionHandle operand) { return extend(BitAnd, operand); }
    NumericOperator& operator|=(ExpressionHandle operand) { return extend(BitOr, operand); }
    NumericOperator& operator^=(ExpressionHandle operand) { return extend(BitXor, operand); }
    ///@}

    /// The same on a copy: `a + b + c` is one operator of three operands.
    ///@{
    NumericOperator operator+(ExpressionHandle operand) const { return joined(Add, operand); }
    NumericOperator operator-(ExpressionHandle operand) const { return joined(Subtract, operand); }
    NumericOperator operator*(ExpressionHandle operand) const { return joined(Multiply, operand); }
    NumericOperator operator/(ExpressionHandle operand) const { return joined(Divide, operand); }
    NumericOperator operator%(ExpressionHandle operand) const { return joined(Modulo, operand); }
    NumericOperator operator&(ExpressionHandle operand) const { return joined(BitAnd, operand); }
    NumericOperator operator|(ExpressionHandle operand) const { return joined(BitOr, operand); }
    NumericOperator operator^(ExpressionHandle operand) const { return joined(BitXor, operand); }
    ///@}

    /// The elements of @p operands joined: the empty handle for none, the element itself for one.
    static ExpressionHandle join(ExpressionList const& operands, NumOp op);
    /// One step: replaces @p accumulated by the result of the operation with @p value on the right, and its flag by
    /// whether both were constant. Returns whether the operation succeeded (TypeTool::wasOK()); false, and nothing
    /// changed, for a number that no operation has.
    static bool apply(
        QVariant& accumulated, bool& accumulatedConstant, NumOp op, QVariant const& value, bool valueConstant);

    /// Reports whether the first operand is constant.
    QVariant evaluate(PropertySet const& properties, bool* isConstant) const override;
    NumericOperator* clone() const override;
    using Operator::equals;
    bool equals(Expression const* other) const override;
    void print(QTextStream& out, PrintStyle style) const override;
    void write(QDataStream& out) const override;
    void read(QDataStream& in) override;

private:
    NumericOperator& extend(NumOp op, ExpressionHandle const& operand);
    NumericOperator joined(NumOp op, ExpressionHandle const& operand) const;

    NumOp m_op;
};

/// Negation or bitwise not of one operand.
///
/// A minus mirrors dates around 1970-01-01 00:00 UTC, in whole seconds of 32 bits (a second after it becomes the last
/// one before 2106-02-07 06:28:16 UTC), and turns texts into ones that sort in reverse, so that it serves as descending
/// sort term; printed as one (Expression::StyleOrderTerm), it is the operand followed by " DESC". The bitwise not is
/// printed, but not carried out in memory: its value is that of the operand.
class GENERICUTILITIES_EXPORT UnaryOperator : public Operator {
public:
    /// Stored; never renumber.
    enum UnaryOp : int { Minus = 0, BitNot = 1 };

    UnaryOperator(UnaryOp op, ExpressionHandle operand);

    UnaryOp op() const { return m_op; }

    QVariant evaluate(PropertySet const& properties, bool* isConstant) const override;
    UnaryOperator* clone() const override;
    using Operator::equals;
    bool equals(Expression const* other) const override;
    void print(QTextStream& out, PrintStyle style) const override;
    void write(QDataStream& out) const override;
    void read(QDataStream& in) override;

private:
    UnaryOp m_op;
};

namespace detail {

    // A NumericOperator joins expressions by its members, which append to it.
    template <class Left, class Right> using IsMemberCall = std::conjunction<std::is_base_of<NumericOperator, Left>,
        std::disjunction<std::is_base_of<Expression, Right>, std::is_base_of<ExpressionHandle, Right>>>;

    template <class Left, class Right> using IfNumericOperands
        = std::enable_if_t<std::conjunction_v<AreOperands<Left, Right>, std::negation<IsMemberCall<Left, Right>>>,
            bool>;

} // namespace detail

/// Arithmetic of an expression or a property with another one or with a value (see ExpressionBuilders.h).
///@{
template <class L, class R, detail::IfNumericOperands<L, R> = true>
NumericOperator operator+(L const& left, R const& right)
{
    return {detail::operand(left), NumericOperator::Add, detail::operand(right)};
}
template <class L, class R, detail::IfNumericOperands<L, R> = true>
NumericOperator operator-(L const& left, R const& right)
{
    return {detail::operand(left), NumericOperator::Subtract, detail::operand(right)};
}
template <class L, class R, detail::IfNumericOperands<L, R> = true>
NumericOperator operator*(L const& left, R const& right)
{
    return {detail::operand(left), NumericOperator::Multiply, detail::operand(right)};
}
template <class L, class R, detail::IfNumericOperands<L, R> = true>
NumericOperator operator/(L const& left, R const& right)
{
    return {detail::operand(left), NumericOperator::Divide, detail::operand(right)};
}
template <class L, class R, detail::IfNumericOperands<L, R> = true>
NumericOperator operator%(L const& left, R const& right)
{
    return {detail::operand(left), NumericOperator::Modulo, detail::operand(right)};
}
template <class L, class R, detail::IfNumericOperands<L, R> = true>
NumericOperator operator&(L const& left, R const& right)
{
    return {detail::operand(left), NumericOperator::BitAnd, detail::operand(right)};
}
template <class L, class R, detail::IfNumericOperands<L, R> = true>
NumericOperator operator|(L const& left, R const& right)
{
    return {detail::operand(left), NumericOperator::BitOr, detail::operand(right)};
}
template <class L, class R, detail::IfNumericOperands<L, R> = true>
NumericOperator operator^(L const& left, R const& right)
{
    return {detail::operand(left), NumericOperator::BitXor, detail::operand(right)};
}
///@}

template <class T, detail::IfTerm<T> = true> UnaryOperator operator-(T const& operand)
{
    return {UnaryOperator::Minus, detail::operand(operand)};
}
template <class T, detail::IfTerm<T> = true> UnaryOperator operator~(T const& operand)
{
    return {UnaryOperator::BitNot, detail::operand(operand)};
}
/// The operand itself.
GENERICUTILITIES_EXPORT ExpressionHandle operator+(ExpressionHandle operand);
GENERICUTILITIES_EXPORT ValueExpression operator+(BaseProperty const& property);

} // namespace qvgen
