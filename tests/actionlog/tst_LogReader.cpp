// SPDX-License-Identifier: LGPL-2.1-or-later
#include "EntryTypes.h"
#include "LogDocument.h"
#include "OtherEntry.h"

#include <GenericUtilities/actionlog/LogReader.h>
#include <qvbase/FileEncrypt.h>

#include <QBuffer>
#include <QTemporaryDir>
#include <QTest>

using namespace qv;
using document::element;
using document::header;

namespace {

/// Gives its bytes in pieces, as a pipe does, and may fail behind them.
class Pipe : public QIODevice {
public:
    explicit Pipe(QByteArray const& bytes, qint64 pieceSize = 1, bool failsAtEnd = false)
        : m_bytes(bytes)
        , m_pieceSize(pieceSize)
        , m_failsAtEnd(failsAtEnd)
    {
        open(ReadOnly | Unbuffered);
    }
    bool isSequential() const override { return true; }

protected:
    qint64 readData(char* data, qint64 maxSize) override
    {
        QByteArray const piece = m_bytes.left(static_cast<int>(qMin(maxSize, m_pieceSize)));
        m_bytes.remove(0, piece.size());
        std::copy(piece.begin(), piece.end(), data);
        setErrorString(QStringLiteral("pipe broke"));
        return piece.isEmpty() && m_failsAtEnd ? -1 : piece.size();
    }
    qint64 writeData(char const*, qint64) override { return -1; }

private:
    QByteArray m_bytes;
    qint64 m_pieceSize;
    bool m_failsAtEnd;
};

struct Reading {
    QStringList entries; ///< descriptions, "null" for elements of unknown types
    QXmlStreamReader::Error error;
    QString errorString;
};

Reading readAll(XMLLogReader& reader)
{
    Reading result{};
    while (!reader.atEnd() && !reader.hasError()) {
        std::unique_ptr<LogEntry> const entry(reader.readNextLogEntry());
        if (entry || !reader.atEnd())
            result.entries += entry ? entry->id().toString() + ' ' + entry->description() : QStringLiteral("null");
    }
    result.error = reader.error();
    result.errorString = reader.errorString();
    return result;
}

Reading readAll(QByteArray const& bytes)
{
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    XMLLogReader reader(&buffer, QStringLiteral("a.qvl"));
    return readAll(reader);
}

QByteArray done(QByteArray const& text)
{
    return element("ExpD", "Text=\"" + text + '"');
}

QByteArray withAttributes(int count)
{
    QByteArray attributes = "Text=\"x\"";
    for (int i = 2; i < count; ++i)
        attributes += " a" + QByteArray::number(i) + "=\"\"";
    return element("ExpD", attributes);
}

} // namespace

Q_DECLARE_METATYPE(std::shared_ptr<QIODevice>)

class TestLogReader : public QObject {
    Q_OBJECT

private slots:
    void everyTypeReadsBack_data();
    void everyTypeReadsBack();
    void entries_data();
    void entries();
    void damage_data();
    void damage();
    void elementWithoutATimeIsStampedWhenRead();
    void failureNamesThePlace();
    void failureIsToldOnce();
    void failureWithoutAFile();
    void headers_data();
    void headers();
    void headerIsReadOnTheWay();
    void devices_data();
    void devices();
    void deviceThatFails();
    void fileThatIsNotOpen();
    void growingFile();
    void manyBlanksAndComments();

private:
    QTemporaryDir m_folder;
};

void TestLogReader::everyTypeReadsBack_data()
{
    QTest::addColumn<entries::Entry>("entry");
    QTest::addColumn<QByteArray>("xml");
    for (entries::Sample const& sample : entries::samples())
        QTest::newRow(sample.name) << sample.entry << sample.xml;
}

void TestLogReader::everyTypeReadsBack()
{
    QFETCH(entries::Entry, entry);
    QFETCH(QByteArray, xml);
    QBuffer buffer;
    buffer.setData(header() + xml + document::End);
    buffer.open(QIODevice::ReadOnly);
    XMLLogReader reader(&buffer, QString());
    std::unique_ptr<LogEntry> const read(reader.readNextLogEntry());
    QVERIFY(read);
    QVERIFY(typeid(*read) == typeid(*entry));
    QCOMPARE(entries::texts(*read), entries::texts(*entry));
    QVERIFY(!reader.readNextLogEntry());
    QVERIFY(reader.atEnd());
    QVERIFY(!reader.hasError());
}

