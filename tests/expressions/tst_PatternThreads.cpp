// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/expressions/BooleanOperators.h>
#include <GenericUtilities/expressions/Functions.h>
#include <GenericUtilities/properties/CommonProperties.h>

#include "Nodes.h"
#include "support/Random.h"

#include <QTest>

#include <atomic>
#include <functional>
#include <thread>
#include <vector>

using namespace qvgen;
using namespace nodes;

namespace {

QString text(char const* latin1)
{
    return QString::fromLatin1(latin1);
}

PropertySet named(QString const& name)
{
    PropertySet set;
    add<StringProperty>(set, "name", name);
    return set;
}

/// True for the names of gates only, by patterns of each kind.
ExpressionHandle gates()
{
    ExpressionHandle const name = value("name");
    QRegExp minimal(text("Gate .."));
    minimal.setMinimal(true);
    return like(name, text("Gate%")) && regexp(name, text("(Gate|Door) \\d+"))
        && regexp(name, QRegExp(text("gate *"), Qt::CaseInsensitive, QRegExp::Wildcard))
        && regexp(name, QRegExp(text("GATE \\d\\d"), Qt::CaseInsensitive)) && regexp(name, minimal)
        && regexp(name, QRegExp(text("(\\w)ate \\d(?=\\d).*"))) && like(name, text("!Gate __"), text("!"));
}

void inThreads(int count, std::function<void(int)> const& work)
{
    std::vector<std::thread> threads;
    for (int i = 0; i < count; ++i)
        threads.emplace_back(work, i);
    for (std::thread& thread : threads)
        thread.join();
}

} // namespace

/// One tree, evaluated and printed in several threads at once.
class TestPatternThreads : public QObject {
    Q_OBJECT

private slots:
    void init();
    void sharedTree();
    void sharedTreeIsCompiledInAllThreads();
    void patternsOfEachThread();
    void cachesThatOverflow();
};

void TestPatternThreads::init()
{
    FunctionExpression::gLikeCache.clear();
    FunctionExpression::gRegExpCache.clear();
}

void TestPatternThreads::sharedTree()
{
    ExpressionHandle const tree = gates();
    QString const printed = tree.toString(Sql);
    std::atomic<int> wrong{0};
    int const rounds = support::rounds(2000);
    inThreads(4, [&](int thread) {
        PropertySet const gate = named(text("Gate %1").arg(10 + thread));
        PropertySet const door = named(text("Door %1").arg(10 + thread));
        for (int round = 0; round < rounds; ++round) {
            wrong += tree.evaluate(gate) == QVariant(true) ? 0 : 1;
            wrong += tree.evaluate(door) == QVariant(false) ? 0 : 1;
            wrong += round % 100 != 0 || tree.toString(Sql) == printed ? 0 : 1;
        }
    });
    QCOMPARE(wrong.load(), 0);
}

// Nothing has been matched before the threads meet.
void TestPatternThreads::sharedTreeIsCompiledInAllThreads()
{
    std::atomic<int> wrong{0};
    for (int round = 0; round < support::rounds(100); ++round) {
        init();
        ExpressionHandle const tree = gates();
        std::atomic<int> ready{0};
        inThreads(4, [&](int) {
            PropertySet const gate = named(text("Gate 12"));
            ++ready;
            while (ready < 4)
                std::this_thread::yield();
            wrong += tree.evaluate(gate) == QVariant(true) ? 0 : 1;
        });
    }
    QCOMPARE(wrong.load(), 0);
}

void TestPatternThreads::patternsOfEachThread()
{
    std::atomic<int> wrong{0};
    int const rounds = support::rounds(2000);
    inThreads(4, [&](int thread) {
        for (int round = 0; round < rounds; ++round) {
            QString const number = QString::number(thread * 1000 + round % 300);
            ExpressionHandle const subject = constant(text("camera ") + number);
            wrong += like(subject, text("cam%") + number).evaluate({}) == QVariant(true) ? 0 : 1;
            wrong += regexp(subject, text("cam.*") + number).evaluate({}) == QVariant(true) ? 0 : 1;
            wrong += regexp(subject, text("cam.*x") + number).evaluate({}) == QVariant(false) ? 0 : 1;
        }
    });
    QCOMPARE(wrong.load(), 0);
    QVERIFY(FunctionExpression::gLikeCache.size() <= FunctionExpression::gLikeCache.maxCost());
}

// Large patterns make room for one another while other threads match them.
void TestPatternThreads::cachesThatOverflow()
{
    std::atomic<int> wrong{0};
    int const rounds = support::rounds(200);
    inThreads(4, [&](int thread) {
        for (int round = 0; round < rounds; ++round) {
            QString const number = QString::number((thread + round) % 20);
            ExpressionHandle const subject = constant(number);
            wrong += regexp(subject, text("a?").repeated(140) + number).evaluate({}) == QVariant(true) ? 0 : 1;
            wrong += like(subject, text("_").repeated(1000) + number).evaluate({}) == QVariant(false) ? 0 : 1;
        }
    });
    QCOMPARE(wrong.load(), 0);
}

QTEST_APPLESS_MAIN(TestPatternThreads)
#include "tst_PatternThreads.moc"
