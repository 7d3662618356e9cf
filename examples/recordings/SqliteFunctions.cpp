// SPDX-License-Identifier: LGPL-2.1-or-later
#include "SqliteFunctions.h"

#include <GenericUtilities/expressions/Functions.h>
#include <GenericUtilities/expressions/TypeTool.h>

#include <QTextStream>

using namespace qvgen;

namespace {

using Operands = QList<ExpressionHandle>;
using Style = Expression::PrintStyle;

void printBetween(QTextStream& out, Style style, Operands const& operands, char const* before, char const* separator)
{
    out << before;
    for (int i = 0; i < operands.size(); ++i) {
        out << (i == 0 ? "" : separator);
        operands.at(i)->print(out, style);
    }
    out << ')';
}

/// SQLite's hex() gives the bytes of a text, in memory it gives the digits of a number.
void printHex(QTextStream& out, Style style, QString const&, Operands const& operands)
{
    printBetween(out, style, operands, "printf('%x',", ",");
}

void printCharacters(QTextStream& out, Style style, QString const&, Operands const& operands)
{
    printBetween(out, style, operands, "length(", ",");
}

void printRemainder(QTextStream& out, Style style, QString const&, Operands const& operands)
{
    printBetween(out, style, operands, "(", " % ");
}

QVariant countCharacters(QList<QVariant> const& values)
{
    return values.isEmpty() ? QVariant() : QVariant(values.constFirst().toString().toUcs4().size());
}

QVariant remainderOf(QList<QVariant> const& values)
{
    // The divisor as a constant, so that a plain number suits whatever type the dividend has.
    TypeTool tool(false, true);
    return tool.do_modulo(values.value(0), values.value(1));
}

} // namespace

void addSqliteFunctions()
{
    // An operator has no print function that could be replaced: a function of one's own stands in for it.
    FunctionExpression::registerFunction("remainder", remainderOf, printRemainder, 2, 2);
    FunctionExpression::registerFunction("characters", countCharacters, printCharacters, 1, 1);
    FunctionExpression::registerSqlPrintFunction("hex", printHex);
}

ExpressionHandle characters(ExpressionHandle text)
{
    ExpressionList operands;
    operands.append(text);
    return FunctionExpression(QStringLiteral("characters"), operands, false);
}

ExpressionHandle remainder(ExpressionHandle dividend, ExpressionHandle divisor)
{
    return FunctionExpression(QStringLiteral("remainder"), ExpressionList(dividend, divisor), false);
}
