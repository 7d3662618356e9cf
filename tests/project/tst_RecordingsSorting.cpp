// SPDX-License-Identifier: LGPL-2.1-or-later
#include "RecordingRows.h"
#include "RecordingsTree.h"

#include <recordings/Report.h>
#include <recordings/Sorting.h>

#include <GenericUtilities/expressions/NumericOperators.h>

using namespace qvgen;
using Rows = QVector<int>;

/// The order of what a search finds: the option --sort, and SQLite and memory side by side.
class RecordingsSortingTest : public QObject {
    Q_OBJECT

private slots:
    void option_data();
    void option();
    void values_data();
    void values();
    void severalTerms();
    void minusIsAnExpression();
    void anotherOrderIsADisagreement();
};

void RecordingsSortingTest::option_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QString>("sortedBy");
    QTest::addColumn<QString>("statement"); // Behind the name of the table.
    QTest::addColumn<QString>("files");

    auto const row = [](char const* name, QStringList const& options, char const* sortedBy, char const* statement,
                         char const* files) { QTest::newRow(name) << options << sortedBy << statement << files; };

    row("all recordings, upwards", {"--sort", "size"}, "size", "ORDER BY size,id",
        ".hidden a.txt a.txt it's README docs.md big.TXT");
    row("downwards", {"--sort", "-size"}, "-size", "ORDER BY size DESC,id",
        "big.TXT docs.md README it's a.txt a.txt .hidden");
    row("texts by their bytes", {"--sort", "name"}, "name", "ORDER BY name,id",
        ".hidden README a.txt a.txt big.TXT docs.md it's");
    row("texts downwards", {"--sort", "-name"}, "-name", "ORDER BY name DESC,id",
        "it's docs.md big.TXT a.txt a.txt README .hidden");
    row("midnight comes first", {"--sort", "time"}, "time", "ORDER BY time,id",
        ".hidden big.TXT docs.md a.txt it's README a.txt");
    row("midnight downwards comes last, equal rows stay", {"--sort", "-time"}, "-time", "ORDER BY time DESC,id",
        "a.txt README .hidden big.TXT docs.md a.txt it's");
    row("truth values", {"--sort", "-hidden,size"}, "-hidden,size", "ORDER BY hidden DESC,size,id",
        ".hidden a.txt a.txt it's README docs.md big.TXT");
    row("list of terms", {"--sort", "suffix,-name"}, "suffix,-name", "ORDER BY suffix,name DESC,id",
        "it's README .hidden docs.md big.TXT a.txt a.txt");
    row("option given twice", {"--sort", "suffix", "--sort", "-name"}, "suffix,-name", "ORDER BY suffix,name DESC,id",
        "it's README .hidden docs.md big.TXT a.txt a.txt");
    row("moments within a depth", {"--sort", "depth,-modified"}, "depth,-modified", "ORDER BY depth,modified DESC,id",
        ".hidden big.TXT a.txt docs.md README it's a.txt");
    row("a column twice: the first counts", {"--sort", "size,-size"}, "size,-size", "ORDER BY size,size DESC,id",
        ".hidden a.txt a.txt it's README docs.md big.TXT");
    row("with a condition", {"--suffix", "txt", "--sort", "-size"}, "-size", "WHERE suffix = ? ORDER BY size DESC,id",
        "big.TXT a.txt a.txt");
    row("nothing found", {"--suffix", "none", "--sort", "size"}, "size", "WHERE suffix = ? ORDER BY size,id", "");
}

void RecordingsSortingTest::option()
{
    RecordingsTree tree;
    QFETCH(QStringList, options);
    RecordingsResult const result = tree.run(options + QStringList{"--rows", "100"});
    QCOMPARE(result.error, QString());
    QCOMPARE(result.exitCode, 0);
    QTEST(result.lastField("sorted by"), "sortedBy");
    QFETCH(QString, statement);
    QCOMPARE(result.lastField("SQL"), "SELECT id FROM recordings " + statement);
    QTEST(result.lastFiles().join(' '), "files");
}

