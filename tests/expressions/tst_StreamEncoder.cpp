// SPDX-License-Identifier: LGPL-2.1-or-later
#include "GoldenRecords.h"
#include "RandomTree.h"
#include "TreeDescription.h"

#include "support/Random.h"

#include <QJsonDocument>
#include <QProcess>
#include <QTest>

#include <algorithm>

using namespace qvgen;
using namespace nodes;

Q_DECLARE_METATYPE(std::vector<qvgen::ExpressionHandle>)

namespace {

// A record per tree, in hexadecimal digits, from the encoder that knows nothing of Qt.
QList<QByteArray> encoded(std::vector<ExpressionHandle> const& trees, int version)
{
    QJsonArray descriptions;
    for (ExpressionHandle const& each : trees)
        descriptions.append(description::ofTree(each.constData()));
    QProcess python;
    python.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    python.start(PYTHON, {ENCODER});
    python.write(QJsonDocument(QJsonObject{{"version", version}, {"trees", descriptions}}).toJson());
    python.closeWriteChannel();
    python.waitForFinished(300000);
    return python.readAllStandardOutput().split('\n');
}

bool isDescribable(golden::Record const& each)
{
    // JSON has whole characters only, and no time zones were taught to the encoder.
    return !each.old.isEmpty() && qstrcmp(each.name, "text of half a pair") != 0;
}

std::vector<ExpressionHandle> goldenTrees()
{
    std::vector<ExpressionHandle> trees;
    for (golden::Record const& each : golden::records()) {
        if (isDescribable(each))
            trees.push_back(each.tree);
    }
    return trees;
}

std::vector<ExpressionHandle> randomTrees()
{
    QRandomGenerator random = support::generator();
    RandomTree trees(random);
    std::vector<ExpressionHandle> result;
    std::generate_n(std::back_inserter(result), 2000, [&] { return trees.tree(5); });
    return result;
}

std::vector<ExpressionHandle> switches()
{
    return {SwitchCase(value("a")), SwitchCase(value("a")).switchCase(constant(1), placeholder("b")),
        ifThen(value("a") == 1, constant("b"), value("c") << value("d"))};
}

} // namespace

class TestStreamEncoder : public QObject {
    Q_OBJECT

private slots:
    void sameBytes_data();
    void sameBytes();
};

void TestStreamEncoder::sameBytes_data()
{
    QTest::addColumn<std::vector<ExpressionHandle>>("trees");
    QTest::addColumn<int>("version");
    for (int const version : {stream::Old, stream::Recent}) {
        QTest::addRow("records by hand, version %d", version) << goldenTrees() << version;
        QTest::addRow("random trees, version %d", version) << randomTrees() << version;
        QTest::addRow("switches, version %d", version) << switches() << version;
    }
}

void TestStreamEncoder::sameBytes()
{
    QFETCH(std::vector<ExpressionHandle>, trees);
    QFETCH(int, version);
    QList<QByteArray> const records = encoded(trees, version);
    QCOMPARE(records.size(), static_cast<int>(trees.size()) + 1);
    for (int i = 0; i + 1 < records.size(); ++i) {
        ExpressionHandle const& tree = trees[static_cast<std::size_t>(i)];
        QVERIFY2(stream::written(tree, version).toHex() == records.at(i), qPrintable(tree.toString(Code)));
    }
}

QTEST_APPLESS_MAIN(TestStreamEncoder)
#include "tst_StreamEncoder.moc"