void TestLogReader::entries_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QStringList>("expected");
    QByteArray const end = document::End;
    auto const row = [](char const* name, QByteArray const& bytes, QStringList const& expected) {
        QTest::newRow(name) << bytes << expected;
    };
    row("empty file", "", {});
    row("header alone", header(), {});
    row("no entries", header() + end, {});
    row("two", header() + done("a") + done("b") + end, {"ExpD a", "ExpD b"});
    row("end tag missing", header() + done("a") + done("b"), {"ExpD a", "ExpD b"});
    row("half an entry at the end", header() + done("a") + "<Entry ID=\"ExpD\" Te", {"ExpD a"});
    row("unknown type does not stop", header() + element("Othr", "Text=\"a\"") + done("b") + end, {"null", "ExpD b"});
    row("no id", header() + "<Entry Text=\"a\"/>" + done("b") + end, {"null", "ExpD b"});
    row("what stands before the id is lost", header() + "<Entry Text=\"a\" ID=\"ExpD\" User=\"u\"/>" + end, {"ExpD "});
    row("what stands behind an unknown code is lost",
        header() + element("ExpR", "Text=\"%1%2\" path=\"p\" what=\"?\" src=\"s\"") + end, {"ExpR p"});
    row("id and attribute names count up to their fourth character",
        header() + element("ExpDone", "Textual=\"a\"") + end, {"ExpD a"});
    row("id filled up with blanks", header() + element("Exp", "Text=\"a\"") + done("b") + end, {"null", "ExpD b"});
    row("name trimmed of blanks", header() + element("ExpR", "Text=\"%1%2%3\" path=\"p\" src   =\"s\"") + end,
        {"ExpR ps"});
    row("raw zero in a name, as older writers left it",
        header() + element("ExpR", QByteArray("Text=\"%1%2%3\" path=\"p\" \0src=\"s\" dest=\"d\"", 41)) + done("b"),
        {"ExpR psd", "ExpD b"});
    row("raw controls in a value",
        header()
            + done(QByteArray("a\0\x01\x1F\x0B\x0C"
                              "b",
                7))
            + end,
        {"ExpD ab"});
    row("zeros behind the last entry", header() + done("a") + QByteArray(9000, '\0'), {"ExpD a"});
    row("escaped", header() + done("&lt;&gt;&amp;&quot;&apos;&#9;&#10;&#13;&#x1F600;"),
        {QStringLiteral(u"ExpD <>&\"'\t\n\r\U0001F600")});
    row("raw line ends are blanks", header() + done("a\nb\tc"), {"ExpD a b c"});
    row("apostrophes around values", header() + "<Entry ID='ExpD' Text='\"'/>", {"ExpD \""});
    row("closing tag of an entry", header() + "<Entry ID=\"ExpD\" Text=\"a\"></Entry>" + done("b"),
        {"ExpD a", "ExpD b"});
    row("formatted by an editor", header() + "\n  " + done("a") + "\r\n  <!-- <Entry> -->\n" + end, {"ExpD a"});
    row("other elements and texts", header() + "<Other ID=\"ExpD\"/>text" + done("a"), {"ExpD a"});
    row("entry within another", header() + "<Entry ID=\"ExpD\" Text=\"a\">" + done("b") + "</Entry>",
        {"ExpD a", "ExpD b"});
    row("entry as characters", header() + "<![CDATA[" + done("a") + "]]>" + done("b"), {"ExpD b"});
    row("prefix", header() + "<x:Entry ID=\"ExpD\"/><Entry ID=\"ExpD\" Text=\"a\" x:y=\"\"/>" + end, {"ExpD a"});
    row("another root", "<Other>" + done("a") + "</Other>", {"ExpD a"});
    row("another version", header("v9.9") + done("a") + end, {"ExpD a"});
    row("byte order mark", "\xEF\xBB\xBF" + header() + done("a"), {"ExpD a"});
    row("declaration without an encoding", "<?xml version=\"1.0\"?><Entries>" + done("a"), {"ExpD a"});
    row("1000 attributes", header() + withAttributes(1000) + done("b"), {"ExpD x", "ExpD b"});
    row("100 deep", header() + QByteArray("<a>").repeated(98) + done("a"), {"ExpD a"});
}

