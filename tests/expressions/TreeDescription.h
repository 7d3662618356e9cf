// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/expressions/BooleanOperators.h>
#include <GenericUtilities/expressions/Comparator.h>
#include <GenericUtilities/expressions/Functions.h>
#include <GenericUtilities/expressions/NumericOperators.h>

#include <QDateTime>
#include <QJsonArray>
#include <QJsonObject>
#include <QRect>
#include <QRegExp>

/// Trees as expression_encoder.py takes them.
namespace description {

inline QJsonValue ofText(QString const& text)
{
    return text.isNull() ? QJsonValue() : QJsonValue(text);
}

inline QJsonValue ofDate(QDate date)
{
    return date.isNull() ? QJsonValue() : QJsonArray{date.year(), date.month(), date.day()};
}

inline QJsonValue ofTime(QTime time)
{
    return time.isNull() ? QJsonValue() : QJsonArray{time.hour(), time.minute(), time.second(), time.msec()};
}

inline QJsonValue ofDateTime(QDateTime const& moment)
{
    return QJsonObject{{"date", ofDate(moment.date())}, {"time", ofTime(moment.time())},
        {"spec", moment.timeSpec() == Qt::UTC ? "utc" : "local"}};
}

inline QJsonValue ofRegExp(QRegExp const& expression)
{
    return QJsonObject{{"pattern", ofText(expression.pattern())}, {"case", expression.caseSensitivity()},
        {"syntax", expression.patternSyntax()}, {"minimal", expression.isMinimal() ? 1 : 0}};
}

inline QJsonValue ofBytes(QByteArray const& bytes)
{
    return bytes.isNull() ? QJsonValue() : QJsonValue(QString::fromLatin1(bytes.toHex()));
}

inline QJsonArray ofRect(QRect const& rect)
{
    return {rect.left(), rect.top(), rect.right(), rect.bottom()};
}

inline QJsonArray ofTexts(QStringList const& texts)
{
    QJsonArray array;
    for (QString const& each : texts)
        array.append(ofText(each));
    return array;
}

QJsonArray ofVariant(QVariant const& value);

inline QJsonArray ofList(QVariantList const& list)
{
    QJsonArray array;
    for (QVariant const& each : list)
        array.append(ofVariant(each));
    return array;
}

template <class Map> QJsonObject ofMap(Map const& map)
{
    QJsonObject object;
    for (auto each = map.begin(); each != map.end(); ++each)
        object.insert(each.key(), ofVariant(each.value()));
    return object;
}

inline QJsonArray ofVariant(QVariant const& value)
{
    auto const typed = [&](char const* type, QJsonValue const& data) {
        return QJsonArray{type, data, value.isValid() && value.data_ptr().is_null};
    };
    switch (value.userType()) {
    case QMetaType::Bool:
        return typed("bool", value.toBool());
    case QMetaType::Int:
        return typed("int", value.toString());
    case QMetaType::UInt:
        return typed("uint", value.toString());
    case QMetaType::LongLong:
        return typed("longlong", value.toString());
    case QMetaType::ULongLong:
        return typed("ulonglong", value.toString());
    case QMetaType::Double:
        return typed("double", QString::number(value.toDouble(), 'g', 17));
    case QMetaType::Float:
        return typed("float", QString::number(value.toDouble(), 'g', 17));
    case QMetaType::QChar:
        return typed("char", QString(value.toChar()));
    case QMetaType::QString:
        return typed("string", ofText(value.toString()));
    case QMetaType::QStringList:
        return typed("stringlist", ofTexts(value.toStringList()));
    case QMetaType::QByteArray:
        return typed("bytearray", ofBytes(value.toByteArray()));
    case QMetaType::QDate:
        return typed("date", ofDate(value.toDate()));
    case QMetaType::QTime:
        return typed("time", ofTime(value.toTime()));
    case QMetaType::QDateTime:
        return typed("datetime", ofDateTime(value.toDateTime()));
    case QMetaType::QRect:
        return typed("rect", ofRect(value.toRect()));
    case QMetaType::QRegExp:
        return typed("regexp", ofRegExp(value.toRegExp()));
    case QMetaType::QVariantList:
        return typed("list", ofList(value.toList()));
    case QMetaType::QVariantMap:
        return typed("map", ofMap(value.toMap()));
    case QMetaType::QVariantHash:
        return typed("hash", ofMap(value.toHash()));
    default:
        return {"invalid", QJsonValue(), true};
    }
}

QJsonObject ofTree(qvgen::Expression const* node);

inline QJsonArray ofOperands(qvgen::Operator const* node)
{
    QJsonArray array;
    for (qvgen::ExpressionHandle const& each : node->operands())
        array.append(ofTree(each.constData()));
    return array;
}

inline QJsonObject ofTree(qvgen::Expression const* node)
{
    using namespace qvgen;
    if (auto const* const constant = dynamic_cast<ConstExpression const*>(node))
        return {{"class", "ConstExpression"}, {"placeholder", constant->isPlaceholder()},
            {"value", ofVariant(constant->value())}};
    if (auto const* const value = dynamic_cast<ValueExpression const*>(node))
        return {{"class", "ValueExpression"}, {"name", ofText(value->name())}, {"alias", ofText(value->alias())}};
    if (auto const* const cast = dynamic_cast<CastExpression const*>(node))
        return {{"class", "CastExpression"}, {"target", static_cast<double>(static_cast<uint>(cast->target()))},
            {"operand", ofTree(cast->operand().constData())}};
    QJsonArray const operands = ofOperands(dynamic_cast<Operator const*>(node));
    if (auto const* const comparator = dynamic_cast<Comparator const*>(node))
        return {{"class", "Comparator"}, {"op", comparator->op()}, {"operands", operands}};
    if (auto const* const junction = dynamic_cast<BooleanOperator const*>(node))
        return {{"class", "BooleanOperator"}, {"op", junction->op()}, {"operands", operands}};
    if (auto const* const numeric = dynamic_cast<NumericOperator const*>(node))
        return {{"class", "NumericOperator"}, {"op", numeric->op()}, {"operands", operands}};
    if (auto const* const unary = dynamic_cast<UnaryOperator const*>(node))
        return {{"class", "UnaryOperator"}, {"op", unary->op()}, {"operands", operands}};
    if (auto const* const function = dynamic_cast<FunctionExpression const*>(node))
        return {{"class", "FunctionExpression"}, {"name", ofText(function->name())},
            {"distinct", function->isDistinct()}, {"operands", operands}};
    char const* const name = dynamic_cast<ElementOf const*>(node) ? "ElementOf"
        : dynamic_cast<NotOperator const*>(node)                  ? "NotOperator"
        : dynamic_cast<SwitchCase const*>(node)                   ? "SwitchCase"
                                                                  : "ExpressionList";
    return {{"class", name}, {"operands", operands}};
}

} // namespace description
