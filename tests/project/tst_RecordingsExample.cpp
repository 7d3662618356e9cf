// SPDX-License-Identifier: LGPL-2.1-or-later
#include "RecordingsTree.h"

#include <sys/stat.h>

/// Runs the example on a tree of files.
class RecordingsExampleTest : public QObject {
    Q_OBJECT

private slots:
    void readyMadeSearchesAgree();
    void treeIsCounted();
    void rowsAreLimited();
    void emptyFolderHasNoRows();
    void helpAndVersion_data();
    void helpAndVersion();
    void requestedSearch_data();
    void requestedSearch();
    void controlCharactersAreEscaped();
    void valueOutOfRangeIsTold_data();
    void valueOutOfRangeIsTold();
    void databaseHoldsTheRecordings();
    void databaseIsReplaced();
    void unreadableFolderIsSkipped();
};

void RecordingsExampleTest::readyMadeSearchesAgree()
{
    RecordingsTree tree;
    RecordingsResult const result = tree.run({});
    QCOMPARE(result.error, QString());
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(result.output.count("in memory in"), 17);
    QCOMPARE(result.output.count(": the same\n"), 17);
    QVERIFY(result.output.endsWith("All 17 searches were answered by SQLite and in memory with the same rows.\n"));
}

void RecordingsExampleTest::treeIsCounted()
{
    RecordingsTree tree;
    QVERIFY(QFile::link(tree.path("."), tree.path("docs/loop")));
    QVERIFY(QFile::link("nowhere", tree.path("broken")));
    QCOMPARE(mkfifo(QFile::encodeName(tree.path("fifo")).constData(), 0600), 0);
    RecordingsResult const result = tree.run({});
    QCOMPARE(result.exitCode, 0);
    QVERIFY2(result.output.contains("  indexed    7 files in 3 folders, in "), qPrintable(result.output));
    QCOMPARE(result.lastField("left out"), QString("2 symbolic links, 1 special file, 0 unreadable folders"));
    QCOMPARE(result.lastField("validated"), QString("all values are in the range of their validators"));
}

void RecordingsExampleTest::rowsAreLimited()
{
    RecordingsTree tree;
    // Indented by four blanks, under a line of titles.
    RecordingsResult const two = tree.run({"--not", "--suffix", "none", "--rows", "2"});
    QCOMPARE(two.exitCode, 0);
    QVERIFY2(two.lastSearch().contains("    ... and 5 more\n"), qPrintable(two.output));
    RecordingsResult const none = tree.run({"--not", "--suffix", "none", "--rows", "0"});
    QCOMPARE(none.exitCode, 0);
    QVERIFY2(!none.output.contains("docs.md"), qPrintable(none.output));
}

void RecordingsExampleTest::emptyFolderHasNoRows()
{
    RecordingsTree tree;
    QVERIFY(QDir(tree.path(".")).mkdir("empty"));
    RecordingsResult const result = tree.run({"--folder", "tree/empty", "--not", "--suffix", "none"});
    QCOMPARE(result.exitCode, 0);
    QVERIFY2(result.output.contains("0 files in 1 folder, "), qPrintable(result.output));
    QVERIFY(result.lastField("found").startsWith("0 rows by SQLite in "));
}

void RecordingsExampleTest::helpAndVersion_data()
{
    QTest::addColumn<QString>("option");
    QTest::addColumn<QString>("expected");

    QTest::newRow("units") << "--help"
                           << "10k, 5M, 1G";
    QTest::newRow("time zone") << "--help"
                               << "in UTC";
    QTest::newRow("example") << "--help"
                             << "recordings --suffix png,svg --larger-than 100k";
    QTest::newRow("sort terms") << "--help"
                                << "-size sorts downwards";
    QTest::newRow("search files") << "--help"
                                  << "recordings --search pictures.search --larger-than 1M";
    QTest::newRow("exit status") << "--help"
                                 << "Exit status: 0";
    QTest::newRow("version") << "--version"
                             << "recordings 1.0.0";
}

void RecordingsExampleTest::helpAndVersion()
{
    RecordingsTree tree;
    QFETCH(QString, option);
    QFETCH(QString, expected);
    RecordingsResult const result = tree.run({option});
    QCOMPARE(result.exitCode, 0);
    QVERIFY2(result.output.contains(expected), qPrintable(result.output));
    QVERIFY(!QFile::exists(tree.database()));
}

