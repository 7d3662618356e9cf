// SPDX-License-Identifier: LGPL-2.1-or-later
#include "EntryTypes.h"
#include "OtherEntry.h"
#include "ReversingTranslator.h"

#include <QCoreApplication>
#include <QTest>

using namespace qv;

namespace {

/// A value of a type: its code, its name and what its class is known by.
QString valueOf(LogValue const& value)
{
    char const* const type = dynamic_cast<TLogValue<QString> const*>(&value) ? "text"
        : dynamic_cast<TLogValue<QDateTime> const*>(&value)                  ? "time"
        : dynamic_cast<TLogValue<int> const*>(&value)                        ? "number"
                                                                             : "other";
    return QStringLiteral("%1 %2 %3").arg(QString::number(value.code().value(), 16), value.name(), QLatin1String(type));
}

QStringList valuesOf(LogEntry const& entry)
{
    QStringList result;
    for (LogValue const* value : entry.values().mid(2))
        result.append(valueOf(*value));
    return result;
}

QStringList const Span = {"54657874 text text", "466f726d format text", "73726350 source text", "64737450 dest text",
    "66726f6d from time", "746f2020 to time"};
QStringList const OnlyText = {"54657874 text text"};

QStringList registeredNames()
{
    return {"Action log error", "Export abort", "Export done", "Export error", "Export rename", "Export start",
        "Export written", "Switched log"};
}

} // namespace

class TestLogEntryTypes : public QObject {
    Q_OBJECT

private slots:
    void namesOfAllTypes();
    void type_data();
    void type();
    void membersAreTheValues();
    void descriptions_data();
    void descriptions();
    void textsAreTranslated();
    void unknownIdMakesNothing();
    void laterRegistrationCounts();
    void creatorMayBeMissing();
};

void TestLogEntryTypes::namesOfAllTypes()
{
    QCOMPARE(logEntryFactory().entryNames(), registeredNames());
    QCOMPARE(&logEntryFactory(), &logEntryFactory());
}

void TestLogEntryTypes::type_data()
{
    QTest::addColumn<QString>("id");
    QTest::addColumn<quint32>("category");
    QTest::addColumn<QString>("action");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("values");
    quint32 const exporting = 0x45787074;
    QTest::newRow("switched log") << "ALog" << 0x614C6F67U << "Switched log"
                                  << "Switched logging from '%1' to '%2'."
                                  << QStringList{"66696c4f oldFile text", "66696c4e newFile text"};
    QTest::newRow("export written") << "ExpW" << exporting << "Export written"
                                    << "%1" << Span;
    QTest::newRow("export start") << "ExpS" << exporting << "Export start"
                                  << "%1" << Span;
    QTest::newRow("export abort") << "ExpA" << exporting << "Export abort"
                                  << "%1" << OnlyText;
    QTest::newRow("export error") << "ExpE" << exporting << "Export error"
                                  << "%1" << OnlyText;
    QTest::newRow("export done") << "ExpD" << exporting << "Export done"
                                 << "%1" << OnlyText;
    QTest::newRow("export rename: the source's code begins with a zero")
        << "ExpR" << exporting << "Export rename"
        << "%1" << QStringList{"54657874 text text", "70617468 path text", "737263 source text", "64657374 dest text"};
    QTest::newRow("parse error: a misspelt column")
        << "XmlP" << 0x45726F72U << "Action log error"
        << "Error '%1' reading action log '%2' in line '%3', column '%4'."
        << QStringList{"73726350 source text", "65727254 error text", "6572724c line number", "65727243 colunm number"};
}

void TestLogEntryTypes::type()
{
    QFETCH(QString, id);
    QFETCH(quint32, category);
    std::unique_ptr<LogEntry> const entry(logEntryFactory().create(id));
    QVERIFY(entry);
    QCOMPARE(entry->id().toString(), id);
    QCOMPARE(static_cast<quint32>(entry->category()), category);
    QTEST(entry->action(), "action");
    QTEST(entry->descriptionText(), "text");
    QTEST(valuesOf(*entry), "values");
    for (LogValue const* value : entry->values().mid(1))
        QVERIFY(!value->hasValue());
}

