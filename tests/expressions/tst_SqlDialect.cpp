// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/expressions/BooleanOperators.h>
#include <GenericUtilities/expressions/Comparator.h>
#include <GenericUtilities/expressions/Functions.h>
#include <GenericUtilities/expressions/NumericOperators.h>
#include <GenericUtilities/expressions/TypeTool.h>

#include "SqliteAnswer.h"

#include <QDateTime>
#include <QTest>

#include <cmath>

using namespace qvgen;
using namespace nodes;

Q_DECLARE_METATYPE(qvgen::FunctionExpression::PrintSql)

namespace {

auto const OrderTerm = Expression::StyleSql | Expression::StyleOrderTerm;

ExpressionHandle column(char const* name)
{
    return nodes::value(name);
}

ExpressionHandle number(QVariant const& value)
{
    return constant(value);
}

ExpressionHandle text(char const* value)
{
    return constant(QString::fromUtf8(value));
}

ExpressionHandle bound(QVariant const& value)
{
    return placeholder(value);
}

ExpressionHandle call(char const* name, ExpressionList const& operands, bool distinct = false)
{
    return FunctionExpression(QString::fromLatin1(name), operands, distinct);
}

void addRow(char const* name, ExpressionHandle const& expression, char const* first, char const* second)
{
    QTest::newRow(name) << expression << QString::fromUtf8(first) << QString::fromUtf8(second);
}

/// Replaces how a function prints for as long as it lives.
class PrintedBy {
public:
    PrintedBy(char const* name, FunctionExpression::PrintSql printSql)
        : m_name(name)
        , m_before(FunctionExpression::functionMap().value(QString::fromLatin1(name)).printSql)
    {
        FunctionExpression::registerSqlPrintFunction(m_name, printSql);
    }
    ~PrintedBy() { FunctionExpression::registerSqlPrintFunction(m_name, m_before); }
    Q_DISABLE_COPY(PrintedBy)

private:
    char const* m_name;
    FunctionExpression::PrintSql m_before;
};

using Style = Expression::PrintStyle;
using Operands = QList<ExpressionHandle>;

void printNullif(QTextStream& out, Style style, QString const&, Operands const& operands)
{
    out << "(CASE WHEN ";
    operands.at(0)->print(out, style);
    out << " = ";
    operands.at(1)->print(out, style);
    out << " THEN ";
    operands.at(0)->print(out, style);
    out << " END)";
}

void printMinAsMax(QTextStream& out, Style style, QString const&, Operands const& operands)
{
    FunctionExpression::printDefault(out, style, QStringLiteral("max"), operands);
}

void printHexDigits(QTextStream& out, Style style, QString const&, Operands const& operands)
{
    out << "printf('%x',";
    operands.first()->print(out, style);
    out << ')';
}

void printTextAsItIs(QTextStream& out, Style style, QString const&, Operands const& operands)
{
    operands.first()->print(out, style);
}

void printDatabaseDate(QTextStream& out, Style, QString const&, Operands const&)
{
    out << "(unixepoch('now','start of day')*1000000)";
}

void printRemainder(QTextStream& out, Style style, QString const&, Operands const& operands)
{
    out << '(';
    operands.at(0)->print(out, style | Expression::StyleNested);
    out << '%';
    operands.at(1)->print(out, style | Expression::StyleNested);
    out << ')';
}

QVariant remainderOf(QList<QVariant> const& values)
{
    return TypeTool(false, false).do_modulo(values.value(0), values.value(1));
}

/// The operands in a parenthesis without DISTINCT, whatever encloses the call.
void printUpper(QTextStream& out, Style style, QString const& name, Operands const& operands)
{
    FunctionExpression::printDefault(out, style & ~Expression::StyleDistinct, name, operands);
}

} // namespace

/// What SQLite makes of the printed texts. The columns: a = 7, b = 2, r = 2.5, n is null, s = "it's",
/// full_name = "Front Door".
class TestSqlDialect : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void asPrinted_data();
    void asPrinted();
    void literalAndBound_data();
    void literalAndBound();
    void inMemoryAndBound_data();
    void inMemoryAndBound();
    void switchBindsItsDefaultFirst();
    void orderTerms_data();
    void orderTerms();
    void minusBelowAnOrderTerm();
    void aliasesNameColumnsOnly();
    void namesArePrintedBare();
    void currentMomentsAreNumbers_data();
    void currentMomentsAreNumbers();
    void byteOrderMarksAreLostWhereBound();
    void mendedPrints_data();
    void mendedPrints();
    void functionForAnOperator();
    void currentDateByTheDatabase();
    void regexpByConnectOption();
    void cleanupTestCase();
};

