// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/expressions/ExpressionHandle.h>

#include "Nodes.h"

#include <QLocale>
#include <QSqlDatabase>
#include <QSqlQuery>

/// What SQLite answers, in a text that rows of tests can spell.
namespace sqlite {

/// "NULL", 7, 7.0, "text" in double quotes; truth values as 1 and 0, as the database has them.
inline QString described(QVariant const& value)
{
    switch (value.isNull() ? QMetaType::UnknownType : static_cast<int>(value.type())) {
    case QMetaType::UnknownType:
        return QStringLiteral("NULL");
    case QMetaType::Bool:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
        return QString::number(value.toLongLong());
    case QMetaType::Double: {
        // Adding zero makes one zero of the two.
        double const number = value.toDouble() + 0.0;
        char const format = qAbs(number) < 1e15 ? 'g' : 'e';
        QString const digits = QString::number(number, format, QLocale::FloatingPointShortest);
        bool const isWhole = !digits.contains(QLatin1Char('.')) && !digits.contains(QLatin1Char('e'));
        return isWhole ? digits + QLatin1String(".0") : digits;
    }
    default:
        return QLatin1Char('"') + value.toString() + QLatin1Char('"');
    }
}

/// The first value that a query gives, described; "error" where it is refused.
inline QString answer(QSqlQuery& query, QList<QVariant> const& bound)
{
    for (QVariant const& value : bound)
        query.addBindValue(value);
    if (!query.exec() || !query.next())
        return QStringLiteral("error");
    return described(query.value(0));
}

/// As above; @p from follows on a line of its own, so that a comment at the end of @p text hides nothing but itself.
inline QString select(QString const& text, QList<QVariant> const& bound = {}, QString const& from = QString())
{
    QSqlQuery query;
    if (!query.prepare(QLatin1String("SELECT ") + text + QLatin1Char('\n') + from))
        return QStringLiteral("error");
    return answer(query, bound);
}

inline QString selectBound(qvgen::ExpressionHandle const& expression)
{
    return select(expression.toString(nodes::Bound), expression.collectPlaceholders());
}

/// The connection of a test without a name, to an empty database in memory.
inline bool open(QString const& options = QString())
{
    QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"));
    database.setDatabaseName(QStringLiteral(":memory:"));
    database.setConnectOptions(options);
    return database.open();
}

inline void close()
{
    QSqlDatabase::removeDatabase(QLatin1String(QSqlDatabase::defaultConnection));
}

} // namespace sqlite
