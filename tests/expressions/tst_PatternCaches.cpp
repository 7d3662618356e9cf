// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/expressions/Functions.h>

#include "Nodes.h"

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

} // namespace

/// What the functions like and regexp keep compiled.
class TestPatternCaches : public QObject {
    Q_OBJECT

private slots:
    void init();
    void likeIsCompiledOncePerPatternAndEscape();
    void regexpIsCompiledOncePerPattern();
    void expressionsOfOtherOptionsAreKeptApart();
    void textAndExpressionOfTheSamePattern();
    void entriesCostOne();
    void cachesDropTheOldest();
    void largePatternsDoNotFillTheCaches();
    void largeEscapesDoNotFillTheCache();
    void clearedCachesAreFilledAgain();
};

void TestPatternCaches::init()
{
    FunctionExpression::gLikeCache.clear();
    FunctionExpression::gRegExpCache.clear();
}

void TestPatternCaches::likeIsCompiledOncePerPatternAndEscape()
{
    auto const& cache = FunctionExpression::gLikeCache;
    for (char const* const subject : {"abc", "abd", "x"})
        isLike(text(subject), text("ab%"));
    QCOMPARE(cache.size(), 1);
    isLike(text("abc"), text("ab%"), text("!"));
    QCOMPARE(cache.size(), 2);
    isLike(text("abc"), text("ab_"));
    QCOMPARE(cache.size(), 3);
    QVERIFY(FunctionExpression::gRegExpCache.isEmpty());
}

void TestPatternCaches::regexpIsCompiledOncePerPattern()
{
    auto const& cache = FunctionExpression::gRegExpCache;
    for (char const* const subject : {"abc", "abd", "x"})
        matches(text(subject), text("ab."));
    QCOMPARE(cache.size(), 1);
    QVERIFY(cache.contains(text("ab.")));
    matches(text("abc"), text("ab.*"));
    QCOMPARE(cache.size(), 2);
    QVERIFY(FunctionExpression::gLikeCache.isEmpty());
}

void TestPatternCaches::expressionsOfOtherOptionsAreKeptApart()
{
    QRegExp minimal(text("A*"));
    minimal.setMinimal(true);
    QRegExp const insensitive(text("A*"), Qt::CaseInsensitive);
    QRegExp const wildcard(text("A*"), Qt::CaseSensitive, QRegExp::Wildcard);
    for (int round = 0; round < 2; ++round) {
        QCOMPARE(matches(text("AA"), text("A*")), QVariant(true));
        QCOMPARE(FunctionExpression::regexp({text("AA"), minimal}), QVariant(false));
        QCOMPARE(FunctionExpression::regexp({text("aa"), insensitive}), QVariant(true));
        QCOMPARE(FunctionExpression::regexp({text("AB"), wildcard}), QVariant(true));
        QCOMPARE(matches(text("aa"), text("A*")), QVariant(false));
    }
}

void TestPatternCaches::textAndExpressionOfTheSamePattern()
{
    QCOMPARE(FunctionExpression::regexp({text("AB"), QRegExp(text("ab"), Qt::CaseInsensitive)}), QVariant(true));
    QCOMPARE(matches(text("AB"), text("ab")), QVariant(false));
    // The escape "a" with the pattern "b" is not the escape "" with the pattern "ab".
    QCOMPARE(isLike(text("ab"), text("ab")), QVariant(true));
    QCOMPARE(isLike(text("ab"), text("b"), text("a")), QVariant(false));
    QCOMPARE(isLike(text("1:ab"), text("1:ab")), QVariant(true));
}

void TestPatternCaches::entriesCostOne()
{
    for (int i = 0; i < 5; ++i) {
        isLike(text("x"), QString::number(i));
        matches(text("x"), QString::number(i));
    }
    QCOMPARE(FunctionExpression::gLikeCache.totalCost(), 5);
    QCOMPARE(FunctionExpression::gRegExpCache.totalCost(), 5);
}

void TestPatternCaches::cachesDropTheOldest()
{
    auto const& cache = FunctionExpression::gRegExpCache;
    int const capacity = cache.maxCost();
    for (int i = 0; i < capacity + 10; ++i)
        matches(text("x"), QString::number(i));
    QCOMPARE(cache.size(), capacity);
    QVERIFY(!cache.contains(text("0")));
    QVERIFY(cache.contains(QString::number(capacity + 9)));
}

// Some hundred kilobytes each.
void TestPatternCaches::largePatternsDoNotFillTheCaches()
{
    for (int i = 0; i < 60; ++i) {
        QString const number = QString::number(i);
        QCOMPARE(isLike(number, text("_%").repeated(500) + number), QVariant(false));
        QCOMPARE(matches(number, text("a?").repeated(140) + number), QVariant(true));
        QVERIFY(FunctionExpression::gLikeCache.size() + FunctionExpression::gRegExpCache.size() <= 20);
    }
}

void TestPatternCaches::largeEscapesDoNotFillTheCache()
{
    for (char const last : QByteArray("abc"))
        QCOMPARE(isLike(text("ab"), text("a_"), text("a").repeated(1000000) + QLatin1Char(last)), QVariant(true));
    QCOMPARE(isLike(text("ab"), text("a_"), text("a_a")), QVariant(true));
    QCOMPARE(isLike(text("ab"), text("a_")), QVariant(true));
    QCOMPARE(FunctionExpression::gLikeCache.size(), 1);
    QCOMPARE(isLike(text("ab"), text("a_"), text("a_")), QVariant(false));
    QCOMPARE(FunctionExpression::gLikeCache.size(), 2);
}

void TestPatternCaches::clearedCachesAreFilledAgain()
{
    QCOMPARE(isLike(text("abc"), text("a%")), QVariant(true));
    FunctionExpression::gLikeCache.clear();
    QCOMPARE(isLike(text("abc"), text("a%")), QVariant(true));
    QCOMPARE(FunctionExpression::gLikeCache.size(), 1);
}

QTEST_APPLESS_MAIN(TestPatternCaches)
#include "tst_PatternCaches.moc"
