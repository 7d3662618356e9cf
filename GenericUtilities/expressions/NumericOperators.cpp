// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/expressions/NumericOperators.h>

#include <GenericUtilities/expressions/NodeRules_p.h>
#include <GenericUtilities/expressions/ValueCost_p.h>

#include <QDateTime>
#include <QTextStream>

namespace qvgen {

namespace {

    bool const operatorsAreRegistered[] = {
        Expression::registerExpressionClass(
            NumericOperator(ConstExpression(0, false), NumericOperator::Add, ConstExpression(0, false))),
        Expression::registerExpressionClass(UnaryOperator(UnaryOperator::Minus, ConstExpression(0, false))),
    };

    struct Operation {
        NumericOperator::NumOp op;
        char const* sql;
        char const* code;
        QVariant (TypeTool::*calculate)(QVariant const& a, QVariant const& b);
    };

    // clang-format off
    constexpr Operation operations[] = {
        {NumericOperator::Add,      "+",     "+", &TypeTool::do_add},
        {NumericOperator::Subtract, "-",     "-", &TypeTool::do_subtract},
        {NumericOperator::Multiply, "*",     "*", &TypeTool::do_multiply},
        {NumericOperator::Divide,   "/",     "/", &TypeTool::do_divide},
        {NumericOperator::Modulo,   " mod ", "%", &TypeTool::do_modulo},
        {NumericOperator::BitAnd,   "&",     "&", &TypeTool::do_bitand},
        {NumericOperator::BitOr,    "|",     "|", &TypeTool::do_bitor},
        {NumericOperator::BitXor,   "^",     "^", &TypeTool::do_bitxor},
    };
    // clang-format on

    // Null for a number that no operation has, as damaged streams may hold.
    Operation const* operation(NumericOperator::NumOp op)
    {
        auto const index = static_cast<unsigned>(op);
        return index < std::size(operations) ? &operations[index] : nullptr;
    }

} // namespace

NumericOperator::NumericOperator(NumOp op)
    : m_op(op)
{
}

NumericOperator::NumericOperator(ExpressionHandle left, NumOp op, ExpressionHandle right)
    : m_op(op)
{
    append(left);
    append(right);
}

NumericOperator& NumericOperator::append(ExpressionHandle operand)
{
    Operator::append(operand);
    return *this;
}

NumericOperator& NumericOperator::extend(NumOp op, ExpressionHandle const& operand)
{
    if (m_op == op)
        return append(operand);
    return *this = NumericOperator(*this, op, operand);
}

NumericOperator NumericOperator::joined(NumOp op, ExpressionHandle const& operand) const
{
    return NumericOperator(*this).extend(op, operand);
}

ExpressionHandle NumericOperator::join(ExpressionList const& operands, NumOp op)
{
    QList<ExpressionHandle> const& elements = operands.operands();
    if (elements.isEmpty())
        return {};
    if (elements.size() == 1)
        return elements.first();
    NumericOperator joined(op);
    for (ExpressionHandle const& element : elements)
        joined.append(element);
    return joined;
}

bool NumericOperator::apply(
    QVariant& accumulated, bool& accumulatedConstant, NumOp op, QVariant const& value, bool valueConstant)
{
    Operation const* const row = operation(op);
    if (!row)
        return false;
    TypeTool tool(accumulatedConstant, valueConstant);
    accumulated = (tool.*row->calculate)(accumulated, value);
    accumulatedConstant = accumulatedConstant && valueConstant;
    return tool.wasOK();
}

QVariant NumericOperator::evaluate(PropertySet const& properties, bool* isConstant) const
{
    if (isTooDeep())
        return tooDeep(isConstant);
    Evaluation const evaluation;
    if (operands().isEmpty()) {
        report(isConstant, true);
        return {};
    }
    bool accumulatedConstant = true;
    QVariant accumulated = operand(0).evaluate(properties, &accumulatedConstant);
    // The first operand's flag on purpose, whatever follows: clients fold constants by it.
    report(isConstant, accumulatedConstant);
    for (int i = 1; i < operands().size(); ++i) {
        bool valueConstant = true;
        QVariant const value = operand(i).evaluate(properties, &valueConstant);
        if (!apply(accumulated, accumulatedConstant, m_op, value, valueConstant))
            return {};
    }
    return accumulated;
}

NumericOperator* NumericOperator::clone() const
{
    return new NumericOperator(*this);
}

bool NumericOperator::equals(Expression const* other) const
{
    auto const* numeric = dynamic_cast<NumericOperator const*>(other);
    return numeric && m_op == numeric->m_op && Operator::equals(other);
}

void NumericOperator::print(QTextStream& out, PrintStyle style) const
{
    if (isTooDeep())
        return;
    Operation const* const row = operation(m_op);
    QLatin1String const separator(!row ? "" : (style & StyleCode) ? row->code : row->sql);
    printJunction(out, style, separator);
}

UnaryOperator::UnaryOperator(UnaryOp op, ExpressionHandle operand)
    : m_op(op)
{
    append(operand);
}

QVariant UnaryOperator::evaluate(PropertySet const& properties, bool* isConstant) const
{
    if (isTooDeep())
        return tooDeep(isConstant);
    Evaluation const evaluation;
    report(isConstant, true);
    if (operands().isEmpty())
        return {};
    bool valueConstant = true;
    QVariant const value = operand(0).evaluate(properties, &valueConstant);
    bool const isMinus = m_op == Minus;

    QVariant result;
    bool resultConstant = true;
    if (TypeTool::isNumeric(value.type()) && (isMinus || m_op == BitNot)) {
        // 0 XOR the value: the bitwise not is the database's to carry out, in memory the value stays as it is.
        result = 0;
        NumericOperator::apply(result, resultConstant, isMinus ? NumericOperator::Subtract : NumericOperator::BitXor,
            value, valueConstant);
    } else if (TypeTool::isDate(value.type()) && isMinus) {
        result = QDateTime::fromSecsSinceEpoch(0);
        NumericOperator::apply(result, resultConstant, NumericOperator::Subtract, value, valueConstant);
    } else if (isMinus && value.canConvert(QVariant::String) && mayConvert(value)) {
        result = TypeTool::invertString(value.toString());
    }
    report(isConstant, resultConstant);
    return result;
}

UnaryOperator* UnaryOperator::clone() const
{
    return new UnaryOperator(*this);
}

bool UnaryOperator::equals(Expression const* other) const
{
    auto const* unary = dynamic_cast<UnaryOperator const*>(other);
    return unary && m_op == unary->m_op && Operator::equals(other);
}

void UnaryOperator::print(QTextStream& out, PrintStyle style) const
{
    if (isTooDeep())
        return;
    bool const isSortTerm = style & StyleOrderTerm;
    if (!isSortTerm)
        out << (m_op == Minus ? "-" : m_op == BitNot ? "~" : "");
    if (!operands().isEmpty())
        operand(0).print(out, isSortTerm ? style : nested(style));
    if (isSortTerm && m_op == Minus)
        out << " DESC";
}

ExpressionHandle operator+(ExpressionHandle operand)
{
    return operand;
}

ValueExpression operator+(BaseProperty const& property)
{
    return reference(property);
}

} // namespace qvgen
