// SPDX-License-Identifier: LGPL-2.1-or-later
#include "RecordingRows.h"

#include <recordings/SearchFile.h>
#include <recordings/SqliteFunctions.h>
#include <support/Random.h>

#include <GenericUtilities/expressions/BooleanOperators.h>
#include <GenericUtilities/expressions/Comparator.h>
#include <GenericUtilities/expressions/Functions.h>
#include <GenericUtilities/expressions/NumericOperators.h>
#include <qvbase/Exceptions.h>

#include <QCryptographicHash>
#include <QRegularExpression>
#include <QtTest>

using namespace qvgen;

/// The stored form of a search: what it is, how damage shows, and what a hostile one is refused for.
class RecordingsSearchBytesTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { addSqliteFunctions(); }
    void bytesOfASearch();
    void roundTrip_data();
    void roundTrip();
    void cutAnywhere();
    void flippedAnywhere();
    void versions_data();
    void versions();
    void hostileTree_data();
    void hostileTree();
    void hostileOrder_data();
    void hostileOrder();
    void orderHasNoMoreTermsThanColumns();
    void unknownClass_data();
    void unknownClass();
    void mutations();
};

Q_DECLARE_METATYPE(ExpressionHandle)
Q_DECLARE_METATYPE(Search)

namespace {

constexpr int hashSize = 32;

PropertySet const& recording()
{
    static PropertySet const prototype = RecordingMaker::prototype();
    return prototype;
}

ExpressionHandle value(char const* name, char const* alias = "")
{
    return ValueExpression(QString::fromUtf8(name), QString::fromUtf8(alias));
}

ExpressionHandle bound(QVariant const& constant)
{
    return ConstExpression(constant, true);
}

ExpressionHandle call(QString const& name, QList<ExpressionHandle> const& operands)
{
    ExpressionList list;
    for (ExpressionHandle const& operand : operands)
        list.append(operand);
    return FunctionExpression(name, list, false);
}

template <class Node> ExpressionHandle with(Node node, QList<ExpressionHandle> const& operands)
{
    for (ExpressionHandle const& operand : operands)
        node.append(operand);
    return node;
}

QByteArray withHash(QByteArray const& bytes)
{
    return bytes + QCryptographicHash::hash(bytes, QCryptographicHash::Sha256);
}

/// Why the bytes are refused; empty where they are a search.
QString refusal(QByteArray const& bytes)
{
    try {
        decodedSearch(bytes, recording());
        return {};
    } catch (qv::ExceptionQt const& exception) {
        return exception.message();
    }
}

} // namespace

void RecordingsSearchBytesTest::bytesOfASearch()
{
    // size > 5, the largest first.
    QByteArray const bytes
        = QByteArray::fromHex("52537263"
                              "00000001"
                              "00000015"
                              "4e357176 67656e31 30436f6d 70617261 746f7245 00" // N5qvgen10ComparatorE
                              "00000001"
                              "00000003"
                              "00000001"
                              "00000002" // >, two operands
                              "0000001a"
                              "4e357176 67656e31 3556616c 75654578 70726573 73696f6e 4500" // N5qvgen15ValueExpressionE
                              "00000002"
                              "00000008 00730069 007a0065"
                              "ffffffff" // "size", no alias
                              "0000001a"
                              "4e357176 67656e31 35436f6e 73744578 70726573 73696f6e 4500" // N5qvgen15ConstExpressionE
                              "00000001"
                              "01"
                              "00000002"
                              "00"
                              "00000005" // placeholder, Int 5
                              "00000019"
                              "4e357176 67656e31 34457870 72657373 696f6e4c 69737445 00" // N5qvgen14ExpressionListE
                              "00000001"
                              "00000001" // one element
                              "00000018"
                              "4e357176 67656e31 33556e61 72794f70 65726174 6f724500" // N5qvgen13UnaryOperatorE
                              "00000001"
                              "00000000"
                              "00000001"
                              "00000001" // minus, one operand
                              "0000001a"
                              "4e357176 67656e31 3556616c 75654578 70726573 73696f6e 4500"
                              "00000002"
                              "00000008 00730069 007a0065"
                              "ffffffff");
    Search const search{"", recording()["size"] > 5, with(ExpressionList(), {-recording()["size"]})};
    QCOMPARE(encodedSearch(search).toHex(), withHash(bytes).toHex());
    QCOMPARE(refusal(withHash(bytes)), QString());
}