void TestLogReader::entries()
{
    QFETCH(QByteArray, bytes);
    Reading const reading = readAll(bytes);
    QTEST(reading.entries, "expected");
    QVERIFY2(
        reading.error == QXmlStreamReader::NoError || reading.error == QXmlStreamReader::PrematureEndOfDocumentError,
        qPrintable(reading.errorString));
}

void TestLogReader::damage_data()
{
    QTest::addColumn<QByteArray>("damaged");
    QTest::addColumn<QString>("message");
    auto const row = [](char const* name, QByteArray const& damaged, char const* message) {
        QTest::newRow(name) << damaged << QString::fromLatin1(message);
    };
    QByteArray const large(16 * 1024 * 1024, 'x');
    row("cut entry and more", "<Entry ID=\"ExpD\" Te" + done("b"), "");
    row("raw \"<\" in a value", done("a<b"), "");
    row("end tag twice", "</Entries></Entries>", "");
    row("entries behind the end", "</Entries>" + done("b"), "");
    row("a second header", header(), "");
    row("wrong end tag", "</Other>", "");
    row("attribute twice", element("ExpD", "Text=\"a\" Text=\"b\""), "");
    row("broken UTF-8", done("a\xFF"), "A log file is written in UTF-8.");
    row("half a surrogate pair in UTF-8", done("\xED\xA0\x80"), "A log file is written in UTF-8.");
    row("reference to a zero", done("&#0;"), "");
    row("unknown reference", done("&other;"), "");
    row("document type", "<!DOCTYPE Entries [<!ENTITY a \"b\">]>", "A log file has no document type.");
    row("1001 attributes", withAttributes(1001), "An entry has more than 1000 attributes.");
    row("more than 16 MiB", done(large), "An entry is larger than 16 MiB.");
    row("tag without an end", "<Entry ID=\"ExpD\" " + QByteArray(large).fill(' '), "An entry is larger than 16 MiB.");
    row("101 deep", QByteArray("<a>").repeated(100), "Elements are nested too deeply.");
}

void TestLogReader::damage()
{
    QFETCH(QByteArray, damaged);
    QFETCH(QString, message);
    Reading const reading = readAll(header() + done("a") + damaged + done("z"));
    QCOMPARE(reading.entries.size(), 2);
    QCOMPARE(reading.entries.first(), QStringLiteral("ExpD a"));
    QVERIFY(reading.entries.last().startsWith(
        "XmlP Error '" + reading.errorString + "' reading action log 'a.qvl' in line '1', column '"));
    QVERIFY(!message.isEmpty() || reading.error == QXmlStreamReader::NotWellFormedError);
    if (!message.isEmpty())
        QCOMPARE(reading.errorString, message);
}

void TestLogReader::elementWithoutATimeIsStampedWhenRead()
{
    QBuffer buffer;
    buffer.setData(header() + done("a") + element("ExpD", "Time=\"nonsense\""));
    buffer.open(QIODevice::ReadOnly);
    XMLLogReader reader(&buffer, QString());
    QDateTime const before = QDateTime::currentDateTime();
    std::unique_ptr<LogEntry> const entry(reader.readNextLogEntry());
    QVERIFY(entry->time().value() >= before);
    QVERIFY(entry->time().value() <= QDateTime::currentDateTime());
    std::unique_ptr<LogEntry> const other(reader.readNextLogEntry());
    QVERIFY(other->time().value().isNull());
}

