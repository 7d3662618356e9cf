// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/expressions/Expression.h>
#include <GenericUtilities/expressions/ExpressionBuilders.h>

namespace qvgen {

/// Compares two operands by the rules of TypeTool; invalid where they cannot be compared.
class GENERICUTILITIES_EXPORT Comparator : public Operator {
public:
    /// Stored; never renumber.
    enum CompOp : int { NotEqual = 0, Less = 1, Equal = 2, Greater = 3, LessEqual = 4, GreaterEqual = 5 };

    Comparator(ExpressionHandle left, CompOp op, ExpressionHandle right);
    /// Without operands, for readers of streams.
    explicit Comparator(CompOp op);

    CompOp op() const { return m_op; }

    QVariant evaluate(PropertySet const& properties, bool* isConstant) const override;
    Comparator* clone() const override;
    using Operator::equals;
    bool equals(Expression const* other) const override;
    void print(QTextStream& out, PrintStyle style) const override;
    void write(QDataStream& out) const override;
    void read(QDataStream& in) override;

private:
    CompOp m_op;
};

/// Whether the first operand equals one of the others, the candidates. One that cannot be compared counts as not equal.
class GENERICUTILITIES_EXPORT ElementOf : public Operator {
public:
    /// Without operands, for readers of streams.
    ElementOf();
    explicit ElementOf(ExpressionHandle value);
    explicit ElementOf(BaseProperty const& property);

    using Operator::append;
    /// Adds a placeholder constant as candidate.
    void append(QVariant const& value);
    /// Adds every element as candidate.
    void append(ExpressionList const& candidates);

    /// True at the first candidate that matches: those behind it are not evaluated.
    QVariant evaluate(PropertySet const& properties, bool* isConstant) const override;
    ElementOf* clone() const override;
    using Operator::equals;
    bool equals(Expression const* other) const override;
    void print(QTextStream& out, PrintStyle style) const override;
};

/// Chooses a result by the first case value that equals the selector, else the default; without a selector it prints as
/// a chain of conditions (see ifThen()).
///
/// Always reports to be constant, and collects its placeholders in the order selector, default, cases, which is not the
/// order in which it prints them. Can be written to a stream, but not read back.
class GENERICUTILITIES_EXPORT SwitchCase : public Operator {
public:
    /// The default result is an empty list until defaultCase() sets one.
    explicit SwitchCase(ExpressionHandle selector);
    explicit SwitchCase(BaseProperty const& property);

    SwitchCase& switchCase(ExpressionHandle caseValue, ExpressionHandle result);
    SwitchCase& defaultCase(ExpressionHandle result);

    QVariant evaluate(PropertySet const& properties, bool* isConstant) const override;
    SwitchCase* clone() const override;
    using Operator::equals;
    bool equals(Expression const* other) const override;
    void print(QTextStream& out, PrintStyle style) const override;

private:
    void printSql(QTextStream& out, PrintStyle style) const;
    void printSwitch(QTextStream& out, PrintStyle style) const;
    void printConditions(QTextStream& out, PrintStyle style) const;
};

/// A switch without selector: prints as `if`, in SQL as `CASE WHEN`. In memory its condition is compared with the value
/// of the missing selector, an empty list.
GENERICUTILITIES_EXPORT SwitchCase ifThen(
    ExpressionHandle condition, ExpressionHandle thenValue, ExpressionHandle elseValue);

/// Comparisons of an expression or a property with another one or with a value (see ExpressionBuilders.h).
///@{
template <class L, class R, detail::IfOperands<L, R> = true> Comparator operator<(L const& left, R const& right)
{
    return {detail::operand(left), Comparator::Less, detail::operand(right)};
}
template <class L, class R, detail::IfOperands<L, R> = true> Comparator operator<=(L const& left, R const& right)
{
    return {detail::operand(left), Comparator::LessEqual, detail::operand(right)};
}
template <class L, class R, detail::IfOperands<L, R> = true> Comparator operator==(L const& left, R const& right)
{
    return {detail::operand(left), Comparator::Equal, detail::operand(right)};
}
template <class L, class R, detail::IfOperands<L, R> = true> Comparator operator!=(L const& left, R const& right)
{
    return {detail::operand(left), Comparator::NotEqual, detail::operand(right)};
}
template <class L, class R, detail::IfOperands<L, R> = true> Comparator operator>=(L const& left, R const& right)
{
    return {detail::operand(left), Comparator::GreaterEqual, detail::operand(right)};
}
template <class L, class R, detail::IfOperands<L, R> = true> Comparator operator>(L const& left, R const& right)
{
    return {detail::operand(left), Comparator::Greater, detail::operand(right)};
}
///@}

} // namespace qvgen
