// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/expressions/BooleanOperators.h>
#include <GenericUtilities/expressions/Comparator.h>
#include <GenericUtilities/expressions/Functions.h>
#include <GenericUtilities/expressions/NumericOperators.h>

#include "Nodes.h"
#include "StreamBytes.h"

#include <QDateTime>
#include <QRect>
#include <QRegExp>
#include <QTimeZone>

#include <vector>

/// Trees and their records, worked out by hand from docs/formats.md.
namespace golden {

struct Record {
    char const* name;
    qvgen::ExpressionHandle tree;
    QByteArray old; ///< at version Qt_4_8; empty where the tree cannot be kept there
    QByteArray recent; ///< at version Qt_5_15
};

using stream::hex;
using stream::record;

inline Record same(char const* name, qvgen::ExpressionHandle const& tree, QByteArray const& bytes)
{
    return {name, tree, bytes, bytes};
}

// age, without alias
inline QByteArray age()
{
    return record("0000001a", "N5qvgen15ValueExpressionE", "00000002 00000006 0061 0067 0065 ffffffff");
}

// The placeholder 5.
inline QByteArray five()
{
    return record("0000001a", "N5qvgen15ConstExpressionE", "00000001 01 00000002 00 00000005");
}

// The constant true.
inline QByteArray yes()
{
    return record("0000001a", "N5qvgen15ConstExpressionE", "00000001 00 00000001 00 01");
}

inline QByteArray numeric(char const* op)
{
    return record("0000001a", "N5qvgen15NumericOperatorE", "00000001") + hex(op) + hex("00000001 00000002") + age()
        + five();
}

inline QByteArray comparison(char const* op)
{
    return record("00000015", "N5qvgen10ComparatorE", "00000001") + hex(op) + hex("00000001 00000002") + age() + five();
}

/// Every class of node, every number of an operator.
inline std::vector<Record> nodeRecords()
{
    using namespace qvgen;
    using namespace nodes;
    ExpressionHandle const a = value("age");
    ExpressionHandle const p = placeholder(5);
    ExpressionHandle const t = constant(true);
    ElementOf element(a);
    element.append(5);
    QByteArray const list = record("00000019", "N5qvgen14ExpressionListE", "00000001 00000000");
    // clang-format off
    return {
        same("placeholder", p, five()),
        same("constant", t, yes()),
        same("value", a, age()),
        same("value with an alias", ValueExpression(QStringLiteral("ab"), QStringLiteral("c")),
            record("0000001a", "N5qvgen15ValueExpressionE", "00000002 00000004 0061 0062 00000002 0063")),
        same("value without a name", ValueExpression(QString(), QStringLiteral("")),
            record("0000001a", "N5qvgen15ValueExpressionE", "00000002 ffffffff 00000000")),
        same("cast to int", toInt(p), record("00000019", "N5qvgen14CastExpressionE", "00000001 00000002") + five()),
        same("cast to datetime", toDateTime(a), record("00000019", "N5qvgen14CastExpressionE", "00000001 00000010") + age()),
        same("cast of a cast", toBool(toString(t)), record("00000019", "N5qvgen14CastExpressionE", "00000001 00000001")
            + record("00000019", "N5qvgen14CastExpressionE", "00000001 0000000a") + yes()),
        same("default handle", ExpressionHandle(), list),
        same("list of two", a << p, record("00000019", "N5qvgen14ExpressionListE", "00000001 00000002") + age() + five()),
        same("list with a list", ExpressionHandle() << p, record("00000019", "N5qvgen14ExpressionListE", "00000001 00000002") + list + five()),
        same("not equal", Comparator(a, Comparator::NotEqual, p), comparison("00000000")),
        same("less", Comparator(a, Comparator::Less, p), comparison("00000001")),
        same("equal", Comparator(a, Comparator::Equal, p), comparison("00000002")),
        same("greater", Comparator(a, Comparator::Greater, p), comparison("00000003")),
        same("less or equal", Comparator(a, Comparator::LessEqual, p), comparison("00000004")),
        // docs/formats.md, "Worked example: age >= ?"
        same("age >= ?", a >= 5,
            hex("00000015 4e357176 67656e31 30436f6d 70617261 746f7245 00" // key
                "00000001 00000005" // version, GreaterEqual
                "00000001 00000002" // version, two operands
                "0000001a 4e357176 67656e31 3556616c 75654578 70726573 73696f6e 4500" // key
                "00000002 00000006 0061 0067 0065 ffffffff" // version, name, alias
                "0000001a 4e357176 67656e31 35436f6e 73744578 70726573 73696f6e 4500" // key
                "00000001 01 00000002 00 00000005")), // version, placeholder, the integer 5
        same("comparison without operands", Comparator(Comparator::Greater),
            record("00000015", "N5qvgen10ComparatorE", "00000001 00000003 00000001 00000000")),
        same("element of", element, record("00000013", "N5qvgen9ElementOfE", "00000001 00000002") + age() + five()),
        same("element of without operands", ElementOf(), record("00000013", "N5qvgen9ElementOfE", "00000001 00000000")),
        same("and", t && t, record("0000001a", "N5qvgen15BooleanOperatorE", "00000001 00000000 00000001 00000002") + yes() + yes()),
        same("or", t || a, record("0000001a", "N5qvgen15BooleanOperatorE", "00000001 00000001 00000001 00000002") + yes() + age()),
        same("not", !t, record("00000016", "N5qvgen11NotOperatorE", "00000001 00000001") + yes()),
        same("add", NumericOperator(a, NumericOperator::Add, p), numeric("00000000")),
        same("subtract", NumericOperator(a, NumericOperator::Subtract, p), numeric("00000001")),
        same("multiply", NumericOperator(a, NumericOperator::Multiply, p), numeric("00000002")),
        same("divide", NumericOperator(a, NumericOperator::Divide, p), numeric("00000003")),
        same("modulo", NumericOperator(a, NumericOperator::Modulo, p), numeric("00000004")),
        same("bit and", NumericOperator(a, NumericOperator::BitAnd, p), numeric("00000005")),
        same("bit or", NumericOperator(a, NumericOperator::BitOr, p), numeric("00000006")),
        same("bit xor", NumericOperator(a, NumericOperator::BitXor, p), numeric("00000007")),
        same("minus", -a, record("00000018", "N5qvgen13UnaryOperatorE", "00000001 00000000 00000001 00000001") + age()),
        same("bit not", ~p, record("00000018", "N5qvgen13UnaryOperatorE", "00000001 00000001 00000001 00000001") + five()),
        same("function", abs(p), record("0000001d", "N5qvgen18FunctionExpressionE", "00000002 00000006 0061 0062 0073 00 00000001 00000001") + five()),
        same("distinct function", FunctionExpression(QStringLiteral("f"), a << a, true),
            record("0000001d", "N5qvgen18FunctionExpressionE", "00000002 00000002 0066 01 00000001 00000002") + age() + age()),
    };
    // clang-format on
}

inline QDateTime moment(Qt::TimeSpec spec, int offsetSeconds = 0)
{
    return {QDate(2020, 1, 2), QTime(3, 4, 5, 6), spec, offsetSeconds};
}

struct Value {
    char const* name;
    QVariant value;
    char const* old;
    char const* recent;
};

inline Value sameValue(char const* name, QVariant const& value, char const* bytes)
{
    return {name, value, bytes, bytes};
}

/// Every type that a constant may have.
inline std::vector<Value> values()
{
    QChar const smiley[] = {QChar(0xd83d), QChar(0xde00)};
    // clang-format off
    return {
        {"invalid", {}, "00000000 01 ffffffff", "00000000 01"},
        sameValue("true", true, "00000001 00 01"),
        sameValue("int", -2, "00000002 00 fffffffe"),
        sameValue("null int", QVariant(QVariant::Int), "00000002 01 00000000"),
        sameValue("uint", 4294967295U, "00000003 00 ffffffff"),
        sameValue("longlong", qlonglong(-2), "00000004 00 fffffffffffffffe"),
        sameValue("ulonglong", qulonglong(0x123456789abcdef0), "00000005 00 123456789abcdef0"),
        sameValue("double", 1.5, "00000006 00 3ff8000000000000"),
        {"float", 1.5F, "00000087 00 3ff8000000000000", "00000026 00 3ff8000000000000"},
        {"null float", QVariant(static_cast<QVariant::Type>(QMetaType::Float)), "00000087 01 0000000000000000", "00000026 01 0000000000000000"},
        sameValue("char", QChar(0x20ac), "00000007 00 20ac"),
        sameValue("map, highest key first", QVariantMap{{"a", 1}, {"b", true}},
            "00000008 00 00000002 00000002 0062 00000001 00 01 00000002 0061 00000002 00 00000001"),
        sameValue("empty map", QVariantMap(), "00000008 00 00000000"),
        sameValue("list", QVariantList{1, "a"}, "00000009 00 00000002 00000002 00 00000001 0000000a 00 00000002 0061"),
        sameValue("empty list", QVariantList(), "00000009 00 00000000"),
        {"list in a list", QVariantList{QVariant(QVariantList{QVariant()})},
            "00000009 00 00000001 00000009 00 00000001 00000000 01 ffffffff",
            "00000009 00 00000001 00000009 00 00000001 00000000 01"},
        sameValue("text", "ab", "0000000a 00 00000004 0061 0062"),
        sameValue("empty text", "", "0000000a 00 00000000"),
        sameValue("null text", QString(), "0000000a 00 ffffffff"),
        sameValue("null of type text", QVariant(QVariant::String), "0000000a 01 ffffffff"),
        sameValue("text outside the first plane", QString(smiley, 2), "0000000a 00 00000004 d83d de00"),
        sameValue("text of half a pair", QString(smiley, 1), "0000000a 00 00000002 d83d"),
        sameValue("text with a zero", QString(QChar(0)), "0000000a 00 00000002 0000"),
        sameValue("texts", QStringList{"a", QString()}, "0000000b 00 00000002 00000002 0061 ffffffff"),
        sameValue("bytes", QByteArray("\0\xff", 2), "0000000c 00 00000002 00ff"),
        sameValue("null bytes", QByteArray(), "0000000c 00 ffffffff"),
        {"date", QDate(2020, 1, 2), "0000000e 00 002584e3", "0000000e 00 00000000002584e3"},
        {"null date", QDate(), "0000000e 00 00000000", "0000000e 00 8000000000000000"},
        {"null of type date", QVariant(QVariant::Date), "0000000e 01 00000000", "0000000e 01 8000000000000000"},
        sameValue("time", QTime(3, 4, 5, 6), "0000000f 00 00a8888e"),
        sameValue("null time", QTime(), "0000000f 00 ffffffff"),
        {"UTC", moment(Qt::UTC), "00000010 00 002584e3 00a8888e 02", "00000010 00 00000000002584e3 00a8888e 01"},
        {"local time", moment(Qt::LocalTime), "00000010 00 002584e3 00a8888e ff", "00000010 00 00000000002584e3 00a8888e 00"},
        sameValue("rectangle by its corners", QRect(1, 2, 3, 4), "00000013 00 00000001 00000002 00000003 00000005"),
        sameValue("regular expression", QRegExp("a*"), "0000001b 00 00000004 0061 002a 01 00 00"),
        sameValue("wildcard, any case", QRegExp("a*", Qt::CaseInsensitive, QRegExp::Wildcard),
            "0000001b 00 00000004 0061 002a 00 01 00"),
        sameValue("hash", QVariantHash{{"a", 1}}, "0000001c 00 00000001 00000002 0061 00000002 00 00000001"),
    };
    // clang-format on
}

/// What only streams from Qt 5.2 on can hold.
inline std::vector<Value> recentValues()
{
    QDateTime const berlin(QDate(2020, 1, 2), QTime(3, 4, 5, 6), QTimeZone("Europe/Berlin"));
    QTimeZone const ours("Our/Site", 3600, "Site", "S", QLocale::AnyCountry, "c");
    QDateTime const site(QDate(2020, 1, 2), QTime(3, 4, 5, 6), ours);
    // clang-format off
    return {
        {"offset", moment(Qt::OffsetFromUTC, 3600), nullptr, "00000010 00 00000000002584e3 00a8888e 02 00000e10"},
        {"zone", berlin, nullptr, "00000010 00 00000000002584e3 00a8888e 03"
            "0000001a 0045 0075 0072 006f 0070 0065 002f 0042 0065 0072 006c 0069 006e"},
        {"zone of the client", site, nullptr, "00000010 00 00000000002584e3 00a8888e 03"
            "0000001a 004f 0066 0066 0073 0065 0074 0046 0072 006f 006d 0055 0074 0063" // OffsetFromUtc
            "00000010 004f 0075 0072 002f 0053 0069 0074 0065 00000e10" // id, seconds
            "00000008 0053 0069 0074 0065 00000002 0053" // name, abbreviation
            "00000000 00000002 0063"}, // country, comment
    };
    // clang-format on
}

inline std::vector<Record> valueRecords()
{
    std::vector<Record> records;
    for (Value const& each : values())
        records.push_back({each.name, nodes::constant(each.value), stream::constantRecord(hex(each.old)),
            stream::constantRecord(hex(each.recent))});
    for (Value const& each : recentValues())
        records.push_back(
            {each.name, nodes::constant(each.value), QByteArray(), stream::constantRecord(hex(each.recent))});
    return records;
}

inline std::vector<Record> records()
{
    std::vector<Record> all = nodeRecords();
    for (Record const& each : valueRecords())
        all.push_back(each);
    return all;
}

} // namespace golden
