// SPDX-License-Identifier: LGPL-2.1-or-later
#include "EntryTypes.h"
#include "LogDocument.h"

#include <GenericUtilities/actionlog/LogFileEnd_p.h>
#include <GenericUtilities/actionlog/LogReader.h>

#include <QBuffer>
#include <QTest>

#include <limits>

using namespace qv;
using document::header;

namespace QTest {

template <> char* toString(LogFileEnd const& end)
{
    constexpr char const* kinds[] = {"Empty", "Open", "Ended", "Torn", "Damaged", "Unreadable"};
    return qstrdup((QByteArray(kinds[end.kind]) + " at " + QByteArray::number(end.offset)).constData());
}

} // namespace QTest

Q_DECLARE_METATYPE(qv::LogFileEnd::Kind)

namespace {

QByteArray const A = "<Entry ID=\"ExpD\" Text=\"a\"/>";
QByteArray const B = "<Entry ID=\"ExpD\" Text=\"b\"/>";

LogFileEnd found(QByteArray bytes)
{
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    return findLogFileEnd(buffer);
}

LogFileEnd scanned(QByteArray bytes)
{
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    return scanLogFileEnd(buffer);
}

/// Counts the bytes that are read, and fails where it is told to.
class Device : public QBuffer {
public:
    using QBuffer::QBuffer;
    qint64 bytesRead = 0;
    qint64 readable = std::numeric_limits<qint64>::max(); ///< From here on it gives what is next.
    qint64 then = -1;

protected:
    qint64 readData(char* data, qint64 maxSize) override
    {
        qint64 const left = readable - pos();
        qint64 const size = left > 0 ? QBuffer::readData(data, qMin(left, maxSize)) : then;
        bytesRead += qMax<qint64>(size, 0);
        return size;
    }
};

int entriesIn(QByteArray bytes)
{
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    XMLLogReader reader(&buffer, QString());
    int count = 0;
    while (std::unique_ptr<LogEntry> const entry{reader.readNextLogEntry()})
        count += reader.hasError() ? 0 : 1;
    return reader.error() == QXmlStreamReader::NoError ? count : -1;
}

} // namespace

class TestLogFileEnd : public QObject {
    Q_OBJECT

private slots:
    void ends_data();
    void ends();
    void tailIsNotEnough_data();
    void tailIsNotEnough();
    void cutAnywhere();
    void extendedWhereverItWasCut();
    void largeFileIsNotScanned_data();
    void largeFileIsNotScanned();
    void largeLastEntry();
    void deviceThatFails_data();
    void deviceThatFails();
};