void TestSqlDialect::initTestCase()
{
    QVERIFY(sqlite::open());
    QSqlQuery query;
    QVERIFY(query.exec(QStringLiteral("CREATE TABLE t (a INTEGER, b INTEGER, r REAL, n INTEGER, s TEXT, "
                                      "full_name TEXT)")));
    QVERIFY(query.exec(QStringLiteral("INSERT INTO t VALUES (7, 2, 2.5, NULL, 'it''s', 'Front Door')")));
    QVERIFY(query.exec(QStringLiteral("CREATE TABLE files (name TEXT, size INTEGER)")));
    QVERIFY(query.exec(QStringLiteral("INSERT INTO files VALUES ('b', 1), ('c', 3), ('a', 1), ('d', 2)")));
}

void TestSqlDialect::asPrinted_data()
{
    QTest::addColumn<ExpressionHandle>("expression");
    QTest::addColumn<QString>("printed");
    QTest::addColumn<QString>("result");

    ExpressionHandle const a = column("a");
    ExpressionHandle const b = column("b");
    ExpressionHandle const n = column("n");
    ExpressionHandle const r = column("r");
    ExpressionHandle const s = column("s");
    ExpressionHandle const seven = number(7);
    ElementOf list(a);
    list.append(number(1));
    list.append(seven);

    // clang-format off
    addRow("sum",                             a + b,                        "a+b",                    "9");
    addRow("nested",                          a * (a - b),                  "a*(a-b)",                "35");
    addRow("modulo is refused",               a % b,                        "a mod b",                "error");
    addRow("bits in common",                  a & b,                        "a&b",                    "2");
    addRow("bits of either",                  a | b,                        "a|b",                    "7");
    addRow("exclusive or is refused",         a ^ b,                        "a^b",                    "error");
    addRow("bitwise not",                     ~a,                           "~a",                     "-8");
    addRow("minus",                           -a,                           "-a",                     "-7");
    addRow("minus of a sum",                  -(a + b),                     "-(a+b)",                 "-9");
    addRow("minus of minus is a comment",     -ExpressionHandle(-a),        "--a",                    "error");
    addRow("less minus is a comment",         a - ExpressionHandle(-b),     "a--b",                   "7");
    addRow("less a negative is a comment",    a - number(-2),               "a--2",                   "7");
    addRow("less a difference from zero",     a - (number(0) - b),          "a-(0-b)",                "9");
    addRow("whole double prints as integer",  a / number(2.0),              "a/2",                    "3");
    addRow("large double",                    number(1e6),                  "1e+06",                  "1e+06");
    addRow("infinity is a name",              number(HUGE_VAL),             "inf",                    "error");
    addRow("no number is a name",             number(std::nan("")),         "nan",                    "error");
    addRow("unsigned 64 bits become real",    number(Q_UINT64_C(18446744073709551615)), "18446744073709551615", "1.8446744073709552e+19");
    addRow("true is a text",                  number(true),                 "'true'",                 "\"true\"");
    addRow("truth as text is false",          a == seven && number(true),   "a = 7 AND 'true'",       "0");
    addRow("null is an empty text",           ifnull(number(QVariant()), a), "ifnull('',a)",          "\"\"");
    addRow("apostrophe",                      text("it's"),                 "'it''s'",                "\"it's\"");
    addRow("text with signs of SQL",          text("?:x;--\""),             "'?:x;--\"'",             "\"?:x;--\"\"");
    addRow("date",                            number(QDate(1970, 1, 2)),    "86400000000",            "86400000000");
    addRow("date before 1970",                number(QDate(1969, 12, 31)),  "-86400000000",           "-86400000000");
    addRow("time",                            number(QTime(0, 0, 1)),       "1000000",                "1000000");
    addRow("name with a blank",               column("full name"),          "full_name",              "\"Front Door\"");

    addRow("cast to int cuts",                toInt(r),                     "CAST(r AS int)",         "2");
    addRow("cast to uint is one to integer",  toUInt(r),                    "CAST(r AS uint)",        "2");
    addRow("cast to qlonglong keeps",         toLongLong(r),                "CAST(r AS qlonglong)",   "2.5");
    addRow("cast to qulonglong keeps",        toULongLong(r),               "CAST(r AS qulonglong)",  "2.5");
    addRow("cast to double",                  toDouble(a),                  "CAST(a AS double)",      "7.0");
    addRow("cast to bool keeps",              toBool(a),                    "CAST(a AS bool)",        "7");
    addRow("cast of text to QString is 0",    toString(s),                  "CAST(s AS QString)",     "0");
    addRow("cast of number to QString keeps", toString(a),                  "CAST(a AS QString)",     "7");
    addRow("cast to QDate keeps",             toDate(a),                    "CAST(a AS QDate)",       "7");
    addRow("cast to QTime keeps",             toTime(a),                    "CAST(a AS QTime)",       "7");
    addRow("cast to QDateTime keeps",         toDateTime(a),                "CAST(a AS QDateTime)",   "7");

    addRow("equal",                           a == seven,                   "a = 7",                  "1");
    addRow("unequal",                         a != seven,                   "a != 7",                 "0");
    addRow("element",                         list,                         "a IN (1,7)",             "1");
    addRow("element of nothing",              ElementOf(a),                 "a IN ()",                "0");
    addRow("not, with blanks",                !(a == b),                    " NOT a = b",             "1");
    addRow("not of not",                      !ExpressionHandle(!(a == seven)), " NOT  NOT a = 7",    "1");
    addRow("not of a junction",               !(a == b || a == seven),      " NOT (a = b OR a = 7)",  "0");
    addRow("comparison of not is not of it",  ExpressionHandle(!a) == number(1), " NOT a = 1",        "1");
    addRow("comparison of comparison",        ExpressionHandle(a == seven) < number(2), "a = 7 < 2",  "0");
    addRow("or inside and",                   a == seven && (b == seven || b == number(2)), "a = 7 AND (b = 7 OR b = 2)", "1");
    addRow("case",                            SwitchCase(a).switchCase(seven, text("x")), "CASE a WHEN 7 THEN 'x' END", "\"x\"");
    addRow("case with default",               SwitchCase(a).switchCase(b, text("x")).defaultCase(text("y")), "CASE a WHEN b THEN 'x' ELSE 'y' END", "\"y\"");
    addRow("searched case, two blanks",       ifThen(a == seven, text("x"), text("y")), "CASE  WHEN a = 7 THEN 'x' ELSE 'y' END", "\"x\"");
    addRow("case without pairs is refused",   SwitchCase(a),                "CASE a END",             "error");

    addRow("count",                           call("count", a),             "count(a)",               "1");
    addRow("count without null",              call("count", n),             "count(n)",               "0");
    addRow("count of two is refused",         call("count", a << b),        "count(a,b)",             "error");
    addRow("count of different",              call("count", s, true),       "count(DISTINCT s)",      "1");
    addRow("call in a distinct call",         call("count", upper(s), true), "count(DISTINCT upper(DISTINCT s))", "1");
    addRow("concatenation",                   call("group_concat", s),      "group_concat(s)",        "\"it's\"");
    addRow("smallest of all rows",            call("min", a),               "min(a)",                 "7");
    addRow("coalesce",                        coalesce(n << a),             "coalesce(n,a)",          "7");
    addRow("coalesce of one is refused",      coalesce(ExpressionList(a)),  "coalesce(a)",            "error");
    addRow("ifnull",                          ifnull(n, a),                 "ifnull(n,a)",            "7");
    addRow("nullif of different",             nullif(a, b),                 "nullif(a,b)",            "7");
    addRow("length",                          length(s),                    "length(s)",              "4");
    addRow("upper",                           upper(s),                     "upper(s)",               "\"IT'S\"");
    addRow("quote",                           quote(s),                     "quote(s)",               "\"'it''s'\"");
    addRow("hex is that of the text",         hex(a),                       "hex(a)",                 "\"37\"");
    addRow("round",                           round(r),                     "round(r)",               "3.0");
    addRow("like",                            like(s, QStringLiteral("it%")), "(s LIKE 'it%')",       "1");
    addRow("like without case",               like(s, QStringLiteral("IT%")), "(s LIKE 'IT%')",       "1");
    addRow("like with escape",                like(s, QStringLiteral("it\\%"), QStringLiteral("\\")), "(s LIKE 'it\\%' ESCAPE '\\')", "0");
    addRow("empty escape is refused",         like(s, QStringLiteral("it%"), QStringLiteral("")), "(s LIKE 'it%' ESCAPE '')", "error");
    addRow("long escape is refused",          like(s, QStringLiteral("it%"), QStringLiteral("##")), "(s LIKE 'it%' ESCAPE '##')", "error");
    addRow("regexp needs a function",         regexp(s, QStringLiteral("it.*")), "(s REGEXP 'it.*')", "error");
    // clang-format on
}

