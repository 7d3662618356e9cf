// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/expressions/Functions.h>

#include <GenericUtilities/expressions/NodeRules_p.h>
#include <GenericUtilities/expressions/ValueCost_p.h>
#include <GenericUtilities/properties/PropertySet.h>
#include <qvbase/Log.h>

#include <QTextStream>

#include <algorithm>
#include <set>

namespace qvgen {

namespace {

    bool const isFunctionRegistered
        = Expression::registerExpressionClass(FunctionExpression(QString(), ExpressionList(), false));

    using F = FunctionExpression;
    constexpr int any = -1;

    struct Builtin {
        char const* name;
        int minArguments;
        int maxArguments;
        F::PrintSql printSql;
        F::Evaluate evaluate;
    };

    // clang-format off
    constexpr Builtin builtins[] = {
        {"currentDate",     0, 0,   nullptr,         F::currentDate},
        {"currentTime",     0, 0,   nullptr,         F::currentTime},
        {"currentDateTime", 0, 0,   nullptr,         F::currentDateTime},
        {"abs",             1, 1,   F::printDefault, F::abs},
        {"min",             1, any, F::printDefault, F::min},
        {"max",             1, any, F::printDefault, F::max},
        {"count",           1, any, F::printDefault, F::count},
        {"group_concat",    1, any, F::printDefault, F::groupConcat},
        {"coalesce",        2, any, F::printDefault, F::coalesce},
        {"ifnull",          2, 2,   F::printDefault, F::coalesce},
        {"nullif",          2, 2,   F::printDefault, F::nullif},
        {"hex",             1, 1,   F::printDefault, F::hex},
        {"round",           1, 1,   F::printDefault, F::round},
        {"random",          0, 0,   F::printDefault, F::random},
        {"length",          1, 1,   F::printDefault, F::length},
        {"lower",           1, 1,   F::printDefault, F::lower},
        {"upper",           1, 1,   F::printDefault, F::upper},
        {"quote",           1, 1,   F::printDefault, F::quote},
        {"trim",            1, 1,   F::printDefault, F::trim},
        {"like",            2, 3,   F::printLike,    F::like},
        {"regexp",          2, 2,   F::printLike,    F::regexp},
    };
    // clang-format on

    QMap<QString, F::FunctionEntry>* makeFunctionMap()
    {
        auto* const map = new QMap<QString, F::FunctionEntry>;
        for (Builtin const& row : builtins)
            map->insert(QLatin1String(row.name), {row.evaluate, row.minArguments, row.maxArguments, row.printSql});
        return map;
    }

    void warn(QString const& name, char const* what)
    {
        constexpr int warning = 2;
        qv::LogQt* const log = qv::LogQt::instance();
        qv::MutexLocker const locker(log->mutex());
        QTextStream* const stream = log->getStream(warning);
        if (stream && log->logLevel() <= warning)
            *stream << log->pre(warning) << "Function " << name << what << Qt::endl;
    }

    // What equals only what is the same, where both are of the type.
    bool isWholeNumber(QVariant::Type type)
    {
        return type == QVariant::Int || type == QVariant::UInt || type == QVariant::LongLong;
    }

    // Drops each value that is the same as one before it. False where that would take too long.
    template <class Value> bool dropSame(QList<QVariant>& values)
    {
        if (!std::all_of(values.cbegin(), values.cend(), mayConvert))
            return false;
        std::set<Value> kept;
        auto const isRepeated
            = [&kept](QVariant const& value) { return !kept.insert(qvariant_cast<Value>(value)).second; };
        values.erase(std::remove_if(values.begin(), values.end(), isRepeated), values.end());
        return true;
    }

    // Drops each value that equals one before it. False where that would take too long: the number of comparisons
    // grows with the square of that of the values.
    bool dropEqual(QList<QVariant>& values)
    {
        QList<QVariant> kept;
        double keptNanoseconds = 0;
        for (QVariant const& value : qAsConst(values)) {
            double const ownNanoseconds = comparisonNanoseconds(value);
            if (!Evaluation::allows(kept.size() * ownNanoseconds + keptNanoseconds))
                return false;
            if (TypeTool(false, false).contains(kept, value))
                continue;
            kept.append(value);
            keptNanoseconds += ownNanoseconds;
        }
        values.swap(kept);
        return true;
    }

