// SPDX-License-Identifier: LGPL-2.1-or-later
#include "DeepTree.h"

#include "support/Random.h"

#include <QDataStream>
#include <QTest>
#include <QThread>

#include <atomic>
#include <functional>
#include <memory>
#include <vector>

using namespace qvgen;
using namespace nodes;
using deep::Level;

Q_DECLARE_METATYPE(deep::Level const*)

namespace {

constexpr int huge = 1000000;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr uint stackForMaxDepth = 16U << 20;
#else
constexpr uint stackForMaxDepth = 1U << 20;
#endif

void runOnStack(uint bytes, std::function<void()> const& work)
{
    std::unique_ptr<QThread> const thread(QThread::create(work));
    thread->setStackSize(bytes);
    thread->start();
    thread->wait();
}

deep::Results walkOnStack(uint bytes, ExpressionHandle const& tree, ExpressionHandle const& twin)
{
    deep::Results results;
    runOnStack(bytes, [&] { results = deep::walk(tree, twin); });
    return results;
}

int wholeText(Level const& level, int depth)
{
    return 1 + (depth - 1) * level.characters - level.charactersOnTop;
}

int wholePlaceholders(Level const& level, int depth)
{
    return 1 + (depth - 1) * level.placeholders;
}

bool isNothing(deep::Results const& results)
{
    return !results.value.isValid() && results.characters == 0 && results.placeholders == 0 && !results.equalsTwin;
}

void addLevels()
{
    QTest::addColumn<Level const*>("level");
    for (Level const& level : deep::levels)
        QTest::newRow(level.name) << &level;
}

} // namespace

class TestDeepTrees : public QObject {
    Q_OBJECT

private slots:
    void hugeTreeDoesNoHarm_data();
    void hugeTreeDoesNoHarm();
    void hugeTreeDiesOnASmallStack();
    void hugeTreeOfSharedBranches();
    void maxDepthOnASmallStack_data();
    void maxDepthOnASmallStack();
    void deeperTreeIsWalkedWholeOrNot_data();
    void deeperTreeIsWalkedWholeOrNot();
    void roomyStackCarriesADeeperTree_data();
    void roomyStackCarriesADeeperTree();
    void nestedListsAreCompared_data();
    void nestedListsAreCompared();
    void smallStackRefusesAHugeTree_data();
    void smallStackRefusesAHugeTree();
    void deepBranchRefusesTheWholeTree();
    void maxDepthIsWritten_data();
    void maxDepthIsWritten();
    void deeperTreeIsNotWritten_data();
    void deeperTreeIsNotWritten();
    void refusedWritingKeepsAnEarlierFailure();
    void sharedTreeInSeveralThreads();
};

void TestDeepTrees::hugeTreeDoesNoHarm_data()
{
    addLevels();
}

void TestDeepTrees::hugeTreeDoesNoHarm()
{
    QFETCH(Level const*, level);
    int const depth = support::rounds(huge);
    ExpressionHandle tree = deep::tree(*level, depth);
    ExpressionHandle const copy = tree;
    tree.detach();
    QCOMPARE(tree.constData()->depth(), depth);
    QVERIFY(!tree.isEmpty());
    QVERIFY(tree.constData() != copy.constData());

    deep::Results const results = deep::walk(tree, level->around(copy));
    QVERIFY(!results.value.isValid() || results.value.toBool());
    QVERIFY(results.characters == 0 || results.characters == wholeText(*level, depth));
    QVERIFY(results.placeholders == 0 || results.placeholders == wholePlaceholders(*level, depth));
    QVERIFY(!results.equalsTwin);
}

void TestDeepTrees::hugeTreeDiesOnASmallStack()
{
    for (Level const& level : deep::levels) {
        ExpressionHandle tree = deep::tree(level, huge / 10);
        runOnStack(256U << 10, [&] { tree = ExpressionHandle(); });
        QVERIFY(tree.isEmpty());
    }
}

void TestDeepTrees::hugeTreeOfSharedBranches()
{
    ExpressionHandle tree = deep::leaf();
    for (int i = 0; i < huge / 10; ++i)
        tree = ExpressionList(tree, tree);
    QCOMPARE(tree.constData()->depth(), huge / 10 + 1);
    QVERIFY(isNothing(walkOnStack(256U << 10, tree, ExpressionHandle())));
    runOnStack(256U << 10, [&] { tree = ExpressionHandle(); });
    QVERIFY(tree.isEmpty());
}

