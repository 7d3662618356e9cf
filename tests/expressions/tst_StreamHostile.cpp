// SPDX-License-Identifier: LGPL-2.1-or-later
#include "GoldenRecords.h"
#include "HostileReading.h"
#include "RandomTree.h"

#include "support/Random.h"

#include <QSet>
#include <QTest>
#include <QtEndian>

#include <iterator>

Q_DECLARE_METATYPE(QDataStream::Status)

using namespace qvgen;
using namespace nodes;
using hostile::isAccepted;
using hostile::isCutShort;
using hostile::isRefused;
using hostile::outcome;
using stream::constantRecord;
using stream::hex;
using stream::Old;
using stream::Recent;
using stream::record;

namespace {

QByteArray number(quint32 value)
{
    quint32 const bigEndian = qToBigEndian(value);
    return QByteArray(reinterpret_cast<char const*>(&bigEndian), sizeof bigEndian);
}

QByteArray text(QString const& units)
{
    QByteArray bytes = number(static_cast<quint32>(units.size()) * 2);
    for (QChar const unit : units)
        bytes += number(unit.unicode()).mid(2);
    return bytes;
}

void addVersions()
{
    QTest::addColumn<int>("version");
    QTest::newRow("Qt_4_8") << Old;
    QTest::newRow("Qt_5_15") << Recent;
}

// A node up to the place where the record of its only operand begins.
struct Parent {
    char const* name;
    QByteArray head;
};

std::vector<Parent> parents()
{
    return {
        {"casts", record("00000019", "N5qvgen14CastExpressionE", "00000001 0000000a")},
        {"lists", record("00000019", "N5qvgen14ExpressionListE", "00000001 00000001")},
        {"comparisons", record("00000015", "N5qvgen10ComparatorE", "00000001 00000002 00000001 00000001")},
        {"memberships", record("00000013", "N5qvgen9ElementOfE", "00000001 00000001")},
        {"junctions", record("0000001a", "N5qvgen15BooleanOperatorE", "00000001 00000000 00000001 00000001")},
        {"negations", record("00000016", "N5qvgen11NotOperatorE", "00000001 00000001")},
        {"arithmetic", record("0000001a", "N5qvgen15NumericOperatorE", "00000001 00000000 00000001 00000001")},
        {"minus", record("00000018", "N5qvgen13UnaryOperatorE", "00000001 00000000 00000001 00000001")},
        {"functions",
            record(
                "0000001d", "N5qvgen18FunctionExpressionE", "00000002 00000006 0061 0062 0073 00 00000001 00000001")},
    };
}

struct Container {
    char const* name;
    QByteArray head; ///< up to the only element
    QByteArray empty;
};

std::vector<Container> containers()
{
    return {
        {"lists", hex("00000009 00 00000001"), hex("00000009 00 00000000")},
        {"maps", hex("00000008 00 00000001 00000002 0061"), hex("00000008 00 00000000")},
        {"hashes", hex("0000001c 00 00000001 00000002 0061"), hex("0000001c 00 00000000")},
    };
}

QByteArray damaged(QByteArray bytes, QByteArray const& other, QRandomGenerator& random)
{
    static quint32 const numbers[] = {0, 1, 2, 9, 100, 101, 1000, 0x7fffffff, 0x80000000, 0xfffffffe, 0xffffffff};
    int const at = random.bounded(qMax(1, bytes.size()));
    int const length = random.bounded(1, 40);
    switch (random.bounded(7)) {
    case 0:
        return bytes.isEmpty() ? bytes : bytes.replace(at, 1, QByteArray(1, char(bytes.at(at) ^ (1 << length % 8))));
    case 1:
        return bytes.replace(at, 1, QByteArray(1, static_cast<char>(random.bounded(256))));
    case 2:
        return bytes.replace(at, 4, number(numbers[random.bounded(int(std::size(numbers)))]));
    case 3:
        return bytes.remove(at, length);
    case 4:
        return bytes.insert(at, bytes.mid(random.bounded(at + 1), length));
    case 5:
        return bytes.left(at);
    default:
        return bytes.replace(at, length, other.mid(random.bounded(other.size()), length));
    }
}

// Empty where all went well.
QString readDamagedRecords(int version, int rounds)
{
    QRandomGenerator random = support::generator();
    RandomTree trees(random);
    std::vector<QByteArray> records;
    std::generate_n(std::back_inserter(records), 500, [&] { return stream::written(trees.tree(4), version); });
    auto const any = [&]() -> QByteArray const& { return records[random.bounded(quint32(records.size()))]; };
    for (int round = 0; round < rounds; ++round) {
        QByteArray bytes = any();
        for (int damages = random.bounded(1, 4); damages > 0; --damages)
            bytes = damaged(bytes, any(), random);
        stream::Reading const reading = stream::read(bytes, version);
        if (reading.status == QDataStream::ReadCorruptData && !stream::isEmptyHandle(reading.tree))
            return support::seedNote(round);
        reading.tree.evaluate(hostile::properties());
        reading.tree.toString(hostile::style(round));
        reading.tree.collectPlaceholders();
        if (stream::written(reading.tree, version) == "not written")
            return support::seedNote(round);
    }
    return {};
}

} // namespace

