// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/expressions/Expression.h>

#include <GenericUtilities/expressions/NodeRules_p.h>
#include <GenericUtilities/expressions/ValueCost_p.h>
#include <GenericUtilities/properties/PropertySet.h>

#include <QDateTime>
#include <QMetaType>
#include <QRegExp>
#include <QTextStream>

namespace qvgen {

namespace {

    bool const expressionsAreRegistered[] = {
        Expression::registerExpressionClass(ConstExpression(QVariant(), true)),
        Expression::registerExpressionClass(ValueExpression(QString(), QString())),
        Expression::registerExpressionClass(CastExpression(QVariant::Int, ConstExpression(QVariant(), false))),
        Expression::registerExpressionClass(ExpressionList()),
    };

    // Half of a surrogate pair as U+FFFD: a database that reads UTF-16 would take it and the quote behind it as one
    // character, and the text would end where it should not.
    void replaceLoneSurrogates(QString& text)
    {
        for (int i = 0; i < text.size(); ++i) {
            bool const isPair = text.at(i).isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate();
            if (isPair)
                ++i;
            else if (text.at(i).isSurrogate())
                text[i] = QChar(QChar::ReplacementCharacter);
        }
    }

    // The inside of an SQL text literal.
    QString sqlText(QString text)
    {
        replaceLoneSurrogates(text);
        return text.replace(QLatin1Char('\''), QLatin1String("''"));
    }

} // namespace

ConstExpression::ConstExpression(QVariant const& value, bool placeholder)
    : m_value(value)
    , m_placeholder(placeholder)
{
}

ConstExpression ConstExpression::time(int hour, int minute, int second, int milliSecond)
{
    return {QTime(hour, minute, second, milliSecond), false};
}

ConstExpression ConstExpression::date(int year, int month, int day)
{
    return {QDate(year, month, day), false};
}

ConstExpression ConstExpression::dateTime(
    int year, int month, int day, int hour, int minute, int second, int milliSecond)
{
    return {QDateTime(QDate(year, month, day), QTime(hour, minute, second, milliSecond), Qt::LocalTime), false};
}

QString ConstExpression::stringValue(QVariant const& value)
{
    // Not toRegExp(): the copy that it makes compiles the pattern, in the value that threads share.
    if (value.type() == QVariant::RegExp)
        return static_cast<QRegExp const*>(value.constData())->pattern();
    return value.toString();
}

void ConstExpression::printValue(QTextStream& out, QVariant const& value, PrintStyle style)
{
    bool const isSql = style & StyleSql;
    if (style & StylePlaceholders)
        out << '?';
    else if (TypeTool::isDate(value.type()) && isSql)
        // As text: the locale and the base that the stream has for numbers are not those of SQL.
        out << QString::number(TypeTool::dateMicroSeconds(value));
    else if (TypeTool::isNumeric(value.type()) || TypeTool::isDate(value.type()))
        out << stringValue(value);
    else if (isSql)
        out << '\'' << sqlText(stringValue(value)) << '\'';
    else
        // Not escaped, and dates not quoted: this form is for people to read, and clients compare it with stored texts.
        out << '"' << stringValue(value) << '"';
}

QVariant ConstExpression::evaluate(PropertySet const&, bool* isConstant) const
{
    report(isConstant, true);
    return m_value;
}

ConstExpression* ConstExpression::clone() const
{
    return new ConstExpression(*this);
}

bool ConstExpression::equals(Expression const* other) const
{
    auto const* constant = dynamic_cast<ConstExpression const*>(other);
    return constant && m_value == constant->m_value;
}

void ConstExpression::print(QTextStream& out, PrintStyle style) const
{
    printValue(out, m_value, m_placeholder ? style : style & ~StylePlaceholders);
}

void ConstExpression::collectPlaceholders(QList<QVariant>& values) const
{
    if (m_placeholder)
        values.append(bindValue(m_value));
}

bool ConstExpression::isEmpty() const
{
    return !m_value.isValid();
}

ValueExpression::ValueExpression(BaseProperty const& property, QString const& alias)
    : ValueExpression(property.name(), alias)
{
}

ValueExpression::ValueExpression(QString const& name, QString const& alias)
    : m_name(name)
    , m_alias(alias)
{
}

QVariant ValueExpression::evaluate(PropertySet const& properties, bool* isConstant) const
{
    report(isConstant, false);
    BaseProperty const* property = properties.find(m_alias);
    if (!property)
        property = properties.find(m_name);
    return property ? property->variantValue() : QVariant();
}

ValueExpression* ValueExpression::clone() const
{
    return new ValueExpression(*this);
}

bool ValueExpression::equals(Expression const* other) const
{
    auto const* value = dynamic_cast<ValueExpression const*>(other);
    return value && m_name == value->m_name && m_alias == value->m_alias;
}

void ValueExpression::print(QTextStream& out, PrintStyle style) const
{
    out << QString(m_name).replace(QLatin1Char(' '), QLatin1Char('_'));
    if ((style & StyleSql) && !m_alias.isEmpty())
        out << " AS " << m_alias;
}

bool ValueExpression::isEmpty() const
{
    return m_name.isEmpty();
}

CastExpression::CastExpression(QVariant::Type target, ExpressionHandle operand)
    : m_target(target)
    , m_operand(operand)
{
    countOperand(m_operand);
}

QVariant CastExpression::evaluate(PropertySet const& properties, bool* isConstant) const
{
    if (isTooDeep())
        return tooDeep(isConstant);
    Evaluation const evaluation;
    QVariant value = m_operand.evaluate(properties, isConstant);
    auto const target = static_cast<int>(m_target);
    if (value.userType() != target && !mayConvert(value))
        return {};
    if (!QMetaType::isRegistered(target) || !value.canConvert(target))
        return TypeTool::castDate(value, m_target);
    value.convert(target);
    return value;
}

CastExpression* CastExpression::clone() const
{
    return new CastExpression(*this);
}

bool CastExpression::equals(Expression const* other) const
{
    auto const* cast = dynamic_cast<CastExpression const*>(other);
    return cast && m_target == cast->m_target && !isTooDeep()
        && Expression::equals(m_operand.constData(), cast->m_operand.constData());
}

void CastExpression::print(QTextStream& out, PrintStyle style) const
{
    if (isTooDeep())
        return;
    QLatin1String const typeName(QMetaType::typeName(static_cast<int>(m_target)));
    if (style & StyleCode) {
        out << '(' << typeName << ')';
        m_operand->print(out, nested(style));
    } else {
        out << "CAST(";
        m_operand->print(out, style);
        out << " AS " << typeName << ')';
    }
}

void CastExpression::collectPlaceholders(QList<QVariant>& values) const
{
    if (!isTooDeep())
        m_operand->collectPlaceholders(values);
}

bool CastExpression::isEmpty() const
{
    // A loop, since this question has an answer for a tree of any depth.
    Expression const* innermost = this;
    while (auto const* cast = dynamic_cast<CastExpression const*>(innermost))
        innermost = cast->m_operand.constData();
    return innermost->isEmpty();
}

void Operator::append(ExpressionHandle operand)
{
    m_operands.append(operand);
    countOperand(operand);
}

void Operator::replaceOperand(int index, ExpressionHandle const& operand)
{
    m_operands[index] = operand;
    resetDepth();
    for (ExpressionHandle const& each : qAsConst(m_operands))
        countOperand(each);
}

void Operator::printOperands(QTextStream& out, PrintStyle style, int first, QLatin1String separator) const
{
    for (int i = first; i < m_operands.size(); ++i) {
        if (i > first)
            out << separator;
        operand(i).print(out, style);
    }
}

void Operator::printJunction(QTextStream& out, PrintStyle style, QLatin1String separator) const
{
    bool const needsParentheses = (style & StyleNested) && m_operands.size() >= 2;
    if (needsParentheses)
        out << '(';
    printOperands(out, nested(style), 0, separator);
    if (needsParentheses)
        out << ')';
}

bool Operator::equals(Expression const* other) const
{
    auto const* that = dynamic_cast<Operator const*>(other);
    if (!that || m_operands.size() != that->m_operands.size() || isTooDeep())
        return false;
    for (int i = 0; i < m_operands.size(); ++i) {
        if (!Expression::equals(&operand(i), &that->operand(i)))
            return false;
    }
    return true;
}

void Operator::collectPlaceholders(QList<QVariant>& values) const
{
    if (isTooDeep())
        return;
    for (ExpressionHandle const& each : m_operands)
        each->collectPlaceholders(values);
}

bool Operator::isEmpty() const
{
    return m_operands.isEmpty();
}

ExpressionList::ExpressionList() = default;

ExpressionList::ExpressionList(ExpressionHandle elements)
{
    if (auto const* list = dynamic_cast<ExpressionList const*>(elements.constData()))
        append(*list);
    else
        append(elements);
}

ExpressionList::ExpressionList(ExpressionHandle first, ExpressionHandle second)
{
    append(first);
    append(second);
}

ExpressionList::ExpressionList(QList<QVariant> const& values)
{
    for (QVariant const& value : values)
        append(ConstExpression(value, true));
}

ExpressionHandle ExpressionList::empty()
{
    // Never destroyed: destructors of static objects may still make handles.
    static ExpressionHandle const* const handle = new ExpressionHandle(ExpressionList());
    return *handle;
}

void ExpressionList::append(ExpressionList const& elements)
{
    // Counted first, for a list that is appended to itself.
    int const count = elements.operands().size();
    for (int i = 0; i < count; ++i)
        append(elements.operands().at(i));
}

QVariant ExpressionList::evaluate(PropertySet const& properties, bool* isConstant) const
{
    if (isTooDeep())
        return tooDeep(isConstant);
    Evaluation const evaluation;
    bool allConstant = true;
    QVariantList values;
    values.reserve(operands().size());
    for (ExpressionHandle const& each : operands()) {
        bool constant = true;
        values.append(each.evaluate(properties, &constant));
        allConstant = allConstant && constant;
    }
    report(isConstant, allConstant);
    return values;
}

ExpressionList* ExpressionList::clone() const
{
    return new ExpressionList(*this);
}

bool ExpressionList::equals(Expression const* other) const
{
    return dynamic_cast<ExpressionList const*>(other) && Operator::equals(other);
}

void ExpressionList::print(QTextStream& out, PrintStyle style) const
{
    if (!isTooDeep())
        printOperands(out, notNested(style), 0, QLatin1String(","));
}

bool ExpressionList::isEmpty() const
{
    return operands().isEmpty();
}

// clang-format off
CastExpression toBool(ExpressionHandle operand)      { return {QVariant::Bool, operand}; }
CastExpression toInt(ExpressionHandle operand)       { return {QVariant::Int, operand}; }
CastExpression toUInt(ExpressionHandle operand)      { return {QVariant::UInt, operand}; }
CastExpression toLongLong(ExpressionHandle operand)  { return {QVariant::LongLong, operand}; }
CastExpression toULongLong(ExpressionHandle operand) { return {QVariant::ULongLong, operand}; }
CastExpression toDouble(ExpressionHandle operand)    { return {QVariant::Double, operand}; }
CastExpression toString(ExpressionHandle operand)    { return {QVariant::String, operand}; }
CastExpression toDate(ExpressionHandle operand)      { return {QVariant::Date, operand}; }
CastExpression toTime(ExpressionHandle operand)      { return {QVariant::Time, operand}; }
CastExpression toDateTime(ExpressionHandle operand)  { return {QVariant::DateTime, operand}; }

ExpressionList operator<<(BaseProperty const& left, BaseProperty const& right) { return {reference(left), reference(right)}; }
ExpressionList operator<<(ExpressionHandle left, BaseProperty const& right)    { return {left, reference(right)}; }
ExpressionList operator<<(BaseProperty const& left, ExpressionHandle right)    { return {reference(left), right}; }
ExpressionList operator<<(ExpressionHandle left, ExpressionHandle right)       { return {left, right}; }
// clang-format on

} // namespace qvgen
