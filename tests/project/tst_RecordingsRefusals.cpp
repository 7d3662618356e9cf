// SPDX-License-Identifier: LGPL-2.1-or-later
#include "RecordingsTree.h"

/// What the example refuses: with one line, exit code 2, and no harm to any file.
class RecordingsRefusalsTest : public QObject {
    Q_OBJECT

private slots:
    void refusal_data();
    void refusal();
    void foreignDatabaseKeepsItsRows();
    void failedRunKeepsTheDatabase();
    void readOnlyDatabaseIsRefused();
    void unreadableRootIsRefused();
};

void RecordingsRefusalsTest::refusal_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QString>("message"); // %1: the folder that the test runs in

    auto const row = [](char const* name, QStringList const& options, char const* message) {
        QTest::newRow(name) << options << QString::fromLatin1(message);
    };

    row("missing folder", {"--folder", "missing"}, "there is no folder '%1/missing'");
    row("file for a folder", {"--folder", "tree/big.TXT"}, "'%1/tree/big.TXT' is not a folder");
    row("empty folder name", {"--folder", ""}, "--folder takes a path, not ''");
    row("database in a missing folder", {"--database", "missing/x"},
        "the database '%1/missing/x' cannot be used: unable to open database file");
    row("folder for a database", {"--database", "tree"},
        "the database '%1/tree' cannot be used: unable to open database file");
    row("database that is no database", {"--database", "tree/big.TXT"},
        "the database '%1/tree/big.TXT' cannot be used: file is not a database");
    row("database shorter than a header", {"--database", "tree/a.txt"},
        "the database '%1/tree/a.txt' cannot be used: file is not a database");
    row("bytes with an unknown unit", {"--larger-than", "5x"},
        "--larger-than takes a number of bytes such as 500, 10k, 5M, 1G, not '5x'");
    row("negative bytes", {"--smaller-than", "-1"},
        "--smaller-than takes a number of bytes such as 500, 10k, 5M, 1G, not '-1'");
    row("no bytes", {"--smaller-than", ""}, "--smaller-than takes a number of bytes such as 500, 10k, 5M, 1G, not ''");
    row("a byte more than a column holds", {"--larger-than", "9223372036854775808"},
        "--larger-than takes at most 9223372036854775807 bytes, not '9223372036854775808'");
    row("a unit too much", {"--larger-than", "8388608T"},
        "--larger-than takes at most 9223372036854775807 bytes, not '8388608T'");
    row("no date", {"--modified-after", "yesterday"},
        "--modified-after takes a date such as 2024-05-31 or 2024-05-31T18:30, not 'yesterday'");
    row("impossible date", {"--modified-before", "2023-02-29"},
        "--modified-before takes a date such as 2024-05-31 or 2024-05-31T18:30, not '2023-02-29'");
    row("date before the library's scale", {"--modified-after", "1969-12-31"},
        "--modified-after takes a date from 1970-01-01 to 2106-02-07, not '1969-12-31'");
    row("date behind the library's scale", {"--modified-before", "2106-02-08"},
        "--modified-before takes a date from 1970-01-01 to 2106-02-07, not '2106-02-08'");
    row("negative rows", {"--rows", "-1"}, "--rows takes a number from 0 on, not '-1'");
    row("rows that are no number", {"--rows", "all"}, "--rows takes a number from 0 on, not 'all'");
    row("OR of nothing", {"--any"}, "--any and --not need a condition to work on, such as --suffix png");
    row("negation of nothing", {"--not"}, "--any and --not need a condition to work on, such as --suffix png");
    row("sort by an unknown column", {"--sort", "size,colour"},
        "--sort takes columns such as size or -modified, not 'colour'");
    row("sort by what is no column", {"--sort", "-path"},
        "--sort takes columns such as size or -modified, not '-path'");
    row("sort by the id", {"--sort", "id"}, "--sort takes columns such as size or -modified, not 'id'");
    row("sort by SQL", {"--sort", "size; DROP TABLE recordings"},
        "--sort takes columns such as size or -modified, not 'size; DROP TABLE recordings'");
    row("sort with an upward sign", {"--sort", "+size"}, "--sort takes columns such as size or -modified, not '+size'");
    row("sort with two signs", {"--sort", "--size"}, "--sort takes columns such as size or -modified, not '--size'");
    row("sort by nothing", {"--sort", ""}, "--sort takes columns such as size or -modified, not ''");
    row("sort by an empty term", {"--sort", "size,"}, "--sort takes columns such as size or -modified, not ''");
    row("nothing to save", {"--save-search", "x"},
        "--save-search needs a search to store, such as --suffix png --sort -size");
    row("empty name of a search file", {"--search", ""}, "--search takes a path, not ''");
    row("argument without option", {"stray"}, "unexpected argument 'stray' (see --help)");
    row("unknown option", {"--colour"}, "Unknown option 'colour'.");
    row("option without its value", {"--rows"}, "Missing value after '--rows'.");
    row("line breaks and escapes in a value", {"--folder", "a\nb\x1b[2J"}, "there is no folder '%1/a b\\x1b[2J'");
}

void RecordingsRefusalsTest::refusal()
{
    RecordingsTree tree;
    QFETCH(QStringList, options);
    QFETCH(QString, message);
    RecordingsResult const result = tree.run(options);
    QCOMPARE(result.error, "recordings: " + message.replace("%1", tree.root()) + "\n");
    QCOMPARE(result.exitCode, 2);
    QCOMPARE(result.output, QString());
}

void RecordingsRefusalsTest::foreignDatabaseKeepsItsRows()
{
    RecordingsTree tree;
    RecordingsTree::runSql(tree.database(), "CREATE TABLE recordings (precious TEXT)");
    RecordingsTree::runSql(tree.database(), "INSERT INTO recordings VALUES ('gold')");
    RecordingsResult const result = tree.run({});
    QCOMPARE(result.exitCode, 2);
    QCOMPARE(result.error,
        QString("recordings: the database '%1' cannot be used: it holds data of another program\n")
            .arg(tree.database()));
    QCOMPARE(tree.fromDatabase("SELECT precious FROM recordings").toString(), QString("gold"));
}

void RecordingsRefusalsTest::readOnlyDatabaseIsRefused()
{
    RecordingsTree tree;
    QCOMPARE(tree.run({}).exitCode, 0);
    QVERIFY(QFile::setPermissions(tree.database(), QFile::ReadOwner));
    RecordingsResult const result = tree.run({});
    QCOMPARE(result.exitCode, 2);
    QCOMPARE(result.error,
        QString("recordings: the database '%1' cannot be used: attempt to write a readonly database\n")
            .arg(tree.database()));
}

void RecordingsRefusalsTest::unreadableRootIsRefused()
{
    RecordingsTree tree;
    QFile deep(tree.path("docs/deep"));
    QVERIFY(deep.setPermissions(QFileDevice::Permissions()));
    RecordingsResult const result = tree.run({"--folder", "tree/docs/deep"});
    QVERIFY(deep.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    QCOMPARE(result.exitCode, 2);
    QCOMPARE(result.error, QString("recordings: the folder '%1' cannot be read\n").arg(tree.path("docs/deep")));
}

void RecordingsRefusalsTest::failedRunKeepsTheDatabase()
{
    RecordingsTree tree;
    QCOMPARE(tree.run({}).exitCode, 0);
    QCOMPARE(tree.run({"--folder", "missing"}).exitCode, 2);
    QCOMPARE(tree.fromDatabase("SELECT count(*) FROM recordings").toInt(), 7);
}

QTEST_GUILESS_MAIN(RecordingsRefusalsTest)
#include "tst_RecordingsRefusals.moc"
