// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/expressions/BooleanOperators.h>
#include <GenericUtilities/expressions/Functions.h>

#include "Nodes.h"

#include <QTest>
#include <QTextStream>

using namespace qvgen;
using namespace nodes;

namespace {

QString text(char const* latin1)
{
    return QString::fromLatin1(latin1);
}

QString times(char const* part, int count)
{
    return text(part).repeated(count);
}

QString letters(int count)
{
    return QString(count, QLatin1Char('a'));
}

QVariant matches(QString const& subject, QString const& pattern)
{
    return regexp(constant(subject), pattern).evaluate({});
}

/// 153 characters that may be left out: 153 * 154 / 2 + 154 = 11935 transitions, and 6 nanoseconds for 2 more than that
/// make 71622 for each unit of a subject and one more: 1396 units take 99.98 milliseconds.
QString const optionals = times("a?", 153);
QString const longestSubject = letters(1395);

/// How many elements of a list have a value.
int known(ExpressionList const& list)
{
    int count = 0;
    for (QVariant const& value : list.evaluate({}, nullptr).toList())
        count += value.isValid() ? 1 : 0;
    return count;
}

ExpressionList matchesOf(int count, QString const& subject, QString const& pattern)
{
    ExpressionList list;
    for (int i = 0; i < count; ++i)
        list.append(regexp(constant(subject), pattern));
    return list;
}

} // namespace

/// What is refused because it might take too long, or too much memory: the value is invalid.
class TestPatternBounds : public QObject {
    Q_OBJECT

private slots:
    void init();

    void accepted_data();
    void accepted();
    void refusedWhateverTheSubject_data();
    void refusedWhateverTheSubject();
    void refusedExpressions_data();
    void refusedExpressions();
    void longestSubject_data();
    void longestSubject();
    void likeBounds_data();
    void likeBounds();

    void oneEvaluationHasAnAllowance();
    void thousandExpensiveTerms();
    void thousandDifferentPatterns();
    void nestedCallsShareTheAllowance();
    void onePrintingHasAnAllowance();
    void refusedPatternsAreNotKept();
    void refusedIsUnknownToJunctions();
};

void TestPatternBounds::init()
{
    FunctionExpression::gLikeCache.clear();
    FunctionExpression::gRegExpCache.clear();
}

void TestPatternBounds::accepted_data()
{
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<QString>("subject");
    auto const row = [](char const* name, QString const& pattern, QString const& subject) {
        QTest::newRow(name) << pattern << subject;
    };
    row("1024 characters", letters(1024), letters(1024));
    row("64 parentheses within each other", times("(", 64) + text("a") + times(")", 64), text("a"));
    row("a thousand of any", text(".{1000}"), letters(1000));
    row("2098 characters and the two ends", text("a{1024}a{1024}a{50}"), letters(2098));
    row("164 captures in just less than a million bytes", times("(a)", 164), letters(164));
    row("153 that may be left out", optionals, letters(153));
    row("a million characters", text(".*"), letters(1000000));
    row("mail address", text("[a-zA-Z0-9._%+-]+@[a-zA-Z0-9.-]+\\.[a-zA-Z]{2,4}"), text("lobby@example.org"));
    row("moment", text("\\d{4}-\\d{2}-\\d{2}( \\d{2}:\\d{2}(:\\d{2})?)?"), text("2020-01-02 03:04:05"));
    row("hardware address", text("([0-9A-Fa-f]{2}[:-]){5}[0-9A-Fa-f]{2}"), text("00:0c:29:3e:5f:7a"));
    row("words", text(".*(error|warning|alarm|lost|denied).*"), letters(5000) + text(" alarm"));
    row("camera names", text("(Front|Back) (Door|Gate) ?[0-9]*"), text("Back Gate 12"));
    row("strong password", text("(?=.*\\d)(?=.*[a-z])(?=.*[A-Z]).{8,15}"), text("Passw0rd!"));
    row("anything but", text("(?!test).*"), text("the lobby"));
    row("same word twice", text("(\\w+) \\1"), text("door door"));
    row("sixty alternatives", times("camera|", 60) + text("gate"), text("gate"));
    row("nested loops", text("((a*)*)*"), letters(100));
    row("255 of any", text(".{0,255}"), letters(255));
}

void TestPatternBounds::accepted()
{
    QFETCH(QString, pattern);
    QFETCH(QString, subject);
    QCOMPARE(matches(subject, pattern), QVariant(true));
}

