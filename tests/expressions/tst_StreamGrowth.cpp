// SPDX-License-Identifier: LGPL-2.1-or-later
#include "GoldenRecords.h"
#include "HostileReading.h"

#include <QRegularExpression>
#include <QTest>
#include <QtAlgorithms>
#include <QtEndian>

#include <malloc.h>

#include <vector>

using namespace qvgen;
using namespace nodes;
using stream::constantRecord;
using stream::hex;
using stream::Old;
using stream::Recent;
using stream::record;

namespace {

constexpr int inputBytes = 1000000;

// Instrumented builds keep what was freed, and are slow.
constexpr qint64 maxGrowth = qint64(hostile::isInstrumented ? 1024 : 32) << 20;
constexpr int maxSeconds = hostile::isOptimized ? 1 : 20;

QByteArray number(int value)
{
    qint32 const bigEndian = qToBigEndian(value);
    return QByteArray(reinterpret_cast<char const*>(&bigEndian), sizeof bigEndian);
}

QByteArray units(QString const& text)
{
    QByteArray bytes;
    for (QChar const unit : text)
        bytes += number(unit.unicode()).mid(2);
    return bytes;
}

QByteArray text(QString const& value)
{
    return number(value.size() * 2) + units(value);
}

QByteArray textConstant(QString const& value)
{
    return constantRecord(hex("0000000a 00") + text(value));
}

// As many elements as fill the input; element( i ) is the i-th.
template <class Element> QByteArray filled(QByteArray const& head, Element const& element, int size = inputBytes)
{
    QByteArray elements;
    int count = 0;
    for (; head.size() + 4 + elements.size() < size; ++count)
        elements += element(count);
    return head + number(count) + elements;
}

QByteArray filled(QByteArray const& head, QByteArray const& element, int size = inputBytes)
{
    return filled(
        head, [&](int) { return element; }, size);
}

QByteArray container(char const* head, QByteArray const& element)
{
    return filled(constantRecord(hex(head)), element);
}

QByteArray function(char const* name)
{
    return record("0000001d", "N5qvgen18FunctionExpressionE", "00000002") + text(QString::fromLatin1(name))
        + hex("00 00000001");
}

QByteArray const listHead = record("00000019", "N5qvgen14ExpressionListE", "00000001");
QByteArray const elementOfHead = record("00000013", "N5qvgen9ElementOfE", "00000001");

QByteArray cast(QVariant::Type target)
{
    return record("00000019", "N5qvgen14CastExpressionE", "00000001") + number(target);
}

// The highest chain of the two heads in turn, around a leaf that fills the rest.
template <class Leaf> QByteArray chain(QByteArray const& outer, QByteArray const& inner, Leaf const& leaf)
{
    QByteArray const heads = (outer + inner).repeated(499);
    return heads + leaf(inputBytes - heads.size());
}

QByteArray listOfInts(int size)
{
    return filled(constantRecord(hex("00000009 00")), hex("00000002 00 00000005"), size);
}

QByteArray listOfTexts(int size)
{
    return filled(constantRecord(hex("0000000b 00")), hex("00000002 0061"), size);
}

QByteArray mapOfInts(char const* head, int size)
{
    return filled(
        constantRecord(hex(head)), [](int i) { return text(QString::number(i)) + hex("00000002 00 00000005"); }, size);
}

QByteArray mixedText(int size)
{
    return textConstant(QStringLiteral("aB").repeated((size - 40) / 4));
}

// No UTF-8, which takes longest to become a text.
QByteArray longBytes()
{
    constexpr int size = inputBytes / 2;
    return number(size) + QByteArray(size, '\xe0');
}

// Half the input is the value that a membership looks for, the other half are its candidates.
QByteArray membership(QByteArray const& value, QByteArray const& candidate)
{
    int const count = (inputBytes - value.size()) / candidate.size();
    return elementOfHead + number(count + 1) + value + candidate.repeated(count);
}

QByteArray zonesInTurn()
{
    QByteArray const moment = hex("00000010 00 00000000002584e3 00a8888e 03");
    QList<QByteArray> const ids = QTimeZone::availableTimeZoneIds();
    return filled(constantRecord(hex("00000009 00")),
        [&](int i) { return moment + text(QString::fromLatin1(ids.at(i % ids.size()))); });
}

QByteArray zonesOfTheirOwn()
{
    QByteArray const moment = hex("00000010 00 00000000002584e3 00a8888e 03") + text(QStringLiteral("OffsetFromUtc"));
    QByteArray const rest = number(3600) + text(QString()) + text(QString()) + number(0) + text(QString());
    return filled(constantRecord(hex("00000009 00")), [&](int i) { return moment + text(QString::number(i)) + rest; });
}

// But 0: without a seed, hashes are computed in another way.
constexpr uint anySeed = 1;

// A key of 32 units; each bit of @p choices picks between two pairs of units that count the same in Qt's hash of texts
// without help by the processor.
QString multiplicativeKey(quint64 choices)
{
    QString key;
    for (int i = 0; i < 16; ++i)
        key += choices >> i & 1U ? QStringLiteral("BB") : QStringLiteral("Aa");
    return key;
}

// A key of 12 units, each with four bits of @p bits.
QString linearKey(quint64 bits)
{
    QString key;
    for (int i = 0; i < 12; ++i)
        key += QChar(static_cast<ushort>(0x60 | (bits >> 4 * i & 0xfU)));
    return key;
}

// Bit patterns that change no bit of the checksum that processors compute as hash; so does any sum of them.
std::vector<quint64> changesWithoutEffect()
{
    std::vector<quint64> result;
    quint64 changes[32] = {};
    uint effects[32] = {};
    for (int bit = 0; bit < 48; ++bit) {
        quint64 change = 1ULL << bit;
        uint effect = qHash(linearKey(change), anySeed) ^ qHash(linearKey(0), anySeed);
        while (effect != 0 && effects[31 - qCountLeadingZeroBits(effect)] != 0) {
            int const row = 31 - int(qCountLeadingZeroBits(effect));
            change ^= changes[row];
            effect ^= effects[row];
        }
        if (effect == 0) {
            result.push_back(change);
        } else {
            changes[31 - qCountLeadingZeroBits(effect)] = change;
            effects[31 - qCountLeadingZeroBits(effect)] = effect;
        }
    }
    return result;
}

QString collidingKey(int number)
{
    static std::vector<quint64> const changes = changesWithoutEffect();
    if (qHash(multiplicativeKey(0), anySeed) == qHash(multiplicativeKey(1), anySeed))
        return multiplicativeKey(quint64(number));
    quint64 bits = 0;
    for (std::size_t i = 0; i < changes.size(); ++i)
        bits ^= (number >> i & 1) ? changes[i] : 0;
    return linearKey(bits);
}

QByteArray collidingKeys(char const* head)
{
    return filled(constantRecord(hex(head)), [](int i) { return text(collidingKey(i)) + hex("00000000 00"); });
}

struct Cost {
    qint64 growth = 0;
    double seconds = 0;
    hostile::Outcome outcome;
};

qint64 heapBytes()
{
    struct mallinfo2 const info = mallinfo2();
    return static_cast<qint64>(info.uordblks + info.hblkhd);
}

qint64 memory(char const* field)
{
    QFile status(QStringLiteral("/proc/self/status"));
    status.open(QIODevice::ReadOnly);
    QRegularExpression const line(QString::fromLatin1("%1:\\s+(\\d+) kB").arg(QLatin1String(field)));
    return line.match(QString::fromLatin1(status.readAll())).captured(1).toLongLong() * 1024;
}

// Makes the highest memory so far that of this moment.
bool resetPeak()
{
    malloc_trim(0);
    QFile file(QStringLiteral("/proc/self/clear_refs"));
    return file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) && file.write("5") == 1;
}