void TestDeepTrees::maxDepthOnASmallStack_data()
{
    addLevels();
}

void TestDeepTrees::maxDepthOnASmallStack()
{
    QFETCH(Level const*, level);
    // An even number of levels around the leaf, so that negations give true.
    int const depth = Expression::MaxDepth - 1;
    ExpressionHandle const tree = deep::tree(*level, depth);
    ExpressionHandle const top = toBool(tree);
    QCOMPARE(top.constData()->depth(), static_cast<int>(Expression::MaxDepth));
    deep::Results const results = walkOnStack(stackForMaxDepth, tree, deep::tree(*level, depth));
    QCOMPARE(results.value, QVariant(true));
    QCOMPARE(results.characters, wholeText(*level, depth));
    QCOMPARE(results.placeholders, wholePlaceholders(*level, depth));
    QVERIFY(results.equalsTwin);
    QVERIFY(walkOnStack(stackForMaxDepth, top, toBool(deep::tree(*level, depth))).equalsTwin);
}

void TestDeepTrees::deeperTreeIsWalkedWholeOrNot_data()
{
    QTest::addColumn<Level const*>("level");
    QTest::addColumn<int>("depth");
    QTest::addColumn<uint>("stack");
    for (Level const& level : deep::levels) {
        // Close to what the stacks below can carry, from both sides.
        for (int const depth : {1001, 8001, 64001}) {
            for (uint const kibibytes : {256U, 1024U, 8192U, 65536U})
                QTest::addRow("%s, %d levels, %u KiB", level.name, depth, kibibytes)
                    << &level << depth << kibibytes * 1024;
        }
    }
}

void TestDeepTrees::deeperTreeIsWalkedWholeOrNot()
{
    QFETCH(Level const*, level);
    QFETCH(int, depth);
    QFETCH(uint, stack);
    deep::Results const results = walkOnStack(stack, deep::tree(*level, depth), deep::tree(*level, depth));
    bool const isWhole = results.value.isValid();
    QCOMPARE(results.value, isWhole ? QVariant(true) : QVariant());
    QCOMPARE(results.characters, isWhole ? wholeText(*level, depth) : 0);
    QCOMPARE(results.placeholders, isWhole ? wholePlaceholders(*level, depth) : 0);
    QCOMPARE(results.equalsTwin, isWhole);
}

void TestDeepTrees::roomyStackCarriesADeeperTree_data()
{
    addLevels();
}

void TestDeepTrees::roomyStackCarriesADeeperTree()
{
    QFETCH(Level const*, level);
    int const depth = 4 * Expression::MaxDepth + 1;
    deep::Results const results = walkOnStack(64U << 20, deep::tree(*level, depth), deep::tree(*level, depth));
    QCOMPARE(results.value, QVariant(true));
    QCOMPARE(results.characters, wholeText(*level, depth));
    QCOMPARE(results.placeholders, wholePlaceholders(*level, depth));
    QVERIFY(results.equalsTwin);
}

void TestDeepTrees::nestedListsAreCompared_data()
{
    QTest::addColumn<int>("depth");
    QTest::addColumn<uint>("stack");
    QTest::addColumn<bool>("mayRefuse");
    QTest::newRow("small stack") << static_cast<int>(Expression::MaxDepth) - 1 << stackForMaxDepth << false;
    QTest::newRow("deeper, small stack") << 1001 << stackForMaxDepth << true;
    QTest::newRow("deeper, usual stack") << 8001 << (8U << 20) << true;
    QTest::newRow("deeper, roomy stack") << 64001 << (64U << 20) << true;
}

// The values of both sides are lists as deep as the trees, and so is the walk that compares them.
void TestDeepTrees::nestedListsAreCompared()
{
    QFETCH(int, depth);
    QFETCH(uint, stack);
    QFETCH(bool, mayRefuse);
    ExpressionHandle const tree = deep::tree(deep::listsLast, depth);
    ExpressionHandle const equal = tree == deep::tree(deep::listsLast, depth);
    ExpressionHandle const contained = deep::membership(tree, deep::tree(deep::listsLast, depth));
    for (ExpressionHandle const& each : {equal, contained}) {
        QVariant value;
        runOnStack(stack, [&] { value = each.evaluate({}); });
        QCOMPARE(value, mayRefuse && !value.isValid() ? QVariant() : QVariant(true));
    }
}