void TestPatternBounds::refusedWhateverTheSubject_data()
{
    QTest::addColumn<QString>("pattern");
    auto const row = [](char const* name, QString const& pattern) { QTest::newRow(name) << pattern; };
    row("1025 characters", letters(1025));
    row("a million characters", letters(1000000));
    row("65 parentheses within each other", times("(", 65) + text("a") + times(")", 65));
    row("100,000 parentheses within each other", times("(", 100000) + text("a") + times(")", 100000));
    row("500 parentheses, never closed", times("(", 500));
    row("154 that may be left out", times("a?", 154));
    row("counts within counts", text("(a{0,30}){0,30}b"));
    row("counts within counts within counts", text("(((a{9}){9}){9}){9}"));
    row("counts of nothing", text("((((((){9}){9}){9}){9}){9}){9}"));
    row("counts of an anchor", text("((^{99}){99}){99}"));
    row("400 alternatives in a loop", text("(") + times("a|", 400) + text("a)*b"));
    row("all ways between alternatives", text("(") + times("a|", 150) + text("a)(") + times("a|", 150) + text("a)"));
    row("2099 characters", text("a{1024}a{1024}a{51}"));
    row("165 captures", times("(a)", 165));
    row("long class, counted", text("[") + times("bcdefghijk", 90) + text("]{100}"));
    row("200 back-references", text("(a*)") + times("\\1", 200));
    row("anchors that multiply", times("(^|$|\\b|\\B|\\1)", 12));
    row("20 back-references to choose from", text("(a*)(a*)") + times("(\\1|\\2)", 10));
    row("lookaheads within each other", times("(?=a", 20) + times(")", 20));
    row("malformed lookaheads within each other", times("(?=a", 20) + text("{"));
    row("malformed lookahead with a count", text("(?=a{1000}(?=a{1000}(?=a{"));
    row("malformed count hides a loop", text("a{x(") + times("a|", 200) + text("a)*"));
    row("malformed group eats a bracket before lookaheads", text("(?[a") + times("w(?=", 12));
    row("malformed group hides a loop", text("(?(((") + times("a?", 99) + text("){99}"));
}

void TestPatternBounds::refusedWhateverTheSubject()
{
    QFETCH(QString, pattern);
    for (QString const& subject : {QString(), text("a"), letters(30)})
        QCOMPARE(matches(subject, pattern), QVariant());
}

void TestPatternBounds::refusedExpressions_data()
{
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<int>("syntax");
    auto const row = [](char const* name, QString const& pattern, QRegExp::PatternSyntax syntax) {
        QTest::newRow(name) << pattern << static_cast<int>(syntax);
    };
    row("counts within counts", text("(a{0,30}){0,30}b"), QRegExp::RegExp);
    row("400 alternatives in a loop", text("(") + times("a|", 400) + text("a)*b"), QRegExp::RegExp);
    row("long wildcard pattern", times("a*", 513), QRegExp::Wildcard);
    row("wildcards in a row", times("*", 200), QRegExp::Wildcard);
    row("wildcards in a row, Unix", times("*", 200), QRegExp::WildcardUnix);
    row("wildcard classes", times("[abc]*", 100), QRegExp::Wildcard);
    row("long fixed text", letters(1025), QRegExp::FixedString);
    row("greedy captures", times("(a*)*", 100), QRegExp::RegExp2);
    row("classes of XML names", times("\\c*", 60), QRegExp::W3CXmlSchema11);
}

// Whoever makes such an expression has had it compiled already: QRegExp does so when it is copied.
void TestPatternBounds::refusedExpressions()
{
    QFETCH(QString, pattern);
    QFETCH(int, syntax);
    QRegExp const expression(pattern, Qt::CaseSensitive, static_cast<QRegExp::PatternSyntax>(syntax));
    QCOMPARE(FunctionExpression::regexp({text("a"), expression}), QVariant());
}

void TestPatternBounds::longestSubject_data()
{
    QTest::addColumn<QRegExp>("expression");
    QTest::addColumn<int>("units");
    QTest::newRow("case-sensitive") << QRegExp(optionals) << 1395;
    QTest::newRow("case-insensitive") << QRegExp(optionals, Qt::CaseInsensitive) << 597;
    // 5 transitions: 42 nanoseconds.
    QTest::newRow("one loop") << QRegExp(text("a*b")) << 2380951;
    // 26 transitions: 28 * 450 steps, of 40.25 nanoseconds, times a 64th of them.
    QTest::newRow("back-reference") << QRegExp(text("(\\w+) \\1")) << 449;
}

void TestPatternBounds::longestSubject()
{
    QFETCH(QRegExp, expression);
    QFETCH(int, units);
    QCOMPARE(FunctionExpression::regexp({letters(units), expression}), QVariant(false));
    QCOMPARE(FunctionExpression::regexp({letters(units + 1), expression}), QVariant());
}

