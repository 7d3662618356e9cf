// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/actionlog/LogFileFilter_p.h>

#include <QBuffer>
#include <QTest>
#include <QTextCodec>

using qv::LogFileFilter;

namespace {

constexpr int Limit = 16 * 1024 * 1024;

QByteArray const TooLarge = "An entry is larger than 16 MiB.";
QByteArray const TooMany = "An entry has more than 1000 attributes.";
QByteArray const NotUtf8 = "A log file is written in UTF-8.";
QByteArray const DocumentType = "A log file has no document type.";

QByteArray blanks(int count)
{
    return QByteArray(count, ' ');
}

QByteArray attributes(int count, QByteArray const& attribute = " a=\"\"")
{
    return attribute.repeated(count);
}

// In pieces of any size the filter must say the same.
QByteArray filtered(QByteArray bytes, int pieceSize, QString& failure)
{
    QBuffer source(&bytes);
    source.open(QIODevice::ReadOnly);
    LogFileFilter filter(&source);
    QByteArray result;
    for (QByteArray piece = filter.read(pieceSize); !piece.isEmpty(); piece = filter.read(pieceSize))
        result += piece;
    failure = filter.failure();
    return result;
}

} // namespace

class TestLogFileFilter : public QObject {
    Q_OBJECT

private slots:
    void bytes_data();
    void bytes();
    void bounds_data();
    void bounds();
    void everyByteAlone();
    void everyPairBehindALead();
    void endIsNotFinal();
    void failureIsFinal();
    void takesNothing();
};

void TestLogFileFilter::bytes_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArray>("passed");
    QTest::addColumn<QByteArray>("failure");
    auto const passes
        = [](char const* name, QByteArray const& bytes) { QTest::newRow(name) << bytes << bytes << QByteArray(); };
    auto const stops = [](char const* name, QByteArray const& passed, QByteArray const& rest,
                           QByteArray const& failure) { QTest::newRow(name) << passed + rest << passed << failure; };
    passes("nothing", "");
    passes("entry", "<Entry Text=\"a\t\n\r b\"/>");
    passes("characters of all lengths",
        "a\xC2\x80\xDF\xBF\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xF0\x90\x80\x80\xF4\x8F\xBF\xBF");
    passes("DEL and the controls behind it", "\x7F\xC2\x80\xC2\x9F");
    passes("character cut at the end", "a\xF0\x9F");
    passes("comment, characters, instruction", "<!-- <a> \" --><![CDATA[<a '> ]]><?p <a \" ?>");
    QTest::newRow("zeros and controls") << QByteArray("<\0E\x01"
                                                      "n\x1Ft\x0B\x0C"
                                                      "ry \0/>",
        15) << QByteArray("<Entry />") << QByteArray();
    QTest::newRow("nothing but zeros") << QByteArray(100000, '\0') << QByteArray() << QByteArray();
    QTest::newRow("zero within a character") << QByteArray("\xC3\0\xA4", 3) << QByteArray("\xC3\xA4") << QByteArray();
    QTest::newRow("zeros within \"<!--\"")
        << QByteArray("<\0!-\0- ' --><a/>", 17) << QByteArray("<!-- ' --><a/>") << QByteArray();
    stops("continuation without a lead", "ab", "\x80", NotUtf8);
    stops("lead of nothing", "ab", "\xFF", NotUtf8);
    stops("longer than need be", "ab", "\xC0\xAF", NotUtf8);
    stops("longer than need be, three bytes", "ab\xE0", "\x9F\xBF", NotUtf8);
    stops("longer than need be, four bytes", "ab\xF0", "\x8F\xBF\xBF", NotUtf8);
    stops("half a surrogate pair", "ab\xED", "\xA0\x80", NotUtf8);
    stops("beyond U+10FFFF", "ab\xF4", "\x90\x80\x80", NotUtf8);
    stops("character cut in the midst", "ab\xE2\x82", "<", NotUtf8);
    stops("document type", "<?xml?><!", "DOCTYPE a>", DocumentType);
    stops("declaration of another kind", "<a><!", "ENTITY b>", DocumentType);
    stops("no comment after all", "<a><!-", "a-->", DocumentType);
    stops("no characters after all", "<a><![CDATA", "a[", DocumentType);
}

void TestLogFileFilter::bytes()
{
    QFETCH(QByteArray, bytes);
    for (int const pieceSize : {1, 2, 3, 8192}) {
        QString failure;
        QTEST(filtered(bytes, pieceSize, failure), "passed");
        QTEST(failure.toLatin1(), "failure");
    }
}