void TestLogEntryTypes::membersAreTheValues()
{
    ExportStartLogEntry start;
    QList<LogValue*> const ofStart = {&start.text, &start.format, &start.source, &start.dest, &start.from, &start.to};
    QCOMPARE(start.values().mid(2), ofStart);
    ExportWrittenLogEntry written;
    QList<LogValue*> const ofWritten
        = {&written.text, &written.format, &written.source, &written.dest, &written.from, &written.to};
    QCOMPARE(written.values().mid(2), ofWritten);
    ExportRenameLogEntry rename;
    QCOMPARE(rename.values().mid(2), (QList<LogValue*>{&rename.text, &rename.path, &rename.source, &rename.dest}));
    ActionLogContextSwitchEntry other;
    QCOMPARE(other.values().mid(2), (QList<LogValue*>{&other.oldFile, &other.newFile}));
    ParseXMLLogEntry error;
    QCOMPARE(error.values().mid(2), (QList<LogValue*>{&error.source, &error.error, &error.line, &error.column}));
    QCOMPARE(QByteArray(ExportDoneLogEntry::sAction), QByteArray("Export done"));
    QCOMPARE(QByteArray(ExportDoneLogEntry::sDescriptionText), QByteArray("%1"));
}

void TestLogEntryTypes::descriptions_data()
{
    QTest::addColumn<entries::Entry>("entry");
    QTest::addColumn<QString>("description");
    QTest::newRow("switch") << entries::contextSwitch() << "Switched logging from '/var/a.qvl' to '/var/b.qvl'.";
    QTest::newRow("text alone") << entries::text<ExportErrorLogEntry>() << "Disk full";
    QTest::newRow("the values fill the text") << entries::span<ExportStartLogEntry>() << "MP4 from Gate to /mnt/x";
    QTest::newRow("rename") << entries::rename() << "renamed";
    QTest::newRow("crossed names: the parser's words come first")
        << entries::parseError()
        << "Error 'Opening and ending tag mismatch.' reading action log '/var/a.qvl' in line '3', column '17'.";
}

void TestLogEntryTypes::descriptions()
{
    QFETCH(entries::Entry, entry);
    QTEST(entry->description(), "description");
}

void TestLogEntryTypes::textsAreTranslated()
{
    ReversingTranslator translator;
    QCoreApplication::installTranslator(&translator);
    QCOMPARE(ActionLogContextSwitchEntry().action(), QStringLiteral("gol dehctiwS"));
    QCOMPARE(ActionLogContextSwitchEntry().descriptionText(), QStringLiteral(".'2%' ot '1%' morf gniggol dehctiwS"));
    QCOMPARE(logEntryFactory().entryNames().first(), QStringLiteral("emaner tropxE"));
    QCOMPARE(QByteArray(ParseXMLLogEntry::sAction), QByteArray("Action log error"));
}

void TestLogEntryTypes::unknownIdMakesNothing()
{
    QVERIFY(!logEntryFactory().create("none"));
    QVERIFY(!logEntryFactory().create(FourChars()));
    QCOMPARE(logEntryFactory().entryNames(), registeredNames());
}

void TestLogEntryTypes::laterRegistrationCounts()
{
    LogEntryFactory factory;
    factory.registerCreator("Same", &ExportDoneLogEntry::create, "first");
    factory.registerCreator("Same", &OtherEntry::create, "second");
    std::unique_ptr<LogEntry> const entry(factory.create("Same"));
    QVERIFY(dynamic_cast<OtherEntry*>(entry.get()));
    QCOMPARE(factory.entryNames(), QStringList{"second"});
}

void TestLogEntryTypes::creatorMayBeMissing()
{
    LogEntryFactory factory;
    factory.registerCreator("Same", nullptr, "name");
    QVERIFY(!factory.create("Same"));
}

QTEST_GUILESS_MAIN(TestLogEntryTypes)
#include "tst_LogEntryTypes.moc"