class TestStreamHostile : public QObject {
    Q_OBJECT

private slots:
    void cutAtEveryByte_data();
    void cutAtEveryByte();
    void randomDamage_data();
    void randomDamage();
    void counts_data();
    void counts();
    void nestedTooDeeply_data();
    void nestedTooDeeply();
    void nestedAsDeeplyAsAllowed_data();
    void nestedAsDeeplyAsAllowed();
    void depthIsCountedAnewForEachTree();
    void everyTypeOfVariant_data();
    void everyTypeOfVariant();
    void typesThatAreNone_data();
    void typesThatAreNone();
    void containersInContainers_data();
    void containersInContainers();
    void everyKindOfClock_data();
    void everyKindOfClock();
    void offsets_data();
    void offsets();
    void zones_data();
    void zones();
    void extremeDates_data();
    void extremeDates();
    void regularExpressions_data();
    void regularExpressions();
    void syntaxesOfRegularExpressions();
    void castsToEveryType_data();
    void castsToEveryType();
    void functionsWithoutOperands();
    void failedStreamStaysFailed();
};

void TestStreamHostile::cutAtEveryByte_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("version");
    for (golden::Record const& each : golden::records()) {
        if (!each.old.isEmpty())
            QTest::addRow("%s, Qt_4_8", each.name) << each.old << Old;
        QTest::addRow("%s, Qt_5_15", each.name) << each.recent << Recent;
    }
}

void TestStreamHostile::cutAtEveryByte()
{
    QFETCH(QByteArray, bytes);
    QFETCH(int, version);
    for (int length = 0; length < bytes.size(); ++length)
        QVERIFY2(isCutShort(hostile::outcomeHere(bytes.left(length), version)), QByteArray::number(length));
    QVERIFY(isAccepted(hostile::outcomeHere(bytes, version)));
}

void TestStreamHostile::randomDamage_data()
{
    addVersions();
}

void TestStreamHostile::randomDamage()
{
    QFETCH(int, version);
    QString failure = QStringLiteral("thrown");
    hostile::runOnSmallStack([&] {
        try {
            failure = readDamagedRecords(version, support::rounds(500000));
        } catch (std::exception const& exception) {
            failure = QString::fromUtf8(exception.what());
        }
    });
    QCOMPARE(failure, QString());
}

void TestStreamHostile::counts_data()
{
    QTest::addColumn<QByteArray>("head");
    QTest::addColumn<QDataStream::Status>("ofMost"); // for 2^31 - 1
    QTest::addColumn<QDataStream::Status>("ofAll"); // for 2^32 - 1
    auto const cut = QDataStream::ReadPastEnd;
    QTest::newRow("length of a key") << QByteArray() << cut << cut;
    // A negative count is no operand.
    for (Parent const& each : parents()) {
        if (qstrcmp(each.name, "casts") != 0)
            QTest::addRow("operands of %s", each.name) << each.head.chopped(4) << cut << QDataStream::Ok;
    }
    for (Container const& each : containers())
        QTest::addRow("elements of %s", each.name) << constantRecord(each.empty.chopped(4)) << cut << cut;
    QTest::newRow("texts") << constantRecord(hex("0000000b 00")) << cut << cut;
    // Texts have an even number of bytes, 2^32 - 1 stands for null.
    QTest::newRow("length of a text") << constantRecord(hex("0000000a 00")) << QDataStream::ReadCorruptData
                                      << QDataStream::Ok;
    QTest::newRow("length of bytes") << constantRecord(hex("0000000c 00")) << cut << QDataStream::Ok;
    QTest::newRow("length of a name") << record("0000001a", "N5qvgen15ValueExpressionE", "00000002")
                                      << QDataStream::ReadCorruptData << cut;
}