double processorSeconds()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

Cost costHere(QByteArray const& bytes, int version)
{
    Cost cost;
    resetPeak();
    qint64 const before = memory("VmRSS");
    qint64 const heapBefore = heapBytes();
    double const start = processorSeconds();
    try {
        stream::Reading const reading = stream::read(bytes, version);
        cost.outcome.status = reading.status;
        cost.outcome.isEmptyHandle = stream::isEmptyHandle(reading.tree);
        QVariant const value = reading.tree.evaluate(hostile::properties());
        QString const sql = reading.tree.toString(Bound);
        QString const code = reading.tree.toString(Code);
        QList<QVariant> const placeholders = reading.tree.collectPlaceholders();
        cost.seconds = processorSeconds() - start;
        cost.growth = qMax(memory("VmHWM") - before, heapBytes() - heapBefore);
    } catch (std::exception const&) {
        cost.outcome.wasThrown = true;
    }
    return cost;
}

Cost costOf(QByteArray const& bytes, int version)
{
    Cost cost;
    hostile::runOnSmallStack([&] { cost = costHere(bytes, version); });
    return cost;
}

QByteArray describe(Cost const& cost)
{
    return QStringLiteral("%1 KiB, %2 s").arg(cost.growth / 1024).arg(cost.seconds).toUtf8();
}

} // namespace

