// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/expressions/Functions.h>
#include <GenericUtilities/expressions/NumericOperators.h>

#include "SqliteAnswer.h"
#include "support/Random.h"

#include <QTest>

using namespace qvgen;
using namespace nodes;

namespace {

QVariant inMemory(ExpressionHandle const& expression)
{
    return expression.evaluate(PropertySet());
}

/// Random expressions of which the rules in memory and those of SQLite are the same: integers that no operation takes
/// beyond 32 bits, doubles, ASCII texts whose only white space is the blank, null texts.
class Generator {
public:
    int below(int bound) { return m_random.bounded(bound); }
    bool oneIn(int chances) { return below(chances) == 0; }
    ExpressionHandle integers(int depth);
    ExpressionHandle numbers(int depth);
    ExpressionHandle text(int depth);
    /// A text of up to @p longest characters of @p alphabet.
    QString word(char const* alphabet, int longest);

private:
    NumericOperator::NumOp operation() { return static_cast<NumericOperator::NumOp>(below(4)); }

    QRandomGenerator m_random = support::generator();
};

ExpressionHandle Generator::integers(int depth)
{
    if (depth > 0)
        return NumericOperator(integers(depth - 1), operation(), integers(depth - 1));
    // Eight factors of at most twelve stay below 2^31.
    int const leaf = below(25) - 12;
    return placeholder(oneIn(2) ? QVariant(leaf) : QVariant(qlonglong(leaf)));
}

ExpressionHandle Generator::numbers(int depth)
{
    if (depth > 0)
        return NumericOperator(numbers(depth - 1), operation(), numbers(depth - 1));
    return oneIn(4) ? integers(0) : placeholder((m_random.generateDouble() - 0.5) * (oneIn(2) ? 1e6 : 1e-3));
}

QString Generator::word(char const* alphabet, int longest)
{
    auto const letters = static_cast<int>(qstrlen(alphabet));
    QString result(QLatin1String(""));
    for (int length = below(longest + 1); length > 0; --length)
        result.append(QLatin1Char(alphabet[below(letters)]));
    return result;
}

ExpressionHandle Generator::text(int depth)
{
    if (depth == 0)
        return placeholder(oneIn(5) ? QString() : word("  aAzZ@[`{09'\"%?:~", 6));
    switch (below(5)) {
    case 0:
        return lower(text(depth - 1));
    case 1:
        return upper(text(depth - 1));
    case 2:
        return trim(text(depth - 1));
    case 3:
        return ifnull(text(depth - 1), text(depth - 1));
    default:
        return coalesce(ExpressionList(text(depth - 1), text(depth - 1)));
    }
}

/// SQLite's hex() gives the bytes of a text; printf gives the digits of a number.
void printHexDigits(
    QTextStream& out, Expression::PrintStyle style, QString const&, QList<ExpressionHandle> const& operands)
{
    out << "printf('%x',";
    operands.first()->print(out, style);
    out << ')';
}

} // namespace

/// Arithmetic and functions give the same in memory as in SQLite, where the rules agree; docs/sql.md lists where not.
class TestSqlFunctions : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void sameValue_data();
    void sameValue();
    void remainder_data();
    void remainder();
    void randomRemainders();
    void randomIntegers();
    void randomNumbers();
    void randomAbs();
    void randomTexts();
    void randomLengths();
    void hexWithPrintFunction();
    void likeRows_data();
    void likeRows();
    void randomLike();
    void randomLikeWithoutEscape();
    void cleanupTestCase();
};

void TestSqlFunctions::initTestCase()
{
    QVERIFY(sqlite::open());
    QSqlQuery query;
    QVERIFY(query.exec(QStringLiteral("PRAGMA case_sensitive_like=ON")));
}

