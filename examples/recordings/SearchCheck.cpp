// SPDX-License-Identifier: LGPL-2.1-or-later
#include "SearchCheck.h"

#include "RecordingDatabase.h"

#include <GenericUtilities/expressions/BooleanOperators.h>
#include <GenericUtilities/expressions/Comparator.h>
#include <GenericUtilities/expressions/Functions.h>
#include <GenericUtilities/expressions/NumericOperators.h>
#include <GenericUtilities/expressions/TypeTool.h>
#include <qvbase/Exceptions.h>
#include <terminal/Text.h>

using namespace qvgen;

namespace {

constexpr int anyNumber = -1;

[[noreturn]] void refuseSearch(char const* reason, QString const& name = QString())
{
    constexpr int width = 40;
    QString const text = QString::fromLatin1(reason);
    throw qv::ExceptionQt(name.isNull() ? text : text.arg(elided(printable(name), width, Elide::Right)));
}

template <class Node> Node const* as(ExpressionHandle const& node)
{
    return dynamic_cast<Node const*>(node.constData());
}

bool isWithin(int count, int least, int most)
{
    return count >= least && (most == anyNumber || count <= most);
}

/// Looks at each node of a tree, from the top down. Trees from streams are at most Expression::MaxDepth deep.
class Check {
public:
    explicit Check(QStringList const& columns)
        : m_columns(columns)
    {
    }

    void condition(ExpressionHandle const& node) const
    {
        if (auto const* value = as<ValueExpression>(node))
            column(*value);
        else if (auto const* constant = as<ConstExpression>(node))
            bindValue(*constant);
        else if (auto const* conversion = as<CastExpression>(node))
            cast(*conversion);
        else if (auto const* operation = as<Operator>(node))
            operands(*operation, node);
        else
            refuseSearch("it holds a part that no condition has");
    }

    void sortTerm(ExpressionHandle const& node) const
    {
        auto const* minus = as<UnaryOperator>(node);
        bool const isMinus = minus && minus->op() == UnaryOperator::Minus && minus->operands().size() == 1;
        auto const* value = as<ValueExpression>(isMinus ? minus->operands().constFirst() : node);
        if (!value)
            refuseSearch("it sorts by something else than a column");
        column(*value);
    }

private:
    void column(ValueExpression const& value) const
    {
        if (!m_columns.contains(value.name()))
            refuseSearch("it names '%1', which is no column", value.name());
        if (!value.alias().isEmpty())
            refuseSearch("it gives the column '%1' another name", value.name());
    }

    static void bindValue(ConstExpression const& constant)
    {
        // Quotes are no shelter: half a surrogate pair before one makes SQLite pass over it.
        if (!constant.isPlaceholder())
            refuseSearch("it holds a value that is not to be bound");
        if (columnType(constant.value()).isEmpty())
            refuseSearch("it holds a value that fits into no column");
    }

    void cast(CastExpression const& conversion) const
    {
        QVariant::Type const target = conversion.target();
        bool const isPlain = target == QVariant::Bool || target == QVariant::String;
        if (!isPlain && !TypeTool::isNumeric(target) && !TypeTool::isDate(target))
            refuseSearch("it converts to a type that no column has");
        condition(conversion.operand());
    }

    void operands(Operator const& operation, ExpressionHandle const& node) const
    {
        if (auto const* function = as<FunctionExpression>(node))
            call(*function);
        else if (!isComplete(operation, node))
            refuseSearch("it holds an operator that is none, or lacks operands");
        for (ExpressionHandle const& operand : operation.operands())
            condition(operand);
    }

    static void call(FunctionExpression const& function)
    {
        auto const entry = FunctionExpression::functionMap().constFind(function.name());
        if (entry == FunctionExpression::functionMap().constEnd())
            refuseSearch("it calls '%1', which is no function", function.name());
        if (!isWithin(function.operands().size(), entry->minArguments, entry->maxArguments))
            refuseSearch("it calls '%1' with too few values, or too many", function.name());
    }

    /// A list is none: neither in SQL where it stands alone, nor where an unknown class was read as one.
    static bool isComplete(Operator const& operation, ExpressionHandle const& node)
    {
        int const count = operation.operands().size();
        if (auto const* comparator = as<Comparator>(node))
            return isWithin(comparator->op(), Comparator::NotEqual, Comparator::GreaterEqual) && count == 2;
        if (auto const* junction = as<BooleanOperator>(node))
            return isWithin(junction->op(), BooleanOperator::And, BooleanOperator::Or) && count > 0;
        if (auto const* numeric = as<NumericOperator>(node))
            return isWithin(numeric->op(), NumericOperator::Add, NumericOperator::BitXor) && count > 0;
        if (auto const* unary = as<UnaryOperator>(node))
            return isWithin(unary->op(), UnaryOperator::Minus, UnaryOperator::BitNot) && count == 1;
        return (as<NotOperator>(node) && count == 1) || (as<ElementOf>(node) && count > 1);
    }

    QStringList m_columns;
};

} // namespace

void checkSearch(Search const& search, PropertySet const& recording)
{
    QStringList const columns = columnsOf(recording);
    Check const check(columns);
    if (!search.findsAll())
        check.condition(search.condition);
    // Each of them sorts all rows, though only the first one by a column counts.
    if (search.order.operands().size() > columns.size())
        refuseSearch("it sorts by more columns than there are");
    for (ExpressionHandle const& term : search.order.operands())
        check.sortTerm(term);
    // A minus of a minus prints so, and hides the rest of the statement.
    if (RecordingDatabase::statement(search).contains(QLatin1String("--")))
        refuseSearch("it has a minus before a minus, which begins a comment in SQL");
}
