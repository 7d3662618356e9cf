// SPDX-License-Identifier: LGPL-2.1-or-later
#include <QtTest>

#include <recordings/Recording.h>
#include <recordings/Report.h>
#include <terminal/Text.h>

#include <QTextStream>

/// What the example says when the two ways disagree, which no run of it shows; and its handling of texts.
class RecordingsPartsTest : public QObject {
    Q_OBJECT

private slots:
    void answersDiffer_data();
    void answersDiffer();
    void disagreementIsReported();
    void printableText_data();
    void printableText();
    void elidedText_data();
    void elidedText();
    void wrappedText_data();
    void wrappedText();
    void longTextsAreWrapped();
    void everyPropertyClassHasItsColumn_data();
    void everyPropertyClassHasItsColumn();
};

Q_DECLARE_METATYPE(Elide)

void RecordingsPartsTest::answersDiffer_data()
{
    QTest::addColumn<QVector<int>>("byDatabase");
    QTest::addColumn<QVector<int>>("inMemory");
    QTest::addColumn<QVector<int>>("onlyByDatabase");
    QTest::addColumn<QVector<int>>("onlyInMemory");

    using Rows = QVector<int>;
    QTest::newRow("nothing in either") << Rows{} << Rows{} << Rows{} << Rows{};
    QTest::newRow("the same rows") << Rows{1, 5} << Rows{1, 5} << Rows{} << Rows{};
    QTest::newRow("as many, but others") << Rows{1, 5} << Rows{1, 6} << Rows{5} << Rows{6};
    QTest::newRow("missing in memory") << Rows{1, 5} << Rows{5} << Rows{1} << Rows{};
    QTest::newRow("missing in the database") << Rows{} << Rows{0} << Rows{} << Rows{0};
}

void RecordingsPartsTest::answersDiffer()
{
    QFETCH(QVector<int>, byDatabase);
    QFETCH(QVector<int>, inMemory);
    Answer const answer{byDatabase, inMemory, 0, 0};
    QCOMPARE(answer.agrees(), byDatabase == inMemory);
    QTEST(answer.onlyByDatabase(), "onlyByDatabase");
    QTEST(answer.onlyInMemory(), "onlyInMemory");
}

void RecordingsPartsTest::disagreementIsReported()
{
    QVector<qvgen::PropertySet> recordings{RecordingMaker::prototype()};
    qvgen::StringProperty::setValue(recordings[0]["folder"], "/films");
    qvgen::StringProperty::setValue(recordings[0]["name"], "one.avi");
    Search const search{"Films", qvgen::ExpressionHandle()};
    Answer const answer{{0}, {}, 0, 0};
    QCOMPARE(Report::disagreement(search, answer, recordings),
        QString("SQLite and memory disagree on 'Films': 1 row only by SQLite, 0 rows only in memory, such as "
                "'/films/one.avi'"));

    QString text;
    QTextStream out(&text);
    Report report(out, 100, 5);
    report.search(search, answer, recordings);
    report.verdict();
    QCOMPARE(report.disagreements(), 1);
    QVERIFY2(text.contains("THEY DIFFER"), qPrintable(text));
    QVERIFY2(!text.contains("the same"), qPrintable(text));
}

void RecordingsPartsTest::printableText_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");

    QTest::newRow("empty") << QString() << QString();
    QTest::newRow("plain") << "a b.txt"
                           << "a b.txt";
    QTest::newRow("line break and tab") << "a\nb\tc"
                                        << "a\\nb\\tc";
    QTest::newRow("escape sequence") << "\x1b[31m"
                                     << "\\x1b[31m";
    QTest::newRow("delete") << "\x7f"
                            << "\\x7f";
    QTest::newRow("C1 control") << QString(QChar(0x9b)) << "\\x9b";
    QTest::newRow("right-to-left override") << QString(QChar(0x202e)) << "\\u202e";
    QTest::newRow("line separator") << QString(QChar(0x2028)) << "\\u2028";
    QTest::newRow("letters beyond ASCII") << QString::fromUtf8("Főtanúsítvány") << QString::fromUtf8("Főtanúsítvány");
    QTest::newRow("beyond 16 bits") << QString::fromUtf8("\U0001F600") << QString::fromUtf8("\U0001F600");
}

