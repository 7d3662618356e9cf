// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/expressions/Functions.h>
#include <GenericUtilities/properties/CommonProperties.h>

#include "Nodes.h"
#include "TypedVariant.h"
#include "support/Random.h"

#include <QTest>

using namespace qvgen;
using namespace nodes;

namespace {

QString text(char const* latin1)
{
    return QString::fromLatin1(latin1);
}

QVariant isLike(QString const& subject, QString const& pattern, QString const& escape = QString())
{
    return like(constant(subject), pattern, escape).evaluate({});
}

QVariant matches(QString const& subject, QString const& pattern)
{
    return regexp(constant(subject), pattern).evaluate({});
}

/// LIKE as its rules say it, one character of the pattern after the other.
bool referenceLike(QStringRef const& subject, QStringRef const& pattern, QString const& escape)
{
    if (pattern.isEmpty())
        return subject.isEmpty();
    if (!escape.isEmpty() && pattern.startsWith(escape)) {
        QStringRef const escaped = pattern.mid(escape.size());
        return !escaped.isEmpty() && !subject.isEmpty() && subject.at(0) == escaped.at(0)
            && referenceLike(subject.mid(1), escaped.mid(1), escape);
    }
    if (pattern.at(0) == QLatin1Char('%'))
        return referenceLike(subject, pattern.mid(1), escape)
            || (!subject.isEmpty() && referenceLike(subject.mid(1), pattern, escape));
    bool const isSame = !subject.isEmpty() && (pattern.at(0) == QLatin1Char('_') || pattern.at(0) == subject.at(0));
    return isSame && referenceLike(subject.mid(1), pattern.mid(1), escape);
}

QString randomText(QRandomGenerator& random, QString const& alphabet, int maxLength)
{
    QString result(QLatin1String(""));
    for (int length = random.bounded(maxLength + 1); length > 0; --length)
        result.append(alphabet.at(random.bounded(alphabet.size())));
    return result;
}

} // namespace

/// What the functions like and regexp match.
class TestPatterns : public QObject {
    Q_OBJECT

private slots:
    void like_data();
    void like();
    void everyOtherCharacterStandsForItself_data();
    void everyOtherCharacterStandsForItself();
    void likeAgreesWithItsRules();
    void likeOfOtherValues_data();
    void likeOfOtherValues();
    void longLikePatternCompletes();

    void regexp_data();
    void regexp();
    void regExpKeepsItsOptions_data();
    void regExpKeepsItsOptions();
    void regexpOfOtherValues_data();
    void regexpOfOtherValues();
    void patternFromAProperty();
    void constantExpressionIsNotChanged();
};

void TestPatterns::like_data()
{
    QTest::addColumn<QString>("subject");
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<QString>("escape");
    QTest::addColumn<bool>("expected");
    auto const row
        = [](char const* name, char const* subject, char const* pattern, bool expected, char const* escape = "") {
              QTest::newRow(name) << text(subject) << text(pattern) << text(escape) << expected;
          };
    row("same text", "abc", "abc", true);
    row("case matters", "abc", "aBc", false);
    row("part of the text", "abc", "ab", false);
    row("more than the text", "abc", "abcd", false);
    row("empty pattern", "a", "", false);
    row("empty pattern, empty text", "", "", true);
    row("any run", "abc", "%", true);
    row("any run of an empty text", "", "%", true);
    row("any run at the end", "abc", "a%", true);
    row("any run at the beginning", "abc", "%c", true);
    row("any run in the middle", "abc", "a%c", true);
    row("any run in the middle, empty", "ac", "a%c", true);
    row("any runs in a row", "abc", "a%%%c", true);
    row("any runs that must share", "ab", "a%b%b", false);
    row("any run across lines", "a\nb", "a%b", true);
    row("any one", "abc", "a_c", true);
    row("any one is not none", "ac", "a_c", false);
    row("any one is a line break", "a\nc", "a_c", true);
    row("any three", "abc", "___", true);
    row("any three of two", "ab", "___", false);
    row("at least two", "a", "_%_", false);
    row("exactly two", "ab", "_%_", true);
    row("escaped run", "a%", "a\\%", true, "\\");
    row("escaped run is no run", "ab", "a\\%", false, "\\");
    row("escaped any one", "a_", "a!_", true, "!");
    row("escaped any one is none", "ab", "a!_", false, "!");
    row("escaped escape", "a!", "a!!", true, "!");
    row("escaped escape, then any run", "a!bc", "a!!%", true, "!");
    row("two escapes before any run", "a!%", "a!!!%", true, "!");
    row("escaped letter", "ab", "a!b", true, "!");
    row("escape at the end", "a!", "a!", false, "!");
    row("escape at the end of nothing", "", "!", false, "!");
    row("escape at the end after a run", "abc", "%!", false, "!");
    row("escape is the run", "a%c", "a%%c", true, "%");
    row("escape is the run: nothing else is", "abc", "a%c", false, "%");
    row("escape is the run: a letter for itself", "ac", "a%c", true, "%");
    row("escape is any one", "a_c", "a__c", true, "_");
    row("escape is any one: a run stays", "abc", "a%", true, "_");
    row("escape is any one: run escaped", "a%", "a_%", true, "_");
    row("escape is a letter", "a%", "ax%", true, "x");
    row("escape is a letter of the pattern", "b", "ab", true, "a");
    row("escape of two characters", "a%", "a##%", true, "##");
    row("half an escape of two characters", "a#bc", "a#%", true, "##");
    row("escape of two characters, escaped", "a#", "a###", true, "##");
    row("backslash without escape", "a\\b", "a\\_", true);
    row("backslash without escape is itself", "a%", "a\\%", false);
}