void RecordingsSearchBytesTest::roundTrip_data()
{
    QTest::addColumn<Search>("search");

    auto const row = [](char const* name, ExpressionHandle const& condition, ExpressionList const& order = {}) {
        QTest::newRow(name) << Search{"", condition, order};
    };
    auto const& size = recording()["size"];
    auto const& name = recording()["name"];
    QDateTime const moment(QDate(2024, 5, 31), QTime(18, 30), Qt::UTC);

    row("nothing at all", {});
    row("an order alone", {}, -size << name);
    row("texts", name == "it's" || name == QString::fromUtf8("\u00E9\U0001F600") || name == QString());
    row("numbers", size > 5 && size < 9223372036854775807ULL && size != 6U && size != 1.5);
    row("dates",
        recording()["modified"] > moment && recording()["day"] != QDate(2024, 5, 31)
            && recording()["time"] < QTime(6, 0));
    row("truth values", recording()["hidden"] == true && !value("executable"));
    row("membership", with(ElementOf(name), {bound("a"), bound("b")}));
    row("arithmetic", (size + 1) * 2 - size / 3 == 4 && ~value("size") != 0 && -value("age") < 5.0);
    row("functions", like(lower(value("name")), "%.conf", "\\") && coalesce(value("size") << value("depth")) > 0);
    row("functions of the example", characters(value("name")) > remainder(value("size"), bound(512)));
    row("a call without operands", call("random", {}));
    row("a conversion", toString(value("size")) == "5");
    row("an order of many columns", size == 0, with(ExpressionList(), {value("depth"), -value("age"), value("name")}));
}

void RecordingsSearchBytesTest::roundTrip()
{
    QFETCH(Search, search);
    Search const read = decodedSearch(encodedSearch(search), recording());
    QVERIFY(read.condition.equals(search.condition));
    QVERIFY(ExpressionHandle(read.order).equals(search.order));
    QCOMPARE(read.condition.collectPlaceholders(), search.condition.collectPlaceholders());
    QCOMPARE(RecordingDatabase::statement(read), RecordingDatabase::statement(search));
}

void RecordingsSearchBytesTest::cutAnywhere()
{
    QByteArray const bytes = encodedSearch({"", recording()["name"] == "it's", -value("size") << value("name")});
    for (int length = 0; length < bytes.size(); ++length)
        QCOMPARE(refusal(bytes.left(length)), QString(length < 4 ? "it is no saved search" : "it is damaged"));
}

void RecordingsSearchBytesTest::flippedAnywhere()
{
    QByteArray const bytes = encodedSearch({"", recording()["name"] == "it's", -value("size") << value("name")});
    auto const flipBit = [&](int bit) {
        QByteArray flipped = bytes;
        flipped[bit / 8] = static_cast<char>(flipped.at(bit / 8) ^ (1 << bit % 8));
        return flipped;
    };
    for (int bit = 0; bit < bytes.size() * 8; ++bit)
        QVERIFY2(!refusal(flipBit(bit)).isEmpty(), qPrintable(QString("bit %1").arg(bit)));
}

void RecordingsSearchBytesTest::versions_data()
{
    QTest::addColumn<int>("version");
    QTest::addColumn<QString>("reason");

    QTest::newRow("this one") << 1 << QString();
    QTest::newRow("the next") << 2 << "it was saved by a later version of this program";
    QTest::newRow("the last") << -1 << "it was saved by a later version of this program";
    QTest::newRow("one that never was") << 0 << "it is damaged";
}

void RecordingsSearchBytesTest::versions()
{
    QFETCH(int, version);
    QByteArray bytes = encodedSearch({"", recording()["size"] == 0}).chopped(hashSize);
    bytes.replace(
        4, 4, QByteArray::fromHex(QByteArray::number(static_cast<quint32>(version), 16).rightJustified(8, '0')));
    QTEST(refusal(withHash(bytes)), "reason");
}