    bool dropRepeated(QList<QVariant>& values)
    {
        QVariant::Type const type = values.isEmpty() ? QVariant::Invalid : values.first().type();
        bool const areOfOneType = std::all_of(
            values.cbegin(), values.cend(), [type](QVariant const& value) { return value.type() == type; });
        if (areOfOneType && isWholeNumber(type))
            return dropSame<qint64>(values);
        return areOfOneType && type == QVariant::String ? dropSame<QString>(values) : dropEqual(values);
    }

    ExpressionHandle call(char const* name, ExpressionList const& operands, bool distinct = false)
    {
        return FunctionExpression(QLatin1String(name), operands, distinct);
    }

    // The only operand, even where it is a list itself.
    ExpressionHandle call(char const* name, ExpressionHandle const& operand, bool distinct = false)
    {
        ExpressionList operands;
        operands.append(operand);
        return call(name, operands, distinct);
    }

} // namespace

FunctionExpression::FunctionExpression(QString const& name, ExpressionList const& operands, bool distinct)
    : m_name(name)
    , m_distinct(distinct)
{
    for (ExpressionHandle const& each : operands.operands())
        append(each);
}

QMap<QString, FunctionExpression::FunctionEntry>& FunctionExpression::functionMap()
{
    // Never destroyed: destructors of static objects may still evaluate trees.
    static auto* const map = makeFunctionMap();
    return *map;
}

bool FunctionExpression::registerFunction(
    char const* name, Evaluate evaluate, PrintSql printSql, int minArguments, int maxArguments)
{
    QString const key = QString::fromUtf8(name);
    if (functionMap().contains(key)) {
        warn(key, " already declared.");
        return false;
    }
    functionMap().insert(key, {evaluate, minArguments, maxArguments, printSql});
    return true;
}

bool FunctionExpression::registerSqlPrintFunction(char const* name, PrintSql printSql)
{
    QString const key = QString::fromUtf8(name);
    auto const entry = functionMap().find(key);
    if (entry == functionMap().end()) {
        warn(key, " not declared.");
        return false;
    }
    entry->printSql = printSql;
    return true;
}

void FunctionExpression::printDefault(
    QTextStream& out, PrintStyle style, QString const& name, QList<ExpressionHandle> const& operands)
{
    out << name << '(' << ((style & StyleDistinct) ? "DISTINCT " : "");
    bool isFirst = true;
    for (ExpressionHandle const& operand : operands) {
        out << (isFirst ? "" : ",");
        operand->print(out, style);
        isFirst = false;
    }
    out << ')';
}

void FunctionExpression::printLike(
    QTextStream& out, PrintStyle style, QString const& name, QList<ExpressionHandle> const& operands)
{
    QString const separators[]
        = {QString(), QLatin1Char(' ') + name.toUpper() + QLatin1Char(' '), QStringLiteral(" ESCAPE ")};
    out << '(';
    for (int i = 0; i < operands.size() && i < int(std::size(separators)); ++i) {
        out << separators[i];
        operands.at(i)->print(out, nested(style));
    }
    out << ')';
}

QVariant FunctionExpression::evaluate(PropertySet const& properties, bool* isConstant) const
{
    if (isTooDeep())
        return tooDeep(isConstant);
    Evaluation const evaluation;
    report(isConstant, true);
    QList<QVariant> values;
    values.reserve(operands().size());
    for (ExpressionHandle const& each : operands()) {
        bool constant = true;
        values.append(each.evaluate(properties, isConstant ? &constant : nullptr));
        if (!constant)
            report(isConstant, false);
    }
    if (m_distinct && !dropRepeated(values))
        return {};
    auto const entry = functionMap().constFind(m_name);
    bool const isKnown = entry != functionMap().constEnd() && entry->evaluate;
    return isKnown && std::all_of(values.cbegin(), values.cend(), mayConvert) ? entry->evaluate(values) : QVariant();
}

FunctionExpression* FunctionExpression::clone() const
{
    return new FunctionExpression(*this);
}

bool FunctionExpression::equals(Expression const* other) const
{
    auto const* function = dynamic_cast<FunctionExpression const*>(other);
    return function && m_name == function->m_name && m_distinct == function->m_distinct && Operator::equals(other);
}

void FunctionExpression::print(QTextStream& out, PrintStyle style) const
{
    if (isTooDeep())
        return;
    if (!(style & StyleSql)) {
        printDefault(out, style, m_name, operands());
        return;
    }
    PrintSql const printSql = functionMap().value(m_name).printSql;
    if (printSql)
        printSql(out, m_distinct ? style | StyleDistinct : style, m_name, operands());
    else
        ConstExpression::printValue(out, evaluate(PropertySet(), nullptr), style);
}

void FunctionExpression::collectPlaceholders(QList<QVariant>& values) const
{
    if (isTooDeep())
        return;
    // A function without print function prints its value, as one "?".
    if (functionMap().value(m_name).printSql)
        Operator::collectPlaceholders(values);
    else
        values.append(bindValue(evaluate(PropertySet(), nullptr)));
}

bool FunctionExpression::isEmpty() const
{
    return Operator::isEmpty();
}

ExpressionHandle count(ValueExpression const& value, bool distinct)
{
    return call("count", ExpressionHandle(value), distinct);
}

ExpressionHandle group_concat(ValueExpression const& value, bool distinct)
{
    return call("group_concat", ExpressionHandle(value), distinct);
}

// clang-format off
ExpressionHandle max(ValueExpression const& value) { return call("max", ExpressionHandle(value)); }
ExpressionHandle min(ValueExpression const& value) { return call("min", ExpressionHandle(value)); }
ExpressionHandle trim(ExpressionHandle operand)    { return call("trim", operand); }
ExpressionHandle quote(ExpressionHandle operand)   { return call("quote", operand); }
ExpressionHandle upper(ExpressionHandle operand)   { return call("upper", operand); }
ExpressionHandle lower(ExpressionHandle operand)   { return call("lower", operand); }
ExpressionHandle length(ExpressionHandle operand)  { return call("length", operand); }
ExpressionHandle round(ExpressionHandle operand)   { return call("round", operand); }
ExpressionHandle hex(ExpressionHandle operand)     { return call("hex", operand); }
ExpressionHandle abs(ExpressionHandle operand)     { return call("abs", operand); }
ExpressionHandle random()                          { return call("random", ExpressionList()); }
ExpressionHandle currentDateTime()                 { return call("currentDateTime", ExpressionList()); }
ExpressionHandle currentTime()                     { return call("currentTime", ExpressionList()); }
ExpressionHandle currentDate()                     { return call("currentDate", ExpressionList()); }
// clang-format on

ExpressionHandle nullif(ExpressionHandle first, ExpressionHandle second)
{
    return call("nullif", ExpressionList(first, second));
}

ExpressionHandle ifnull(ExpressionHandle first, ExpressionHandle second)
{
    return call("ifnull", ExpressionList(first, second));
}

ExpressionHandle coalesce(ExpressionList const& operands)
{
    return call("coalesce", operands);
}

ExpressionHandle regexp(ExpressionHandle operand, QRegExp const& expression)
{
    return call("regexp", ExpressionList(operand, ConstExpression(expression, false)));
}

ExpressionHandle regexp(ExpressionHandle operand, QString const& pattern)
{
    return call("regexp", ExpressionList(operand, ConstExpression(pattern, true)));
}

ExpressionHandle like(ExpressionHandle operand, QString const& pattern, QString const& escape)
{
    ExpressionList operands(operand, ConstExpression(pattern, true));
    if (!escape.isNull())
        operands.append(ConstExpression(escape, true));
    return call("like", operands);
}

} // namespace qvgen