void TestSqlDialect::asPrinted()
{
    QFETCH(ExpressionHandle, expression);
    QFETCH(QString, printed);
    QFETCH(QString, result);
    QCOMPARE(expression.toString(Sql), printed);
    QCOMPARE(sqlite::select(printed, {}, QStringLiteral("FROM t")), result);
}

void TestSqlDialect::literalAndBound_data()
{
    QTest::addColumn<ExpressionHandle>("expression");
    QTest::addColumn<QString>("literal");
    QTest::addColumn<QString>("asBound");

    // clang-format off
    addRow("true",                   bound(true),                                    "\"true\"", "1");
    addRow("condition true",         !bound(true),                                   "1",        "0");
    addRow("whole double",           bound(7) / bound(2.0),                          "3",        "3.5");
    addRow("less a negative",        bound(5) - bound(-3),                           "5",        "8");
    addRow("infinity",               bound(HUGE_VAL) == bound(HUGE_VAL),             "error",    "1");
    addRow("null",                   ifnull(bound(QVariant()), bound(7)),            "\"\"",     "7");
    addRow("null text",              ifnull(bound(QString()), bound(7)),             "\"\"",     "7");
    addRow("text with a zero",       length(bound(QString(QChar(0)))),               "error",    "0");
    addRow("unsigned 64 bits",       bound(Q_UINT64_C(5)) == bound(5),               "1",        "0");
    addRow("date",                   bound(QDate(1970, 1, 2)),                       "86400000000", "86400000000");
    // clang-format on
}