void RecordingsSortingTest::values_data()
{
    QTest::addColumn<QString>("column");
    QTest::addColumn<QVariantList>("values");
    QTest::addColumn<Rows>("upwards");
    QTest::addColumn<Rows>("downwards");

    auto const row = [](char const* name, char const* column, QVariantList const& values, Rows const& upwards,
                         Rows const& downwards) { QTest::newRow(name) << column << values << upwards << downwards; };
    auto const moment = [](qint64 seconds) { return QDateTime::fromSecsSinceEpoch(seconds, Qt::UTC); };
    auto const text = [](char const* utf8) { return QString::fromUtf8(utf8); };

    row("midnight", "time", {QTime(0, 0, 1), QTime(0, 0)}, {1, 0}, {0, 1});
    row("the last moment of a day", "time", {QTime(23, 59, 59), QTime(0, 0), QTime(12, 0)}, {1, 2, 0}, {0, 2, 1});
    row("the epoch", "modified", {moment(1), moment(0)}, {1, 0}, {0, 1});
    row("days around the epoch", "day", {QDate(1970, 1, 2), QDate(1969, 12, 31), QDate(1970, 1, 1)}, {1, 2, 0},
        {0, 2, 1});
    row("sizes next to each other beyond what a double tells apart", "size", {9007199254740993ULL, 9007199254740992ULL},
        {1, 0}, {0, 1});
    row("the largest size", "size", {9223372036854775807ULL, 0ULL}, {1, 0}, {0, 1});
    row("ages below zero", "age", {1.0, -1.0, 0.0}, {1, 2, 0}, {0, 2, 1});
    row("permissions", "permissions", {0644, 0600}, {1, 0}, {0, 1});
    row("numbers beyond 31 bits", "uid", {4294967295U, 2147483648U, 1U}, {2, 1, 0}, {0, 1, 2});
    row("truth values", "hidden", {true, false}, {1, 0}, {0, 1});
    row("a text that begins with another", "name", {"ab", "a"}, {1, 0}, {0, 1});
    row("capitals before small letters", "name", {"b", "a", "B"}, {2, 1, 0}, {0, 1, 2});
    row("a character beyond 16 bits behind U+E000", "name", {text("\U00010000"), text("\uE000")}, {1, 0}, {0, 1});
    row("the last character of 16 bits", "name", {text("\uFFFFb"), text("\uFFFFa"), "b"}, {2, 1, 0}, {0, 1, 2});
    row("marks of the byte order at the start", "name", {text("\uFFFEb"), text("\uFFFEa"), text("\uFEFFc")}, {2, 1, 0},
        {0, 1, 2});
    row("null and empty texts are the same", "name", {QString(), "", "a", QString()}, {0, 1, 3, 2}, {2, 0, 1, 3});
    row("equal values stay as they are", "size", {5ULL, 5ULL, 5ULL}, {0, 1, 2}, {0, 1, 2});
}

void RecordingsSortingTest::values()
{
    QFETCH(QString, column);
    QFETCH(QVariantList, values);
    QList<QVariantMap> rows;
    for (QVariant const& value : values)
        rows += QVariantMap{{column, value}};
    QVector<PropertySet> const recordings = recordingsWith(rows);
    Answer const upwards = answerAmong(recordings, {"", {}, sortTerms({column}, recordings.at(0))});
    QTEST(upwards.byDatabase, "upwards");
    QTEST(upwards.inMemory, "upwards");
    Answer const downwards = answerAmong(recordings, {"", {}, sortTerms({'-' + column}, recordings.at(0))});
    QTEST(downwards.byDatabase, "downwards");
    QTEST(downwards.inMemory, "downwards");
}

void RecordingsSortingTest::severalTerms()
{
    QVector<PropertySet> const recordings = recordingsWith({
        {{"suffix", "b"}, {"size", 1}, {"name", "x"}},
        {{"suffix", "a"}, {"size", 1}, {"name", "y"}},
        {{"suffix", "a"}, {"size", 2}, {"name", "z"}},
        {{"suffix", "a"}, {"size", 2}, {"name", "x"}},
    });
    Answer const found = answerAmong(recordings, {"", {}, sortTerms({"suffix,-size", "name"}, recordings.at(0))});
    QCOMPARE(found.byDatabase, Rows({3, 2, 1, 0}));
    QCOMPARE(found.inMemory, Rows({3, 2, 1, 0}));
}

void RecordingsSortingTest::minusIsAnExpression()
{
    PropertySet const recording = RecordingMaker::prototype();
    ExpressionList const terms = sortTerms({"-size,name"}, recording);
    QVERIFY(Expression::equals(&terms, &static_cast<Expression const&>(-recording["size"] << recording["name"])));
}

void RecordingsSortingTest::anotherOrderIsADisagreement()
{
    QVector<PropertySet> const recordings = recordingsWith({{}, {}});
    Answer const answer{{0, 1}, {1, 0}, 0, 0};
    QVERIFY(!answer.agrees());
    QCOMPARE(answer.onlyByDatabase(), Rows());
    QCOMPARE(answer.onlyInMemory(), Rows());
    QCOMPARE(Report::disagreement({"Films", {}}, answer, recordings),
        QString("SQLite and memory find the same rows for 'Films', but in another order"));
}

QTEST_GUILESS_MAIN(RecordingsSortingTest)
#include "tst_RecordingsSorting.moc"