void TestPatterns::like()
{
    QFETCH(QString, subject);
    QFETCH(QString, pattern);
    QFETCH(QString, escape);
    QFETCH(bool, expected);
    QCOMPARE(typed::describe(isLike(subject, pattern, escape)), typed::describe(expected));
    QCOMPARE(referenceLike(QStringRef(&subject), QStringRef(&pattern), escape), expected);
}

void TestPatterns::everyOtherCharacterStandsForItself_data()
{
    QTest::addColumn<QChar>("character");
    for (char const character : QByteArray(".*+?^$|\\()[]{}<>-=!:&#~'\"/@, \t\n\r"))
        QTest::addRow("0x%02x", unsigned(character)) << QChar::fromLatin1(character);
    QTest::newRow("zero") << QChar(QChar::Null);
    QTest::newRow("beyond ASCII") << QChar(0x00e4);
    QTest::newRow("half of a surrogate pair") << QChar(0xd83d);
    QTest::newRow("last code unit") << QChar(0xffff);
}

void TestPatterns::everyOtherCharacterStandsForItself()
{
    QFETCH(QChar, character);
    QString const itself(character);
    QString const other = QStringLiteral("x");
    QCOMPARE(isLike(itself, itself), QVariant(true));
    QCOMPARE(isLike(other, itself), QVariant(false));
    QCOMPARE(isLike(other + other, other + itself), QVariant(false));
    QCOMPARE(isLike(other + itself + other, text("_") + itself + text("%")), QVariant(true));
    QCOMPARE(isLike(itself, text("!") + itself, text("!")), QVariant(true));
    QCOMPARE(isLike(text("%"), itself + text("%"), itself), QVariant(true));
    QCOMPARE(isLike(itself + itself, itself + itself + itself + itself, itself), QVariant(true));
}

void TestPatterns::likeAgreesWithItsRules()
{
    QRandomGenerator random = support::generator();
    QString const alphabet = text("aab%%__!.*[](){}^$|?+\\\n") + QChar(0x00e4) + QChar(0xd83d);
    QString const escapes[]
        = {QString(), text("!"), text("\\"), text("%"), text("_"), text("a"), text("ab"), text(".")};
    int found = 0;
    int const rounds = support::rounds(100000);
    for (int round = 0; round < rounds; ++round) {
        QString const pattern = randomText(random, alphabet, 7);
        QString const subject
            = random.bounded(2) == 0 ? randomText(random, alphabet, 6) : randomText(random, text("ab%_!"), 6);
        QString const escape = escapes[random.bounded(8)];
        bool const expected = referenceLike(QStringRef(&subject), QStringRef(&pattern), escape);
        QString const note = QStringList{support::seedNote(round), subject, pattern, escape}.join(QLatin1Char('\n'));
        QVERIFY2(isLike(subject, pattern, escape) == QVariant(expected), qPrintable(note));
        found += expected ? 1 : 0;
    }
    QVERIFY(found > rounds / 50);
}