void TestLogFileFilter::bounds_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArray>("failure");
    auto const row = [](char const* name, QByteArray const& bytes, QByteArray const& failure) {
        QTest::newRow(name) << bytes << failure;
    };
    row("tag of 16 MiB", "<a" + blanks(Limit - 3) + ">", "");
    row("a byte more", "<a" + blanks(Limit - 2) + ">", TooLarge);
    row("value", "<a b=\"" + QByteArray(Limit, 'c'), TooLarge);
    row("comment", "<!--" + QByteArray(Limit, '>'), TooLarge);
    row("characters", "<![CDATA[" + QByteArray(Limit, '>'), TooLarge);
    row("text of 16 MiB", "<a>" + blanks(Limit) + "<a>", TooLarge);
    row("text a byte shorter", "<a>" + blanks(Limit - 1) + "</a>", "");
    row("zeros do not count", "<a" + QByteArray(Limit, '\0') + ">", "");
    row("1000 attributes", "<a" + attributes(1000) + "/><b" + attributes(1000) + ">", "");
    row("1001 attributes", "<a" + attributes(1001), TooMany);
    row("apostrophes", "<a" + attributes(1001, " a='\"'"), TooMany);
    row("no blanks", "<a" + attributes(1001, "a=''"), TooMany);
    row("slashes and \">\" in values", "<a" + attributes(1001, " a='/>'"), TooMany);
    row("behind a comment with a quote", "<!-- ' --><a" + attributes(1001), TooMany);
    row("behind a short comment", "<!----><a" + attributes(1001), TooMany);
    row("behind a comment that seems short", "<!--><a" + attributes(1001), "");
    row("behind comments with many hyphens", "<!-- a -- b ---><a" + attributes(1001), TooMany);
    row("behind characters", "<![CDATA[]]]><a" + attributes(1001) + "]]]><a" + attributes(1001), TooMany);
    row("behind an instruction",
        "<?a ?b>'?"
        "?><a"
            + attributes(1001),
        TooMany);
    row("behind an instruction that seems short", "<?><a" + attributes(1001), "");
    row("within a comment", "<!-- <a" + attributes(1001), "");
    row("as text", "<a>" + attributes(1001), "");
    row("in an end tag", "</a" + attributes(1001), TooMany);
}

void TestLogFileFilter::bounds()
{
    QFETCH(QByteArray, bytes);
    QString failure;
    QByteArray const passed = filtered(bytes, 8192, failure);
    QTEST(failure.toLatin1(), "failure");
    bool const isStopped = !failure.isEmpty();
    QCOMPARE(passed.size() < bytes.size() - bytes.count('\0'), isStopped);
}

void TestLogFileFilter::everyByteAlone()
{
    for (int i = 0; i < 256; ++i) {
        QString failure;
        QByteArray const byte(1, static_cast<char>(i));
        bool const isDropped = i < 0x20 && byte != "\t" && byte != "\n" && byte != "\r";
        bool const isRefused = (i >= 0x80 && i < 0xC2) || i > 0xF4;
        QCOMPARE(filtered(byte, 1, failure), isDropped || isRefused ? QByteArray() : byte);
        QCOMPARE(!failure.isEmpty(), isRefused);
    }
}

void TestLogFileFilter::everyPairBehindALead()
{
    for (int lead = 0xC2; lead <= 0xF4; ++lead) {
        for (int next = 0x20; next < 256; ++next) {
            QByteArray const bytes = QByteArray(1, static_cast<char>(lead)) + static_cast<char>(next) + "\x80\x80";
            int const length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
            // Qt's decoder is the judge.
            QTextCodec::ConverterState state;
            QTextCodec::codecForName("UTF-8")->toUnicode(bytes.constData(), length, &state);
            QString failure;
            filtered(bytes.left(length), 8192, failure);
            QCOMPARE(failure.isEmpty(), state.invalidChars == 0 && state.remainingChars == 0);
        }
    }
}

void TestLogFileFilter::endIsNotFinal()
{
    QByteArray bytes = "<a/>";
    QBuffer source(&bytes);
    source.open(QIODevice::ReadOnly);
    LogFileFilter filter(&source);
    QVERIFY(!filter.atEnd());
    QCOMPARE(filter.readAll(), QByteArray("<a/>"));
    QVERIFY(filter.atEnd());
    bytes += "<b/>";
    filter.retry();
    QVERIFY(!filter.atEnd());
    QCOMPARE(filter.readAll(), QByteArray("<b/>"));
}

void TestLogFileFilter::failureIsFinal()
{
    QByteArray bytes = "<a>\xFF<b>";
    QBuffer source(&bytes);
    source.open(QIODevice::ReadOnly);
    LogFileFilter filter(&source);
    QCOMPARE(filter.readAll(), QByteArray("<a>"));
    filter.retry();
    QVERIFY(filter.atEnd());
    QVERIFY(filter.hasFailed());
    QCOMPARE(filter.readAll(), QByteArray());
    QBuffer closed;
    LogFileFilter const ofClosed(&closed);
    QVERIFY(ofClosed.hasFailed());
    QVERIFY(ofClosed.atEnd());
}

void TestLogFileFilter::takesNothing()
{
    QBuffer source;
    source.open(QIODevice::ReadWrite);
    LogFileFilter filter(&source);
    QTest::ignoreMessage(QtWarningMsg, "QIODevice::write (QIODevice): ReadOnly device");
    QCOMPARE(filter.write("a"), qint64(-1));
    QVERIFY(source.data().isEmpty());
}

QTEST_APPLESS_MAIN(TestLogFileFilter)
#include "tst_LogFileFilter.moc"