void TestLogFileEnd::ends_data()
{
    QTest::addColumn<QByteArray>("kept");
    QTest::addColumn<QByteArray>("rest");
    QTest::addColumn<LogFileEnd::Kind>("kind");
    // What is kept, what is cut behind it, and why. Where nothing is cut, the end is that of the file.
    auto const row = [](char const* name, LogFileEnd::Kind kind, QByteArray const& kept, QByteArray const& rest = {}) {
        QTest::newRow(name) << kept << rest << kind;
    };
    row("no bytes", LogFileEnd::Empty, "");
    row("header alone", LogFileEnd::Open, header());
    row("one entry", LogFileEnd::Open, header() + A);
    row("two entries", LogFileEnd::Open, header() + A + B);
    row("blanks behind an entry", LogFileEnd::Open, header() + A + B + "\n \t\r");
    row("entry with a closing tag", LogFileEnd::Open, header() + A + "<Entry ID=\"ExpD\"></Entry>");
    row("comment behind an entry", LogFileEnd::Open, header() + A + "<!-- <Entry -->");
    row("\">\" in a value", LogFileEnd::Open, header() + A + "<Entry ID=\"a>\"/>");
    row("raw controls in a value", LogFileEnd::Open, header() + A + QByteArray("<Entry ID=\"\0\x01\"/>", 16));
    row("raw zero in a name", LogFileEnd::Open, header() + A + QByteArray("<Entry \0src=\"\"/>", 16));
    row("byte order mark", LogFileEnd::Open, "\xEF\xBB\xBF" + header() + A);
    row("no declaration", LogFileEnd::Open, "<Entries Version=\"v0.1\">" + A + B);

    row("ended", LogFileEnd::Ended, header() + A + B, "\n</Entries>\n");
    row("ended without line breaks", LogFileEnd::Ended, header() + A + B, "</Entries>");
    row("ended with many", LogFileEnd::Ended, header() + A + B, "\r\n\n</Entries>\r\n\n");
    row("ended after one entry", LogFileEnd::Ended, header() + A, "\n</Entries>\n");
    row("ended without entries", LogFileEnd::Ended, header(), "\n</Entries>\n");
    row("blank within the end tag", LogFileEnd::Ended, header() + A + B, "</Entries >");
    row("ended behind a text", LogFileEnd::Ended, header() + A + "text", "</Entries>");
    row("ended, zeros behind it", LogFileEnd::Ended, header() + A + B, QByteArray("</Entries>\n\0\0", 13));

    row("cut in the declaration", LogFileEnd::Torn, "", "<?xml vers");
    row("cut behind the declaration", LogFileEnd::Torn, "", "<?xml version=\"1.0\" encoding=\"UTF-8\"?>");
    row("cut in the root", LogFileEnd::Torn, "", header().chopped(1));
    row("nothing but zeros", LogFileEnd::Torn, "", QByteArray(5000, '\0'));
    row("nothing but blanks", LogFileEnd::Torn, "", "\n\n");
    row("root closed in itself", LogFileEnd::Torn, "", header().chopped(1) + "/>");
    row("cut in the first entry", LogFileEnd::Torn, header(), "<Entry ID=\"Ex");
    row("cut in a name", LogFileEnd::Torn, header() + A, "<Entry ID");
    row("cut in a value", LogFileEnd::Torn, header() + A + B, "<Entry ID=\"ExpD\" Text=\"/>");
    row("cut before the last byte", LogFileEnd::Torn, header() + A, B.chopped(1));
    row("cut behind the first byte", LogFileEnd::Torn, header() + A, "<");
    row("cut in the end tag", LogFileEnd::Torn, header() + A, "\n</Entr");
    row("cut in a comment", LogFileEnd::Torn, header() + A, "<!-- />");
    row("cut before a closing tag", LogFileEnd::Torn, header() + A, "<Entry ID=\"ExpD\">");
    row("zeros behind the last entry", LogFileEnd::Torn, header() + A + B, QByteArray(5000, '\0'));
    row("bytes behind the last entry", LogFileEnd::Torn, header() + A + B, "\n\x80garbage");

    row("no XML", LogFileEnd::Damaged, "", "Entries");
    row("text before the declaration", LogFileEnd::Damaged, "", "x" + header() + A + B);
    row("another root", LogFileEnd::Damaged, "", "<Other>" + A + B);
    row("an entry for a root", LogFileEnd::Damaged, "", A + B);
    row("end tag alone", LogFileEnd::Damaged, "", "</Entries>");
    row("entry behind the end", LogFileEnd::Damaged, header() + A + "</Entries>\n", B);
    row("ended twice", LogFileEnd::Damaged, header() + A + "</Entries>", "</Entries>");
    row("text behind the end", LogFileEnd::Damaged, header() + A + "</Entries>\n", "text");
    row("comment behind the end", LogFileEnd::Damaged, header() + A + "</Entries>", "<!-- -->");
    row("a second header", LogFileEnd::Damaged, header() + A + "<?xml version=\"1.0\"?>", "<Entries>" + B);
    row("cut entry and another one", LogFileEnd::Damaged, header() + A, "<Entry ID=\"Ex" + B);
    row("cut value and the end", LogFileEnd::Damaged, header() + A, "<Entry ID=\"Ex\n</Entries>\n");
    row("document type", LogFileEnd::Damaged, "<?xml version=\"1.0\"?>", "<!DOCTYPE Entries><Entries>");
    row("1001 attributes", LogFileEnd::Damaged, header() + A, "<Entry" + QByteArray(" a=\"\"").repeated(1001) + "/>");
    row("101 deep", LogFileEnd::Damaged, header() + QByteArray("<a>").repeated(99), "<a>");
}

void TestLogFileEnd::ends()
{
    QFETCH(QByteArray, kept);
    QFETCH(QByteArray, rest);
    QFETCH(LogFileEnd::Kind, kind);
    LogFileEnd const expected = {kind, kept.size()};
    QCOMPARE(scanned(kept + rest), expected);
    QCOMPARE(found(kept + rest), expected);
}

void TestLogFileEnd::tailIsNotEnough_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("no log file that ends as one") << "x" + A + B;
    QTest::newRow("ended and extended") << header() + A + "</Entries>" + B;
    QTest::newRow("what looks like the end of a tag")
        << header() + A + "<Entry ID=\"\"a>/>\n</Entries></Entries></Entries>";
    QTest::newRow("ended twice") << header() + A + "</Entries></Entries>";
    QTest::newRow("cut entry before the last one") << header() + A + "<Entry ID=\"" + B;
}

void TestLogFileEnd::tailIsNotEnough()
{
    QFETCH(QByteArray, bytes);
    QCOMPARE(found(bytes).kind, LogFileEnd::Damaged);
}

