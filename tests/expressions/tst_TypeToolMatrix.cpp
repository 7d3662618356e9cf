// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/expressions/TypeTool.h>

#include "ReferenceTypeTool.h"
#include "TypedVariant.h"

#include <QtTest>

#include <set>

using qvgen::TypeTool;
using reference::Flags;
using reference::Outcome;
using namespace typed;

namespace {

using Arithmetic = QVariant (TypeTool::*)(QVariant const&, QVariant const&);
using Calculation = Outcome (*)(QVariant const&, QVariant const&, Flags);

template <Arithmetic operation> Outcome calculate(QVariant const& a, QVariant const& b, Flags flags)
{
    TypeTool tool(flags.left, flags.right);
    QVariant const value = (tool.*operation)(a, b);
    return {value, tool.wasOK()};
}

Outcome compare(QVariant const& a, QVariant const& b, Flags flags)
{
    TypeTool tool(flags.left, flags.right);
    int const order = tool.compare(a, b);
    return {order, tool.wasOK()};
}

Outcome equals(QVariant const& a, QVariant const& b, Flags flags)
{
    TypeTool tool(flags.left, flags.right);
    bool const equal = tool.equals(a, b);
    return {equal, tool.wasOK()};
}

struct Operation {
    char const* name;
    Calculation library;
    Calculation reference;
};

Operation const Operations[] = {
    {"add", calculate<&TypeTool::do_add>, reference::add},
    {"subtract", calculate<&TypeTool::do_subtract>, reference::subtract},
    {"multiply", calculate<&TypeTool::do_multiply>, reference::multiply},
    {"divide", calculate<&TypeTool::do_divide>, reference::divide},
    {"modulo", calculate<&TypeTool::do_modulo>, reference::modulo},
    {"bitand", calculate<&TypeTool::do_bitand>, reference::bitAnd},
    {"bitor", calculate<&TypeTool::do_bitor>, reference::bitOr},
    {"bitxor", calculate<&TypeTool::do_bitxor>, reference::bitXor},
    {"compare", compare, reference::compare},
    {"equals", equals, reference::equals},
};

constexpr Flags AllFlags[] = {{false, false}, {true, false}, {false, true}, {true, true}};

char const* text(Flags flags)
{
    if (flags.left)
        return flags.right ? "both constant" : "left constant";
    return flags.right ? "right constant" : "none constant";
}

QVariantList integers()
{
    return {
        0, 1, -1, 5, 0x7FFFFFFE, IntMax, IntMin, QVariant(QVariant::Int), //
        0u, 1u, 7u, 0x7FFFFFFEu, 0x7FFFFFFFu, 0x80000000u, UIntMax, //
        0ll, 1ll, -1ll, -1000ll, 0x7FFFFFFFll, 0x80000000ll, LongMax - 1, LongMax, LongMin, 86400000000ll, //
        0ull, 1ull, 7ull, 0x7FFFFFFEull, 0x7FFFFFFFull, 0x100000001ull, quint64(LongMax) - 1, quint64(LongMax),
        quint64(LongMax) + 1, ULongMax - 999, ULongMax, //
    };
}

QVariantList fractions()
{
    return {
        0.0, -0.0, 0.5, 1.0, -1.5, 1e-11, 2147483647.5, -2147483649.0, 9.2e18, 1e300, NaN, Inf, -Inf, //
        0.5f, float(NaN), true, false, //
    };
}

QVariantList texts()
{
    return {
        "", QString(), "abc", "ABC", "5", "-1", "1e3", "2020-01-01", "Wed Jan 1 00:00:00 2020", "true", //
        QByteArray(), QByteArray("5"), QByteArray("abc"), QChar('a'), QChar('5'), QChar(0xFFFF), //
    };
}

QVariantList days()
{
    return {
        QDate(), QDate(1970, 1, 1), QDate(1970, 1, 2), QDate(1969, 12, 31), QDate(2020, 1, 1), QDate(2107, 1, 1), //
        QDate(1, 1, 1), QDate::fromJulianDay(784354017364), //
        QTime(), QTime(0, 0), QTime(0, 0, 0, 1), QTime(12, 0), QTime(23, 59, 59, 999), //
    };
}

QVariantList moments()
{
    QDate const day(2020, 1, 1);
    return {
        QDateTime(), //
        QDateTime(QDate(1970, 1, 1), QTime(0, 0), Qt::UTC), //
        QDateTime(QDate(1969, 12, 31), QTime(23, 59, 59, 500), Qt::UTC), //
        QDateTime(QDate(1960, 1, 1), QTime(1, 2, 3, 4), Qt::UTC), //
        QDateTime(day, QTime(12, 0, 0, 250), Qt::UTC), //
        QDateTime(day, QTime(12, 0), Qt::LocalTime), //
        QDateTime(day, QTime(12, 0), Qt::OffsetFromUTC, -3600), //
        QDateTime(QDate(2106, 2, 7), QTime(6, 28, 15), Qt::UTC), //
        QDateTime(QDate(2200, 1, 1), QTime(0, 0), Qt::UTC), //
    };
}

QVariantList containers()
{
    return {
        QVariantList(), QVariantList{1}, QVariantList{1, 2u}, QVariantList{1, 7ull}, QVariantList{QVariant(QRect())}, //
        QVariantList{"a"}, QVariantList{QVariant(QVariantList{1})}, QVariantList{QVariant()}, //
        QStringList(), QStringList{"a"}, QStringList{"5"}, QStringList{"a", "b"}, //
        QVariantMap(), QVariantMap{{"a", 1}}, //
        QRect(), QRect(1, 2, 3, 4), //
        QVariant(), QVariant(QVariant::String), QVariant(QVariant::List), QVariant(QVariant::StringList), //
        QVariant(QVariant::Date), QVariant(QVariant::Double), QVariant(QVariant::Rect), //
    };
}

QVariantList values()
{
    return integers() + fractions() + texts() + days() + moments() + containers();
}

bool agree(Outcome const& a, Outcome const& b)
{
    return a.ok == b.ok && same(a.value, b.value);
}

QString told(Outcome const& outcome)
{
    return describe(outcome.value) + (outcome.ok ? QStringLiteral(", ok") : QStringLiteral(", failed"));
}

/// What to tell where the two disagree; empty where they agree.
QString disagreement(Operation const& operation, QVariant const& a, QVariant const& b, Flags flags)
{
    Outcome const actual = operation.library(a, b, flags);
    Outcome const expected = operation.reference(a, b, flags);
    if (agree(actual, expected))
        return {};
    return QStringLiteral("%1 of <%2> and <%3>, %4: gives <%5>, expected <%6>")
        .arg(operation.name, describe(a), describe(b), text(flags), told(actual), told(expected));
}

} // namespace