void RecordingsExampleTest::requestedSearch_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QString>("condition");
    QTest::addColumn<QString>("values");
    QTest::addColumn<QString>("files"); // In the order of the folders, then of the names.

    auto const row = [](char const* name, QStringList const& options, char const* condition, char const* values,
                         char const* files) { QTest::newRow(name) << options << condition << values << files; };

    row("exact name", {"--name", "a.txt"}, "name = ?", "'a.txt'", "a.txt a.txt");
    row("name in another case", {"--name", "readme"}, "name = ?", "'readme'", "");
    row("two names", {"--name", "README", "--name", ".hidden"}, "name IN (?,?)", "'README', '.hidden'",
        ".hidden README");
    row("name with a quote", {"--name", "it's"}, "name = ?", "'it's'", "it's");
    row("name that looks like SQL", {"--name", "' OR '1'='1"}, "name = ?", "'' OR '1'='1'", "");
    row("one suffix, its case in the file name", {"--suffix", "txt"}, "suffix = ?", "'txt'", "a.txt big.TXT a.txt");
    row("one suffix, its case and dot on the command line", {"--suffix", ".TXT"}, "suffix = ?", "'txt'",
        "a.txt big.TXT a.txt");
    row("list of suffixes", {"--suffix", "md,hidden"}, "suffix IN (?,?)", "'md', 'hidden'", ".hidden docs.md");
    row("suffix given twice", {"--suffix", "md", "--suffix", "hidden"}, "suffix IN (?,?)", "'md', 'hidden'",
        ".hidden docs.md");
    row("without suffix", {"--suffix", ""}, "suffix = ?", "''", "README it's");
    row("larger than the second largest", {"--larger-than", "10k"}, "size > ?", "10240", "big.TXT");
    row("larger than anything", {"--larger-than", "9223372036854775807"}, "size > ?", "9223372036854775807", "");
    row("smaller than anything", {"--smaller-than", "0"}, "size < ?", "0", "");
    row("smaller than the third smallest", {"--smaller-than", "20"}, "size < ?", "20", ".hidden a.txt");
    row("smaller than a terabyte and nothing else", {"--smaller-than", "1T", "--larger-than", "100"},
        "size > ? AND size < ?", "100, 1099511627776", "big.TXT docs.md");
    row("after a day means after its midnight", {"--modified-after", "2022-05-05"}, "modified > ?", "1651708800000000",
        "a.txt it's");
    row("before a moment", {"--modified-before", "2022-05-01T12:00:01"}, "modified < ?", "1651406401000000", "a.txt");
    row("before a moment of another time zone", {"--modified-before", "2022-05-01T14:00:00+02:00"}, "modified < ?",
        "1651406400000000", "");
    row("one owner that is nobody's name", {"--owner", "no such user"}, "owner = ?", "'no such user'", "");
    row("joined by AND", {"--suffix", "txt", "--smaller-than", "100"}, "suffix = ? AND size < ?", "'txt', 100",
        "a.txt a.txt");
    row("joined by OR", {"--any", "--suffix", "md", "--smaller-than", "1"}, "suffix = ? OR size < ?", "'md', 1",
        ".hidden docs.md");
    row("one negated", {"--not", "--smaller-than", "10k"}, "NOT size < ?", "10240", "big.TXT docs.md");
    row("negated AND", {"--not", "--suffix", "txt", "--smaller-than", "15"}, "NOT (suffix = ? AND size < ?)",
        "'txt', 15", ".hidden big.TXT README docs.md a.txt it's");
    row("negated OR", {"--not", "--any", "--suffix", "txt", "--smaller-than", "50"}, "NOT (suffix = ? OR size < ?)",
        "'txt', 50", "README docs.md");
}

void RecordingsExampleTest::requestedSearch()
{
    RecordingsTree tree;
    QFETCH(QStringList, options);
    QFETCH(QString, condition);
    QFETCH(QString, values);
    QFETCH(QString, files);
    RecordingsResult const result = tree.run(options + QStringList{"--rows", "100"});
    QCOMPARE(result.error, QString());
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(result.lastField("SQL"), "SELECT id FROM recordings WHERE " + condition);
    QCOMPARE(result.lastField("values"), values);

    QStringList const expected = files.split(' ', Qt::SkipEmptyParts);
    QCOMPARE(result.lastFiles(), expected);
    QVERIFY(result.lastField("found").startsWith(QString::number(expected.size()) + " row"));
}

