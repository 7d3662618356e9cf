// SPDX-License-Identifier: LGPL-2.1-or-later
#include "GoldenRecords.h"
#include "RandomTree.h"

#include "support/Random.h"

#include <QIODevice>
#include <QSet>
#include <QTest>

#include <algorithm>
#include <typeinfo>

using namespace qvgen;
using namespace nodes;
using stream::Old;
using stream::Reading;
using stream::Recent;

namespace {

void collectClasses(Expression const* node, QSet<QString>& classes, QSet<int>& types)
{
    classes.insert(QString::fromLatin1(typeid(*node).name()));
    if (auto const* const constant = dynamic_cast<ConstExpression const*>(node))
        types.insert(constant->value().userType());
    else if (auto const* const cast = dynamic_cast<CastExpression const*>(node))
        collectClasses(cast->operand().constData(), classes, types);
    else if (auto const* const parent = dynamic_cast<Operator const*>(node))
        for (ExpressionHandle const& each : parent->operands())
            collectClasses(each.constData(), classes, types);
}

QVariant valueReadBack(QVariant const& value, int version)
{
    Reading const reading = stream::read(stream::written(constant(value), version), version);
    auto const* const node = held<ConstExpression>(reading.tree);
    return node && reading.status == QDataStream::Ok ? node->value() : QVariant("not read");
}

QVariant valueReadByQt(QVariant const& value, int version)
{
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    out.setVersion(version);
    out << value;
    QDataStream in(bytes);
    in.setVersion(version);
    QVariant result;
    in >> result;
    return result;
}

bool isSame(QVariant const& a, QVariant const& b)
{
    return a.userType() == b.userType() && a.isNull() == b.isNull() && a == b;
}

QVariant nestedLists(int depth)
{
    QVariant value = 1;
    for (int i = 0; i < depth; ++i)
        value = QVariantList{value};
    return value;
}

// A device that cannot tell its size: nothing may rely on it.
class Pipe : public QIODevice {
public:
    explicit Pipe(QByteArray const& bytes)
        : m_rest(bytes)
    {
    }
    bool isSequential() const override { return true; }

protected:
    qint64 readData(char* data, qint64 maxSize) override
    {
        qint64 const size = qMin<qint64>(maxSize, m_rest.size());
        std::copy_n(m_rest.constData(), size, data);
        m_rest.remove(0, static_cast<int>(size));
        return size;
    }
    qint64 writeData(char const*, qint64) override { return -1; }

private:
    QByteArray m_rest;
};

} // namespace

class TestStreamRoundTrip : public QObject {
    Q_OBJECT

private slots:
    void randomTrees_data();
    void randomTrees();
    void randomTreesAreOfEveryKind();
    void everyStreamVersion_data();
    void everyStreamVersion();
    void versionsBeforeQt4AreRefused();
    void refusedTypes_data();
    void refusedTypes();
    void largestContainers();
    void hashOfManyEntries();
    void nullFlagIsKeptBesideAValue();
    void lastOfEqualKeysStands_data();
    void lastOfEqualKeysStands();
    void sharedNodesBecomeSeparate();
    void sequentialDevice();
};

void TestStreamRoundTrip::randomTrees_data()
{
    QTest::addColumn<int>("version");
    QTest::newRow("Qt_4_8") << Old;
    QTest::newRow("Qt_5_15") << Recent;
}

void TestStreamRoundTrip::randomTrees()
{
    QFETCH(int, version);
    QRandomGenerator random = support::generator();
    RandomTree trees(random);
    for (int round = 0; round < support::rounds(20000); ++round) {
        ExpressionHandle const tree = trees.tree(5);
        QByteArray const bytes = stream::written(tree, version);
        Reading const reading = stream::read(bytes, version);
        bool const isWhole = reading.status == QDataStream::Ok && reading.length == bytes.size();
        QVERIFY2(isWhole && reading.tree.equals(tree) && stream::flagsOf(reading.tree) == stream::flagsOf(tree),
            qPrintable(support::seedNote(round) + QLatin1Char(' ') + tree.toString(Code)));
        QVERIFY2(stream::written(reading.tree, version) == bytes, qPrintable(support::seedNote(round)));
    }
}