void TestSqlDialect::literalAndBound()
{
    QFETCH(ExpressionHandle, expression);
    QFETCH(QString, literal);
    QFETCH(QString, asBound);
    QCOMPARE(sqlite::select(expression.toString(Sql)), literal);
    QCOMPARE(sqlite::selectBound(expression), asBound);
}

void TestSqlDialect::inMemoryAndBound_data()
{
    QTest::addColumn<ExpressionHandle>("expression");
    QTest::addColumn<QString>("inMemory");
    QTest::addColumn<QString>("inSqlite");

    ExpressionHandle const null = bound(QVariant());
    ExpressionHandle const nullText = bound(QString());
    auto const words = [](char const* value) { return bound(QString::fromUtf8(value)); };
    ExpressionList const three(QList<QVariant>{3, 1, 2});
    ElementOf unknownElement(null);
    unknownElement.append(QVariant(7));
    // clang-format off
    addRow("min is the largest in memory",    call("min", three),                         "3",            "1");
    addRow("max is the smallest in memory",   call("max", three),                         "1",            "3");
    addRow("nullif of equal",                 nullif(bound(1), bound(1)),                 "1",            "NULL");
    addRow("nullif of different",             nullif(bound(1), bound(2)),                 "NULL",         "1");
    addRow("quote",                           quote(words("it's")),                       "\"it's\"",     "\"'it''s'\"");
    addRow("separator in front",              call("group_concat", words("a")),           "\",a\"",       "\"a\"");
    addRow("hex",                             hex(bound(255)),                            "\"ff\"",       "\"323535\"");
    addRow("negative half goes up",           round(bound(-2.5)),                         "-2.0",         "-3.0");
    addRow("abs between -1 and 0",            abs(bound(-0.5)),                           "-0.5",         "0.5");
    addRow("doubles less than 1 apart",       bound(1.25) == bound(1.75),                 "1",            "0");
    addRow("number and text",                 bound(5) == words("5"),                     "1",            "0");
    addRow("number plus text",                bound(5) + words("7"),                      "\"57\"",       "12");
    addRow("text plus text",                  words("a") + words("b"),                    "\"ab\"",       "0");
    addRow("bitwise not",                     ~bound(5),                                  "5",            "-6");
    addRow("minus of a text",                 -words(""),                                 "\"\uffff\"",   "0");
    addRow("cast of 2.5 to int",              toInt(bound(2.5)),                          "3",            "2");
    addRow("cast to text",                    toString(bound(QStringLiteral("a"))),       "\"a\"",        "0");
    addRow("32 bits wrap",                    bound(INT_MAX) + bound(1),                "-2147483648",  "2147483648");
    addRow("64 bits wrap",                    bound(Q_INT64_C(9223372036854775807)) + bound(1), "-9223372036854775808", "9.223372036854776e+18");
    addRow("or passes over unknown",          null || bound(false),                       "0",            "NULL");
    addRow("and with unknown first",          null && bound(false),                       "NULL",         "0");
    addRow("unknown element",                 unknownElement,                             "0",            "NULL");
    addRow("null text is an empty one",       nullText == words(""),                      "1",            "NULL");
    addRow("length of a null text",           length(nullText),                           "0",            "NULL");
    addRow("case condition without selector", ifThen(number(1) == number(1), text("x"), text("y")), "\"y\"", "\"x\"");
    addRow("lower beyond ASCII",              lower(words("ÄA")),                         "\"äa\"",       "\"Äa\"");
    addRow("upper beyond ASCII",              upper(words("ßa")),                         "\"SSA\"",      "\"ßA\"");
    addRow("trim of a tab",                   trim(words("\ta")),                         "\"a\"",        "\"\ta\"");
    addRow("length in code units",            length(words("\U0001F600")),                "2",            "1");
    addRow("order by code units",             words("\U0001F600") < words("\uff5e"),      "1",            "0");
    addRow("like minds the case",             like(words("abc"), QStringLiteral("A%")),   "0",            "1");
    addRow("like by code units",              like(words("\U0001F600"), QStringLiteral("_")), "0",        "1");
    addRow("date plus milliseconds",          bound(QDate(1970, 1, 1)) + bound(86400000), "\"1970-01-02\"", "86400000");
    // clang-format on
}