void TestStreamHostile::counts()
{
    QFETCH(QByteArray, head);
    QFETCH(QDataStream::Status, ofMost);
    QFETCH(QDataStream::Status, ofAll);
    for (int const version : {Old, Recent}) {
        hostile::Outcome const most = outcome(head + hex("7fffffff"), version);
        hostile::Outcome const all = outcome(head + hex("ffffffff"), version);
        QCOMPARE(most.status, ofMost);
        QCOMPARE(all.status, ofAll);
        QVERIFY(!most.wasThrown && !all.wasThrown);
    }
}

void TestStreamHostile::nestedTooDeeply_data()
{
    QTest::addColumn<QByteArray>("head");
    for (Parent const& each : parents())
        QTest::newRow(each.name) << each.head;
}

void TestStreamHostile::nestedTooDeeply()
{
    QFETCH(QByteArray, head);
    QVERIFY(isRefused(outcome(head.repeated(1000) + golden::five(), Recent)));
    QVERIFY(isRefused(outcome(head.repeated(1000000) + golden::five(), Old)));
    QVERIFY(isRefused(outcome(head.repeated(1000000), Recent)));
}

void TestStreamHostile::nestedAsDeeplyAsAllowed_data()
{
    nestedTooDeeply_data();
}

void TestStreamHostile::nestedAsDeeplyAsAllowed()
{
    QFETCH(QByteArray, head);
    hostile::Outcome const result = outcome(head.repeated(999) + golden::five(), Recent);
    QVERIFY(isAccepted(result));
    QCOMPARE(result.depth, 1000);
}

void TestStreamHostile::depthIsCountedAnewForEachTree()
{
    QByteArray const list = record("00000019", "N5qvgen14ExpressionListE", "00000001 00000002");
    QByteArray const deep = parents().front().head.repeated(998) + golden::five();
    QVERIFY(isAccepted(outcome(list + deep + deep, Recent)));
    QDataStream in(parents().front().head.repeated(1000) + golden::five() + golden::five());
    Expression::readExpression(in);
    in.resetStatus();
    in.device()->seek(in.device()->size() - golden::five().size());
    QVERIFY(Expression::readExpression(in).equals(placeholder(5)));
}

void TestStreamHostile::everyTypeOfVariant_data()
{
    QTest::addColumn<int>("version");
    QTest::addColumn<QSet<quint32>>("accepted");
    QSet<quint32> const plain{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 14, 15, 16, 19, 27, 28, 38};
    QTest::newRow("Qt_4_8, where a float is 135") << Old << (plain | QSet<quint32>{135});
    QTest::newRow("Qt_5_15") << Recent << plain;
}

void TestStreamHostile::everyTypeOfVariant()
{
    QFETCH(int, version);
    QFETCH(QSet<quint32>, accepted);
    QByteArray const zeros(100, '\0');
    for (quint32 type = 0; type <= 200; ++type) {
        QByteArray const variant = number(type) + zeros;
        hostile::Outcome const alone = outcome(constantRecord(variant), version);
        hostile::Outcome const inList = outcome(constantRecord(hex("00000009 00 00000001") + variant), version);
        bool const isExpected = accepted.contains(type);
        QVERIFY2(isExpected ? isAccepted(alone) : isRefused(alone), QByteArray::number(type));
        QVERIFY2(isExpected ? isAccepted(inList) : isRefused(inList), QByteArray::number(type));
    }
}

void TestStreamHostile::typesThatAreNone_data()
{
    QTest::addColumn<quint32>("type");
    QTest::newRow("user type of Qt 4") << 127U;
    QTest::newRow("last before the user types") << 1023U;
    QTest::newRow("first user type") << 1024U;
    QTest::newRow("some user type") << 1030U;
    QTest::newRow("highest signed") << 0x7fffffffU;
    QTest::newRow("lowest signed") << 0x80000000U;
    QTest::newRow("highest") << 0xffffffffU;
}