void TestSqlFunctions::sameValue_data()
{
    QTest::addColumn<ExpressionHandle>("expression");
    QTest::addColumn<QString>("expected");

    auto const number = [](QVariant const& v) { return ExpressionHandle(placeholder(v)); };
    auto const text = [](char const* v) { return ExpressionHandle(placeholder(QString::fromLatin1(v))); };
    // clang-format off
    auto const row = [](char const* name, ExpressionHandle const& expression, char const* expected) {
        QTest::newRow(name) << expression << QString::fromLatin1(expected);
    };
    row("sum",                                number(5) + number(7),                         "12");
    row("sum with a negative constant",       number(5) + number(-7),                        "-2");
    row("difference",                         number(3) - number(5),                         "-2");
    row("product",                            number(-3) * number(5),                        "-15");
    row("quotient of integers is whole",      number(7) / number(2),                         "3");
    row("negative quotient goes to zero",     number(-7) / number(2),                        "-3");
    row("both negative",                      number(-7) / number(-2),                       "3");
    row("division by zero is unknown",        number(7) / number(0),                         "NULL");
    row("double division by zero is unknown", number(7.5) / number(0),                       "NULL");
    row("chain goes from the left",           number(10) - number(4) - number(3),            "3");
    row("right operand in parentheses",       number(10) - (number(4) - number(3)),          "9");
    row("product of a sum",                   (number(2) + number(3)) * number(4),           "20");
    row("sum of doubles",                     number(0.1) + number(0.2),                     "0.30000000000000004");
    row("double and integer",                 number(2.5) * number(3),                       "7.5");
    row("quotient with a double",             number(7.5) / number(2),                       "3.75");
    row("whole double stays double",          number(2.5) + number(0.5),                     "3.0");
    row("64 bits",                            number(Q_INT64_C(4294967296)) * number(2),     "8589934592");
    row("minus",                              -number(5),                                    "-5");
    row("minus of a sum",                     -(number(5) + number(2)),                      "-7");
    row("bits in common",                     number(6) & number(3),                         "2");
    row("bits of either",                     number(6) | number(3),                         "7");
    row("abs of negative",                    abs(number(-5)),                               "5");
    row("abs of positive",                    abs(number(5)),                                "5");
    row("abs of zero",                        abs(number(0)),                                "0");
    row("abs of -1.0 and below",              abs(number(-1.5)),                             "1.5");
    row("abs of 64 bits",                     abs(number(Q_INT64_C(-4294967297))),           "4294967297");
    row("length",                             length(text("abc")),                           "3");
    row("length of nothing",                  length(text("")),                              "0");
    row("length of a number is its text's",   length(number(-120)),                          "4");
    row("lower",                              lower(text("MiXed 1!")),                       "\"mixed 1!\"");
    row("upper",                              upper(text("MiXed 1!")),                       "\"MIXED 1!\"");
    row("trim takes both ends",               trim(text("  a b ")),                          "\"a b\"");
    row("trim of blanks alone",               trim(text("  ")),                              "\"\"");
    row("round up",                           round(number(2.5)),                            "3.0");
    row("round down",                         round(number(2.25)),                           "2.0");
    row("coalesce takes the first",           coalesce(ExpressionList(text("a"), text("b"))), "\"a\"");
    row("empty text is a value",              ifnull(text(""), text("b")),                   "\"\"");
    row("zero is a value",                    ifnull(number(0), number(1)),                  "0");
    // clang-format on
}

void TestSqlFunctions::sameValue()
{
    QFETCH(ExpressionHandle, expression);
    QFETCH(QString, expected);
    QCOMPARE(sqlite::described(inMemory(expression)), expected);
    QCOMPARE(sqlite::selectBound(expression), expected);
    QCOMPARE(sqlite::select(expression.toString(Sql)), expected);
}

void TestSqlFunctions::remainder_data()
{
    QTest::addColumn<int>("dividend");
    QTest::addColumn<int>("divisor");
    QTest::addColumn<QString>("expected");

    QTest::newRow("both positive") << 7 << 3 << "1";
    QTest::newRow("both negative") << -7 << -3 << "-1";
    QTest::newRow("sign of the dividend, negative") << -7 << 3 << "-1";
    QTest::newRow("sign of the dividend, positive") << 7 << -3 << "1";
    QTest::newRow("nothing remains") << 6 << 3 << "0";
    QTest::newRow("divisor is larger") << 3 << 7 << "3";
    QTest::newRow("by zero") << 7 << 0 << "NULL";
    QTest::newRow("lowest by -1") << INT_MIN << -1 << "0";
}

// The operator prints "mod", which SQLite does not know; its rule is that of SQLite's "%".
void TestSqlFunctions::remainder()
{
    QFETCH(int, dividend);
    QFETCH(int, divisor);
    QFETCH(QString, expected);
    QCOMPARE(sqlite::described(inMemory(ExpressionHandle(placeholder(dividend)) % placeholder(divisor))), expected);
    QCOMPARE(sqlite::select(QStringLiteral("? % ?"), {dividend, divisor}), expected);
}

void TestSqlFunctions::randomRemainders()
{
    QRandomGenerator random = support::generator();
    QSqlQuery query;
    QVERIFY(query.prepare(QStringLiteral("SELECT ? % ?")));
    for (int round = 0; round < support::rounds(5000); ++round) {
        auto const dividend = static_cast<qlonglong>(random.generate64());
        qlonglong const divisor = random.bounded(2) ? random.bounded(-9, 10) : static_cast<int>(random.generate());
        QVariant const actual = inMemory(ExpressionHandle(placeholder(dividend)) % placeholder(divisor));
        QString const expected = sqlite::answer(query, {dividend, divisor});
        QVERIFY2(sqlite::described(actual) == expected, qPrintable(support::seedNote(round)));
    }
}