void TestSqlDialect::inMemoryAndBound()
{
    QFETCH(ExpressionHandle, expression);
    QFETCH(QString, inMemory);
    QFETCH(QString, inSqlite);
    QCOMPARE(sqlite::described(expression.evaluate(PropertySet())), inMemory);
    QCOMPARE(sqlite::selectBound(expression), inSqlite);
}

// The marks stand in the order of the text, the values in that of the operands: the default comes before the pairs.
void TestSqlDialect::switchBindsItsDefaultFirst()
{
    auto const byDefault = [](ExpressionHandle const& otherwise) {
        return ExpressionHandle(
            SwitchCase(number(7)).switchCase(bound(8), bound(QStringLiteral("eight"))).defaultCase(otherwise));
    };
    ExpressionHandle const swapped = byDefault(bound(QStringLiteral("other")));
    QCOMPARE(swapped.toString(Bound), QStringLiteral("CASE 7 WHEN ? THEN ? ELSE ? END"));
    QCOMPARE(swapped.collectPlaceholders(), (QList<QVariant>{QStringLiteral("other"), 8, QStringLiteral("eight")}));
    QCOMPARE(sqlite::selectBound(swapped), QStringLiteral("\"eight\""));
    QCOMPARE(sqlite::selectBound(byDefault(text("other"))), QStringLiteral("\"other\""));
}

void TestSqlDialect::orderTerms_data()
{
    QTest::addColumn<ExpressionHandle>("terms");
    QTest::addColumn<QString>("printed");
    QTest::addColumn<QString>("names");

    ExpressionHandle const name = column("name");
    ExpressionHandle const size = column("size");
    // clang-format off
    addRow("descending, then ascending", -size << name,          "size DESC,name",      "cdab");
    addRow("ascending, then descending", size << -name,          "size,name DESC",      "badc");
    addRow("both descending",            -size << -name,         "size DESC,name DESC", "cdba");
    addRow("not is left out",            ~size << name,          "size,name",           "abdc");
    addRow("minus of an operation",      -(size + size) << name, "size+size DESC,name", "cdab");
    addRow("minus of minus is refused",  -ExpressionHandle(-size), "size DESC DESC",    "error");
    // clang-format on
}

