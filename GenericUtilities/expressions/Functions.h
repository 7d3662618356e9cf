// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/expressions/Expression.h>

#include <QCache>
#include <QRegExp>

namespace qvgen {

/// A call of a function by its name. What the name means stands in one registry of the process, which clients extend.
///
/// A name that is not registered, and a built-in function without the values that it needs, evaluate to an invalid
/// value. (How many it needs is not checked against the registry: `coalesce` of one value is that value.)
class GENERICUTILITIES_EXPORT FunctionExpression : public Operator {
public:
    /// Computes the value of a call from those of its operands, however many there are. Must be reentrant where trees
    /// are evaluated in several threads.
    using Evaluate = QVariant (*)(QList<QVariant> const& values);
    /// Prints a call in SQL.
    using PrintSql
        = void (*)(QTextStream& out, PrintStyle style, QString const& name, QList<ExpressionHandle> const& operands);

    struct FunctionEntry {
        Evaluate evaluate = nullptr;
        int minArguments = 0;
        /// -1: any number.
        int maxArguments = 0;
        /// Null: the value of the call is printed, as it is at that moment.
        PrintSql printSql = nullptr;
    };

    FunctionExpression(QString const& name, ExpressionList const& operands, bool distinct);

    QString const& name() const { return m_name; }
    /// Whether the function sees each value once only.
    bool isDistinct() const { return m_distinct; }

    /// The registry. Not locked: register while the program is loaded, or before threads use it.
    static QMap<QString, FunctionEntry>& functionMap();
    /// Returns false, logs a warning and changes nothing where @p name (UTF-8) is taken.
    static bool registerFunction(
        char const* name, Evaluate evaluate, PrintSql printSql, int minArguments, int maxArguments);
    /// Replaces how calls of @p name print in SQL, for a database that writes them in another way. Returns false and
    /// logs a warning where @p name is not registered.
    static bool registerSqlPrintFunction(char const* name, PrintSql printSql);

    /// "name(operands)", after the parenthesis "DISTINCT " where @p style says so.
    static void printDefault(
        QTextStream& out, PrintStyle style, QString const& name, QList<ExpressionHandle> const& operands);
    /// "(operand NAME operand)", with " ESCAPE " and the third operand where there is one.
    static void printLike(
        QTextStream& out, PrintStyle style, QString const& name, QList<ExpressionHandle> const& operands);

    /// The built-in functions.
    ///@{
    static QVariant currentDate(QList<QVariant> const& values);
    static QVariant currentTime(QList<QVariant> const& values);
    static QVariant currentDateTime(QList<QVariant> const& values);
    static QVariant abs(QList<QVariant> const& values);
    /// The *largest* value: in memory minimum and maximum are swapped against their names.
    static QVariant min(QList<QVariant> const& values);
    /// The *smallest* value.
    static QVariant max(QList<QVariant> const& values);
    static QVariant count(QList<QVariant> const& values);
    /// Begins with a separator: "a" and "b" give ",a,b".
    static QVariant groupConcat(QList<QVariant> const& values);
    static QVariant coalesce(QList<QVariant> const& values);
    /// The first value where both are equal, else invalid (SQL has it the other way round).
    static QVariant nullif(QList<QVariant> const& values);
    static QVariant hex(QList<QVariant> const& values);
    /// Halves go up: 2.5 to 3, -2.5 to -2.
    static QVariant round(QList<QVariant> const& values);
    static QVariant random(QList<QVariant> const& values);
    static QVariant length(QList<QVariant> const& values);
    static QVariant lower(QList<QVariant> const& values);
    static QVariant upper(QList<QVariant> const& values);
    /// The text unchanged: in memory no quotes are added.
    static QVariant quote(QList<QVariant> const& values);
    static QVariant trim(QList<QVariant> const& values);
    /// Whether the whole first text matches the pattern: "%" stands for any run of characters, "_" for any one, every
    /// other character for itself, and so does each that follows the escape text. Invalid where pattern or subject
    /// exceed the bounds of docs/expressions.md.
    static QVariant like(QList<QVariant> const& values);
    /// Whether the whole first text matches the second value, a QRegExp or the text of one. Invalid as like().
    static QVariant regexp(QList<QVariant> const& values);
    ///@}

    /// Compiled patterns, each of cost 1, guarded by one internal mutex while trees are evaluated.
    static QCache<QString, QRegExp> gLikeCache;
    static QCache<QString, QRegExp> gRegExpCache;

    QVariant evaluate(PropertySet const& properties, bool* isConstant) const override;
    FunctionExpression* clone() const override;
    using Operator::equals;
    bool equals(Expression const* other) const override;
    void print(QTextStream& out, PrintStyle style) const override;
    using Operator::collectPlaceholders;
    void collectPlaceholders(QList<QVariant>& values) const override;
    bool isEmpty() const override;
    void write(QDataStream& out) const override;
    void read(QDataStream& in) override;

private:
    QString m_name;
    bool m_distinct;
};

/// Calls of the built-in functions.
///@{
GENERICUTILITIES_EXPORT ExpressionHandle count(ValueExpression const& value, bool distinct);
GENERICUTILITIES_EXPORT ExpressionHandle group_concat(ValueExpression const& value, bool distinct);
GENERICUTILITIES_EXPORT ExpressionHandle max(ValueExpression const& value);
GENERICUTILITIES_EXPORT ExpressionHandle min(ValueExpression const& value);
GENERICUTILITIES_EXPORT ExpressionHandle trim(ExpressionHandle operand);
GENERICUTILITIES_EXPORT ExpressionHandle quote(ExpressionHandle operand);
GENERICUTILITIES_EXPORT ExpressionHandle upper(ExpressionHandle operand);
GENERICUTILITIES_EXPORT ExpressionHandle lower(ExpressionHandle operand);
GENERICUTILITIES_EXPORT ExpressionHandle length(ExpressionHandle operand);
GENERICUTILITIES_EXPORT ExpressionHandle round(ExpressionHandle operand);
GENERICUTILITIES_EXPORT ExpressionHandle hex(ExpressionHandle operand);
GENERICUTILITIES_EXPORT ExpressionHandle abs(ExpressionHandle operand);
GENERICUTILITIES_EXPORT ExpressionHandle random();
GENERICUTILITIES_EXPORT ExpressionHandle currentDateTime();
GENERICUTILITIES_EXPORT ExpressionHandle currentTime();
GENERICUTILITIES_EXPORT ExpressionHandle currentDate();
GENERICUTILITIES_EXPORT ExpressionHandle nullif(ExpressionHandle first, ExpressionHandle second);
GENERICUTILITIES_EXPORT ExpressionHandle ifnull(ExpressionHandle first, ExpressionHandle second);
GENERICUTILITIES_EXPORT ExpressionHandle coalesce(ExpressionList const& operands);
/// The expression is a constant, but no placeholder: no database binds one.
GENERICUTILITIES_EXPORT ExpressionHandle regexp(ExpressionHandle operand, QRegExp const& expression);
/// The texts of patterns and escapes are placeholders.
GENERICUTILITIES_EXPORT ExpressionHandle regexp(ExpressionHandle operand, QString const& pattern);
GENERICUTILITIES_EXPORT ExpressionHandle like(
    ExpressionHandle operand, QString const& pattern, QString const& escape = QString());
///@}

} // namespace qvgen