class TestStreamGrowth : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void oneMegabyte_data();
    void oneMegabyte();
    void sumOfManyTexts();
    void countsAreNotBelieved_data();
    void countsAreNotBelieved();
};

void TestStreamGrowth::initTestCase()
{
    // One heap for all threads: of others not all is given back that was freed, and growth would go unseen.
    QVERIFY(mallopt(M_ARENA_MAX, 1) == 1 || hostile::isInstrumented);
    QVERIFY(resetPeak());
}

void TestStreamGrowth::oneMegabyte_data()
{
    QTest::addColumn<QByteArray>("bytes");
    auto const row = [](char const* name, QByteArray const& bytes) { QTest::newRow(name) << bytes; };
    // clang-format off
    row("nothing but zeros", QByteArray(inputBytes, '\0'));
    row("list of records without key", filled(listHead, hex("00000000")));
    row("list of empty lists", filled(listHead, record("00000019", "N5qvgen14ExpressionListE", "00000001 00000000")));
    row("list of constants", filled(listHead, golden::five()));
    row("list of values", filled(listHead, golden::age()));
    row("list of casts", filled(listHead, cast(QVariant::String) + golden::five()));
    row("a long key", number(inputBytes) + QByteArray(inputBytes, 'N'));
    row("a long name", record("0000001a", "N5qvgen15ValueExpressionE", "00000002") + text(QString(500000, 'a')) + hex("ffffffff"));
    row("a long text", textConstant(QString(490000, 'a')));
    row("a text of quotes", textConstant(QString(490000, '\'')));
    row("long bytes", filled(constantRecord(hex("0000000c 00")), QByteArray(1, 'a')));
    row("a name of a function", record("0000001d", "N5qvgen18FunctionExpressionE", "00000002") + text(QString(490000, 'f')) + hex("00 00000001 00000000"));
    row("invalid values", container("00000009 00", hex("00000000 00")));
    row("truth values", container("00000009 00", hex("00000001 00 01")));
    row("integers", listOfInts(inputBytes));
    row("null texts", container("00000009 00", hex("0000000a 00 ffffffff")));
    row("short texts", container("00000009 00", hex("0000000a 00 00000002 0061")));
    row("empty lists in a list", container("00000009 00", hex("00000009 00 00000000")));
    row("empty hashes in a list", container("00000009 00", hex("0000001c 00 00000000")));
    row("rectangles", container("00000009 00", hex("00000013 00 00000001 00000002 00000003 00000005")));
    row("regular expressions", container("00000009 00", hex("0000001b 00 00000002 0061 010000")));
    row("regular expressions without pattern", container("00000009 00", hex("0000001b 00 ffffffff 010000")));
    row("regular expressions alone", filled(listHead, [](int i) { return constantRecord(hex("0000001b 00") + text(QStringLiteral("(a{0,9}){0,9}") + QString::number(i)) + hex("010000")); }));
    row("large regular expressions", filled(listHead, [](int i) { return constantRecord(hex("0000001b 00") + text(QStringLiteral("(a{0,30}){0,30}") + QString::number(i)) + hex("010000")); }));
    row("large regular expressions in a list", filled(constantRecord(hex("00000009 00")), [](int i) { return hex("0000001b 00") + text(QStringLiteral("(a{0,30}){0,30}") + QString::number(i)) + hex("010000"); }));
    row("dates", container("00000009 00", hex("0000000e 00 00000000002584e3")));
    row("moments in local time", container("00000009 00", hex("00000010 00 00000000002584e3 00a8888e 00")));
    row("moments with offset", container("00000009 00", hex("00000010 00 00000000002584e3 00a8888e 02 00000e10")));
    row("moments in every zone", zonesInTurn());
    row("moments in zones of their own", zonesOfTheirOwn());
    row("list of null texts", container("0000000b 00", hex("ffffffff")));
    row("list of texts", listOfTexts(inputBytes));
    row("map", mapOfInts("00000008 00", inputBytes));
    row("hash", mapOfInts("0000001c 00", inputBytes));
    row("map of keys that collide", cast(QVariant::Hash) + collidingKeys("00000008 00"));
    row("hash of keys that collide", collidingKeys("0000001c 00"));
    row("casts between texts and bytes", chain(cast(QVariant::String), cast(QVariant::ByteArray), mixedText));
    row("casts between lists", chain(cast(QVariant::List), cast(QVariant::StringList), listOfInts));
    row("casts between map and hash", chain(cast(QVariant::Map), cast(QVariant::Hash), [](int size) { return mapOfInts("00000008 00", size); }));
    row("functions of a long text", chain(function("upper") + number(1), function("lower") + number(1), mixedText));
    row("minus of a long text", chain(record("00000018", "N5qvgen13UnaryOperatorE", "00000001 00000000 00000001 00000001"), function("trim") + number(1), mixedText));
    row("long bytes among numbers", membership(constantRecord(hex("0000000c 00") + number(500000) + QByteArray(500000, '1')), golden::five()));
    row("long bytes among bytes", membership(constantRecord(hex("0000000c 00") + longBytes()), constantRecord(hex("0000000c 00 00000001 31"))));
    row("long bytes in a list among lists", membership(constantRecord(hex("00000009 00 00000001 0000000c 00") + longBytes()), constantRecord(hex("00000009 00 00000001 0000000c 00 00000001 31"))));
    row("long text among dates", membership(textConstant(QString(250000, ':')), constantRecord(hex("0000000e 00 00000000002584e3"))));
    row("texts among lists", membership(listOfTexts(500000), constantRecord(hex("00000009 00 00000001 0000000a 00 00000002 0061"))));
    row("list among lists of texts", membership(listOfInts(500000), constantRecord(hex("0000000b 00 00000001 00000002 0061"))));
    row("texts that differ", filled(function("count").chopped(5) + hex("01 00000001"), [](int i) { return textConstant(QString::number(i)); }));
    row("moments that differ", filled(function("count").chopped(5) + hex("01 00000001"), [](int i) { return constantRecord(hex("00000010 00 00000000002584e3") + number(i) + hex("00")); }));
    row("lists that differ", filled(function("count").chopped(5) + hex("01 00000001"), [](int i) { return constantRecord(hex("00000009 00 00000001 00000009 00 00000065") + hex("00000002 00 00000005").repeated(100) + hex("00000002 00") + number(i)); }));
    row("sum of texts", filled(record("0000001a", "N5qvgen15NumericOperatorE", "00000001 00000000 00000001"), textConstant(QStringLiteral("a"))));
    row("concatenated values", filled(function("group_concat"), golden::age()));
    row("different values", filled(record("0000001d", "N5qvgen18FunctionExpressionE", "00000002") + text(QStringLiteral("count")) + hex("01 00000001"), [](int i) { return constantRecord(hex("00000002 00") + number(i)); }));
    row("greatest value", filled(function("min"), golden::five()));
    row("many patterns", filled(listHead, [](int i) { return function("like") + number(2) + textConstant(QStringLiteral("aaaa")) + textConstant(QString::number(i) + QStringLiteral("%a%a%b")); }));
    row("many regular expressions", filled(listHead, [](int i) { return function("regexp") + number(2) + textConstant(QString(40, 'a')) + textConstant(QString::number(i) + QStringLiteral("|(a{0,9}){0,9}b")); }));
    row("regular expressions of functions that print their value", filled(record("0000001a", "N5qvgen15BooleanOperatorE", "00000001 00000000 00000001"), [](int i) { return i == 0 ? constantRecord(hex("00000001 00 00")) : function("currentDate") + number(1) + function("regexp") + number(2) + textConstant(QString(40, 'a')) + textConstant(QString::number(i) + QStringLiteral("|(a{0,9}){0,9}b")); }));
    // clang-format on
}

