// SPDX-License-Identifier: LGPL-2.1-or-later
#include "EntryTypes.h"
#include "LogDocument.h"
#include "support/Random.h"

#include <GenericUtilities/actionlog/LogReader.h>
#include <GenericUtilities/actionlog/LogWriter.h>

#include <QBuffer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryFile>
#include <QTest>

#include <vector>

using namespace qv;
using entries::Entry;

namespace {

/// An entry with a text among values that it must not touch.
Entry nasty(QString const& text)
{
    auto entry = entries::entryOf<ExportRenameLogEntry>(text);
    entry->text.setValue(text);
    entry->path.setValue(QStringLiteral("before"));
    entry->source.setValue(text);
    entry->dest.setValue(QStringLiteral("behind"));
    return entry;
}

QByteArray documentOf(QList<Entry> const& all)
{
    QByteArray bytes = document::header();
    for (Entry const& entry : all)
        bytes += xml::toXml(*entry);
    return bytes + document::End;
}

QList<QStringList> readBack(QByteArray bytes, QXmlStreamReader::Error& error)
{
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    XMLLogReader reader(&buffer, QString());
    QList<QStringList> result;
    while (std::unique_ptr<LogEntry> const entry{reader.readNextLogEntry()})
        result.append(entries::texts(*entry));
    error = reader.error();
    return result;
}

/// Name and attributes of each element, as Python's expat sees them.
QJsonArray parsed(QByteArray const& bytes)
{
    QTemporaryFile file;
    file.open();
    file.write(bytes);
    file.close();
    QProcess python;
    python.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    python.start(SYSTEM_PYTHON, {LOG_ENTRIES, file.fileName()});
    python.waitForFinished(300000);
    return QJsonDocument::fromJson(python.readAllStandardOutput()).array();
}

/// What a file keeps of a text, a code point at a time.
QString kept(QString const& text)
{
    QString result;
    for (uint const character : text.toUcs4()) {
        bool const isHeld = character == '\t' || character == '\n' || character == '\r'
            || (character >= 0x20 && character != 0xFFFE && character != 0xFFFF);
        if (QChar::requiresSurrogates(character))
            result += QString(QChar(QChar::highSurrogate(character))) + QChar(QChar::lowSurrogate(character));
        else
            result += QChar(isHeld ? character : 0xFFFD);
    }
    return result;
}

QString randomText(QRandomGenerator& random)
{
    constexpr ushort units[] = {'a', ' ', '<', '>', '&', '"', '\'', '\t', '\n', '\r', 0, 1, 0x1F, 0x7F, 0x85, 0x2028,
        0xD83D, 0xDE00, 0xFFFE, 0xFFFF, 0xFFFD, 0xFEFF, ';', '#', ']', '-', '/', '=', '%', '1'};
    QString text;
    for (int length = random.bounded(12); length > 0; --length)
        text += QChar(units[random.bounded(static_cast<int>(std::size(units)))]);
    return text;
}

} // namespace

class TestLogRoundTrip : public QObject {
    Q_OBJECT

private slots:
    void texts_data();
    void texts();
    void randomTexts();
    void everyCodeUnit();
    void everyTypeForAnotherParser();
    void headerForAnotherParser();
};

void TestLogRoundTrip::texts_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("read");
    auto const same = [](char const* name, QString const& text) { QTest::newRow(name) << text << text; };
    QString const replacement(QChar(0xFFFD));
    same("markup", QStringLiteral("<>&\"'"));
    same("what looks like the end of the file", QStringLiteral("\"/></Entries>"));
    same("what looks like a reference", QStringLiteral("&amp;&#0;&lt;"));
    same("what looks like other markup", QStringLiteral("<!-- --><![CDATA[ ]]><?xml?>"));
    same("tab and line ends", QStringLiteral("\ta\nb\rc\r\nd\n\r"));
    same("blanks at both ends", QStringLiteral("  a  "));
    same("blanks alone", QStringLiteral("   "));
    same("line end alone", QStringLiteral("\n"));
    same("line ends of Unicode", QStringLiteral(u"\u0085\u2028\u2029"));
    same("beyond the BMP", QStringLiteral(u"\U0001F600\U0010FFFF\U0001FFFE"));
    same("byte order mark", QStringLiteral(u"\uFEFFa\uFEFF"));
    same("combining and right to left", QStringLiteral(u"e\u0301 \u05D0\u200F\u202E"));
    same("a megabyte", QString(1 << 20, QLatin1Char('x')));
    same("a megabyte of markup", QStringLiteral("<&>\"").repeated(1 << 18));
    QTest::newRow("zero") << QString(QLatin1String("a\0b", 3)) << "a" + replacement + "b";
    QTest::newRow("escape sequence") << QStringLiteral("\x1B[31m") << replacement + "[31m";
    QTest::newRow("U+FFFE") << "a" + QString(QChar(0xFFFE)) << "a" + replacement;
    QTest::newRow("first half of a pair") << QChar(0xD83D) + QStringLiteral("a") << replacement + "a";
    QTest::newRow("second half of a pair at the end") << "a" + QString(QChar(0xDE00)) << "a" + replacement;
    QTest::newRow("a megabyte of zeros") << QString(1 << 20, QLatin1Char('\0')) << replacement.repeated(1 << 20);
}

