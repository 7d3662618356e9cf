// SPDX-License-Identifier: LGPL-2.1-or-later
#include "EntryTypes.h"
#include "OtherEntry.h"
#include "ReversingTranslator.h"

#include <GenericUtilities/actionlog/LogWriter.h>
#include <GenericUtilities/actionlog/XmlWording_p.h>

#include <QBuffer>
#include <QCoreApplication>
#include <QTest>
#include <QTextStream>

#include <type_traits>

using namespace qv;

static_assert(std::is_base_of_v<IInterface, ILogWriter> && std::is_abstract_v<LogWriter>);
static_assert(!std::is_convertible_v<XMLLogWriter*, QXmlStreamWriter*>);

namespace {

QDateTime const Date(QDate(2020, 2, 29), QTime(12, 34, 56, 789));

/// What a writer on a buffer has written after @p write.
template <typename Write> QByteArray document(Write write)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    QTextStream stream(&buffer);
    XMLLogWriter writer(&stream, QStringLiteral("not stored"), Date);
    write(writer);
    return writer.hasError() ? QByteArray("error") : buffer.data();
}

QByteArray element(LogEntry const& entry)
{
    return document([&](XMLLogWriter& writer) { entry.writeTo(writer); });
}

template <typename T> QByteArray elementOf(FourChars code, T const& value)
{
    OtherEntry entry;
    entry.time().setValue(QDateTime());
    entry.with(code, value).with("last", 1);
    return element(entry);
}

QString prose(LogEntry const& entry, char separator)
{
    QString text;
    QTextStream stream(&text);
    ProsaLogWriter writer(stream, separator);
    writer.writeStartDocument();
    entry.writeTo(writer);
    writer.writeEndDocument();
    return text;
}

} // namespace

class TestLogWriter : public QObject {
    Q_OBJECT

private slots:
    void header_data();
    void header();
    void everyType_data();
    void everyType();
    void wholeDocument();
    void valuesWithoutAValueAreLeftOut();
    void names_data();
    void names();
    void nameOfAValueIsWrittenOnce();
    void texts_data();
    void texts();
    void deviceMayComeLater();
    void deviceThatRefuses();
    void pieces();
    void entriesThatNobodyWouldRead_data();
    void entriesThatNobodyWouldRead();
    void lineForPeople();
    void lineHasValuesWithoutAValue();
    void lineIsTranslatedAndFlushed();
};

void TestLogWriter::header_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("application");
    QTest::addColumn<QString>("language");
    QTest::addColumn<QByteArray>("rest");
    QByteArray const date = "\" Date=\"2020-02-29T12:34:56\"";
    QTest::newRow("no versions") << "/var/a.qvl"
                                 << ""
                                 << ""
                                 << "/var/a.qvl" + date + ">";
    QTest::newRow("both versions") << "/var/a.qvl"
                                   << "4.2"
                                   << "de"
                                   << "/var/a.qvl" + date + " ApplicationVersion=\"4.2\" LanguageVersion=\"de\">";
    QTest::newRow("application alone") << "a"
                                       << "4.2"
                                       << ""
                                       << "a" + date + " ApplicationVersion=\"4.2\">";
    QTest::newRow("language alone") << "a"
                                    << ""
                                    << "de"
                                    << "a" + date + " LanguageVersion=\"de\">";
    QTest::newRow("no name") << ""
                             << ""
                             << "" << date + ">";
    QTest::newRow("markup in texts") << "<&\">"
                                     << "'"
                                     << ""
                                     << "&lt;&amp;&quot;&gt;" + date + " ApplicationVersion=\"'\">";
}

void TestLogWriter::header()
{
    QFETCH(QString, name);
    QFETCH(QString, application);
    QFETCH(QString, language);
    QFETCH(QByteArray, rest);
    QByteArray const expected = "<?xml version=\"1.0\" encoding=\"UTF-8\"?><Entries Version=\"v0.1\" LogFile=\"" + rest;
    QByteArray const written = document([&](XMLLogWriter& writer) {
        writer.setStartDocumentName(name);
        writer.setAppVersion(application);
        writer.setLngVersion(language);
        writer.writeStartDocument();
    });
    QCOMPARE(written, expected);
    LogFileHeader header;
    header.logFile = name;
    header.date = Date;
    header.applicationVersion = application;
    header.languageVersion = language;
    QCOMPARE(xml::toXml(header), expected);
}