void RecordingsSearchBytesTest::hostileTree_data()
{
    QTest::addColumn<ExpressionHandle>("condition");
    QTest::addColumn<QString>("reason");

    auto const row = [](char const* name, ExpressionHandle const& condition, char const* reason) {
        QTest::newRow(name) << condition << QString(reason);
    };
    char const noOperator[] = "it holds an operator that is none, or lacks operands";
    char const notBound[] = "it holds a value that is not to be bound";
    char const noColumnValue[] = "it holds a value that fits into no column";
    char const noColumnType[] = "it converts to a type that no column has";
    ExpressionHandle const size = value("size");
    ExpressionHandle const five = bound(5);

    row("unknown name", value("colour") == 5, "it names 'colour', which is no column");
    row("property without column", value("path") == "a", "it names 'path', which is no column");
    row("the id", value("id") == 5, "it names 'id', which is no column");
    row("no name", value("") == 5, "it names '', which is no column");
    row("name in capitals", value("SIZE") == 5, "it names 'SIZE', which is no column");
    row("SQL for a name", value("1=1 OR size") == 5, "it names '1=1 OR size', which is no column");
    row("a statement for a name", value("size;DROP TABLE recordings;--") == 5,
        "it names 'size;DROP TABLE recordings;--', which is no column");
    row("a subquery for a name", value("(SELECT sql FROM sqlite_master)") == 5,
        "it names '(SELECT sql FROM sqlite_master)', which is no column");
    row("a column with a NUL behind", value("size") == ValueExpression(QString::fromLatin1("size\0", 5), QString()),
        "it names 'size\\x00', which is no column");
    row("a very long name", ValueExpression(QString(5000, 'x'), QString()) == 5,
        "it names 'xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx...', which is no column");
    row("a name that looks like a mark for arguments", value("%1 %2") == 5, "it names '%1 %2', which is no column");
    row("SQL for an alias", value("size", "x OR 1=1") == 5, "it gives the column 'size' another name");
    row("another column for an alias", value("size", "depth") == 5, "it gives the column 'size' another name");
    row("deep inside", !(size > 5 && (size < 9 || size + -value("colour") == 7)),
        "it names 'colour', which is no column");
    row("in a conversion", toInt(value("colour")) == 5, "it names 'colour', which is no column");
    row("in a call", lower(value("colour")) == "a", "it names 'colour', which is no column");

    row("text that is printed", size == ConstExpression("' OR 1=1 --", false), notBound);
    row("half a surrogate pair before a quote",
        value("name") == ConstExpression(QString(QChar(0xD800)) + "' OR 1=1 --", false), notBound);
    row("number that is printed", size == ConstExpression(5, false), notBound);
    row("invalid value", size == bound(QVariant()), noColumnValue);
    row("list", size == bound(QVariantList{1, 2}), noColumnValue);
    row("list of texts", size == bound(QStringList{"a"}), noColumnValue);
    row("map", size == bound(QVariantMap{{"a", 1}}), noColumnValue);
    row("bytes", size == bound(QByteArray("a")), noColumnValue);
    row("regular expression", value("name") == bound(QRegExp("a.*")), noColumnValue);

    row("unknown function", call("load_extension", {bound("x.so")}), "it calls 'load_extension', which is no function");
    row("SQL for a function", call("1=1 OR abs", {size}), "it calls '1=1 OR abs', which is no function");
    row("function in capitals", call("ABS", {size}), "it calls 'ABS', which is no function");
    row("function without a name", call("", {size}), "it calls '', which is no function");
    row("too few values", call("remainder", {size}), "it calls 'remainder' with too few values, or too many");
    row("no values", call("hex", {}), "it calls 'hex' with too few values, or too many");
    row("too many values", call("like", {size, five, five, five}), "it calls 'like' with too few values, or too many");

    row("conversion to a list", CastExpression(QVariant::StringList, size), noColumnType);
    row("conversion to bytes", CastExpression(QVariant::ByteArray, size), noColumnType);
    row("conversion to nothing", CastExpression(QVariant::Invalid, size), noColumnType);
    row("conversion to a type that is none", CastExpression(static_cast<QVariant::Type>(0x7fffffff), size),
        noColumnType);

    row("comparison without operands", Comparator(Comparator::Equal), noOperator);
    row("comparison of three", with(Comparator(size, Comparator::Equal, five), {five}), noOperator);
    row("comparison that is none", Comparator(size, static_cast<Comparator::CompOp>(6), five), noOperator);
    row("negative comparison", Comparator(size, static_cast<Comparator::CompOp>(-1), five), noOperator);
    row("AND of nothing", BooleanOperator(BooleanOperator::And), noOperator);
    row("junction that is none", BooleanOperator(size, static_cast<BooleanOperator::BoolOp>(2), size), noOperator);
    row("sum of nothing", NumericOperator(NumericOperator::Add) == 5, noOperator);
    row("arithmetic that is none", NumericOperator(size, static_cast<NumericOperator::NumOp>(8), five), noOperator);
    row("sign that is none", UnaryOperator(static_cast<UnaryOperator::UnaryOp>(2), size), noOperator);
    row("negation of two", with(NotOperator(size), {size}), noOperator);
    row("member of nothing", ElementOf(size), noOperator);
    row("membership without operands", ElementOf(), noOperator);
    row("list for a condition", ExpressionList(size, five), noOperator);
    row("empty list inside", size == ExpressionList(), noOperator);

    row("minus of a minus", -(-size) < 5, "it has a minus before a minus, which begins a comment in SQL");
    row("minus of a negative", size - -size < 5, "it has a minus before a minus, which begins a comment in SQL");
}

