// SPDX-License-Identifier: LGPL-2.1-or-later
#include "GoldenRecords.h"

#include <QTest>

using namespace qvgen;
using namespace nodes;
using golden::Record;
using stream::hex;
using stream::Old;
using stream::Reading;
using stream::Recent;
using stream::record;

namespace {

// A class as a client may add it to the registry.
class Marker : public ExpressionList {
public:
    explicit Marker(ExpressionHandle element) { append(element); }
    Marker* clone() const override { return new Marker(*this); }
};

QString const keyOfMarker = QStringLiteral("N12_GLOBAL__N_16MarkerE");

SwitchCase theSwitch()
{
    return SwitchCase(value("age")).switchCase(placeholder(5), constant(true));
}

QByteArray switchRecord()
{
    QByteArray const emptyList = record("00000019", "N5qvgen14ExpressionListE", "00000001 00000000");
    return record("00000015", "N5qvgen10SwitchCaseE", "00000001 00000004") + golden::age() + emptyList + golden::five()
        + golden::yes();
}

void addRecordsOfBothVersions()
{
    QTest::addColumn<ExpressionHandle>("tree");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("version");
    for (Record const& each : golden::records()) {
        if (!each.old.isEmpty())
            QTest::addRow("%s, Qt_4_8", each.name) << each.tree << each.old << Old;
        QTest::addRow("%s, Qt_5_15", each.name) << each.tree << each.recent << Recent;
    }
}

// The first version number stands behind the key, the second one of operators with a number of their own 8 bytes on.
QByteArray withVersions(QByteArray bytes, char const* version, bool hasSecond)
{
    int const first = 4 + bytes.at(3);
    bytes.replace(first, 4, hex(version));
    return hasSecond ? bytes.replace(first + 8, 4, hex(version)) : bytes;
}

} // namespace

class TestStreamFormat : public QObject {
    Q_OBJECT

private slots:
    void registryHoldsTheseClasses();
    void prototypes_data();
    void prototypes();
    void secondRegistrationIsRefused_data();
    void secondRegistrationIsRefused();
    void clientClass();
    void readingLeavesThePrototypeAsItIs();
    void writes_data();
    void writes();
    void reads_data();
    void reads();
    void operatorIsWriteExpression();
    void switchIsWritten();
    void keyEndsAtItsFirstZero_data();
    void keyEndsAtItsFirstZero();
    void unknownKey_data();
    void unknownKey();
    void unknownKeyInside();
    void versionsAreIgnored_data();
    void versionsAreIgnored();
    void readReplacesEverything();
    void byteOrderIsTheCallers();
    void recordsFollowOneAnother();
    void countWithoutOperands_data();
    void countWithoutOperands();
    void surplusOperandsAreKept();
    void unknownNumbersAreKept_data();
    void unknownNumbersAreKept();
};

void TestStreamFormat::registryHoldsTheseClasses()
{
    QStringList keys = Expression::expressionClassMap().keys();
    keys.removeAll(keyOfMarker);
    QStringList const expected{"N5qvgen10ComparatorE", "N5qvgen11NotOperatorE", "N5qvgen13UnaryOperatorE",
        "N5qvgen14CastExpressionE", "N5qvgen14ExpressionListE", "N5qvgen15BooleanOperatorE",
        "N5qvgen15ConstExpressionE", "N5qvgen15NumericOperatorE", "N5qvgen15ValueExpressionE",
        "N5qvgen18FunctionExpressionE", "N5qvgen9ElementOfE"};
    QCOMPARE(keys, expected);
}

void TestStreamFormat::prototypes_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<ExpressionHandle>("expected");
    ExpressionHandle const none = constant(QVariant());
    ExpressionHandle const zero = constant(0);
    auto const row = [](char const* key, ExpressionHandle const& expected) {
        QTest::newRow(key) << QString::fromLatin1(key) << expected;
    };
    row("N5qvgen15ConstExpressionE", placeholder(QVariant()));
    row("N5qvgen15ValueExpressionE", value(""));
    row("N5qvgen14CastExpressionE", CastExpression(QVariant::Int, none));
    row("N5qvgen14ExpressionListE", ExpressionList());
    row("N5qvgen10ComparatorE", Comparator(none, Comparator::Equal, none));
    row("N5qvgen9ElementOfE", ElementOf(none));
    row("N5qvgen15BooleanOperatorE", none && none);
    row("N5qvgen11NotOperatorE", !none);
    row("N5qvgen15NumericOperatorE", NumericOperator(zero, NumericOperator::Add, zero));
    row("N5qvgen13UnaryOperatorE", -zero);
    row("N5qvgen18FunctionExpressionE", FunctionExpression(QString(), ExpressionList(), false));
}

