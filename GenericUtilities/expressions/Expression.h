// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/expressions/ExpressionHandle.h>
#include <GenericUtilities/properties/BaseProperty.h>

namespace qvgen {

/// A constant value. A placeholder constant prints as "?" and is a bind value where placeholders are asked for; it
/// equals the same value that is none.
class GENERICUTILITIES_EXPORT ConstExpression : public virtual Expression {
public:
    using Expression::collectPlaceholders;
    using Expression::equals;

    ConstExpression(QVariant const& value, bool placeholder);

    /// Constants that are no placeholders; dateTime() in local time.
    static ConstExpression time(int hour, int minute, int second, int milliSecond);
    static ConstExpression date(int year, int month, int day);
    static ConstExpression dateTime(int year, int month, int day, int hour, int minute, int second, int milliSecond);

    /// The pattern of a QRegExp, else QVariant::toString().
    static QString stringValue(QVariant const& value);
    /// Prints "?" where @p style has StylePlaceholders, else the value: numbers bare, dates in SQL as microseconds and
    /// else bare, anything else in single quotes, doubled inside (SQL), or in double quotes, inside as it is (else).
    static void printValue(QTextStream& out, QVariant const& value, PrintStyle style);

    QVariant const& value() const { return m_value; }
    bool isPlaceholder() const { return m_placeholder; }

    QVariant evaluate(PropertySet const& properties, bool* isConstant) const override;
    ConstExpression* clone() const override;
    bool equals(Expression const* other) const override;
    void print(QTextStream& out, PrintStyle style) const override;
    void collectPlaceholders(QList<QVariant>& values) const override;
    bool isEmpty() const override;
    void write(QDataStream& out) const override;
    void read(QDataStream& in) override;

private:
    QVariant m_value;
    bool m_placeholder;
};

/// A reference to a property by name. Its value is that of the property named by the alias or, where the set has none
/// of that name, by the name; invalid where it has neither.
///
/// The name is printed bare, with blanks as "_": it must be a column's name, never a text from outside.
class GENERICUTILITIES_EXPORT ValueExpression : public virtual Expression {
public:
    using Expression::collectPlaceholders;
    using Expression::equals;

    ValueExpression(BaseProperty const& property, QString const& alias);
    ValueExpression(QString const& name, QString const& alias);

    QString const& name() const { return m_name; }
    /// In SQL printed after the name, as "name AS alias".
    QString const& alias() const { return m_alias; }

    QVariant evaluate(PropertySet const& properties, bool* isConstant) const override;
    ValueExpression* clone() const override;
    bool equals(Expression const* other) const override;
    void print(QTextStream& out, PrintStyle style) const override;
    bool isEmpty() const override;
    void write(QDataStream& out) const override;
    void read(QDataStream& in) override;

private:
    QString m_name;
    QString m_alias;
};

/// Converts the value of its operand, as QVariant does or, between dates and numbers, as TypeTool::castDate().
class GENERICUTILITIES_EXPORT CastExpression : public Expression {
public:
    using Expression::collectPlaceholders;
    using Expression::equals;

    CastExpression(QVariant::Type target, ExpressionHandle operand);

    QVariant::Type target() const { return m_target; }
    ExpressionHandle const& operand() const { return m_operand; }

    QVariant evaluate(PropertySet const& properties, bool* isConstant) const override;
    CastExpression* clone() const override;
    bool equals(Expression const* other) const override;
    void print(QTextStream& out, PrintStyle style) const override;
    void collectPlaceholders(QList<QVariant>& values) const override;
    bool isEmpty() const override;
    void write(QDataStream& out) const override;
    void read(QDataStream& in) override;

private:
    QVariant::Type m_target;
    ExpressionHandle m_operand;
};

/// Base of the nodes with operands.
class GENERICUTILITIES_EXPORT Operator : public Expression {
public:
    using Expression::collectPlaceholders;
    using Expression::equals;

    QList<ExpressionHandle> const& operands() const { return m_operands; }
    void append(ExpressionHandle operand);

    bool equals(Expression const* other) const override;
    void collectPlaceholders(QList<QVariant>& values) const override;
    bool isEmpty() const override;
    void write(QDataStream& out) const override;
    void read(QDataStream& in) override;

protected:
    Operator() = default;
    Operator(Operator const& other) = default;
    Operator& operator=(Operator const& other) = default;

    /// The operand itself, for reading: no handle is copied. @p index must be below the number of operands.
    Expression const& operand(int index) const { return *m_operands.at(index); }
    void replaceOperand(int index, ExpressionHandle const& operand);
    /// Prints the operands from @p first on, each with @p style, with @p separator between them.
    void printOperands(QTextStream& out, PrintStyle style, int first, QLatin1String separator) const;
    /// Prints all operands as nested ones with @p separator between them; in parentheses where there are two or more of
    /// them and @p style says that this node is nested itself.
    void printJunction(QTextStream& out, PrintStyle style, QLatin1String separator) const;

private:
    QList<ExpressionHandle> m_operands;
};

/// A list of expressions; its value is the list of their values.
class GENERICUTILITIES_EXPORT ExpressionList : public Operator {
public:
    ExpressionList();
    /// The elements of the list that @p elements holds; where it holds no list, itself as the only element.
    ExpressionList(ExpressionHandle elements);
    ExpressionList(ExpressionHandle first, ExpressionHandle second);
    /// A placeholder constant for each value.
    explicit ExpressionList(QList<QVariant> const& values);

    /// The one empty list that all default-constructed handles share.
    static ExpressionHandle empty();

    using Operator::append;
    void append(ExpressionList const& elements);

    QVariant evaluate(PropertySet const& properties, bool* isConstant) const override;
    ExpressionList* clone() const override;
    using Operator::equals;
    bool equals(Expression const* other) const override;
    void print(QTextStream& out, PrintStyle style) const override;
    bool isEmpty() const override;
};

/// Conversions of an expression; of a property: `toInt(+property)`.
///@{
GENERICUTILITIES_EXPORT CastExpression toBool(ExpressionHandle operand);
GENERICUTILITIES_EXPORT CastExpression toInt(ExpressionHandle operand);
GENERICUTILITIES_EXPORT CastExpression toUInt(ExpressionHandle operand);
GENERICUTILITIES_EXPORT CastExpression toLongLong(ExpressionHandle operand);
GENERICUTILITIES_EXPORT CastExpression toULongLong(ExpressionHandle operand);
GENERICUTILITIES_EXPORT CastExpression toDouble(ExpressionHandle operand);
GENERICUTILITIES_EXPORT CastExpression toString(ExpressionHandle operand);
GENERICUTILITIES_EXPORT CastExpression toDate(ExpressionHandle operand);
GENERICUTILITIES_EXPORT CastExpression toTime(ExpressionHandle operand);
GENERICUTILITIES_EXPORT CastExpression toDateTime(ExpressionHandle operand);
///@}

/// A list of exactly two elements: `a << b << c` is a list whose first element is a list.
///@{
GENERICUTILITIES_EXPORT ExpressionList operator<<(BaseProperty const& left, BaseProperty const& right);
GENERICUTILITIES_EXPORT ExpressionList operator<<(ExpressionHandle left, BaseProperty const& right);
GENERICUTILITIES_EXPORT ExpressionList operator<<(BaseProperty const& left, ExpressionHandle right);
GENERICUTILITIES_EXPORT ExpressionList operator<<(ExpressionHandle left, ExpressionHandle right);
///@}

} // namespace qvgen