void TestStreamHostile::typesThatAreNone()
{
    QFETCH(quint32, type);
    // A user type is stored with its name.
    QByteArray const variant = number(type) + hex("00") + hex("0000000d") + QByteArray("QVariantList\0\0\0\0", 16);
    for (int const version : {Old, Recent}) {
        QVERIFY(isRefused(outcome(constantRecord(variant), version)));
        QVERIFY(isRefused(outcome(constantRecord(hex("00000008 00 00000001 00000000") + variant), version)));
    }
}

void TestStreamHostile::containersInContainers_data()
{
    QTest::addColumn<QByteArray>("head");
    QTest::addColumn<QByteArray>("empty");
    for (Container const& each : containers())
        QTest::newRow(each.name) << each.head << each.empty;
    QTest::newRow("lists around a map") << containers()[0].head << containers()[1].empty;
}

void TestStreamHostile::containersInContainers()
{
    QFETCH(QByteArray, head);
    QFETCH(QByteArray, empty);
    for (int const version : {Old, Recent}) {
        QVERIFY(isAccepted(outcome(constantRecord(head.repeated(99) + empty), version)));
        QVERIFY(isAccepted(outcome(constantRecord(head.repeated(100) + hex("00000001 00 01")), version)));
        QVERIFY(isRefused(outcome(constantRecord(head.repeated(100) + empty), version)));
        QVERIFY(isRefused(outcome(constantRecord(head.repeated(1000000)), version)));
    }
}

void TestStreamHostile::everyKindOfClock_data()
{
    QTest::addColumn<QByteArray>("moment");
    QTest::addColumn<int>("version");
    QTest::addColumn<QSet<int>>("accepted");
    QTest::newRow("Qt_4_8") << hex("00000010 00 002584e3 00a8888e") << Old << QSet<int>{0xff, 0, 1, 2, 3, 4};
    QTest::newRow("Qt_5_0") << hex("00000010 00 00000000002584e3 00a8888e") << int(QDataStream::Qt_5_0)
                            << QSet<int>{0, 1, 2, 3};
    QTest::newRow("Qt_5_1") << hex("00000010 00 00000000002584e3 00a8888e") << int(QDataStream::Qt_5_1)
                            << QSet<int>{0xff, 0, 1, 2, 3, 4};
    // 2 goes with an offset, here 0, and 3 with a zone, here one without a name.
    QTest::newRow("Qt_5_15") << hex("00000010 00 00000000002584e3 00a8888e") << Recent << QSet<int>{0, 1, 2};
}

void TestStreamHostile::everyKindOfClock()
{
    QFETCH(QByteArray, moment);
    QFETCH(int, version);
    QFETCH(QSet<int>, accepted);
    for (int clock = 0; clock < 256; ++clock) {
        QByteArray const bytes = constantRecord(moment + static_cast<char>(clock) + QByteArray(20, '\0'));
        hostile::Outcome const result = outcome(bytes, version);
        QVERIFY2(accepted.contains(clock) ? isAccepted(result) : isRefused(result), QByteArray::number(clock));
    }
}

void TestStreamHostile::offsets_data()
{
    QTest::addColumn<qint32>("seconds");
    QTest::addColumn<bool>("isValid");
    QTest::newRow("none") << 0 << true;
    QTest::newRow("highest") << 14 * 3600 << true;
    QTest::newRow("lowest") << -14 * 3600 << true;
    QTest::newRow("too high") << 14 * 3600 + 1 << false;
    QTest::newRow("too low") << -14 * 3600 - 1 << false;
    QTest::newRow("far too high") << 0x7fffffff << false;
    QTest::newRow("far too low") << -0x7fffffff - 1 << false;
}

void TestStreamHostile::offsets()
{
    QFETCH(qint32, seconds);
    QFETCH(bool, isValid);
    QByteArray const moment = hex("00000010 00 00000000002584e3 00a8888e");
    QByteArray const offset = number(static_cast<quint32>(seconds));
    QByteArray const ownZone
        = text("OffsetFromUtc") + text("Our/Zone") + offset + text("a") + text("b") + number(0) + text("c");
    hostile::Outcome const plain = outcome(constantRecord(moment + '\2' + offset), Recent);
    hostile::Outcome const zone = outcome(constantRecord(moment + '\3' + ownZone), Recent);
    QCOMPARE(isValid ? isAccepted(plain) : isRefused(plain), true);
    QCOMPARE(isValid ? isAccepted(zone) : isRefused(zone), true);
}

