// SPDX-License-Identifier: LGPL-2.1-or-later
#include "RecordingsTree.h"

#include <recordings/Recording.h>
#include <recordings/SearchFile.h>

#include <GenericUtilities/expressions/Comparator.h>
#include <GenericUtilities/expressions/Functions.h>
#include <GenericUtilities/expressions/NumericOperators.h>

#include <sys/stat.h>

Q_DECLARE_METATYPE(qvgen::ExpressionHandle)

using namespace qvgen;

/// Searches saved to files and run again by the example.
class RecordingsSearchFileTest : public QObject {
    Q_OBJECT

private slots:
    void savedSearchFindsTheSame_data();
    void savedSearchFindsTheSame();
    void savedSearchIsJoined_data();
    void savedSearchIsJoined();
    void savedSearchIsExtended();
    void savingIsTold();
    void refusedSearch_data();
    void refusedSearch();
    void pipeIsNotWaitedFor();
    void refusedByDatabase_data();
    void refusedByDatabase();
    void failsWhileItRuns();
    void refusedTarget_data();
    void refusedTarget();
    void refusalKeepsTheDatabase();

private:
    static void write(QString const& name, QByteArray const& bytes)
    {
        QFile file(name);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(bytes), qint64{bytes.size()});
    }
    static QByteArray read(QString const& name)
    {
        QFile file(name);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
};

namespace {

PropertySet const& recording()
{
    static PropertySet const prototype = RecordingMaker::prototype();
    return prototype;
}

QByteArray emptyFiles()
{
    return encodedSearch({"", recording()["size"] == 0});
}

} // namespace

void RecordingsSearchFileTest::savedSearchFindsTheSame_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QString>("files");

    auto const row = [](char const* name, QStringList const& options, char const* files) {
        QTest::newRow(name) << options << files;
    };
    row("one condition", {"--larger-than", "10k"}, "big.TXT");
    row("text beyond ASCII", {"--name", QString::fromUtf8("\u00E9\U0001F600")}, "");
    row("text with a quote", {"--name", "it's"}, "it's");
    row("list of names", {"--name", "README", "--name", ".hidden"}, ".hidden README");
    row("empty text", {"--suffix", ""}, "README it's");
    row("moment", {"--modified-after", "2022-05-05"}, "a.txt it's");
    row("every kind of condition",
        {"--name", "a.txt", "--suffix", "txt", "--in-folder", "tree", "--larger-than", "9", "--smaller-than", "11",
            "--modified-after", "2022-05-01", "--modified-before", "2022-05-02"},
        "a.txt");
    row("joined by OR and negated", {"--not", "--any", "--suffix", "txt", "--smaller-than", "50"}, "README docs.md");
    row("with an order", {"--suffix", "txt", "--sort", "-size,name"}, "big.TXT a.txt a.txt");
    row("an order alone", {"--sort", "-size"}, "big.TXT docs.md README it's a.txt a.txt .hidden");
}

void RecordingsSearchFileTest::savedSearchFindsTheSame()
{
    RecordingsTree tree;
    QFETCH(QStringList, options);
    RecordingsResult const saved = tree.run(options + QStringList{"--save-search", "my.search", "--rows", "100"});
    QCOMPARE(saved.error, QString());
    QTEST(saved.lastFiles().join(' '), "files");
    RecordingsResult const again = tree.run({"--search", "my.search", "--rows", "100"});
    QCOMPARE(again.error, QString());
    QCOMPARE(again.exitCode, 0);
    for (char const* label : {"code", "SQL", "values", "sorted by"})
        QCOMPARE(again.lastField(label), saved.lastField(label));
    QCOMPARE(again.lastFiles(), saved.lastFiles());
}