void TestPatterns::likeOfOtherValues_data()
{
    QTest::addColumn<QVariant>("subject");
    QTest::addColumn<QVariant>("pattern");
    QTest::addColumn<QVariant>("expected");
    auto const row = [](char const* name, QVariant const& subject, QVariant const& pattern, bool expected) {
        QTest::newRow(name) << subject << pattern << QVariant(expected);
    };
    row("number", 125, text("1%"), true);
    row("double", 1.5, text("_.5"), true);
    row("truth value", true, text("t%"), true);
    row("pattern is a number", text("12"), 12, true);
    row("invalid is the empty text", QVariant(), text("%"), true);
    row("invalid is no character", QVariant(), text("_"), false);
    row("invalid pattern", text("a"), QVariant(), false);
    row("list is the empty text", QVariantList{1}, text(""), true);
}

void TestPatterns::likeOfOtherValues()
{
    QFETCH(QVariant, subject);
    QFETCH(QVariant, pattern);
    QTEST(FunctionExpression::like({subject, pattern}), "expected");
    QTEST(FunctionExpression::like({subject, pattern, QVariant()}), "expected");
}

// A matcher that tries each way of sharing out the runs would not come back.
void TestPatterns::longLikePatternCompletes()
{
    QString const subject(5000, QLatin1Char('a'));
    QCOMPARE(isLike(subject, text("%a").repeated(500)), QVariant(true));
    QCOMPARE(isLike(subject, text("%a").repeated(499) + text("%b")), QVariant(false));
    QCOMPARE(isLike(subject, text("%_").repeated(250)), QVariant(true));
    QCOMPARE(isLike(subject, text("_").repeated(1000)), QVariant(false));
    QCOMPARE(isLike(subject, text("%").repeated(1000) + text("a")), QVariant(true));
}

void TestPatterns::regexp_data()
{
    QTest::addColumn<QString>("subject");
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<bool>("expected");
    auto const row = [](char const* name, char const* subject, char const* pattern, bool expected) {
        QTest::newRow(name) << text(subject) << text(pattern) << expected;
    };
    row("same text", "abc", "abc", true);
    row("whole text only", "abc", "b", false);
    row("beginning only", "abc", "ab", false);
    row("end only", "abc", "bc", false);
    row("case matters", "abc", "ABC", false);
    row("any run", "abc", ".*b.*", true);
    row("any run across lines", "a\nb", "a.*b", true);
    row("anchors are allowed", "abc", "^abc$", true);
    row("alternatives", "dog", "cat|dog", true);
    row("group", "ababab", "(ab)*", true);
    row("class", "a7", "[a-c]\\d", true);
    row("negative class", "x", "[^a-c]", true);
    row("counts", "aaa", "a{2,3}", true);
    row("too many", "aaaa", "a{2,3}", false);
    row("back-reference", "abab", "(ab)\\1", true);
    row("back-reference to another text", "abcd", "(..)\\1", false);
    row("lookahead", "foobar", "foo(?=bar).*", true);
    row("negative lookahead", "foobar", "foo(?!bar).*", false);
    row("word boundary", "a b", "a\\b.*", true);
    row("empty pattern", "", "", true);
    row("empty pattern, some text", "a", "", false);
    row("like's signs mean nothing", "abc", "a%", false);
    row("malformed: parenthesis", "a", "(a", false);
    row("malformed: class", "a", "[a", false);
    row("malformed: nothing repeated", "a", "*a", false);
}

void TestPatterns::regexp()
{
    QFETCH(QString, subject);
    QFETCH(QString, pattern);
    QFETCH(bool, expected);
    QCOMPARE(typed::describe(matches(subject, pattern)), typed::describe(expected));
    QCOMPARE(matches(subject, pattern), QVariant(QRegExp(pattern).exactMatch(subject)));
    QCOMPARE(qvgen::regexp(constant(subject), QRegExp(pattern)).evaluate({}), matches(subject, pattern));
}