void RecordingsPartsTest::printableText()
{
    QFETCH(QString, text);
    QTEST(printable(text), "expected");
}

void RecordingsPartsTest::elidedText_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("width");
    QTest::addColumn<Elide>("side");
    QTest::addColumn<QString>("expected");

    QTest::newRow("fits exactly") << "abcdef" << 6 << Elide::Right << "abcdef";
    QTest::newRow("end cut") << "abcdefg" << 6 << Elide::Right << "abc...";
    QTest::newRow("start cut") << "abcdefg" << 6 << Elide::Left << "...efg";
    QTest::newRow("no half character at the end")
        << QString::fromUtf8("a\U00010348\U00010348\U00010348\U00010348") << 4 << Elide::Right << "a...";
}

void RecordingsPartsTest::elidedText()
{
    QFETCH(QString, text);
    QFETCH(int, width);
    QFETCH(Elide, side);
    QTEST(elided(text, width, side), "expected");
}

void RecordingsPartsTest::wrappedText_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected"); // At 10 columns, indented by 2.

    QTest::newRow("empty") << QString() << QString();
    QTest::newRow("fits exactly") << "aaaa bbbbb"
                                  << "aaaa bbbbb";
    QTest::newRow("one column too long") << "aaaa bbbbbb"
                                         << "aaaa\n  bbbbbb";
    QTest::newRow("indented lines are shorter") << "aaaa bbbb cccc dddd"
                                                << "aaaa bbbb\n  cccc\n  dddd";
    QTest::newRow("blank right behind the room") << "aaaaaaaaaa b"
                                                 << "aaaaaaaaaa\n  b";
    QTest::newRow("a word too long for a line") << "aaaaaaaaaaaa b"
                                                << "aaaaaaaaaaaa\n  b";
    QTest::newRow("nowhere to break") << "aaaaaaaaaaaa"
                                      << "aaaaaaaaaaaa";
}

void RecordingsPartsTest::wrappedText()
{
    QFETCH(QString, text);
    QTEST(wrapped(text, 10, 2), "expected");
}

/// The condition of a search file may be as long as this.
void RecordingsPartsTest::longTextsAreWrapped()
{
    constexpr int words = 300000;
    QString const text = QStringLiteral("abcdefg ").repeated(words) + QStringLiteral("last");
    QCOMPARE(wrapped(text, 10, 2), QStringLiteral("abcdefg\n  ").repeated(words) + QStringLiteral("last"));
}

void RecordingsPartsTest::everyPropertyClassHasItsColumn_data()
{
    QTest::addColumn<QString>("property");
    QTest::addColumn<QString>("type");
    QTest::addColumn<QString>("column");

    auto const row = [](char const* property, char const* type, char const* column) {
        QTest::newRow(property) << property << type << column;
    };
    row("permissions", "IntProperty", "INTEGER");
    row("depth", "UIntProperty", "INTEGER");
    row("size", "U64Property", "INTEGER");
    row("hidden", "BoolProperty", "INTEGER");
    row("day", "DateProperty", "INTEGER");
    row("time", "TimeProperty", "INTEGER");
    row("modified", "DateTimeProperty", "INTEGER");
    row("age", "DoubleProperty", "REAL");
    row("name", "StringProperty", "TEXT");
    row("path", "StringListProperty", "");
    row("group", "PropertySetProperty", "");
}

void RecordingsPartsTest::everyPropertyClassHasItsColumn()
{
    QFETCH(QString, property);
    qvgen::PropertySet const recording = RecordingMaker::prototype();
    QTEST(recording[property].type(), "type");
    QTEST(columnType(recording[property].variantValue()), "column");
}

QTEST_GUILESS_MAIN(RecordingsPartsTest)
#include "tst_RecordingsParts.moc"