void TestStreamGrowth::oneMegabyte()
{
    QFETCH(QByteArray, bytes);
    Cost const cost = costOf(bytes, Recent);
    QVERIFY(!cost.outcome.wasThrown);
    QVERIFY2(cost.growth < maxGrowth, describe(cost));
    QVERIFY2(cost.seconds < maxSeconds, describe(cost));
}

// Each sum is a copy of the long text: fifty thousand copies would take ten seconds.
void TestStreamGrowth::sumOfManyTexts()
{
    QByteArray const head = record("0000001a", "N5qvgen15NumericOperatorE", "00000001 00000000 00000001");
    QByteArray const longText = textConstant(QString(1000000, 'a'));
    int const count = 50000;
    Cost const cost
        = costOf(head + number(count + 1) + longText + textConstant(QStringLiteral("a")).repeated(count), Recent);
    QCOMPARE(cost.outcome.status, QDataStream::Ok);
    QVERIFY2(cost.seconds < 3 * maxSeconds, describe(cost));
}

void TestStreamGrowth::countsAreNotBelieved_data()
{
    QTest::addColumn<QByteArray>("head");
    QTest::newRow("operands") << listHead;
    QTest::newRow("candidates") << elementOfHead;
    QTest::newRow("list") << constantRecord(hex("00000009 00"));
    QTest::newRow("map") << constantRecord(hex("00000008 00"));
    QTest::newRow("hash") << constantRecord(hex("0000001c 00"));
    QTest::newRow("texts") << constantRecord(hex("0000000b 00"));
    QTest::newRow("text") << constantRecord(hex("0000000a 00"));
    QTest::newRow("bytes") << constantRecord(hex("0000000c 00"));
    QTest::newRow("key") << QByteArray();
}

void TestStreamGrowth::countsAreNotBelieved()
{
    QFETCH(QByteArray, head);
    for (char const* const count : {"7fffffff", "7ffffffe", "80000000", "fffffffe", "ffffffff"}) {
        for (int const version : {Old, Recent}) {
            Cost const cost = costOf(head + hex(count) + QByteArray(100, '\0'), version);
            QVERIFY(!cost.outcome.wasThrown);
            QVERIFY2(cost.growth < maxGrowth / 4, describe(cost));
        }
    }
}

QTEST_APPLESS_MAIN(TestStreamGrowth)
#include "tst_StreamGrowth.moc"