void TestStreamFormat::prototypes()
{
    QFETCH(QString, key);
    QFETCH(ExpressionHandle, expected);
    ExpressionHandle const prototype = Expression::expressionClassMap().value(key);
    QVERIFY(prototype.equals(expected));
    QCOMPARE(stream::flagsOf(prototype), stream::flagsOf(expected));
}

void TestStreamFormat::secondRegistrationIsRefused_data()
{
    QTest::addColumn<ExpressionHandle>("node");
    QTest::newRow("constant") << ExpressionHandle(placeholder(7));
    QTest::newRow("list") << ExpressionHandle(value("a") << value("b"));
    QTest::newRow("comparison") << ExpressionHandle(value("a") < 1);
    QTest::newRow("function") << abs(value("a"));
}

void TestStreamFormat::secondRegistrationIsRefused()
{
    QFETCH(ExpressionHandle, node);
    QMap<QString, ExpressionHandle> const before = Expression::expressionClassMap();
    QVERIFY(!Expression::registerExpressionClass(node));
    QMap<QString, ExpressionHandle> const after = Expression::expressionClassMap();
    QCOMPARE(after.keys(), before.keys());
    for (QString const& key : after.keys())
        QCOMPARE(after[key].constData(), before[key].constData());
}

void TestStreamFormat::clientClass()
{
    QVERIFY(Expression::registerExpressionClass(Marker(constant(1))));
    QVERIFY(!Expression::registerExpressionClass(Marker(constant(2))));
    QVERIFY(Expression::expressionClassMap().value(keyOfMarker).equals(Marker(constant(1))));
    Reading const reading = stream::read(stream::written(Marker(constant(3)), Recent), Recent);
    QVERIFY(held<Marker>(reading.tree));
    QVERIFY(reading.tree.equals(Marker(constant(3))));
}

void TestStreamFormat::readingLeavesThePrototypeAsItIs()
{
    Reading const reading = stream::read(golden::five(), Recent);
    ExpressionHandle const prototype = Expression::expressionClassMap().value("N5qvgen15ConstExpressionE");
    QVERIFY(reading.tree.constData() != prototype.constData());
    QVERIFY(!held<ConstExpression>(prototype)->value().isValid());
}

void TestStreamFormat::writes_data()
{
    addRecordsOfBothVersions();
}

void TestStreamFormat::writes()
{
    QFETCH(ExpressionHandle, tree);
    QFETCH(QByteArray, bytes);
    QFETCH(int, version);
    QCOMPARE(stream::written(tree, version).toHex(' '), bytes.toHex(' '));
}

void TestStreamFormat::reads_data()
{
    addRecordsOfBothVersions();
}

void TestStreamFormat::reads()
{
    QFETCH(ExpressionHandle, tree);
    QFETCH(QByteArray, bytes);
    QFETCH(int, version);
    Reading const reading = stream::read(bytes + "more", version);
    QCOMPARE(reading.status, QDataStream::Ok);
    QCOMPARE(reading.length, qint64(bytes.size()));
    QVERIFY(reading.tree.equals(tree));
    QCOMPARE(stream::flagsOf(reading.tree), stream::flagsOf(tree));
    QCOMPARE(stream::written(reading.tree, version).toHex(' '), bytes.toHex(' '));
}

void TestStreamFormat::operatorIsWriteExpression()
{
    ExpressionHandle const tree = value("age") >= 5;
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    Expression::writeExpression(out, tree);
    QCOMPARE(bytes, golden::comparison("00000005"));
    QCOMPARE(stream::written(tree, Recent), bytes);
}

void TestStreamFormat::switchIsWritten()
{
    QCOMPARE(stream::written(theSwitch(), Old).toHex(' '), switchRecord().toHex(' '));
    QCOMPARE(stream::written(theSwitch(), Recent).toHex(' '), switchRecord().toHex(' '));
}

