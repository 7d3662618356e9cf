// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/expressions/Expression.h>

namespace qvgen {

/// Joins any number of conditions by AND or OR.
///
/// Evaluation stops at the operand that decides. An operand whose value is no truth value makes an AND invalid, and is
/// passed over by an OR. Without operands an AND is true, an OR false.
class GENERICUTILITIES_EXPORT BooleanOperator : public Operator {
public:
    /// Stored; never renumber.
    enum BoolOp : int { And = 0, Or = 1 };

    explicit BooleanOperator(BoolOp op);
    /// Two operands, even where one is an operator of the same kind: nothing is flattened.
    BooleanOperator(ExpressionHandle left, BoolOp op, ExpressionHandle right);

    BoolOp op() const { return m_op; }

    /// On an operator of the same kind these append to *this object*, and return a copy of it; on one of the other kind
    /// they leave it as it is and return a new operator of both. They serve named objects only; a temporary goes
    /// through the free operators below and nests.
    ///@{
    BooleanOperator operator&&(ExpressionHandle condition) &;
    BooleanOperator operator||(ExpressionHandle condition) &;
    ///@}
    /// Append to an operator of the same kind; one of the other kind becomes the first operand of a new one.
    ///@{
    BooleanOperator& operator&=(ExpressionHandle condition);
    BooleanOperator& operator|=(ExpressionHandle condition);
    ///@}

    /// The elements of @p conditions joined: the empty handle for none, the element itself for one.
    static ExpressionHandle join(ExpressionList const& conditions, BoolOp op);

    QVariant evaluate(PropertySet const& properties, bool* isConstant) const override;
    BooleanOperator* clone() const override;
    using Operator::equals;
    bool equals(Expression const* other) const override;
    void print(QTextStream& out, PrintStyle style) const override;
    void write(QDataStream& out) const override;
    void read(QDataStream& in) override;

private:
    BooleanOperator joined(BoolOp op, ExpressionHandle const& condition);

    BoolOp m_op;
};

/// Negates a condition; invalid where its value is no truth value. Write `!(!a)` for a double negation:
/// `NotOperator(NotOperator(a))` is C++'s copy.
class GENERICUTILITIES_EXPORT NotOperator : public Operator {
public:
    explicit NotOperator(ExpressionHandle operand);

    QVariant evaluate(PropertySet const& properties, bool* isConstant) const override;
    NotOperator* clone() const override;
    using Operator::equals;
    bool equals(Expression const* other) const override;
    void print(QTextStream& out, PrintStyle style) const override;
};

GENERICUTILITIES_EXPORT BooleanOperator operator&&(ExpressionHandle left, ExpressionHandle right);
GENERICUTILITIES_EXPORT BooleanOperator operator||(ExpressionHandle left, ExpressionHandle right);
GENERICUTILITIES_EXPORT NotOperator operator!(ExpressionHandle operand);

} // namespace qvgen