void TestStreamRoundTrip::randomTreesAreOfEveryKind()
{
    QRandomGenerator random = support::generator();
    RandomTree trees(random);
    QSet<QString> classes;
    QSet<int> types;
    for (int round = 0; round < 2000; ++round)
        collectClasses(trees.tree(5).constData(), classes, types);
    for (QString const& key : Expression::expressionClassMap().keys())
        QVERIFY2(classes.contains(key), qPrintable(key));
    for (golden::Value const& each : golden::values())
        QVERIFY2(types.contains(each.value.userType()), each.name);
}

void TestStreamRoundTrip::everyStreamVersion_data()
{
    QTest::addColumn<QVariant>("value");
    for (golden::Value const& each : golden::values())
        QTest::newRow(each.name) << each.value;
    for (golden::Value const& each : golden::recentValues())
        QTest::newRow(each.name) << each.value;
    QDate const date(2020, 7, 2);
    QTime const time(3, 4, 5, 6);
    QTest::newRow("summer, UTC") << QVariant(QDateTime(date, time, Qt::UTC));
    QTest::newRow("summer, local time") << QVariant(QDateTime(date, time, Qt::LocalTime));
    QTest::newRow("lowest offset") << QVariant(QDateTime(date, time, Qt::OffsetFromUTC, -14 * 3600));
    QTest::newRow("highest offset") << QVariant(QDateTime(date, time, Qt::OffsetFromUTC, 14 * 3600));
    QTest::newRow("zone UTC") << QVariant(QDateTime(date, time, QTimeZone::utc()));
    QTest::newRow("zone of the system") << QVariant(QDateTime(date, time, QTimeZone::systemTimeZone()));
    QTest::newRow("zone by an older name") << QVariant(QDateTime(date, time, QTimeZone("GB")));
    QTest::newRow("zone by its offset") << QVariant(QDateTime(date, time, QTimeZone(4980)));
    QTest::newRow("null date and time") << QVariant(QDateTime());
    QTest::newRow("before our era") << QVariant(QDateTime(QDate(-44, 3, 15), time, Qt::UTC));
}

// What an older version cannot hold comes back as Qt itself reads it: offsets as UTC, zones as local time.
void TestStreamRoundTrip::everyStreamVersion()
{
    QFETCH(QVariant, value);
    for (int version = QDataStream::Qt_4_0; version <= QDataStream::Qt_5_15; ++version) {
        QVariant const actual = valueReadBack(value, version);
        QVERIFY2(isSame(actual, valueReadByQt(value, version)), qPrintable(QString::number(version)));
    }
    QVERIFY(isSame(valueReadBack(value, Recent), value));
}

void TestStreamRoundTrip::versionsBeforeQt4AreRefused()
{
    for (int const version : {QDataStream::Qt_3_3, QDataStream::Qt_2_1, QDataStream::Qt_1_0}) {
        Reading const reading = stream::read(golden::five(), version);
        QCOMPARE(reading.status, QDataStream::ReadCorruptData);
        QVERIFY(stream::isEmptyHandle(reading.tree));
    }
}

void TestStreamRoundTrip::refusedTypes_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::newRow("point") << QVariant(QPoint(1, 2));
    QTest::newRow("size") << QVariant(QSize(1, 2));
    QTest::newRow("rectangle of doubles") << QVariant(QRectF(1, 2, 3, 4));
    QTest::newRow("long") << QVariant::fromValue(5L);
    QTest::newRow("short") << QVariant::fromValue(short(5));
    QTest::newRow("point in a list") << QVariant(QVariantList{1, QPoint(1, 2)});
    QTest::newRow("point in a map") << QVariant(QVariantMap{{"a", QPoint(1, 2)}});
    QTest::newRow("point in a hash in a list") << QVariant(QVariantList{QVariantHash{{"a", QPoint(1, 2)}}});
    QTest::newRow("lists 101 deep") << nestedLists(101);
    QTest::newRow("pattern of 1025 characters") << QVariant(QRegExp(QString(1025, QLatin1Char('a'))));
}

