// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/expressions/Comparator.h>

#include <GenericUtilities/expressions/NodeRules_p.h>
#include <GenericUtilities/expressions/PatternBounds_p.h>

#include <QTextStream>

namespace qvgen {

namespace {

    bool const comparatorsAreRegistered[] = {
        Expression::registerExpressionClass(
            Comparator(ConstExpression(QVariant(), false), Comparator::Equal, ConstExpression(QVariant(), false))),
        Expression::registerExpressionClass(ElementOf(ConstExpression(QVariant(), false))),
    };

    struct Comparison {
        Comparator::CompOp op;
        char const* sql;
        char const* code;
        bool (*evaluate)(TypeTool& tool, QVariant const& left, QVariant const& right);
    };

    using V = QVariant;

    // clang-format off
    constexpr Comparison comparisons[] = {
        {Comparator::NotEqual,     " != ", " != ", [](TypeTool& t, V const& l, V const& r) { return !t.equals(l, r); }},
        {Comparator::Less,         " < ",  " < ",  [](TypeTool& t, V const& l, V const& r) { return t.compare(l, r) < 0; }},
        {Comparator::Equal,        " = ",  " == ", [](TypeTool& t, V const& l, V const& r) { return t.equals(l, r); }},
        {Comparator::Greater,      " > ",  " > ",  [](TypeTool& t, V const& l, V const& r) { return t.compare(l, r) > 0; }},
        {Comparator::LessEqual,    " <= ", " <= ", [](TypeTool& t, V const& l, V const& r) { return t.compare(l, r) <= 0; }},
        {Comparator::GreaterEqual, " >= ", " >= ", [](TypeTool& t, V const& l, V const& r) { return t.compare(l, r) >= 0; }},
    };
    // clang-format on

    // Null for a number that no operator has, as damaged streams may hold.
    Comparison const* comparison(Comparator::CompOp op)
    {
        auto const index = static_cast<unsigned>(op);
        return index < std::size(comparisons) ? &comparisons[index] : nullptr;
    }

