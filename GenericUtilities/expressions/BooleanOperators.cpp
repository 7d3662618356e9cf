// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/expressions/BooleanOperators.h>

#include <GenericUtilities/expressions/NodeRules_p.h>
#include <GenericUtilities/expressions/ValueCost_p.h>

#include <QTextStream>

namespace qvgen {

namespace {

    bool const junctionsAreRegistered[] = {
        Expression::registerExpressionClass(BooleanOperator(
            ConstExpression(QVariant(), false), BooleanOperator::And, ConstExpression(QVariant(), false))),
        Expression::registerExpressionClass(NotOperator(ConstExpression(QVariant(), false))),
    };

    struct Junction {
        BooleanOperator::BoolOp op;
        char const* sql;
        char const* code;
        bool valueWithoutOperands; // the value, too, where no operand decides
        bool unknownDecides; // an operand that is no truth value makes the whole invalid
    };

    constexpr Junction junctions[] = {
        {BooleanOperator::And, " AND ", " && ", true, true},
        // An OR passes over unknown operands on purpose: searches offer alternatives that some objects do not have.
        {BooleanOperator::Or, " OR ", " || ", false, false},
    };

    // Null for a number that no operator has, as damaged streams may hold.
    Junction const* junction(BooleanOperator::BoolOp op)
    {
        auto const index = static_cast<unsigned>(op);
        return index < std::size(junctions) ? &junctions[index] : nullptr;
    }

} // namespace

BooleanOperator::BooleanOperator(BoolOp op)
    : m_op(op)
{
}

BooleanOperator::BooleanOperator(ExpressionHandle left, BoolOp op, ExpressionHandle right)
    : m_op(op)
{
    append(left);
    append(right);
}

BooleanOperator BooleanOperator::joined(BoolOp op, ExpressionHandle const& condition)
{
    if (m_op != op)
        return {*this, op, condition};
    append(condition);
    return *this;
}

BooleanOperator BooleanOperator::operator&&(ExpressionHandle condition) &
{
    return joined(And, condition);
}

BooleanOperator BooleanOperator::operator||(ExpressionHandle condition) &
{
    return joined(Or, condition);
}

BooleanOperator& BooleanOperator::operator&=(ExpressionHandle condition)
{
    return *this = joined(And, condition);
}

BooleanOperator& BooleanOperator::operator|=(ExpressionHandle condition)
{
    return *this = joined(Or, condition);
}

ExpressionHandle BooleanOperator::join(ExpressionList const& conditions, BoolOp op)
{
    QList<ExpressionHandle> const& elements = conditions.operands();
    if (elements.isEmpty())
        return {};
    if (elements.size() == 1)
        return elements.first();
    BooleanOperator junction(op);
    for (ExpressionHandle const& element : elements)
        junction.append(element);
    return junction;
}

QVariant BooleanOperator::evaluate(PropertySet const& properties, bool* isConstant) const
{
    if (isTooDeep())
        return tooDeep(isConstant);
    Evaluation const evaluation;
    report(isConstant, true);
    Junction const* const row = junction(m_op);
    if (!row)
        return {};
    for (ExpressionHandle const& each : operands()) {
        bool constant = true;
        QVariant const value = each.evaluate(properties, &constant);
        if (!constant)
            report(isConstant, false);
        if (value.canConvert(QVariant::Bool) && mayConvert(value)) {
            if (value.toBool() != row->valueWithoutOperands)
                return !row->valueWithoutOperands;
        } else if (row->unknownDecides) {
            return {};
        }
    }
    return row->valueWithoutOperands;
}

BooleanOperator* BooleanOperator::clone() const
{
    return new BooleanOperator(*this);
}

bool BooleanOperator::equals(Expression const* other) const
{
    auto const* junction = dynamic_cast<BooleanOperator const*>(other);
    return junction && m_op == junction->m_op && Operator::equals(other);
}

void BooleanOperator::print(QTextStream& out, PrintStyle style) const
{
    if (isTooDeep())
        return;
    Junction const* const row = junction(m_op);
    QLatin1String const separator(!row ? "" : (style & StyleCode) ? row->code : row->sql);
    printJunction(out, style, separator);
}

NotOperator::NotOperator(ExpressionHandle operand)
{
    append(operand);
}

QVariant NotOperator::evaluate(PropertySet const& properties, bool* isConstant) const
{
    if (isTooDeep())
        return tooDeep(isConstant);
    if (operands().isEmpty()) {
        report(isConstant, true);
        return {};
    }
    QVariant const value = operand(0).evaluate(properties, isConstant);
    return value.canConvert(QVariant::Bool) && mayConvert(value) ? QVariant(!value.toBool()) : QVariant();
}

NotOperator* NotOperator::clone() const
{
    return new NotOperator(*this);
}

bool NotOperator::equals(Expression const* other) const
{
    return dynamic_cast<NotOperator const*>(other) && Operator::equals(other);
}

void NotOperator::print(QTextStream& out, PrintStyle style) const
{
    if (isTooDeep())
        return;
    out << ((style & StyleCode) ? " ! " : " NOT ");
    if (!operands().isEmpty())
        operand(0).print(out, nested(style));
}

BooleanOperator operator&&(ExpressionHandle left, ExpressionHandle right)
{
    return {left, BooleanOperator::And, right};
}

BooleanOperator operator||(ExpressionHandle left, ExpressionHandle right)
{
    return {left, BooleanOperator::Or, right};
}

NotOperator operator!(ExpressionHandle operand)
{
    return NotOperator(operand);
}

} // namespace qvgen