void RecordingsSearchFileTest::savedSearchIsJoined_data()
{
    QTest::addColumn<QStringList>("saved");
    QTest::addColumn<QStringList>("added");
    QTest::addColumn<QString>("statement"); // Behind the name of the table.
    QTest::addColumn<QString>("files");

    auto const row = [](char const* name, QStringList const& saved, QStringList const& added, char const* statement,
                         char const* files) { QTest::newRow(name) << saved << added << statement << files; };
    row("by AND", {"--suffix", "txt"}, {"--smaller-than", "15"}, "WHERE suffix = ? AND size < ?", "a.txt");
    row("by OR", {"--suffix", "md"}, {"--any", "--smaller-than", "1"}, "WHERE suffix = ? OR size < ?",
        ".hidden docs.md");
    row("an OR within an AND", {"--any", "--suffix", "md", "--suffix", "txt", "--smaller-than", "1"},
        {"--larger-than", "100"}, "WHERE (suffix IN (?,?) OR size < ?) AND size > ?", "big.TXT docs.md");
    row("negated", {"--suffix", "txt"}, {"--not"}, "WHERE NOT suffix = ?", ".hidden README docs.md it's");
    row("negated twice", {"--not", "--suffix", "txt"}, {"--not"}, "WHERE NOT  NOT suffix = ?", "a.txt big.TXT a.txt");
    row("order kept", {"--suffix", "txt", "--sort", "-size"}, {"--smaller-than", "100"},
        "WHERE suffix = ? AND size < ? ORDER BY size DESC,id", "a.txt a.txt");
    row("order replaced", {"--suffix", "txt", "--sort", "-size"}, {"--sort", "size"},
        "WHERE suffix = ? ORDER BY size,id", "a.txt a.txt big.TXT");
    row("order without condition gets one", {"--sort", "-size"}, {"--smaller-than", "30"},
        "WHERE size < ? ORDER BY size DESC,id", "a.txt a.txt .hidden");
}

void RecordingsSearchFileTest::savedSearchIsJoined()
{
    RecordingsTree tree;
    QFETCH(QStringList, saved);
    QFETCH(QStringList, added);
    QCOMPARE(tree.run(saved + QStringList{"--save-search", "my.search"}).exitCode, 0);
    RecordingsResult const result = tree.run(added + QStringList{"--search", "my.search", "--rows", "100"});
    QCOMPARE(result.error, QString());
    QFETCH(QString, statement);
    QCOMPARE(result.lastField("SQL"), "SELECT id FROM recordings " + statement);
    QTEST(result.lastFiles().join(' '), "files");
}

void RecordingsSearchFileTest::savedSearchIsExtended()
{
    RecordingsTree tree;
    QCOMPARE(tree.run({"--suffix", "txt", "--save-search", "my.search"}).exitCode, 0);
    RecordingsResult const extended
        = tree.run({"--search", "my.search", "--smaller-than", "15", "--save-search", "my.search"});
    QCOMPARE(extended.error, QString());
    QCOMPARE(tree.run({"--search", "my.search"}).lastField("values"), QString("'txt', 15"));
}

void RecordingsSearchFileTest::savingIsTold()
{
    RecordingsTree tree;
    RecordingsResult const result = tree.run({"--suffix", "txt", "--save-search", "my.search"});
    QCOMPARE(result.lastField("saved"), "your search, in " + tree.root() + "/my.search");
    QVERIFY(!tree.run({"--suffix", "txt"}).output.contains("  saved  "));
}

void RecordingsSearchFileTest::refusedSearch_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QString>("reason");

    auto const row = [](char const* name, QByteArray const& bytes, char const* reason) {
        QTest::newRow(name) << bytes << QStringList() << QString(reason);
    };
    row("empty file", "", "it is no saved search");
    row("text", "suffix = 'png'", "it is no saved search");
    row("cut in the middle", emptyFiles().left(100), "it is damaged");
    row("cut behind the version", emptyFiles().left(8), "it is damaged");
    row("without its last byte", emptyFiles().chopped(1), "it is damaged");
    row("a byte more", emptyFiles() + '\0', "it is damaged");
    row("another column", emptyFiles().replace(QByteArray("i\0z", 3), QByteArray("i\0y", 3)), "it is damaged");
    row("of a later version", QByteArray("RSrc\0\0\0\2 and what we do not know", 32),
        "it was saved by a later version of this program");
    row("too large", emptyFiles() + QByteArray(1 << 20, 'x'), "it is larger than 1 MiB");
    row("of another catalogue", encodedSearch({"", ValueExpression("colour", QString()) == "red"}),
        "it names 'colour', which is no column");
    row("line breaks and escapes in a name", encodedSearch({"", ValueExpression("a\nb\x1b[2J", QString()) == "red"}),
        "it names 'a\\nb\\x1b[2J', which is no column");
}

void RecordingsSearchFileTest::refusedSearch()
{
    RecordingsTree tree;
    QFETCH(QByteArray, bytes);
    QFETCH(QString, reason);
    write("my.search", bytes);
    RecordingsResult const result = tree.run({"--search", "my.search"});
    QCOMPARE(result.error,
        QString("recordings: the search file '%1/my.search' cannot be used: %2\n").arg(tree.root(), reason));
    QCOMPARE(result.exitCode, 2);
    QCOMPARE(result.output, QString());
}