void TestLogWriter::everyType_data()
{
    QTest::addColumn<entries::Entry>("entry");
    QTest::addColumn<QByteArray>("xml");
    for (entries::Sample const& sample : entries::samples())
        QTest::newRow(sample.name) << sample.entry << sample.xml;
}

void TestLogWriter::everyType()
{
    QFETCH(entries::Entry, entry);
    QTEST(element(*entry), "xml");
    bool ok = false;
    QTEST(xml::toXml(*entry, &ok), "xml");
    QVERIFY(ok);
}

void TestLogWriter::wholeDocument()
{
    QByteArray const written = document([](XMLLogWriter& writer) {
        writer.setStartDocumentName(QStringLiteral("a"));
        writer.writeStartDocument();
        entries::rename()->writeTo(writer);
        entries::contextSwitch()->writeTo(writer);
        writer.writeEndDocument();
    });
    QCOMPARE(written,
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>"
        "<Entries Version=\"v0.1\" LogFile=\"a\" Date=\"2020-02-29T12:34:56\">"
        "<Entry ID=\"ExpR\" Time=\""
            + entries::timeText()
            + "\" User=\"Ann (Smith)\" Text=\"renamed\" path=\"/mnt/\" src=\"a.mp4\" dest=\"b.mp4\"/>"
              "<Entry ID=\"ALog\" Time=\""
            + entries::timeText()
            + "\" User=\"Ann (Smith)\" filO=\"/var/a.qvl\" filN=\"/var/b.qvl\"/>"
              "</Entries>\n");
}

void TestLogWriter::valuesWithoutAValueAreLeftOut()
{
    ParseXMLLogEntry entry;
    entry.time().setValue(entries::time());
    entry.source.setValue(QStringLiteral("message"));
    QCOMPARE(element(entry), "<Entry ID=\"XmlP\" Time=\"" + entries::timeText() + "\" srcP=\"message\"/>");
    entry.time().setValue(QDateTime());
    entry.source.setValue(QString());
    QCOMPARE(element(entry), QByteArray("<Entry ID=\"XmlP\"/>"));
}

void TestLogWriter::names_data()
{
    QTest::addColumn<quint32>("code");
    QTest::addColumn<QString>("written");
    QTest::addColumn<QString>("reduced");
    auto const row = [](char const* name, FourChars code, QString const& written, QString const& reduced) {
        QTest::newRow(name) << code.value() << written << reduced;
    };
    row("four letters", "srcP", "srcP", "srcP");
    row("trailing blanks are written", "to  ", "to  ", "to");
    row("zero in front", FourChars(0x00737263), "src", "src");
    row("digits behind letters", "a1.-", "a1.-", "a1.-");
    row("digits in front", "1.a2", "a2", "a2");
    row("blanks in front and between", " a b", "ab", "ab");
    row("blanks between and behind", "a b ", "ab ", "ab");
    row("markup", "<a>\"", "a", "a");
    row("equals sign and slash", "a=/b", "ab", "ab");
    row("a colon would be a namespace", "a:b ", "ab ", "ab");
    row("underscore", "_a_b", "_a_b", "_a_b");
    row("letters beyond ASCII", FourChars(0xE4F6FCDF), u8"\u00E4\u00F6\u00FC\u00DF", u8"\u00E4\u00F6\u00FC\u00DF");
    row("multiplication and division signs", FourChars(0xD761F762), "ab", "ab");
    row("middle dot, not in front", FourChars(0xB761B762), u8"a\u00B7b", u8"a\u00B7b");
    row("controls", FourChars(0x61017F80), "a", "a");
    row("no code", FourChars(), "    ", "");
    row("nothing that a name holds", "123 ", " ", "");
    row("zeros", FourChars(0U), "", "");
}