void TestStreamRoundTrip::largestContainers()
{
    QVariant const lists = nestedLists(100);
    QCOMPARE(valueReadBack(lists, Recent), lists);
    QVariant const pattern = QRegExp(QString(1024, QLatin1Char('a')));
    QCOMPARE(valueReadBack(pattern, Recent), pattern);
}

void TestStreamRoundTrip::refusedTypes()
{
    QFETCH(QVariant, value);
    for (int const version : {Old, Recent}) {
        ExpressionHandle const tree = nodes::value("a") == 1 && constant(value);
        stream::Writing const writing = stream::write(tree, version);
        QCOMPARE(writing.status, QDataStream::WriteFailed);
        Reading const reading = stream::read(writing.bytes, version);
        QCOMPARE(reading.status, QDataStream::ReadCorruptData);
        QVERIFY(stream::isEmptyHandle(reading.tree));
    }
}

void TestStreamRoundTrip::hashOfManyEntries()
{
    QVariantHash hash;
    for (int i = 0; i < 1000; ++i)
        hash.insert(QString::number(i), i);
    QCOMPARE(valueReadBack(hash, Old), QVariant(hash));
    QCOMPARE(valueReadBack(hash, Recent), QVariant(hash));
}

void TestStreamRoundTrip::nullFlagIsKeptBesideAValue()
{
    QByteArray const bytes = stream::constantRecord(stream::hex("00000002 01 00000005"));
    Reading const reading = stream::read(bytes, Recent);
    QVERIFY(held<ConstExpression>(reading.tree)->value().isNull());
    QCOMPARE(held<ConstExpression>(reading.tree)->value().toInt(), 5);
    QCOMPARE(stream::written(reading.tree, Recent), bytes);
}

void TestStreamRoundTrip::lastOfEqualKeysStands_data()
{
    QTest::addColumn<QByteArray>("head");
    QTest::addColumn<QVariant>("expected");
    QTest::newRow("map") << stream::hex("00000008 00 00000002") << QVariant(QVariantMap{{"a", 2}});
    QTest::newRow("hash") << stream::hex("0000001c 00 00000002") << QVariant(QVariantHash{{"a", 2}});
}

void TestStreamRoundTrip::lastOfEqualKeysStands()
{
    QFETCH(QByteArray, head);
    QFETCH(QVariant, expected);
    QByteArray const entries = stream::hex("00000002 0061 00000002 00 00000001 00000002 0061 00000002 00 00000002");
    Reading const reading = stream::read(stream::constantRecord(head + entries), Recent);
    QCOMPARE(held<ConstExpression>(reading.tree)->value(), expected);
}

void TestStreamRoundTrip::sharedNodesBecomeSeparate()
{
    ExpressionHandle const shared = value("a") == 1;
    Reading const reading = stream::read(stream::written(shared && shared, Recent), Recent);
    QVERIFY(reading.tree.equals(shared && shared));
    auto const& operands = held<BooleanOperator>(reading.tree)->operands();
    QVERIFY(operands.at(0).constData() != operands.at(1).constData());
}

void TestStreamRoundTrip::sequentialDevice()
{
    Pipe pipe(golden::comparison("00000005"));
    QVERIFY(pipe.open(QIODevice::ReadOnly));
    QDataStream in(&pipe);
    QVERIFY(Expression::readExpression(in).equals(value("age") >= 5));
    QCOMPARE(in.status(), QDataStream::Ok);
}

QTEST_APPLESS_MAIN(TestStreamRoundTrip)
#include "tst_StreamRoundTrip.moc"