void TestSqlDialect::orderTerms()
{
    QFETCH(ExpressionHandle, terms);
    QFETCH(QString, printed);
    QFETCH(QString, names);
    QCOMPARE(terms.toString(OrderTerm), printed);
    QString sorted;
    QSqlQuery query;
    if (!query.exec(QLatin1String("SELECT name FROM files ORDER BY ") + printed))
        sorted = QStringLiteral("error");
    while (query.next())
        sorted += query.value(0).toString();
    QCOMPARE(sorted, names);
}

// The style reaches every minus below, where SQL has no place for a direction: it is for plain terms.
void TestSqlDialect::minusBelowAnOrderTerm()
{
    QCOMPARE((column("size") - ExpressionHandle(-column("a"))).toString(OrderTerm), QStringLiteral("size-a DESC"));
}

void TestSqlDialect::aliasesNameColumnsOnly()
{
    ExpressionHandle const aliased = ValueExpression(QStringLiteral("a"), QStringLiteral("x"));
    QCOMPARE(aliased.toString(Sql), QStringLiteral("a AS x"));
    QCOMPARE(sqlite::select(aliased.toString(Sql), {}, QStringLiteral("FROM t WHERE x = 7")), QStringLiteral("7"));
    ExpressionHandle const condition = aliased > number(3);
    QCOMPARE(condition.toString(Sql), QStringLiteral("a AS x > 3"));
    QCOMPARE(sqlite::select(condition.toString(Sql), {}, QStringLiteral("FROM t")), QStringLiteral("error"));
}

void TestSqlDialect::namesArePrintedBare()
{
    QString const from = QStringLiteral("FROM t");
    QCOMPARE(sqlite::select(column("group").toString(Sql), {}, from), QStringLiteral("error"));
    QCOMPARE(sqlite::select(column("no-column").toString(Sql), {}, from), QStringLiteral("error"));
    // Why a name must never come from outside.
    ExpressionHandle const hostile = column("(SELECT\tcount(*)FROM\tfiles)") == number(4);
    QCOMPARE(sqlite::select(hostile.toString(Sql), {}, from), QStringLiteral("1"));
}

void TestSqlDialect::currentMomentsAreNumbers_data()
{
    QTest::addColumn<ExpressionHandle>("moment");
    QTest::newRow("date") << currentDate();
    QTest::newRow("time") << currentTime();
    QTest::newRow("date and time") << currentDateTime();
}

void TestSqlDialect::currentMomentsAreNumbers()
{
    QFETCH(ExpressionHandle, moment);
    auto const now = [&] { return TypeTool::dateMicroSeconds(moment.evaluate(PropertySet())); };
    qint64 const before = now();
    QString const printed = moment.toString(Sql);
    qint64 const after = now();
    // At midnight the time starts again.
    QVERIFY(before > after || (before <= printed.toLongLong() && printed.toLongLong() <= after));
    QCOMPARE(sqlite::select(printed), printed);
    QCOMPARE(moment.toString(Bound), QStringLiteral("?"));
    QCOMPARE(moment.collectPlaceholders().size(), 1);
}

// SQLite takes the first unit of a bound UTF-16 text for a mark of its byte order.
void TestSqlDialect::byteOrderMarksAreLostWhereBound()
{
    ExpressionHandle const marked = length(bound(QChar(QChar::ByteOrderMark) + QStringLiteral("ab")));
    QCOMPARE(marked.evaluate(PropertySet()).toInt(), 3);
    QCOMPARE(sqlite::selectBound(marked), QStringLiteral("2"));
    QCOMPARE(sqlite::select(marked.toString(Sql)), QStringLiteral("3"));

    // U+FFFE turns the bytes round: U+6100 for "a".
    ExpressionHandle const swapped = bound(QChar(QChar::ByteOrderSwapped) + QStringLiteral("a"));
    QCOMPARE(sqlite::selectBound(swapped), QString::fromUtf8("\"\u6100\""));
}