    constexpr int selectorIndex = 0;
    constexpr int defaultIndex = 1;
    constexpr int firstCaseIndex = 2;

} // namespace

Comparator::Comparator(ExpressionHandle left, CompOp op, ExpressionHandle right)
    : m_op(op)
{
    append(left);
    append(right);
}

Comparator::Comparator(CompOp op)
    : m_op(op)
{
}

QVariant Comparator::evaluate(PropertySet const& properties, bool* isConstant) const
{
    if (isTooDeep())
        return tooDeep(isConstant);
    Evaluation const evaluation;
    bool leftConstant = true;
    bool rightConstant = true;
    bool const isComplete = operands().size() >= 2;
    QVariant const left = isComplete ? operand(0).evaluate(properties, &leftConstant) : QVariant();
    QVariant const right = isComplete ? operand(1).evaluate(properties, &rightConstant) : QVariant();
    report(isConstant, leftConstant && rightConstant);

    Comparison const* const row = comparison(m_op);
    if (!row || !isComplete)
        return {};
    TypeTool tool(leftConstant, rightConstant);
    bool const holds = row->evaluate(tool, left, right);
    return tool.returnOK(holds);
}

Comparator* Comparator::clone() const
{
    return new Comparator(*this);
}

bool Comparator::equals(Expression const* other) const
{
    auto const* comparator = dynamic_cast<Comparator const*>(other);
    return comparator && m_op == comparator->m_op && Operator::equals(other);
}

void Comparator::print(QTextStream& out, PrintStyle style) const
{
    if (isTooDeep())
        return;
    Comparison const* const row = comparison(m_op);
    if (!operands().isEmpty())
        operand(0).print(out, nested(style));
    if (row)
        out << ((style & StyleCode) ? row->code : row->sql);
    if (operands().size() > 1)
        operand(1).print(out, nested(style));
}

ElementOf::ElementOf() = default;

ElementOf::ElementOf(ExpressionHandle value)
{
    append(value);
}

ElementOf::ElementOf(BaseProperty const& property)
{
    append(reference(property));
}

void ElementOf::append(QVariant const& value)
{
    append(ConstExpression(value, true));
}

void ElementOf::append(ExpressionList const& candidates)
{
    for (ExpressionHandle const& candidate : candidates.operands())
        append(candidate);
}

QVariant ElementOf::evaluate(PropertySet const& properties, bool* isConstant) const
{
    if (isTooDeep())
        return tooDeep(isConstant);
    Evaluation const evaluation;
    report(isConstant, true);
    if (operands().isEmpty())
        return {};
    bool valueConstant = true;
    QVariant const value = operand(0).evaluate(properties, &valueConstant);
    report(isConstant, valueConstant);
    for (int i = 1; i < operands().size(); ++i) {
        bool candidateConstant = true;
        QVariant const candidate = operand(i).evaluate(properties, &candidateConstant);
        if (!candidateConstant)
            report(isConstant, false);
        if (TypeTool(valueConstant, candidateConstant).equals(value, candidate))
            return true;
    }
    return false;
}

ElementOf* ElementOf::clone() const
{
    return new ElementOf(*this);
}

bool ElementOf::equals(Expression const* other) const
{
    return dynamic_cast<ElementOf const*>(other) && Operator::equals(other);
}

void ElementOf::print(QTextStream& out, PrintStyle style) const
{
    if (isTooDeep())
        return;
    if (!operands().isEmpty())
        operand(0).print(out, nested(style));
    out << " IN (";
    printOperands(out, notNested(style), 1, QLatin1String(","));
    out << ')';
}

SwitchCase::SwitchCase(ExpressionHandle selector)
{
    append(selector);
    append(ExpressionHandle());
}

SwitchCase::SwitchCase(BaseProperty const& property)
    : SwitchCase(ExpressionHandle(reference(property)))
{
}

SwitchCase& SwitchCase::switchCase(ExpressionHandle caseValue, ExpressionHandle result)
{
    append(caseValue);
    append(result);
    return *this;
}

SwitchCase& SwitchCase::defaultCase(ExpressionHandle result)
{
    replaceOperand(defaultIndex, result);
    return *this;
}

QVariant SwitchCase::evaluate(PropertySet const& properties, bool* isConstant) const
{
    if (isTooDeep())
        return tooDeep(isConstant);
    Evaluation const evaluation;
    // Constant whatever the operands are: clients fold switches by it.
    report(isConstant, true);
    if (operands().size() < firstCaseIndex)
        return {};
    bool ignored = true;
    QVariant const selector = operand(selectorIndex).evaluate(properties, &ignored);
    for (int i = firstCaseIndex; i + 1 < operands().size(); i += 2) {
        QVariant const caseValue = operand(i).evaluate(properties, &ignored);
        if (TypeTool(true, true).equals(selector, caseValue))
            return operand(i + 1).evaluate(properties, &ignored);
    }
    return operand(defaultIndex).evaluate(properties, &ignored);
}

SwitchCase* SwitchCase::clone() const
{
    return new SwitchCase(*this);
}

bool SwitchCase::equals(Expression const* other) const
{
    return dynamic_cast<SwitchCase const*>(other) && Operator::equals(other);
}

void SwitchCase::print(QTextStream& out, PrintStyle style) const
{
    if (isTooDeep() || operands().size() < firstCaseIndex)
        return;
    if (style & StyleSql)
        printSql(out, notNested(style));
    else if (operand(selectorIndex).isEmpty())
        printConditions(out, notNested(style));
    else
        printSwitch(out, notNested(style));
}

void SwitchCase::printSql(QTextStream& out, PrintStyle style) const
{
    out << "CASE ";
    if (!operand(selectorIndex).isEmpty())
        operand(selectorIndex).print(out, style);
    for (int i = firstCaseIndex; i + 1 < operands().size(); i += 2) {
        out << " WHEN ";
        operand(i).print(out, style);
        out << " THEN ";
        operand(i + 1).print(out, style);
    }
    if (!operand(defaultIndex).isEmpty()) {
        out << " ELSE ";
        operand(defaultIndex).print(out, style);
    }
    out << " END";
}

void SwitchCase::printSwitch(QTextStream& out, PrintStyle style) const
{
    out << "switch(";
    operand(selectorIndex).print(out, style);
    out << ")\n{\n";
    for (int i = firstCaseIndex; i + 1 < operands().size(); i += 2) {
        out << "\tcase ";
        operand(i).print(out, style);
        out << ": return ";
        operand(i + 1).print(out, style);
        out << ";\n";
    }
    if (!operand(defaultIndex).isEmpty()) {
        out << "default: return ";
        operand(defaultIndex).print(out, style);
    }
    out << "\n}\n";
}

void SwitchCase::printConditions(QTextStream& out, PrintStyle style) const
{
    for (int i = firstCaseIndex; i + 1 < operands().size(); i += 2) {
        out << (i > firstCaseIndex ? "else if (" : "if (");
        operand(i).print(out, style);
        out << ") return ";
        operand(i + 1).print(out, style);
        out << ";\n";
    }
    if (!operand(defaultIndex).isEmpty()) {
        out << "else return ";
        operand(defaultIndex).print(out, style);
    }
}

SwitchCase ifThen(ExpressionHandle condition, ExpressionHandle thenValue, ExpressionHandle elseValue)
{
    return SwitchCase(ExpressionHandle()).switchCase(condition, thenValue).defaultCase(elseValue);
}

} // namespace qvgen