void TestSqlFunctions::randomIntegers()
{
    Generator generator;
    for (int round = 0; round < support::rounds(5000); ++round) {
        ExpressionHandle const expression = generator.integers(generator.below(4));
        QString const actual = sqlite::described(inMemory(expression));
        QVERIFY2(
            actual == sqlite::selectBound(expression), qPrintable(support::seedNote(round) + expression.toString(Sql)));
    }
}

void TestSqlFunctions::randomNumbers()
{
    Generator generator;
    for (int round = 0; round < support::rounds(5000); ++round) {
        ExpressionHandle const expression = generator.numbers(generator.below(4));
        QString const actual = sqlite::described(inMemory(expression));
        QVERIFY2(
            actual == sqlite::selectBound(expression), qPrintable(support::seedNote(round) + expression.toString(Sql)));
    }
}

void TestSqlFunctions::randomAbs()
{
    QRandomGenerator random = support::generator();
    for (int round = 0; round < support::rounds(5000); ++round) {
        auto const whole = static_cast<qlonglong>(random.generate64() >> 1) * (random.bounded(2) ? 1 : -1);
        double const fraction = (1 + random.generateDouble() * 1e6) * (random.bounded(2) ? 1 : -1);
        for (QVariant const& value : {QVariant(whole), QVariant(fraction), QVariant(static_cast<int>(whole % 1000))}) {
            ExpressionHandle const expression = abs(placeholder(value));
            QString const actual = sqlite::described(inMemory(expression));
            QVERIFY2(actual == sqlite::selectBound(expression), qPrintable(support::seedNote(round)));
        }
    }
}

void TestSqlFunctions::randomTexts()
{
    Generator generator;
    for (int round = 0; round < support::rounds(10000); ++round) {
        ExpressionHandle const expression = generator.text(generator.below(4));
        QString const actual = sqlite::described(inMemory(expression));
        QVERIFY2(
            actual == sqlite::selectBound(expression), qPrintable(support::seedNote(round) + expression.toString(Sql)));
    }
}

void TestSqlFunctions::randomLengths()
{
    Generator generator;
    for (int round = 0; round < support::rounds(3000); ++round) {
        ExpressionHandle const expression = length(ifnull(generator.text(2), placeholder(QStringLiteral("null"))));
        QString const actual = sqlite::described(inMemory(expression));
        QVERIFY2(
            actual == sqlite::selectBound(expression), qPrintable(support::seedNote(round) + expression.toString(Sql)));
    }
}

// As it prints without that, it agrees for no value: 5 gives "5" in memory and "35" in SQLite.
void TestSqlFunctions::hexWithPrintFunction()
{
    auto const before = FunctionExpression::functionMap().value(QStringLiteral("hex")).printSql;
    QVERIFY(FunctionExpression::registerSqlPrintFunction("hex", printHexDigits));
    QRandomGenerator random = support::generator();
    QList<QVariant> values = {0, 5, 255, -1, Q_INT64_C(4294967296)};
    for (int round = 0; round < 1000; ++round)
        values.append(static_cast<qlonglong>(random.generate64()));
    QStringList failures;
    for (QVariant const& each : qAsConst(values)) {
        ExpressionHandle const expression = hex(placeholder(each));
        if (sqlite::described(inMemory(expression)) != sqlite::selectBound(expression))
            failures.append(each.toString());
    }
    FunctionExpression::registerSqlPrintFunction("hex", before);
    QCOMPARE(failures, QStringList());
    QCOMPARE(inMemory(hex(constant(255))).toString(), QStringLiteral("ff"));
}