void TestStreamFormat::keyEndsAtItsFirstZero_data()
{
    QTest::addColumn<QByteArray>("key");
    QTest::newRow("as written") << hex("0000001a") + QByteArray("N5qvgen15ConstExpressionE\0", 26);
    QTest::newRow("no zero") << hex("00000019") + QByteArray("N5qvgen15ConstExpressionE");
    QTest::newRow("bytes behind the zero") << hex("0000001c") + QByteArray("N5qvgen15ConstExpressionE\0EE", 28);
}

void TestStreamFormat::keyEndsAtItsFirstZero()
{
    QFETCH(QByteArray, key);
    Reading const reading = stream::read(key + hex("00000001 01 00000002 00 00000005"), Recent);
    QVERIFY(reading.tree.equals(placeholder(5)));
    QCOMPARE(reading.status, QDataStream::Ok);
}

void TestStreamFormat::unknownKey_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("length");
    QTest::newRow("switch: written, never readable") << switchRecord() << 25;
    QTest::newRow("no class of this name") << record("00000005", "Nope") + golden::five() << 9;
    QTest::newRow("known key cut short") << record("00000014", "N5qvgen10Comparator", "00000001") << 24;
    QTest::newRow("known key in another case") << record("00000015", "n5qvgen10ComparatorE", "00000001") << 25;
    QTest::newRow("known key and more") << record("00000016", "N5qvgen10ComparatorEE", "00000001") << 26;
    QTest::newRow("no key") << hex("00000000") + golden::five() << 4;
    QTest::newRow("nothing but the zero byte") << hex("00000001 00") + golden::five() << 5;
    QTest::newRow("bytes that are not ASCII") << hex("00000003 c3a400") + golden::five() << 7;
}

void TestStreamFormat::unknownKey()
{
    QFETCH(QByteArray, bytes);
    QFETCH(int, length);
    for (int const version : {Old, Recent}) {
        Reading const reading = stream::read(bytes, version);
        QVERIFY(stream::isEmptyHandle(reading.tree));
        QCOMPARE(reading.status, QDataStream::Ok);
        QCOMPARE(reading.length, qint64(length));
    }
}

// The reader goes on at the wrong place: there the version 1 of the switch is the length of a key, whose only byte is
// the first one of its count.
void TestStreamFormat::unknownKeyInside()
{
    QByteArray const list = record("00000019", "N5qvgen14ExpressionListE", "00000001 00000002");
    Reading const reading = stream::read(list + switchRecord() + golden::five(), Recent);
    QCOMPARE(reading.status, QDataStream::Ok);
    QVERIFY(reading.tree.equals(ExpressionHandle() << ExpressionHandle()));
    QCOMPARE(reading.length, qint64(list.size() + 25 + 5));
}

void TestStreamFormat::versionsAreIgnored_data()
{
    QTest::addColumn<ExpressionHandle>("tree");
    QTest::addColumn<bool>("hasSecond");
    QTest::newRow("constant") << ExpressionHandle(placeholder(5)) << false;
    QTest::newRow("value") << ExpressionHandle(value("age")) << false;
    QTest::newRow("cast") << ExpressionHandle(toInt(value("age"))) << false;
    QTest::newRow("list") << ExpressionHandle(value("age") << value("b")) << false;
    QTest::newRow("element of") << ExpressionHandle(ElementOf(value("age"))) << false;
    QTest::newRow("not") << ExpressionHandle(!value("age")) << false;
    QTest::newRow("comparison") << ExpressionHandle(value("age") >= 5) << true;
    QTest::newRow("junction") << ExpressionHandle(value("age") || value("b")) << true;
    QTest::newRow("arithmetic") << ExpressionHandle(value("age") + 5) << true;
    QTest::newRow("minus") << ExpressionHandle(-value("age")) << true;
    QTest::newRow("function") << abs(value("age")) << false;
}

void TestStreamFormat::versionsAreIgnored()
{
    QFETCH(ExpressionHandle, tree);
    QFETCH(bool, hasSecond);
    for (char const* const version : {"00000000", "00000007", "7fffffff", "ffffffff"}) {
        QByteArray const bytes = withVersions(stream::written(tree, Old), version, hasSecond);
        Reading const reading = stream::read(bytes, Old);
        QCOMPARE(reading.length, qint64(bytes.size()));
        QVERIFY(reading.tree.equals(tree));
    }
}