class TestTypeToolMatrix : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { qputenv("TZ", "UTC"); }

    void valuesCoverTheTypes();

    void pairs_data();
    void pairs();
    void commonNumericType();
    void commonOtherType();

    void microSeconds();
    void movement();
    void casts();
};

void TestTypeToolMatrix::valuesCoverTheTypes()
{
    std::set<int> const expected{QMetaType::UnknownType, QMetaType::Bool, QMetaType::Int, QMetaType::UInt,
        QMetaType::LongLong, QMetaType::ULongLong, QMetaType::Double, QMetaType::Float, QMetaType::QVariantList,
        QMetaType::QString, QMetaType::QStringList, QMetaType::QByteArray, QMetaType::QDate, QMetaType::QTime,
        QMetaType::QDateTime, QMetaType::QRect, QMetaType::QChar, QMetaType::QVariantMap};
    std::set<int> actual;
    for (QVariant const& value : values())
        actual.insert(value.userType());
    QVERIFY(actual == expected);
}

void TestTypeToolMatrix::pairs_data()
{
    QTest::addColumn<int>("index");
    for (int i = 0; i < int(std::size(Operations)); ++i)
        QTest::newRow(Operations[i].name) << i;
}

void TestTypeToolMatrix::pairs()
{
    QFETCH(int, index);
    QVariantList const all = values();
    QStringList wrong;
    int checked = 0;
    for (QVariant const& a : all)
        for (QVariant const& b : all)
            for (Flags flags : AllFlags) {
                QString const found = disagreement(Operations[index], a, b, flags);
                if (!found.isEmpty())
                    wrong += found;
                ++checked;
            }
    QVERIFY2(
        wrong.isEmpty(), qPrintable(QStringLiteral("%1 cases:\n").arg(wrong.size()) + wrong.mid(0, 20).join('\n')));
    QVERIFY(checked > 50000);
}

void TestTypeToolMatrix::commonNumericType()
{
    QVariantList const all = integers() + QVariantList{0.0, 0.5, NaN, Inf};
    for (QVariant const& a : all)
        for (QVariant const& b : all)
            for (Flags flags : AllFlags) {
                QVariant::Type const actual = TypeTool(flags.left, flags.right).coerceNumericTypes(a, b);
                QString const place = describe(a) + ", " + describe(b) + ", " + text(flags);
                QVERIFY2(actual == reference::coercedNumber(a, b, flags), qPrintable(place));
            }
}

void TestTypeToolMatrix::commonOtherType()
{
    QVariantList const all = values();
    for (QVariant const& a : all)
        for (QVariant const& b : all) {
            QVariant::Type const actual = TypeTool(false, false).coerceOtherTypes(a, b);
            QVERIFY2(actual == reference::coercedOther(a, b), qPrintable(describe(a) + ", " + describe(b)));
        }
}

void TestTypeToolMatrix::microSeconds()
{
    for (QVariant const& value : values()) {
        qint64 const expected = reference::signedBits(reference::micros(value));
        QVERIFY2(TypeTool::dateMicroSeconds(value) == expected, qPrintable(describe(value)));
        QVERIFY2(TypeTool::dateSeconds(value) == double(expected) / 1e6, qPrintable(describe(value)));
    }
}

void TestTypeToolMatrix::movement()
{
    qint64 const day = 86400000000;
    for (QVariant const& value : values())
        for (qint64 micros :
            {Q_INT64_C(0), 1ll, -1ll, 1000ll, -1000000ll, day, -day, day / 2, 36525 * day, LongMax, LongMin}) {
            QString const actual = describe(TypeTool(false, false).dateAdd(value, micros));
            QString const expected = describe(reference::moved(value, quint64(micros)));
            QVERIFY2(actual == expected,
                qPrintable(QStringLiteral("%1 by %2: %3, expected %4")
                               .arg(describe(value), QString::number(micros), actual, expected)));
        }
}

void TestTypeToolMatrix::casts()
{
    for (QVariant const& value : values())
        for (int type = QVariant::Invalid; type <= QMetaType::LastCoreType; ++type) {
            auto const target = static_cast<QVariant::Type>(type);
            QString const actual = describe(TypeTool::castDate(value, target));
            QString const expected = describe(reference::castDate(value, target));
            QVERIFY2(actual == expected,
                qPrintable(QStringLiteral("%1 to type %2: %3, expected %4")
                               .arg(describe(value), QString::number(type), actual, expected)));
        }
}

QTEST_GUILESS_MAIN(TestTypeToolMatrix)
#include "tst_TypeToolMatrix.moc"