void TestStreamHostile::zones_data()
{
    QTest::addColumn<QString>("id");
    QTest::addColumn<bool>("isZone");
    QTest::newRow("a zone") << "Europe/Berlin" << true;
    QTest::newRow("UTC") << "UTC" << true;
    QTest::newRow("an offset of whole hours") << "UTC+01:00" << true;
    QTest::newRow("no name") << "" << false;
    QTest::newRow("no zone") << "Nowhere/City" << false;
    QTest::newRow("a folder of zones") << "Europe" << false;
    QTest::newRow("a file beside the zones") << "zone.tab" << false;
    QTest::newRow("file elsewhere") << "/etc/passwd" << false;
    QTest::newRow("file elsewhere, from here") << "../../../etc/passwd" << false;
    QTest::newRow("zone by a detour") << "Europe/../Europe/Berlin" << false;
    QTest::newRow("zone by two slashes") << "Europe//Berlin" << false;
    QTest::newRow("file without an end") << "../../../dev/zero" << false;
    QTest::newRow("rule in the place of a name") << "CET-1CEST,M3.5.0,M10.5.0/3" << false;
    QTest::newRow("short rule") << "ABC-1" << false;
    QTest::newRow("zone and a zero") << QStringLiteral("Europe/Berlin") + QChar(0) << false;
    QTest::newRow("letter beyond ASCII") << QStringLiteral("Europe/Berl\u0131n") << false;
    QTest::newRow("long") << QString(100000, 'a') << false;
    QTest::newRow("many folders") << QStringLiteral("a/").repeated(50000) << false;
}

void TestStreamHostile::zones()
{
    QFETCH(QString, id);
    QFETCH(bool, isZone);
    QByteArray const moment = hex("00000010 00 00000000002584e3 00a8888e 03");
    hostile::Outcome const result = outcome(constantRecord(moment + text(id)), Recent);
    QCOMPARE(isZone ? isAccepted(result) : isRefused(result), true);
}

void TestStreamHostile::extremeDates_data()
{
    QTest::addColumn<QByteArray>("date");
    QTest::newRow("lowest") << hex("8000000000000001");
    QTest::newRow("first valid") << hex("ffffffff4d6a65a3");
    QTest::newRow("zero") << hex("0000000000000000");
    QTest::newRow("last valid") << hex("00000b69cea8d4b7");
    QTest::newRow("highest") << hex("7fffffffffffffff");
}

void TestStreamHostile::extremeDates()
{
    QFETCH(QByteArray, date);
    QByteArray const dateHead = hex("0000000e 00");
    QByteArray const momentHead = hex("00000010 00");
    QVERIFY(isAccepted(outcome(constantRecord(dateHead + date), Recent)));
    for (char const* const time : {"00000000", "05265bff", "05265c00", "7fffffff", "80000000", "ffffffff"}) {
        for (char const* const clock : {"00", "01", "02 00000e10",
                 "03 0000001a 0045 0075 0072 006f 0070 0065 002f"
                 "0042 0065 0072 006c 0069 006e"}) {
            QByteArray const bytes = constantRecord(momentHead + date + hex(time) + hex(clock));
            QByteArray const minus
                = record("00000018", "N5qvgen13UnaryOperatorE", "00000001 00000000 00000001 00000001");
            QCOMPARE(outcome(bytes, Recent).status, QDataStream::Ok);
            QCOMPARE(outcome(minus + bytes, Recent).status, QDataStream::Ok);
            QCOMPARE(outcome(golden::numeric("00000001").chopped(golden::five().size()) + bytes, Recent).status,
                QDataStream::Ok);
        }
    }
}