void TestLogFileEnd::cutAnywhere()
{
    QByteArray const whole = header() + A + B + document::End;
    int const tag = whole.size() - static_cast<int>(qstrlen(document::End));
    QList<int> const wholeEnds = {header().size(), header().size() + A.size(), tag};
    for (int size = 1; size < whole.size(); ++size) {
        QByteArray const cut = whole.left(size);
        int lastWhole = 0;
        for (int const end : wholeEnds)
            lastWhole = end <= size ? end : lastWhole;
        // A line break alone is nothing that is torn.
        bool const isOpen = wholeEnds.contains(size) || size == tag + 1;
        bool const isEnded = size >= whole.size() - 1;
        LogFileEnd const expected = isEnded ? LogFileEnd{LogFileEnd::Ended, tag}
            : isOpen                        ? LogFileEnd{LogFileEnd::Open, size}
                                            : LogFileEnd{LogFileEnd::Torn, lastWhole};
        QCOMPARE(found(cut), expected);
        QCOMPARE(scanned(cut), expected);
    }
}

void TestLogFileEnd::extendedWhereverItWasCut()
{
    QByteArray const whole = header() + A + B + document::End;
    for (int size = 0; size <= whole.size(); ++size) {
        LogFileEnd const end = found(whole.left(size));
        QByteArray bytes = whole.left(static_cast<int>(end.offset));
        int const before = bytes.isEmpty() ? 0 : entriesIn(bytes + "</Entries>");
        bytes += bytes.isEmpty() ? header() : QByteArray();
        QCOMPARE(entriesIn(bytes + A + document::End), before + 1);
        QCOMPARE(before, (size >= header().size() + A.size()) + (size >= header().size() + A.size() + B.size()));
    }
}

void TestLogFileEnd::largeFileIsNotScanned_data()
{
    QTest::addColumn<QByteArray>("last");
    QTest::addColumn<LogFileEnd::Kind>("kind");
    QTest::newRow("open") << QByteArray() << LogFileEnd::Open;
    QTest::newRow("ended") << QByteArray(document::End) << LogFileEnd::Ended;
}

void TestLogFileEnd::largeFileIsNotScanned()
{
    QFETCH(QByteArray, last);
    QFETCH(LogFileEnd::Kind, kind);
    QByteArray const entries = header() + A.repeated(100000);
    Device device;
    device.setData(entries + last);
    device.open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    QCOMPARE(findLogFileEnd(device), (LogFileEnd{kind, entries.size()}));
    QVERIFY(device.bytesRead < 20000);
}

void TestLogFileEnd::largeLastEntry()
{
    QByteArray const large = "<Entry Text=\"" + QByteArray(1000000, 'x') + "\"/>";
    QByteArray const bytes = header() + A + large;
    QCOMPARE(found(bytes), (LogFileEnd{LogFileEnd::Open, bytes.size()}));
    QCOMPARE(found(bytes + document::End), (LogFileEnd{LogFileEnd::Ended, bytes.size()}));
    QCOMPARE(found(bytes.chopped(1)), (LogFileEnd{LogFileEnd::Torn, (header() + A).size()}));
}

void TestLogFileEnd::deviceThatFails_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("readable");
    QTest::addColumn<int>("then");
    QByteArray const entries = header() + A + B;
    QByteArray const many = header() + A.repeated(100000);
    // Read up to there, each of them seems to end well, or as a crash leaves it.
    for (auto const& [name, then] : {std::pair("fails", -1), std::pair("ends", 0)}) {
        QTest::addRow("%s at once", name) << entries << 0 << then;
        QTest::addRow("%s within the header", name) << entries << 20 << then;
        QTest::addRow("%s behind an entry", name) << entries << (header() + A).size() << then;
        QTest::addRow("%s within an entry", name) << entries << entries.size() - 5 << then;
        QTest::addRow("%s before the end tag", name) << entries + document::End << entries.size() << then;
        QTest::addRow("%s in the last bytes of many", name) << many << many.size() - 3 * A.size() << then;
        QTest::addRow("%s within a large entry", name)
            << entries + "<Entry Text=\"" + QByteArray(40000, 'x') + "\"/>" << entries.size() + 30000 << then;
    }
}

void TestLogFileEnd::deviceThatFails()
{
    QFETCH(QByteArray, bytes);
    QFETCH(int, readable);
    QFETCH(int, then);
    Device device;
    device.setData(bytes);
    device.open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    device.readable = readable;
    device.then = then;
    LogFileEnd const expected = {LogFileEnd::Unreadable, readable};
    QCOMPARE(findLogFileEnd(device), expected);
    QVERIFY(device.seek(0));
    QCOMPARE(scanLogFileEnd(device), expected);
}

QTEST_APPLESS_MAIN(TestLogFileEnd)
#include "tst_LogFileEnd.moc"