void TestPatternBounds::likeBounds_data()
{
    QTest::addColumn<QString>("subject");
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<QVariant>("expected");
    QTest::newRow("1024 characters") << letters(1024) << letters(1024) << QVariant(true);
    QTest::newRow("1025 characters") << letters(1025) << letters(1025) << QVariant();
    QTest::newRow("1024 that need an escape in an expression")
        << times("*", 1024) << times("*", 1024) << QVariant(true);
    QTest::newRow("1024 runs") << text("") << times("%", 1024) << QVariant(true);
    QTest::newRow("1024 of any") << letters(1024) << times("_", 1024) << QVariant(true);
    QTest::newRow("long subject") << letters(1000000) << text("%b%") << QVariant(false);
    QTest::newRow("long pattern, long subject") << letters(100000) << times("%a", 500) << QVariant();
}

void TestPatternBounds::likeBounds()
{
    QFETCH(QString, subject);
    QFETCH(QString, pattern);
    QTEST(like(constant(subject), pattern).evaluate({}), "expected");
}

// 400 milliseconds: four matches of 99.98, once the pattern is compiled.
void TestPatternBounds::oneEvaluationHasAnAllowance()
{
    matches(QString(), optionals);
    QCOMPARE(known(matchesOf(4, ::longestSubject, optionals)), 4);
    QCOMPARE(known(matchesOf(5, ::longestSubject, optionals)), 4);
    QCOMPARE(known(matchesOf(50, ::longestSubject, optionals)), 4);
    QCOMPARE(known(matchesOf(4, ::longestSubject, optionals)), 4);
}

void TestPatternBounds::thousandExpensiveTerms()
{
    QString const pattern = times("a*", 100);
    BooleanOperator conjunction(BooleanOperator::And);
    for (int i = 0; i < 1000; ++i)
        conjunction.append(regexp(constant(letters(2000)), pattern));
    QCOMPARE(matches(letters(2000), pattern), QVariant(true));
    QCOMPARE(conjunction.evaluate({}, nullptr), QVariant());
}

// Compiling takes from the allowance, too.
void TestPatternBounds::thousandDifferentPatterns()
{
    ExpressionList list;
    for (int i = 0; i < 1000; ++i)
        list.append(regexp(constant(text("a")), times("a?", 140) + QString::number(i)));
    int const count = known(list);
    QVERIFY(count > 10);
    QVERIFY(count < 300);
}

void TestPatternBounds::nestedCallsShareTheAllowance()
{
    matches(QString(), optionals);
    ExpressionHandle const four = coalesce(matchesOf(4, ::longestSubject, optionals));
    QCOMPARE(known(ExpressionList(four, regexp(constant(text("a")), text("a")))), 2);
    QCOMPARE(known(ExpressionList(four, regexp(constant(::longestSubject), optionals))), 1);
}

// A function without print function is evaluated to be printed.
void TestPatternBounds::onePrintingHasAnAllowance()
{
    FunctionExpression::registerFunction("verdict", FunctionExpression::coalesce, nullptr, 1, 1);
    matches(QString(), optionals);
    ExpressionList list;
    for (int i = 0; i < 5; ++i)
        list.append(FunctionExpression(text("verdict"), matchesOf(1, ::longestSubject, optionals), false));
    QString const four = text("'false','false','false','false',''");
    QCOMPARE(list.toString(Sql), four);
    QCOMPARE(list.collectPlaceholders(), (QVariantList{false, false, false, false, QVariant()}));
    QString printed;
    QTextStream stream(&printed);
    stream << ExpressionHandle(list) << Qt::flush;
    QCOMPARE(printed, four);
}

void TestPatternBounds::refusedPatternsAreNotKept()
{
    matches(text("a"), letters(1025));
    matches(letters(2000), optionals);
    like(constant(text("a")), letters(1025)).evaluate({});
    QVERIFY(FunctionExpression::gRegExpCache.isEmpty());
    QVERIFY(FunctionExpression::gLikeCache.isEmpty());
}

void TestPatternBounds::refusedIsUnknownToJunctions()
{
    ExpressionHandle const refused = regexp(constant(text("a")), letters(1025));
    QCOMPARE((refused && constant(true)).evaluate({}, nullptr), QVariant());
    QCOMPARE((refused || constant(true)).evaluate({}, nullptr), QVariant(true));
    QCOMPARE((!refused).evaluate({}, nullptr), QVariant());
}

QTEST_APPLESS_MAIN(TestPatternBounds)
#include "tst_PatternBounds.moc"
