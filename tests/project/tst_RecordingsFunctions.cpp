// SPDX-License-Identifier: LGPL-2.1-or-later
#include "RecordingRows.h"

#include <recordings/Searches.h>
#include <recordings/SqliteFunctions.h>

#include <GenericUtilities/expressions/Functions.h>

#include <QtTest>

#include <algorithm>

using namespace qvgen;
using Rows = QVector<int>;

/// The ready-made searches that call functions, and the functions that the example fits to SQLite.
class RecordingsFunctionsTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void printed_data();
    void printed();
    void found_data();
    void found();
    void remainders_data();
    void remainders();
    void charactersOfText_data();
    void charactersOfText();
    void replacedPrintLeavesCodeAlone();
    void tooFewOperandsDoNoHarm();

private:
    static Search search(QString const& title);
};

void RecordingsFunctionsTest::initTestCase()
{
    addSqliteFunctions();
}

Search RecordingsFunctionsTest::search(QString const& title)
{
    auto const searches = readyMadeSearches(RecordingMaker::prototype(), QDate(2024, 5, 31));
    auto const found = std::find_if(
        searches.begin(), searches.end(), [&](Search const& each) { return each.title.startsWith(title); });
    return found == searches.end() ? Search{"missing", {}} : *found;
}

void RecordingsFunctionsTest::printed_data()
{
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("code");
    QTest::addColumn<QString>("statement"); // Behind WHERE.
    QTest::addColumn<bool>("hasNote");

    auto const row = [](char const* title, char const* code, char const* statement, bool hasNote) {
        QTest::newRow(title) << title << code << statement << hasNote;
    };
    row("Configuration files", "like(name,\"%.conf\")", "(name LIKE ?)", true);
    row("Read-me files in any case", "lower(stem) == \"readme\"", "lower(stem) = ? ORDER BY size DESC,name,id", false);
    row("Names of more than 40 characters", "characters(name) > 40", "length(name) > ?", true);
    row("Whole blocks", "size > 0 && remainder(size,512) == 0", "size > ? AND (size % ?) = ?", true);
    row("Whole pages", "like(hex(size),\"%000\")", "(printf('%x',size) LIKE ?)", true);
    row("Ten years old", "round((age/365)) == 10 || abs((age-365)) <= 7", "round((age/?)) = ? OR abs((age-?)) <= ?",
        false);
    row("A megabyte or more", "coalesce((size/depth),size) >= 1048576", "coalesce((size/depth),size) >= ?", false);
}

void RecordingsFunctionsTest::printed()
{
    QFETCH(QString, title);
    Search const made = search(title);
    QTEST(made.condition.toString(Expression::StyleCode), "code");
    QFETCH(QString, statement);
    QCOMPARE(RecordingDatabase::statement(made), "SELECT id FROM recordings WHERE " + statement);
    QTEST(!made.note.isEmpty(), "hasNote");
}

void RecordingsFunctionsTest::found_data()
{
    QTest::addColumn<QString>("title");
    QTest::addColumn<QStringList>("columns");
    QTest::addColumn<QVariantList>("values"); // Of one column, or lists of as many as there are columns.
    QTest::addColumn<Rows>("expected");

    auto const row = [](char const* title, QStringList const& columns, QVariantList const& values,
                         Rows const& expected) { QTest::newRow(title) << title << columns << values << expected; };
    auto const text = [](char const* utf8) { return QString::fromUtf8(utf8); };
    auto const repeated = [&](char const* utf8, int count) { return text(utf8).repeated(count); };
    using Values = QVariantList;

    row("Configuration files", {"name"},
        {"app.conf", "app.CONF", "conf", ".conf", "a\nb.conf", "app.conf.bak", text("\uFFFEx.conf"), "appXconf"},
        {0, 3, 4, 6});
    row("Read-me files in any case", {"stem", "size", "name"},
        {Values{"readme", 5, "b"}, Values{"ReadMe", 7, "c"}, Values{"README", 5, "a"}, Values{"readme2", 9, "d"},
            Values{text("re\u00C5dme"), 9, "e"}},
        {1, 2, 0});
    row("Names of more than 40 characters", {"name"},
        {repeated("x", 40), repeated("x", 41), repeated("\U0001F600", 40), repeated("\U0001F600", 41),
            repeated("\u00E9", 40)},
        {1, 3});
    row("Whole blocks", {"size"}, {0, 512, 513, 1024, 9223372036854775296ULL, 9223372036854775807ULL}, {1, 3, 4});
    row("Whole pages", {"size"}, {0, 4096, 512, 8192, 4097, 4611686018427387904ULL}, {1, 3, 5});
    row("Ten years old", {"age"}, {3468.0, 3467.0, 3832.0, 3833.0, 358.0, 372.0, 357.0, 373.0, -3650.0, 365.0},
        {0, 2, 4, 5, 9});
    row("A megabyte or more", {"size", "depth"},
        {Values{1048576, 0}, Values{1048575, 0}, Values{2097152, 2}, Values{2097151, 2}, Values{1048576, 1}},
        {0, 2, 4});
}