void TestPatterns::regExpKeepsItsOptions_data()
{
    QTest::addColumn<QRegExp>("expression");
    QTest::addColumn<QString>("subject");
    QTest::addColumn<bool>("expected");
    auto const sensitive = Qt::CaseSensitive;
    auto const insensitive = Qt::CaseInsensitive;
    QRegExp minimal(text("a+"));
    minimal.setMinimal(true);
    QTest::newRow("case-sensitive") << QRegExp(text("ABC"), sensitive) << text("abc") << false;
    QTest::newRow("case-insensitive") << QRegExp(text("ABC"), insensitive) << text("abc") << true;
    QTest::newRow("case-insensitive beyond ASCII")
        << QRegExp(QString(QChar(0xc4)), insensitive) << QString(QChar(0xe4)) << true;
    QTest::newRow("wildcard") << QRegExp(text("*.jp?g"), sensitive, QRegExp::Wildcard) << text("a.jpeg") << true;
    QTest::newRow("wildcard, no match") << QRegExp(text("*.jp?g"), sensitive, QRegExp::Wildcard) << text("ajpg")
                                        << false;
    QTest::newRow("wildcard with a class")
        << QRegExp(text("cam[0-9]"), sensitive, QRegExp::Wildcard) << text("cam7") << true;
    QTest::newRow("escaped wildcard") << QRegExp(text("a\\*"), sensitive, QRegExp::WildcardUnix) << text("a*") << true;
    QTest::newRow("fixed text") << QRegExp(text("a.c"), sensitive, QRegExp::FixedString) << text("a.c") << true;
    QTest::newRow("fixed text is no pattern")
        << QRegExp(text("a.c"), sensitive, QRegExp::FixedString) << text("abc") << false;
    QTest::newRow("greedy") << QRegExp(text("a*b"), sensitive, QRegExp::RegExp2) << text("aab") << true;
    QTest::newRow("XML schema") << QRegExp(text("\\i\\c*"), sensitive, QRegExp::W3CXmlSchema11) << text("a-b") << true;
    QTest::newRow("minimal matches the shortest only") << minimal << text("aaa") << false;
    QTest::newRow("minimal") << minimal << text("a") << true;
    QTest::newRow("malformed") << QRegExp(text("(a")) << text("a") << false;
    QTest::newRow("empty") << QRegExp() << text("") << true;
}

void TestPatterns::regExpKeepsItsOptions()
{
    QFETCH(QRegExp, expression);
    QFETCH(QString, subject);
    QFETCH(bool, expected);
    QCOMPARE(expression.exactMatch(subject), expected);
    QCOMPARE(qvgen::regexp(constant(subject), expression).evaluate({}), QVariant(expected));
    QCOMPARE(FunctionExpression::regexp({subject, expression}), QVariant(expected));
}

void TestPatterns::regexpOfOtherValues_data()
{
    QTest::addColumn<QVariant>("subject");
    QTest::addColumn<QVariant>("pattern");
    QTest::addColumn<QVariant>("expected");
    auto const row = [](char const* name, QVariant const& subject, QVariant const& pattern, bool expected) {
        QTest::newRow(name) << subject << pattern << QVariant(expected);
    };
    row("number", 125, text("\\d+"), true);
    row("pattern is a number", text("12"), 12, true);
    row("invalid is the empty text", QVariant(), text("a*"), true);
    row("invalid pattern", text("a"), QVariant(), false);
    row("map is the empty text", QVariantMap{{text("a"), 1}}, text("a"), false);
    row("pattern with a zero", QString(QChar(QChar::Null)), QString(QChar(QChar::Null)), true);
    row("zero that looks like a key", text("a"), QString(QChar(QChar::Null)) + text("1:a"), false);
}

void TestPatterns::regexpOfOtherValues()
{
    QFETCH(QVariant, subject);
    QFETCH(QVariant, pattern);
    // The key under which this expression is kept must not be mistaken for a text.
    FunctionExpression::regexp({text("a"), QRegExp(text("a"))});
    QTEST(FunctionExpression::regexp({subject, pattern}), "expected");
    QTEST(FunctionExpression::regexp({subject, pattern}), "expected");
}

void TestPatterns::patternFromAProperty()
{
    PropertySet set;
    add<StringProperty>(set, "name", text("Gate 7"));
    add<StringProperty>(set, "pattern", text("Gate%"));
    bool isConstant = true;
    FunctionExpression const tree(text("like"), ExpressionList(value("name"), value("pattern")), false);
    QCOMPARE(tree.evaluate(set, &isConstant), QVariant(true));
    QVERIFY(!isConstant);
    QCOMPARE(qvgen::regexp(value("name"), text("Gate \\d")).evaluate(set), QVariant(true));
}

void TestPatterns::constantExpressionIsNotChanged()
{
    QRegExp const expression(text("(a+)b"), Qt::CaseInsensitive);
    ExpressionHandle const tree = qvgen::regexp(constant(text("AAB")), expression);
    QCOMPARE(tree.evaluate({}), QVariant(true));
    QVERIFY(tree.equals(qvgen::regexp(constant(text("AAB")), expression)));
    QCOMPARE(expression.matchedLength(), -1);
}

QTEST_APPLESS_MAIN(TestPatterns)
#include "tst_Patterns.moc"