void TestStreamFormat::readReplacesEverything()
{
    Comparator node(value("a"), Comparator::Less, placeholder(1));
    QByteArray const fields = hex("00000001 00000005 00000001 00000002") + golden::age() + golden::five();
    QDataStream in(fields);
    node.read(in);
    QVERIFY(node.equals(ExpressionHandle(value("age") >= 5).constData()));
    QCOMPARE(node.depth(), 2);
}

void TestStreamFormat::byteOrderIsTheCallers()
{
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    out.setByteOrder(QDataStream::LittleEndian);
    out << ExpressionHandle();
    QCOMPARE(bytes.toHex(), record("19000000", "N5qvgen14ExpressionListE", "01000000 00000000").toHex());
}

void TestStreamFormat::recordsFollowOneAnother()
{
    QDataStream in(golden::five() + golden::age() + golden::comparison("00000005"));
    QVERIFY(Expression::readExpression(in).equals(placeholder(5)));
    QVERIFY(Expression::readExpression(in).equals(value("age")));
    QVERIFY(Expression::readExpression(in).equals(value("age") >= 5));
    QVERIFY(in.atEnd());
}

void TestStreamFormat::countWithoutOperands_data()
{
    QTest::addColumn<QByteArray>("count");
    QTest::newRow("zero") << hex("00000000");
    QTest::newRow("minus one") << hex("ffffffff");
    QTest::newRow("lowest") << hex("80000000");
}

void TestStreamFormat::countWithoutOperands()
{
    QFETCH(QByteArray, count);
    QByteArray const bytes = record("00000013", "N5qvgen9ElementOfE", "00000001") + count;
    Reading const reading = stream::read(bytes + golden::five(), Recent);
    QCOMPARE(reading.status, QDataStream::Ok);
    QCOMPARE(reading.length, qint64(bytes.size()));
    QVERIFY(reading.tree.equals(ElementOf()));
}

void TestStreamFormat::surplusOperandsAreKept()
{
    QByteArray const bytes = record("00000015", "N5qvgen10ComparatorE", "00000001 00000005 00000001 00000003")
        + golden::age() + golden::five() + golden::five();
    Reading const reading = stream::read(bytes, Recent);
    QCOMPARE(reading.status, QDataStream::Ok);
    QCOMPARE(reading.tree.toString(Bound), QStringLiteral("age >= ?"));
    QCOMPARE(reading.tree.collectPlaceholders(), QList<QVariant>({5, 5}));
    QVERIFY(!reading.tree.equals(value("age") >= 5));
    QCOMPARE(stream::written(reading.tree, Recent), bytes);
}

void TestStreamFormat::unknownNumbersAreKept_data()
{
    QTest::addColumn<QByteArray>("bytes");
    char const* const rest = "00000001 00000000";
    for (char const* const number : {"00000008", "7fffffff", "80000000", "ffffffff"}) {
        QByteArray const fields = hex("00000001") + hex(number) + hex(rest);
        QTest::addRow("comparison %s", number) << record("00000015", "N5qvgen10ComparatorE") + fields;
        QTest::addRow("junction %s", number) << record("0000001a", "N5qvgen15BooleanOperatorE") + fields;
        QTest::addRow("arithmetic %s", number) << record("0000001a", "N5qvgen15NumericOperatorE") + fields;
        QTest::addRow("unary %s", number) << record("00000018", "N5qvgen13UnaryOperatorE") + fields;
        QTest::addRow("cast %s", number) << record("00000019", "N5qvgen14CastExpressionE", "00000001") + hex(number)
                + golden::five();
    }
}

void TestStreamFormat::unknownNumbersAreKept()
{
    QFETCH(QByteArray, bytes);
    Reading const reading = stream::read(bytes, Recent);
    QCOMPARE(reading.status, QDataStream::Ok);
    QCOMPARE(stream::written(reading.tree, Recent), bytes);
    QVERIFY(!reading.tree.evaluate({}).isValid());
}

QTEST_APPLESS_MAIN(TestStreamFormat)
#include "tst_StreamFormat.moc"