void RecordingsFunctionsTest::found()
{
    QFETCH(QString, title);
    QFETCH(QStringList, columns);
    QFETCH(QVariantList, values);
    QList<QVariantMap> rows;
    for (QVariant const& value : values) {
        QVariantMap row;
        for (int i = 0; i < columns.size(); ++i)
            row.insert(columns.at(i), columns.size() == 1 ? value : value.toList().at(i));
        rows += row;
    }
    Answer const answer = answerAmong(recordingsWith(rows), search(title));
    QTEST(answer.byDatabase, "expected");
    QTEST(answer.inMemory, "expected");
}

void RecordingsFunctionsTest::remainders_data()
{
    QTest::addColumn<QVariant>("dividend");
    QTest::addColumn<QVariant>("divisor");
    QTest::addColumn<QVariant>("expected");

    auto const row = [](char const* name, QVariant const& dividend, QVariant const& divisor, QVariant const& expected) {
        QTest::newRow(name) << dividend << divisor << expected;
    };
    row("of positive numbers", 7, 3, 1);
    row("has the sign of the dividend", -7, 3, -1);
    row("of an unsigned number", 7ULL, 4, 3ULL);
    row("by zero", 7, 0, QVariant());
    row("of doubles", 7.0, 3.0, QVariant());
    row("of a text", "seven", 3, QVariant());
}

void RecordingsFunctionsTest::remainders()
{
    QFETCH(QVariant, dividend);
    QFETCH(QVariant, divisor);
    ExpressionHandle const call = remainder(ConstExpression(dividend, false), ConstExpression(divisor, false));
    QTEST(call.evaluate(PropertySet()), "expected");
}

void RecordingsFunctionsTest::charactersOfText_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("expected");

    QTest::newRow("empty") << QString() << 0;
    QTest::newRow("ASCII") << "abc" << 3;
    QTest::newRow("of two bytes") << QString::fromUtf8("\u00E9\u00E9") << 2;
    QTest::newRow("of two code units") << QString::fromUtf8("\U0001F600") << 1;
}

void RecordingsFunctionsTest::charactersOfText()
{
    QFETCH(QString, text);
    QTEST(characters(ConstExpression(text, false)).evaluate(PropertySet()).toInt(), "expected");
}

void RecordingsFunctionsTest::replacedPrintLeavesCodeAlone()
{
    ExpressionHandle const call = hex(ConstExpression(255, true));
    QCOMPARE(call.toString(Expression::StyleCode), QString("hex(255)"));
    QCOMPARE(call.toString(Expression::StyleSql), QString("printf('%x',255)"));
    QCOMPARE(call.evaluate(PropertySet()), QVariant("ff"));
}

void RecordingsFunctionsTest::tooFewOperandsDoNoHarm()
{
    for (char const* name : {"hex", "characters", "remainder"}) {
        FunctionExpression const call(name, ExpressionList(), false);
        QVERIFY(!call.evaluate(PropertySet(), nullptr).isValid());
        QVERIFY(call.toString(Expression::StyleSql).endsWith(')'));
    }
}

QTEST_GUILESS_MAIN(RecordingsFunctionsTest)
#include "tst_RecordingsFunctions.moc"
