// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/expressions/BooleanOperators.h>
#include <GenericUtilities/expressions/Functions.h>
#include <GenericUtilities/expressions/NumericOperators.h>

#include "Nodes.h"

#include <QDateTime>
#include <QTest>

using namespace qvgen;
using namespace nodes;

namespace {

/// Three milliseconds are taken for each time that it is copied or converted.
QString const millionLetters(1000000, QLatin1Char('a'));

NumericOperator sumOf(int count, QVariant const& text)
{
    NumericOperator sum(NumericOperator::Add);
    for (int i = 0; i < count; ++i)
        sum.append(constant(text));
    return sum;
}

QDateTime moment(int second)
{
    return QDateTime::fromSecsSinceEpoch(second, Qt::UTC);
}

/// So many values, each different from the others.
template <class Make> QVariantList different(int count, Make const& make)
{
    QVariantList values;
    for (int i = 0; i < count; ++i)
        values.append(QVariant(make(i)));
    return values;
}

QVariant countOfDistinct(QVariantList const& values)
{
    return FunctionExpression(QStringLiteral("count"), ExpressionList(values), true).evaluate({}, nullptr);
}

} // namespace

/// Work on values that might take too long: the 400 milliseconds that one evaluation has, and what comes out beyond.
class TestValueCosts : public QObject {
    Q_OBJECT

private slots:
    void sumOfTexts_data();
    void sumOfTexts();
    void sumsShareTheAllowance();
    void minusOfTexts();
    void textsAsTruthValues();
    void distinctValues_data();
    void distinctValues();
    void repeatedValues();
    void distinctAlikeValues_data();
    void distinctAlikeValues();
};

void TestValueCosts::sumOfTexts_data()
{
    QTest::addColumn<QVariant>("text");
    QTest::addColumn<int>("highest");
    QTest::newRow("text") << QVariant(millionLetters) << 15;
    // 8 milliseconds for each of them: 16 + 270 + 96 = 382.
    QTest::newRow("bytes") << QVariant(millionLetters.toLatin1()) << 14;
}

// Each step takes 3 milliseconds for the text and 3 for each one before it: 14 * 17 * 1.5 = 357 for 15 texts.
void TestValueCosts::sumOfTexts()
{
    QFETCH(QVariant, text);
    QFETCH(int, highest);
    QCOMPARE(sumOf(highest, text).evaluate({}, nullptr).toString().size(), highest * 1000000);
    QCOMPARE(sumOf(highest + 1, text).evaluate({}, nullptr), QVariant());
}

// Of 12 texts: 11 * 14 * 1.5 = 231.
void TestValueCosts::sumsShareTheAllowance()
{
    NumericOperator const sum = sumOf(12, millionLetters);
    QVariantList const values = ExpressionList(sum, sum).evaluate({}, nullptr).toList();
    QCOMPARE(values.size(), 2);
    QCOMPARE(values.at(0).toString().size(), 12000000);
    QCOMPARE(values.at(1), QVariant());
}

// 133 minus signs: 399 milliseconds, and a little for the unit that every other text ends with.
void TestValueCosts::minusOfTexts()
{
    ExpressionHandle tree = constant(millionLetters);
    for (int i = 0; i < 133; ++i)
        tree = -tree;
    QCOMPARE(tree.evaluate({}).toString().size(), 1000001);
    QCOMPARE((-tree).evaluate({}, nullptr), QVariant());
}

// Each of them is in lower case once it is compared with "false".
void TestValueCosts::textsAsTruthValues()
{
    BooleanOperator conjunction(BooleanOperator::And);
    ExpressionList negations;
    for (int i = 0; i < 133; ++i) {
        conjunction.append(constant(millionLetters));
        negations.append(!constant(millionLetters));
    }
    QCOMPARE(conjunction.evaluate({}, nullptr), QVariant(true));
    QCOMPARE(negations.evaluate({}, nullptr).toList().count(QVariant(false)), 133);
    conjunction.append(constant(millionLetters));
    negations.append(!constant(millionLetters));
    QCOMPARE(conjunction.evaluate({}, nullptr), QVariant());
    QCOMPARE(negations.evaluate({}, nullptr).toList().last(), QVariant());
}

// Among n numbers there are n * (n - 1) / 2 comparisons of 2 microseconds: 398.8 milliseconds for 632.
void TestValueCosts::distinctValues_data()
{
    QTest::addColumn<QVariantList>("highest");
    QTest::addColumn<QVariantList>("tooMany");
    auto const row = [](char const* name, int highest, auto const& make) {
        QTest::newRow(name) << different(highest, make) << different(highest + 1, make);
    };
    row("fractions", 632, [](int i) { return double(i); });
    row("numbers of 64 bits without a sign", 632, [](int i) { return qulonglong(i); });
    // 20 microseconds for two moments, which may be of any time zone.
    row("moments", 200, moment);
    // 22 for two lists of a moment, 6 for two of two texts.
    row("lists", 191, [](int i) { return QVariantList{moment(i)}; });
    row("lists of texts", 365, [](int i) { return QStringList{QStringLiteral("a"), QString::number(i)}; });
}

void TestValueCosts::distinctValues()
{
    QFETCH(QVariantList, highest);
    QFETCH(QVariantList, tooMany);
    QCOMPARE(countOfDistinct(highest), QVariant(highest.size()));
    QCOMPARE(countOfDistinct(tooMany), QVariant());
}

// Each of them is compared with one: 2 microseconds.
void TestValueCosts::repeatedValues()
{
    QCOMPARE(countOfDistinct(different(100000, [](int) { return 5.0; })), QVariant(1));
}

void TestValueCosts::distinctAlikeValues_data()
{
    QTest::addColumn<QVariantList>("values");
    QTest::addColumn<QVariant>("expected");
    // 25000 different ones, each four times.
    int const count = 100000;
    int const kinds = 25000;
    QTest::newRow("int") << different(count, [](int i) { return i % kinds - 5; }) << QVariant(kinds);
    QTest::newRow("uint") << different(count, [](int i) { return uint(i % kinds); }) << QVariant(kinds);
    QTest::newRow("qlonglong") << different(count, [](int i) { return qlonglong(i % kinds) << 40; }) << QVariant(kinds);
    QTest::newRow("text") << different(count, [](int i) { return QString::number(i % kinds); }) << QVariant(kinds);
    QTest::newRow("upper and lower case") << QVariantList{QStringLiteral("a"), QStringLiteral("A")} << QVariant(2);
    QTest::newRow("no text and an empty one") << QVariantList{QString(), QStringLiteral("")} << QVariant(1);
    // 3 nanoseconds a letter: 132 times a million of them, and for the function once more what is left: 399
    // milliseconds.
    QString const million(1000000, QLatin1Char('a'));
    QTest::newRow("long texts") << different(132, [&](int) { return million; }) << QVariant(1);
    QTest::newRow("too many long texts") << different(133, [&](int) { return million; }) << QVariant();
}

// A look into a set tells: there are few comparisons.
void TestValueCosts::distinctAlikeValues()
{
    QFETCH(QVariantList, values);
    QFETCH(QVariant, expected);
    QCOMPARE(countOfDistinct(values), expected);
}

QTEST_APPLESS_MAIN(TestValueCosts)
#include "tst_ValueCosts.moc"