void TestLogWriter::names()
{
    QFETCH(quint32, code);
    QFETCH(QString, written);
    QFETCH(QString, reduced);
    QCOMPARE(xml::writtenName(FourChars(code)), written);
    QCOMPARE(xml::reducedName(FourChars(code)), reduced);
    QByteArray const attribute = reduced.isEmpty() ? QByteArray() : " " + written.toUtf8() + "=\"v\"";
    QCOMPARE(elementOf(FourChars(code), QStringLiteral("v")), "<Entry ID=\"Othr\"" + attribute + " last=\"1\"/>");
}

void TestLogWriter::nameOfAValueIsWrittenOnce()
{
    QCOMPARE(elementOf("last", 2), QByteArray("<Entry ID=\"Othr\" last=\"2\"/>"));
    QCOMPARE(elementOf("ID  ", 2), QByteArray("<Entry ID=\"Othr\" last=\"1\"/>"));
    QByteArray const two = document([](XMLLogWriter& writer) {
        OtherEntry entry;
        entry.time().setValue(QDateTime());
        entry.with("same", 1);
        entry.writeTo(writer);
        entry.writeTo(writer);
    });
    QCOMPARE(two, QByteArray("<Entry ID=\"Othr\" same=\"1\"/><Entry ID=\"Othr\" same=\"1\"/>"));
}

void TestLogWriter::texts_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("written");
    QTest::newRow("markup") << QStringLiteral("<>&\"'") << QByteArray("&lt;&gt;&amp;&quot;'");
    QTest::newRow("tab and line ends") << QStringLiteral("\t\n\r\n") << QByteArray("&#9;&#10;&#13;&#10;");
    QTest::newRow("blanks") << QStringLiteral("  a  ") << QByteArray("  a  ");
    QTest::newRow("beyond the BMP") << QStringLiteral(u"\U0001F600") << QByteArray("\xF0\x9F\x98\x80");
    QTest::newRow("zero") << QString(QLatin1String("a\0b", 3))
                          << QByteArray("a\xEF\xBF\xBD"
                                        "b");
    QTest::newRow("controls") << QStringLiteral("\x01\x1F\x0B\x0C\x7F")
                              << QByteArray("\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\x7F");
    QTest::newRow("U+FFFE and U+FFFF") << QString(QChar(0xFFFE)) + QChar(0xFFFF)
                                       << QByteArray("\xEF\xBF\xBD\xEF\xBF\xBD");
    QTest::newRow("first half alone") << QChar(0xD83D) + QStringLiteral("a")
                                      << QByteArray("\xEF\xBF\xBD"
                                                    "a");
    QTest::newRow("second half alone") << QString(QChar(0xDE00)) << QByteArray("\xEF\xBF\xBD");
    QTest::newRow("halves the wrong way round")
        << QString(QChar(0xDE00)) + QChar(0xD83D) << QByteArray("\xEF\xBF\xBD\xEF\xBF\xBD");
    QTest::newRow("first half at the end") << QStringLiteral("a") + QChar(0xD83D) << QByteArray("a\xEF\xBF\xBD");
    QTest::newRow("first half before a pair")
        << QChar(0xD83D) + QStringLiteral(u"\U0001F600") << QByteArray("\xEF\xBF\xBD\xF0\x9F\x98\x80");
}

void TestLogWriter::texts()
{
    QFETCH(QString, text);
    QFETCH(QByteArray, written);
    QCOMPARE(elementOf("Text", text), "<Entry ID=\"Othr\" Text=\"" + written + "\" last=\"1\"/>");
}

void TestLogWriter::deviceMayComeLater()
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    XMLLogWriter writer(nullptr, {}, Date);
    writer.setDevice(&buffer);
    OtherEntry entry;
    entry.time().setValue(QDateTime());
    entry.writeTo(writer);
    QCOMPARE(buffer.data(), QByteArray("<Entry ID=\"Othr\"/>"));
}