void RecordingsExampleTest::controlCharactersAreEscaped()
{
    RecordingsTree tree;
    tree.write("tab\there \x1b[31m", 1, "2022-05-08T00:00:00Z");
    RecordingsResult const result = tree.run({"--in-folder", "tree", "--larger-than", "0", "--rows", "100"});
    QCOMPARE(result.exitCode, 0);
    QVERIFY2(result.output.contains("tab\\there \\x1b[31m "), qPrintable(result.output));
    QVERIFY(!result.output.contains(QRegularExpression("[\\x00-\\x09\\x0b-\\x1f\\x7f]")));
}

void RecordingsExampleTest::valueOutOfRangeIsTold_data()
{
    QTest::addColumn<QString>("modified");
    QTest::addColumn<int>("permissions");
    QTest::addColumn<QString>("told");

    QTest::newRow("modified in the future")
        << "2037-01-01T00:00:00Z" << 0644 << "1 file with a value out of range (kept): age 1";
    QTest::newRow("modified before 1970")
        << "1969-12-31T23:59:59Z" << 0644 << "1 file with a value out of range (kept): modified 1";
    QTest::newRow("not readable to its owner")
        << "2022-05-08T00:00:00Z" << 0044 << "1 file with a value out of range (kept): permissions 1";
    QTest::newRow("two values of one file")
        << "2037-01-01T00:00:00Z" << 0044 << "1 file with a value out of range (kept): age 1, permissions 1";
}

void RecordingsExampleTest::valueOutOfRangeIsTold()
{
    RecordingsTree tree;
    QFETCH(QString, modified);
    QFETCH(int, permissions);
    QFETCH(QString, told);
    tree.write("odd", 1, modified);
    QCOMPARE(chmod(QFile::encodeName(tree.path("odd")).constData(), static_cast<mode_t>(permissions)), 0);
    RecordingsResult const result = tree.run({"--name", "odd"});
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(result.lastField("validated"), told);
    QVERIFY(result.lastField("found").startsWith("1 row by SQLite in "));
}

void RecordingsExampleTest::databaseHoldsTheRecordings()
{
    RecordingsTree tree;
    QCOMPARE(tree.run({}).exitCode, 0);
    QCOMPARE(tree.fromDatabase("SELECT count(*) FROM recordings").toInt(), 7);
    QCOMPARE(tree.fromDatabase("SELECT modified FROM recordings WHERE size = 10").toLongLong(), 1651406400000000);
    QCOMPARE(tree.fromDatabase("SELECT time FROM recordings WHERE size = 10").toLongLong(), 43200000000);
    QCOMPARE(tree.fromDatabase("SELECT depth FROM recordings WHERE size = 20").toInt(), 2);
    QCOMPARE(tree.fromDatabase("SELECT section FROM recordings WHERE size = 20").toString(), QString("docs"));
    QCOMPARE(tree.fromDatabase("SELECT permissions FROM recordings WHERE size = 20").toInt(), 0644);
    QCOMPARE(tree.fromDatabase("SELECT typeof(size) FROM recordings WHERE size = 20").toString(), QString("integer"));
    QCOMPARE(tree.fromDatabase("SELECT count(*) FROM recordings WHERE section IS NULL OR suffix IS NULL").toInt(), 0);
}

void RecordingsExampleTest::databaseIsReplaced()
{
    RecordingsTree tree;
    QCOMPARE(tree.run({}).exitCode, 0);
    QVERIFY(QFile::remove(tree.path("a.txt")));
    QCOMPARE(tree.run({}).exitCode, 0);
    QCOMPARE(tree.fromDatabase("SELECT count(*) FROM recordings").toInt(), 6);
}

void RecordingsExampleTest::unreadableFolderIsSkipped()
{
    RecordingsTree tree;
    QFile deep(tree.path("docs/deep"));
    QVERIFY(deep.setPermissions(QFileDevice::Permissions()));
    RecordingsResult const result = tree.run({});
    QVERIFY(deep.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    QCOMPARE(result.exitCode, 0);
    QVERIFY2(result.output.contains("5 files in 2 folders"), qPrintable(result.output));
    QCOMPARE(result.lastField("left out"), QString("0 symbolic links, 0 special files, 1 unreadable folder"));
}

QTEST_GUILESS_MAIN(RecordingsExampleTest)
#include "tst_RecordingsExample.moc"