void TestLogRoundTrip::texts()
{
    QFETCH(QString, text);
    QFETCH(QString, read);
    QList<Entry> const all = {entries::contextSwitch(), nasty(text), entries::parseError()};
    QByteArray const bytes = documentOf(all);
    QXmlStreamReader::Error error = QXmlStreamReader::CustomError;
    QList<QStringList> const expected
        = {entries::texts(*all.first()), entries::texts(*nasty(read)), entries::texts(*all.last())};
    QVERIFY(readBack(bytes, error) == expected);
    QCOMPARE(error, QXmlStreamReader::NoError);

    QJsonArray const elements = parsed(bytes);
    QCOMPARE(elements.size(), 4);
    QJsonObject const attributes = elements.at(2).toArray().at(1).toObject();
    QCOMPARE(attributes.keys(), (QStringList{"ID", "Text", "Time", "User", "dest", "path", "src"}));
    for (char const* name : {"Text", "User", "src"})
        QVERIFY2(attributes.value(QLatin1String(name)).toString() == read, name);
}

void TestLogRoundTrip::randomTexts()
{
    QRandomGenerator random = support::generator();
    QList<Entry> all;
    QList<QStringList> expected;
    for (int i = support::rounds(5000); i > 0; --i) {
        QString const text = randomText(random);
        all.append(nasty(text));
        expected.append(entries::texts(*nasty(kept(text))));
    }
    QXmlStreamReader::Error error = QXmlStreamReader::CustomError;
    QList<QStringList> const read = readBack(documentOf(all), error);
    QCOMPARE(error, QXmlStreamReader::NoError);
    QCOMPARE(read.size(), expected.size());
    for (int i = 0; i < read.size(); ++i)
        QVERIFY2(read.at(i) == expected.at(i), qPrintable(support::seedNote(i)));
}

void TestLogRoundTrip::everyCodeUnit()
{
    QString text;
    for (int unit = 1; unit <= 0xFFFF; ++unit)
        text += QString(QChar(unit)) + QLatin1Char('x');
    QXmlStreamReader::Error error = QXmlStreamReader::CustomError;
    QList<QStringList> const read = readBack(documentOf({nasty(text)}), error);
    QCOMPARE(error, QXmlStreamReader::NoError);
    QVERIFY(read == QList<QStringList>{entries::texts(*nasty(kept(text)))});
}

void TestLogRoundTrip::everyTypeForAnotherParser()
{
    QList<Entry> all;
    for (entries::Sample const& sample : entries::samples())
        all.append(sample.entry);
    QJsonArray const elements = parsed(documentOf(all));
    QCOMPARE(elements.size(), all.size() + 1);
    for (int i = 0; i < all.size(); ++i) {
        QJsonArray const element = elements.at(i + 1).toArray();
        QJsonObject attributes = element.at(1).toObject();
        QCOMPARE(element.at(0).toString(), QStringLiteral("Entry"));
        QCOMPARE(attributes.take(QStringLiteral("ID")).toString(), all.at(i)->id().toString());
        for (LogValue const* value : all.at(i)->values()) {
            QString const name = value->code().toString().remove(QLatin1Char('\0')).trimmed();
            QCOMPARE(attributes.take(name).toString(), value->toString());
        }
        QVERIFY(attributes.isEmpty());
    }
}

void TestLogRoundTrip::headerForAnotherParser()
{
    LogFileHeader header;
    header.logFile = QStringLiteral(u"/var/<&>\u00E4.qvl");
    header.date = entries::time();
    header.applicationVersion = QStringLiteral("4.2\x01");
    header.languageVersion = QStringLiteral("de");
    QJsonArray const root = parsed(xml::toXml(header) + document::End).at(0).toArray();
    QJsonObject const expected
        = {{"Version", "v0.1"}, {"LogFile", QStringLiteral(u"/var/<&>\u00E4.qvl")}, {"Date", "2020-02-29T12:34:00"},
            {"ApplicationVersion", QStringLiteral(u"4.2\uFFFD")}, {"LanguageVersion", "de"}};
    QCOMPARE(root.at(0).toString(), QStringLiteral("Entries"));
    QCOMPARE(root.at(1).toObject(), expected);
}

QTEST_GUILESS_MAIN(TestLogRoundTrip)
#include "tst_LogRoundTrip.moc"