void TestDeepTrees::smallStackRefusesAHugeTree_data()
{
    addLevels();
}

void TestDeepTrees::smallStackRefusesAHugeTree()
{
    QFETCH(Level const*, level);
    ExpressionHandle const tree = deep::tree(*level, huge / 10);
    QVERIFY(isNothing(walkOnStack(256U << 10, tree, deep::tree(*level, huge / 10))));
    bool isConstant = true;
    runOnStack(256U << 10, [&] { tree.evaluate({}, &isConstant); });
    QVERIFY(!isConstant);
}

void TestDeepTrees::deepBranchRefusesTheWholeTree()
{
    ExpressionHandle const branch = deep::tree(deep::levels[0], huge / 10);
    ExpressionHandle const tree = ExpressionHandle(placeholder(1)) << (value("a") == 2 && (branch || value("b") == 3));
    QVERIFY(isNothing(walkOnStack(256U << 10, tree, placeholder(1))));
}

void TestDeepTrees::maxDepthIsWritten_data()
{
    addLevels();
}

void TestDeepTrees::maxDepthIsWritten()
{
    QFETCH(Level const*, level);
    ExpressionHandle const tree = deep::tree(*level, Expression::MaxDepth);
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    runOnStack(stackForMaxDepth, [&] { out << tree; });
    QCOMPARE(out.status(), QDataStream::Ok);
    QVERIFY(bytes.size() > Expression::MaxDepth * 20);
}

void TestDeepTrees::deeperTreeIsNotWritten_data()
{
    QTest::addColumn<Level const*>("level");
    QTest::addColumn<int>("depth");
    for (Level const& level : deep::levels) {
        QTest::addRow("%s, one level too many", level.name) << &level << Expression::MaxDepth + 1;
        QTest::addRow("%s, far too many", level.name) << &level << huge / 10;
    }
}

void TestDeepTrees::deeperTreeIsNotWritten()
{
    QFETCH(Level const*, level);
    QFETCH(int, depth);
    ExpressionHandle const tree = deep::tree(*level, depth);
    QByteArray streamed;
    QDataStream stream(&streamed, QIODevice::WriteOnly);
    stream << tree;
    QCOMPARE(stream.status(), QDataStream::WriteFailed);
    QCOMPARE(streamed.size(), 0);

    QByteArray written;
    QDataStream out(&written, QIODevice::WriteOnly);
    Expression::writeExpression(out, tree);
    QCOMPARE(out.status(), QDataStream::WriteFailed);
    QCOMPARE(written.size(), 0);
}

void TestDeepTrees::refusedWritingKeepsAnEarlierFailure()
{
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    out.setStatus(QDataStream::ReadCorruptData);
    out << deep::tree(deep::levels[0], Expression::MaxDepth + 1);
    QCOMPARE(out.status(), QDataStream::ReadCorruptData);
    QCOMPARE(bytes.size(), 0);
}

void TestDeepTrees::sharedTreeInSeveralThreads()
{
    ExpressionHandle const tree = deep::tree(deep::levels[2], 100);
    QString const text = tree.toString(Sql);
    int const rounds = support::rounds(2000);
    std::atomic<int> failures{0};
    auto const work = [&] {
        for (int i = 0; i < rounds; ++i) {
            ExpressionHandle copy = tree;
            ExpressionHandle const grown = copy && value("missing");
            copy.detach();
            bool const isRight = tree.evaluate({}) == QVariant(true) && copy.toString(Sql) == text && copy.equals(tree)
                && !grown.evaluate({}).isValid() && grown.collectPlaceholders().size() == 100;
            failures += isRight ? 0 : 1;
        }
    };
    std::vector<std::unique_ptr<QThread>> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back(QThread::create(work));
        threads.back()->start();
    }
    for (auto const& thread : threads)
        thread->wait();
    QCOMPARE(failures.load(), 0);
    QCOMPARE(tree.constData()->ref.loadRelaxed(), 1);
}

QTEST_GUILESS_MAIN(TestDeepTrees)
#include "tst_DeepTrees.moc"