void TestStreamHostile::regularExpressions_data()
{
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<bool>("isRefused");
    QTest::newRow("parentheses without an end") << QString(20000, '(') << true;
    QTest::newRow("parentheses in parentheses") << QString(20000, '(') + QString(20000, ')') << true;
    QTest::newRow("far more of them") << QString(400000, '(') << true;
    QTest::newRow("all lookaheads that QRegExp can have") << QStringLiteral("(?=a)").repeated(13) << false;
    QTest::newRow("one lookahead more") << QStringLiteral("(?=a)").repeated(14) << true;
    QTest::newRow("lookaheads by a repeat") << "((?=a)b){14}" << true;
    QTest::newRow("high back-reference") << "w*\\222222" << true;
    QTest::newRow("highest back-reference") << "(a)\\99999999999999999999" << true;
    QTest::newRow("repeats of repeats") << "(a{0,30}){0,30}b" << false;
    QTest::newRow("broken class") << "[a-" << false;
    QTest::newRow("broken repeat") << "a{99999999999,1" << false;
    QTest::newRow("backslash at the end") << "\\" << false;
}

void TestStreamHostile::regularExpressions()
{
    QFETCH(QString, pattern);
    QFETCH(bool, isRefused);
    QByteArray const call = record("0000001d", "N5qvgen18FunctionExpressionE",
        "00000002 0000000c 0072 0065 0067 0065 0078 0070 00 00000001 00000002");
    QByteArray const subject = constantRecord(hex("0000000a 00") + text(QString(40, 'a')));
    for (char const* const flags : {"01 00 00", "00 03 01"}) {
        QByteArray const expression = constantRecord(hex("0000001b 00") + text(pattern) + hex(flags));
        hostile::Outcome const result = outcome(call + subject + expression, Recent);
        QVERIFY(!result.wasThrown);
        if (isRefused)
            QVERIFY(hostile::isRefused(result));
    }
    // The same as a text is no matter for the reader, only for the function.
    QVERIFY(isAccepted(outcome(call + subject + constantRecord(hex("0000000a 00") + text(pattern)), Recent)));
}

void TestStreamHostile::syntaxesOfRegularExpressions()
{
    for (int syntax = 0; syntax < 256; ++syntax) {
        QByteArray const flags = QByteArray(1, '\1') + static_cast<char>(syntax) + '\0';
        hostile::Outcome const result = outcome(constantRecord(hex("0000001b 00 00000002 0061") + flags), Old);
        // QRegExp has six.
        QVERIFY2(syntax < 6 ? isAccepted(result) : isRefused(result), QByteArray::number(syntax));
    }
}

void TestStreamHostile::castsToEveryType_data()
{
    QTest::addColumn<QByteArray>("variant");
    for (golden::Value const& each : golden::values())
        QTest::newRow(each.name) << hex(each.recent);
    for (golden::Value const& each : golden::recentValues())
        QTest::newRow(each.name) << hex(each.recent);
}

void TestStreamHostile::castsToEveryType()
{
    QFETCH(QByteArray, variant);
    QByteArray const head = record("00000019", "N5qvgen14CastExpressionE", "00000001");
    for (quint32 type = 0; type <= 200; ++type)
        QVERIFY(isAccepted(hostile::outcomeHere(head + number(type) + constantRecord(variant), Recent)));
    for (quint32 const type : {1024U, 1025U, 0x7fffffffU, 0x80000000U, 0xffffffffU})
        QVERIFY(isAccepted(hostile::outcomeHere(head + number(type) + constantRecord(variant), Recent)));
}

void TestStreamHostile::functionsWithoutOperands()
{
    for (QString const& name : FunctionExpression::functionMap().keys()) {
        QByteArray const bytes = record("0000001d", "N5qvgen18FunctionExpressionE", "00000002") + text(name);
        QVERIFY2(isAccepted(outcome(bytes + hex("00 00000001 00000000"), Recent)), qPrintable(name));
        QVERIFY2(isAccepted(outcome(bytes + hex("01 00000001 00000001") + golden::five(), Recent)), qPrintable(name));
    }
}

void TestStreamHostile::failedStreamStaysFailed()
{
    QDataStream in(golden::five());
    in.setStatus(QDataStream::ReadCorruptData);
    QVERIFY(stream::isEmptyHandle(Expression::readExpression(in)));
    QCOMPARE(in.status(), QDataStream::ReadCorruptData);
}

QTEST_APPLESS_MAIN(TestStreamHostile)
#include "tst_StreamHostile.moc"