void RecordingsSearchBytesTest::hostileTree()
{
    QFETCH(ExpressionHandle, condition);
    QTEST(refusal(encodedSearch({"", condition})), "reason");
    QTEST(refusal(encodedSearch({"", value("hidden") || condition})), "reason");
}

void RecordingsSearchBytesTest::hostileOrder_data()
{
    QTest::addColumn<ExpressionHandle>("term");
    QTest::addColumn<QString>("reason");

    char const noColumn[] = "it sorts by something else than a column";
    QTest::newRow("unknown name") << value("colour") << "it names 'colour', which is no column";
    QTest::newRow("unknown name downwards")
        << ExpressionHandle(-value("colour")) << "it names 'colour', which is no column";
    QTest::newRow("SQL for a name") << value("size LIMIT 0") << "it names 'size LIMIT 0', which is no column";
    QTest::newRow("alias") << value("size", "x") << "it gives the column 'size' another name";
    QTest::newRow("number") << bound(1) << noColumn;
    QTest::newRow("call") << qvgen::random() << noColumn;
    QTest::newRow("sum") << ExpressionHandle(value("size") + 1) << noColumn;
    QTest::newRow("bitwise not") << ExpressionHandle(~value("size")) << noColumn;
    QTest::newRow("minus of a minus") << ExpressionHandle(-(-value("size"))) << noColumn;
    QTest::newRow("minus of two") << with(-value("size"), {value("name")}) << noColumn;
    QTest::newRow("list") << ExpressionHandle(value("size") << value("name")) << noColumn;
}

void RecordingsSearchBytesTest::hostileOrder()
{
    QFETCH(ExpressionHandle, term);
    QTEST(refusal(encodedSearch({"", value("hidden"), with(ExpressionList(), {value("size"), term})})), "reason");
}

void RecordingsSearchBytesTest::orderHasNoMoreTermsThanColumns()
{
    QList<ExpressionHandle> terms;
    for (QString const& column : columnsOf(recording()))
        terms += value(column.toLatin1());
    QCOMPARE(refusal(encodedSearch({"", value("hidden"), with(ExpressionList(), terms)})), QString());
    terms += value("size");
    QCOMPARE(refusal(encodedSearch({"", value("hidden"), with(ExpressionList(), terms)})),
        QString("it sorts by more columns than there are"));
}

void RecordingsSearchBytesTest::unknownClass_data()
{
    QTest::addColumn<QByteArray>("key");

    QTest::newRow("the condition") << QByteArray("N5qvgen10ComparatorE");
    QTest::newRow("an operand") << QByteArray("N5qvgen15ValueExpressionE");
    QTest::newRow("the order") << QByteArray("N5qvgen14ExpressionListE");
}

void RecordingsSearchBytesTest::unknownClass()
{
    QFETCH(QByteArray, key);
    QByteArray bytes = encodedSearch({"", recording()["size"] == 0, value("size") << value("name")}).chopped(hashSize);
    QVERIFY(bytes.contains(key));
    bytes.replace(key, QByteArray(key).replace("qvgen", "qvgon"));
    QCOMPARE(refusal(withHash(bytes)), QString("it is damaged"));
}

void RecordingsSearchBytesTest::mutations()
{
    Search const search{"", like(lower(value("name")), "%.conf") && remainder(value("size"), bound(512)) == 0,
        -value("size") << value("name")};
    QByteArray const bytes = encodedSearch(search).chopped(hashSize);
    // What is printed of columns, registered functions and operators, and of nothing else.
    QRegularExpression const safe("\\A[ A-Za-z_0-9(),?<>=!*/+%&|^~-]*\\z");
    QRandomGenerator random = support::generator();
    int accepted = 0;
    for (int round = 0; round < support::rounds(20000); ++round) {
        QByteArray mutated = bytes;
        for (int count = random.bounded(1, 4); count > 0; --count)
            mutated[random.bounded(8, mutated.size())] = static_cast<char>(random.bounded(256));
        try {
            Search const read = decodedSearch(withHash(mutated), recording());
            QString const statement = RecordingDatabase::statement(read).remove("'%x'");
            QVERIFY2(
                safe.match(statement).hasMatch() && !statement.contains("--"), qPrintable(support::seedNote(round)));
            QCOMPARE(statement.count('?'), read.condition.collectPlaceholders().size());
            ++accepted;
        } catch (qv::ExceptionQt const&) {
        }
    }
    // Other texts and numbers are searches, too.
    QVERIFY(accepted > 0);
}

QTEST_GUILESS_MAIN(RecordingsSearchBytesTest)
#include "tst_RecordingsSearchBytes.moc"