void TestLogReader::failureNamesThePlace()
{
    QString const path = m_folder.filePath(QStringLiteral("damaged.qvl"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadWrite));
    file.write(header() + "\n\n" + done(QByteArray("\0\0ab", 4)) + "</Wrong>");
    file.seek(0);
    XMLLogReader reader(&file);
    delete reader.readNextLogEntry();
    std::unique_ptr<LogEntry> const entry(reader.readNextLogEntry());
    auto const* const failure = dynamic_cast<ParseXMLLogEntry const*>(entry.get());
    QVERIFY(failure);
    QCOMPARE(failure->source.value(), reader.errorString());
    QCOMPARE(failure->error.value(), path);
    QCOMPARE(failure->line.value(), 3);
    // Up to here: <Entry ID="ExpD" Text="ab"/>, 28 characters, and </Wrong>, 8.
    QVERIFY(failure->column.value() >= 28 && failure->column.value() <= 36);
    QCOMPARE(failure->user().value(), QStringLiteral("Unknown"));
}

void TestLogReader::failureIsToldOnce()
{
    QBuffer buffer;
    buffer.setData(header() + "</Wrong>");
    buffer.open(QIODevice::ReadOnly);
    XMLLogReader reader(&buffer, QString());
    std::unique_ptr<LogEntry> const failure(reader.readNextLogEntry());
    QVERIFY(failure);
    QVERIFY(!reader.readNextLogEntry());
    QCOMPARE(reader.error(), QXmlStreamReader::NotWellFormedError);
}

void TestLogReader::failureWithoutAFile()
{
    XMLLogReader reader(nullptr);
    QVERIFY(!reader.readNextLogEntry());
    reader.raiseError(QStringLiteral("told to the reader, not met by it"));
    std::unique_ptr<LogEntry> const entry(reader.readNextLogEntry());
    auto const* const failure = dynamic_cast<ParseXMLLogEntry const*>(entry.get());
    QVERIFY(failure);
    QCOMPARE(failure->source.value(), QStringLiteral("Unknown Error"));
    QCOMPARE(failure->error.value(), QStringLiteral("Unknown"));
    QCOMPARE(failure->line.value(), 0);
    QCOMPARE(failure->column.value(), 0);
}

void TestLogReader::headers_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QStringList>("expected");
    QByteArray const declaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";
    QTest::newRow("all") << declaration
            + "<Entries Version=\"v0.1\" LogFile=\"/a&amp;b\" Date=\"2020-02-29T12:34:56\" ApplicationVersion=\"4.2\""
              " LanguageVersion=\"de\"><Entry/>"
                         << QStringList{"v0.1", "/a&b", "2020-02-29T12:34:56", "4.2", "de"};
    QTest::newRow("no versions") << header() << QStringList{"v0.1", "a.qvl", "2020-02-29T12:34:56", "", ""};
    QTest::newRow("other version") << header("v0.10") << QStringList{"v0.10", "a.qvl", "2020-02-29T12:34:56", "", ""};
    QTest::newRow("nothing in it") << QByteArray("<Entries>") << QStringList{"", "", "", "", ""};
    QTest::newRow("nonsense for a date") << QByteArray("<Entries Date=\"29.2.20\">") << QStringList{"", "", "", "", ""};
    QTest::newRow("empty file") << QByteArray() << QStringList();
    QTest::newRow("cut") << header().chopped(1) << QStringList();
    QTest::newRow("another root") << QByteArray("<Other><Entries/></Other>") << QStringList();
    QTest::newRow("an entry for a root") << done("a") << QStringList();
    QTest::newRow("no XML") << QByteArray("Entries") << QStringList();
}

void TestLogReader::headers()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QStringList, expected);
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    XMLLogReader reader(&buffer, QString());
    std::optional<LogFileHeader> const read = reader.readHeader();
    QCOMPARE(read.has_value(), !expected.isEmpty());
    if (!read)
        return;
    QCOMPARE((QStringList{read->version, read->logFile, read->date.toString(Qt::ISODate), read->applicationVersion,
                 read->languageVersion}),
        expected);
    QCOMPARE(read->isCurrentVersion(), expected.first() == QLatin1String("v0.1"));
}

void TestLogReader::headerIsReadOnTheWay()
{
    QBuffer buffer;
    buffer.setData(header() + done("a") + done("b"));
    buffer.open(QIODevice::ReadOnly);
    XMLLogReader reader(&buffer, QString());
    delete reader.readNextLogEntry();
    QCOMPARE(reader.readHeader()->logFile, QStringLiteral("a.qvl"));
    std::unique_ptr<LogEntry> const second(reader.readNextLogEntry());
    QCOMPARE(second->description(), QStringLiteral("b"));
}