void TestSqlDialect::mendedPrints_data()
{
    QTest::addColumn<QByteArray>("function");
    QTest::addColumn<FunctionExpression::PrintSql>("print");
    QTest::addColumn<ExpressionHandle>("expression");
    QTest::addColumn<QString>("printed");
    QTest::addColumn<QString>("both");

    auto const row = [](char const* name, char const* function, FunctionExpression::PrintSql print,
                         ExpressionHandle const& expression, char const* printed, char const* both) {
        QTest::newRow(name) << QByteArray(function) << print << expression << QString::fromLatin1(printed)
                            << QString::fromLatin1(both);
    };
    ExpressionList const numbers(number(3), number(1));
    row("hex of a number", "hex", printHexDigits, hex(number(255)), "printf('%x',255)", "\"ff\"");
    row("hex of a negative number", "hex", printHexDigits, hex(number(-1)), "printf('%x',-1)", "\"ffffffffffffffff\"");
    row("min as in memory", "min", printMinAsMax, call("min", numbers), "max(3,1)", "3");
    row("nullif of equal as in memory", "nullif", printNullif, nullif(number(1), number(1)),
        "(CASE WHEN 1 = 1 THEN 1 END)", "1");
    row("nullif of different as in memory", "nullif", printNullif, nullif(number(1), number(2)),
        "(CASE WHEN 1 = 2 THEN 1 END)", "NULL");
    row("quote as in memory", "quote", printTextAsItIs, quote(text("a")), "'a'", "\"a\"");
    row("one DISTINCT", "upper", printUpper, call("count", upper(text("a")), true), "count(DISTINCT upper('a'))", "1");
}

void TestSqlDialect::mendedPrints()
{
    QFETCH(QByteArray, function);
    QFETCH(FunctionExpression::PrintSql, print);
    QFETCH(ExpressionHandle, expression);
    QFETCH(QString, printed);
    QFETCH(QString, both);
    PrintedBy const mended(function.constData(), print);
    QCOMPARE(expression.toString(Sql), printed);
    QCOMPARE(sqlite::select(printed), both);
    QCOMPARE(sqlite::described(expression.evaluate(PropertySet())), both);
}

// An operator has no print function to replace: a function of one's own stands in for it.
void TestSqlDialect::functionForAnOperator()
{
    QVERIFY(FunctionExpression::registerFunction("remainder", remainderOf, printRemainder, 2, 2));
    ExpressionHandle const expression = call("remainder", number(7) << (number(1) + number(2)));
    QCOMPARE(expression.toString(Sql), QStringLiteral("(7%(1+2))"));
    QCOMPARE(sqlite::select(expression.toString(Sql)), QStringLiteral("1"));
    QCOMPARE(expression.evaluate(PropertySet()), QVariant(1));
}

void TestSqlDialect::currentDateByTheDatabase()
{
    PrintedBy const mended("currentDate", printDatabaseDate);
    qint64 const before = QDateTime::currentSecsSinceEpoch() / 86400 * 86400000000;
    QString const result = sqlite::select(currentDate().toString(Sql));
    qint64 const after = QDateTime::currentSecsSinceEpoch() / 86400 * 86400000000;
    QVERIFY(before <= result.toLongLong() && result.toLongLong() <= after);
    QCOMPARE(currentDate().collectPlaceholders(), QList<QVariant>());
}

// The function that Qt's driver brings finds the pattern anywhere, where in memory the whole text must match.
void TestSqlDialect::regexpByConnectOption()
{
    ExpressionHandle const part = regexp(bound(QStringLiteral("it's")), QStringLiteral("t"));
    ExpressionHandle const whole = regexp(bound(QStringLiteral("it's")), QStringLiteral("^it.*$"));
    sqlite::close();
    QVERIFY(sqlite::open(QStringLiteral("QSQLITE_ENABLE_REGEXP")));
    QCOMPARE(sqlite::selectBound(whole), QStringLiteral("1"));
    QCOMPARE(sqlite::selectBound(part), QStringLiteral("1"));
    QCOMPARE(part.evaluate(PropertySet()), QVariant(false));
    QCOMPARE(whole.evaluate(PropertySet()), QVariant(true));
}

void TestSqlDialect::cleanupTestCase()
{
    sqlite::close();
}

QTEST_GUILESS_MAIN(TestSqlDialect)
#include "tst_SqlDialect.moc"