void TestLogWriter::deviceThatRefuses()
{
    QBuffer closed;
    closed.open(QIODevice::ReadOnly);
    XMLLogWriter writer(nullptr, {}, Date);
    writer.setDevice(&closed);
    QVERIFY(!writer.hasError());
    QTest::ignoreMessage(QtWarningMsg, "QIODevice::write (QBuffer): ReadOnly device");
    OtherEntry().writeTo(writer);
    QVERIFY(writer.hasError());
}

void TestLogWriter::pieces()
{
    QByteArray const header = xml::toXml(LogFileHeader());
    QCOMPARE(header,
        QByteArray("<?xml version=\"1.0\" encoding=\"UTF-8\"?>"
                   "<Entries Version=\"v0.1\" LogFile=\"\" Date=\"\">"));
    OtherEntry entry;
    entry.time().setValue(QDateTime());
    QCOMPARE(xml::toXml(entry), QByteArray("<Entry ID=\"Othr\"/>"));
}

void TestLogWriter::entriesThatNobodyWouldRead_data()
{
    QTest::addColumn<int>("textSize");
    QTest::addColumn<int>("values");
    QTest::addColumn<bool>("isAccepted");
    constexpr int markup = 26; // <Entry ID="Othr" Text=""/>
    constexpr int limit = 16 * 1024 * 1024;
    QTest::newRow("16 MiB") << limit - markup << 0 << true;
    QTest::newRow("a byte more") << limit - markup + 1 << 0 << false;
    QTest::newRow("1000 attributes with ID") << 1 << 998 << true;
    QTest::newRow("one more") << 1 << 999 << false;
}

void TestLogWriter::entriesThatNobodyWouldRead()
{
    QFETCH(int, textSize);
    QFETCH(int, values);
    QFETCH(bool, isAccepted);
    OtherEntry entry;
    entry.time().setValue(QDateTime());
    entry.with("Text", QString(textSize, QLatin1Char('x')));
    for (int i = 0; i < values; ++i)
        entry.with(QStringLiteral("a%1").arg(i, 3, 10, QLatin1Char('0')), 1);
    bool ok = !isAccepted;
    QByteArray const bytes = xml::toXml(entry, &ok);
    QCOMPARE(ok, isAccepted);
    QCOMPARE(bytes.isEmpty(), !isAccepted);
}

void TestLogWriter::lineForPeople()
{
    entries::Entry const entry = entries::rename();
    QString const when = QString::fromUtf8(entries::timeText());
    QCOMPARE(prose(*entry, ' '),
        "Time: " + when + " User: Ann (Smith) text: renamed path: /mnt/ source: a.mp4 dest: b.mp4 Export rename\n");
    QVERIFY(prose(*entry, ';').startsWith("Time: " + when + ";User: Ann (Smith);text: renamed;"));
    QVERIFY(prose(*entry, '\xB7').contains(QStringLiteral(u"User: Ann (Smith)\u00B7text")));
    QVERIFY(prose(*entries::parseError(), ' ').endsWith("line: 3 colunm: 17 Action log error\n"));
}

void TestLogWriter::lineHasValuesWithoutAValue()
{
    OtherEntry entry;
    entry.time().setValue(QDateTime());
    entry.with("aaaa", 0).with("bbbb", false).with("cccc", QStringList());
    QCOMPARE(prose(entry, ' '), QStringLiteral("Time:  User:  aaaa: 0 bbbb:  cccc:  Other\n"));
}

void TestLogWriter::lineIsTranslatedAndFlushed()
{
    ReversingTranslator translator;
    QCoreApplication::installTranslator(&translator);
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    QTextStream stream(&buffer);
    ProsaLogWriter writer(stream, ' ');
    ExportDoneLogEntry const entry;
    writer.writeStartElement(entry);
    writer.writeEndElement(entry);
    QCOMPARE(buffer.data(), QByteArray("enod tropxE\n"));
}

QTEST_GUILESS_MAIN(TestLogWriter)
#include "tst_LogWriter.moc"