void TestSqlFunctions::likeRows_data()
{
    QTest::addColumn<QString>("subject");
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<QString>("escape");
    QTest::addColumn<QString>("expected");

    QTest::newRow("same text") << "abc"
                               << "abc"
                               << "!"
                               << "1";
    QTest::newRow("case matters") << "abc"
                                  << "aBc"
                                  << "!"
                                  << "0";
    QTest::newRow("whole text") << "abc"
                                << "ab"
                                << "!"
                                << "0";
    QTest::newRow("any run") << "abc"
                             << "a%"
                             << "!"
                             << "1";
    QTest::newRow("empty run") << "abc"
                               << "abc%"
                               << "!"
                               << "1";
    QTest::newRow("any character") << "abc"
                                   << "a_c"
                                   << "!"
                                   << "1";
    QTest::newRow("no character") << "ac"
                                  << "a_c"
                                  << "!"
                                  << "0";
    QTest::newRow("escaped run") << "a%"
                                 << "a!%"
                                 << "!"
                                 << "1";
    QTest::newRow("escaped run is one character") << "abc"
                                                  << "a!%"
                                                  << "!"
                                                  << "0";
    QTest::newRow("escaped any character") << "axc"
                                           << "a!_c"
                                           << "!"
                                           << "0";
    QTest::newRow("escaped escape") << "a!"
                                    << "a!!"
                                    << "!"
                                    << "1";
    QTest::newRow("escaped letter") << "ab"
                                    << "a!b"
                                    << "!"
                                    << "1";
    QTest::newRow("trailing escape") << "a"
                                     << "a!"
                                     << "!"
                                     << "0";
    QTest::newRow("trailing escape is no letter") << "a!"
                                                  << "a!"
                                                  << "!"
                                                  << "0";
    QTest::newRow("escape alone") << ""
                                  << "!"
                                  << "!"
                                  << "0";
    QTest::newRow("percent as escape") << "a%"
                                       << "a%%"
                                       << "%"
                                       << "1";
    QTest::newRow("percent as escape is no run") << "abc"
                                                 << "a%"
                                                 << "%"
                                                 << "0";
    QTest::newRow("underscore as escape") << "a%"
                                          << "a_%"
                                          << "_"
                                          << "1";
    QTest::newRow("underscore as escape is no character") << "ab"
                                                          << "a_"
                                                          << "_"
                                                          << "0";
    QTest::newRow("backslash as escape") << "50%"
                                         << "50\\%"
                                         << "\\"
                                         << "1";
    QTest::newRow("signs of expressions stand for themselves") << "a.c[*]"
                                                               << "a.c[*]"
                                                               << "!"
                                                               << "1";
    QTest::newRow("dot is no wildcard") << "abc"
                                        << "a.c"
                                        << "!"
                                        << "0";
    QTest::newRow("empty pattern, empty text") << ""
                                               << ""
                                               << "!"
                                               << "1";
    QTest::newRow("empty pattern, some text") << "a"
                                              << ""
                                              << "!"
                                              << "0";
    QTest::newRow("line break in a run") << "a\nb"
                                         << "a%b"
                                         << "!"
                                         << "1";
    QTest::newRow("apostrophe") << "it's"
                                << "it's%"
                                << "'"
                                << "0";
}

void TestSqlFunctions::likeRows()
{
    QFETCH(QString, subject);
    QFETCH(QString, pattern);
    QFETCH(QString, escape);
    QFETCH(QString, expected);
    ExpressionHandle const expression = like(constant(subject), pattern, escape);
    QCOMPARE(sqlite::described(inMemory(expression)), expected);
    QCOMPARE(sqlite::select(expression.toString(Sql)), expected);
    QCOMPARE(sqlite::selectBound(expression), expected);
}

void TestSqlFunctions::randomLike()
{
    Generator generator;
    QSqlQuery query;
    QVERIFY(query.prepare(QStringLiteral("SELECT (? LIKE ? ESCAPE ?)")));
    int const rounds = support::rounds(100000);
    int matches = 0;
    for (int round = 0; round < rounds; ++round) {
        QString const subject = generator.word("abB%_\\.", 8);
        QString const pattern = generator.word("ab%%__\\\\B.", 6);
        QString const escape(QLatin1Char("%_\\\\ab"[generator.below(6)]));
        QString const actual = sqlite::described(inMemory(like(placeholder(subject), pattern, escape)));
        QString const note = QStringList{support::seedNote(round), subject, pattern, escape}.join(QLatin1Char('\n'));
        QVERIFY2(actual == sqlite::answer(query, {subject, pattern, escape}), qPrintable(note));
        matches += actual == QLatin1String("1") ? 1 : 0;
    }
    // Patterns that match nothing prove little.
    QVERIFY(matches > rounds / 50);
}

void TestSqlFunctions::randomLikeWithoutEscape()
{
    Generator generator;
    QSqlQuery query;
    QVERIFY(query.prepare(QStringLiteral("SELECT (? LIKE ?)")));
    for (int round = 0; round < support::rounds(10000); ++round) {
        QString const subject = generator.word("abB%_\\.*", 10);
        QString const pattern = generator.word("ab%%__\\B.*", 6);
        QString const actual = sqlite::described(inMemory(like(placeholder(subject), pattern)));
        QString const note = QStringList{support::seedNote(round), subject, pattern}.join(QLatin1Char('\n'));
        QVERIFY2(actual == sqlite::answer(query, {subject, pattern}), qPrintable(note));
    }
}

void TestSqlFunctions::cleanupTestCase()
{
    sqlite::close();
}

QTEST_GUILESS_MAIN(TestSqlFunctions)
#include "tst_SqlFunctions.moc"