void TestLogReader::devices_data()
{
    QTest::addColumn<std::shared_ptr<QIODevice>>("device");
    QByteArray const bytes
        = header() + done(QByteArray("a\0", 2)) + done("b") + QByteArray(20000, '\0') + document::End;
    auto const file = [&](QString const& name, QString const& password) {
        auto device = std::make_shared<FileEncrypt>(m_folder.filePath(name));
        device->setFileUserPassword(QStringLiteral("user"), password);
        device->open(QIODevice::WriteOnly | QIODevice::Append);
        device->write(bytes);
        device->close();
        device->open(QIODevice::ReadOnly);
        return std::shared_ptr<QIODevice>(device);
    };
    QTest::newRow("plain file") << file(QStringLiteral("plain.qvl"), QString());
    QTest::newRow("encrypted file") << file(QStringLiteral("encrypted.qvl"), QStringLiteral("password"));
    QTest::newRow("byte by byte") << std::shared_ptr<QIODevice>(std::make_shared<Pipe>(bytes));
    QTest::newRow("in pieces of 7") << std::shared_ptr<QIODevice>(std::make_shared<Pipe>(bytes, 7));
}

void TestLogReader::devices()
{
    QFETCH(std::shared_ptr<QIODevice>, device);
    XMLLogReader reader(device.get(), QString());
    Reading const reading = readAll(reader);
    QCOMPARE(reading.entries, (QStringList{"ExpD a", "ExpD b"}));
    QCOMPARE(reading.error, QXmlStreamReader::NoError);
}

void TestLogReader::deviceThatFails()
{
    Pipe pipe(header() + done("a"), 1000, true);
    XMLLogReader reader(&pipe, QStringLiteral("pipe"));
    Reading const reading = readAll(reader);
    QCOMPARE(reading.entries.size(), 2);
    QCOMPARE(reading.error, QXmlStreamReader::CustomError);
    QCOMPARE(reading.errorString, QStringLiteral("pipe broke"));
    QVERIFY(reading.entries.last().startsWith("XmlP Error 'pipe broke' reading action log 'pipe' in line '1'"));
}

void TestLogReader::fileThatIsNotOpen()
{
    QFile file(m_folder.filePath(QStringLiteral("absent.qvl")));
    XMLLogReader reader(&file);
    std::unique_ptr<LogEntry> const entry(reader.readNextLogEntry());
    QVERIFY(dynamic_cast<ParseXMLLogEntry*>(entry.get()));
    QVERIFY(reader.atEnd());
}

void TestLogReader::growingFile()
{
    QString const path = m_folder.filePath(QStringLiteral("growing.qvl"));
    QFile writer(path);
    QVERIFY(writer.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    XMLLogReader reader(&file);
    QVERIFY(!reader.readNextLogEntry());
    QByteArray const bytes = header() + done("a") + done("b");
    int read = 0;
    for (char const byte : bytes) {
        writer.write(&byte, 1);
        std::unique_ptr<LogEntry> const entry(reader.readNextLogEntry());
        read += entry ? 1 : 0;
    }
    QCOMPARE(read, 2);
    QVERIFY(!reader.readNextLogEntry());
    QCOMPARE(reader.error(), QXmlStreamReader::PrematureEndOfDocumentError);
    writer.write("</Entries>");
    QVERIFY(!reader.readNextLogEntry());
    QVERIFY(reader.atEnd());
    QVERIFY(!reader.hasError());
}

void TestLogReader::manyBlanksAndComments()
{
    QByteArray const filling = QByteArray(1000, ' ') + "<!--" + QByteArray(1000, '-').replace("--", "- ") + "-->";
    Reading const reading = readAll(header() + filling.repeated(1000) + done("a"));
    QCOMPARE(reading.entries, QStringList{"ExpD a"});
}

QTEST_GUILESS_MAIN(TestLogReader)
#include "tst_LogReader.moc"