void RecordingsSearchFileTest::pipeIsNotWaitedFor()
{
    RecordingsTree tree;
    QCOMPARE(mkfifo("pipe", 0600), 0);
    QVERIFY(tree.run({"--search", "pipe"}).error.endsWith("cannot be used: it is no file\n"));
    QVERIFY(tree.run({"--search", "tree"}).error.endsWith("cannot be used: it is no file\n"));
    QVERIFY(tree.run({"--search", "missing"}).error.endsWith("cannot be used: No such file or directory\n"));
}

void RecordingsSearchFileTest::refusedByDatabase_data()
{
    QTest::addColumn<ExpressionHandle>("condition");
    QTest::addColumn<QString>("named"); // In SQLite's words.

    auto const& size = recording()["size"];
    ExpressionHandle const name = ValueExpression("name", QString());
    QTest::newRow("a modulo") << ExpressionHandle(size % 512 == 0) << "\"mod\"";
    QTest::newRow("a pattern of another dialect") << regexp(name, "a.*") << "REGEXP";
    QTest::newRow("an aggregate") << ExpressionHandle(count(ValueExpression("name", QString()), false) > 1)
                                  << "count()";
}

void RecordingsSearchFileTest::refusedByDatabase()
{
    RecordingsTree tree;
    QFETCH(ExpressionHandle, condition);
    QFETCH(QString, named);
    write("my.search", encodedSearch({"", condition}));
    RecordingsResult const result = tree.run({"--search", "my.search"});
    QVERIFY2(result.error.startsWith("recordings: SQLite cannot answer 'Your search': "), qPrintable(result.error));
    QVERIFY2(result.error.contains(named), qPrintable(result.error));
    QCOMPARE(result.error.count('\n'), 1);
    QCOMPARE(result.exitCode, 2);
    QCOMPARE(result.output, QString());
}

void RecordingsSearchFileTest::failsWhileItRuns()
{
    RecordingsTree tree;
    write("my.search", encodedSearch({"", like(ValueExpression("name", QString()), "a%", "two")}));
    RecordingsResult const result = tree.run({"--search", "my.search"});
    QCOMPARE(result.error,
        QString("recordings: SQLite cannot answer 'Your search': ESCAPE expression must be a single character\n"));
    QCOMPARE(result.exitCode, 2);
}

void RecordingsSearchFileTest::refusedTarget_data()
{
    QTest::addColumn<QString>("target");
    QTest::addColumn<QString>("reason");

    QTest::newRow("missing folder") << "missing/x"
                                    << "No such file or directory";
    QTest::newRow("folder") << "tree"
                            << "it is no file";
    QTest::newRow("file of someone else") << "tree/big.TXT"
                                          << "it holds something else than a search";
    QTest::newRow("empty file of someone else") << "tree/.hidden"
                                                << "it holds something else than a search";
    QTest::newRow("the database") << "recordings.sqlite"
                                  << "it holds something else than a search";
}

void RecordingsSearchFileTest::refusedTarget()
{
    RecordingsTree tree;
    QFETCH(QString, target);
    QFETCH(QString, reason);
    QByteArray const before = read(target);
    RecordingsResult const result = tree.run({"--suffix", "txt", "--save-search", target});
    QCOMPARE(result.error,
        QString("recordings: the search file '%1/%2' cannot be written: %3\n").arg(tree.root(), target, reason));
    QCOMPARE(result.exitCode, 2);
    QCOMPARE(read(target), before);
}

void RecordingsSearchFileTest::refusalKeepsTheDatabase()
{
    RecordingsTree tree;
    QCOMPARE(tree.run({}).exitCode, 0);
    write("my.search", encodedSearch({"", recording()["size"] % 512 == 0}));
    QCOMPARE(tree.run({"--search", "my.search"}).exitCode, 2);
    QCOMPARE(tree.run({"--suffix", "txt", "--save-search", "tree"}).exitCode, 2);
    QCOMPARE(tree.fromDatabase("SELECT count(*) FROM recordings").toInt(), 7);
}

QTEST_GUILESS_MAIN(RecordingsSearchFileTest)
#include "tst_RecordingsSearchFile.moc"
