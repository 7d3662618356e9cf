// SPDX-License-Identifier: LGPL-2.1-or-later
#include "EntryTypes.h"
#include "OtherEntry.h"

#include <GenericUtilities/actionlog/LogWriter.h>

#include <QTest>

#include <type_traits>

using namespace qv;

static_assert(std::is_abstract_v<LogEntry> && std::has_virtual_destructor_v<LogEntry>);
static_assert(!std::is_copy_constructible_v<LogEntry>);

namespace {

/// Writes down which calls it gets.
class RecordingWriter : public ILogWriter {
public:
    void writeStartDocument() override { calls += "document"; }
    void writeEndDocument() override { calls += "document end"; }
    void writeStartElement(LogEntry const& entry) override { calls += "start " + entry.id().toString(); }
    void writeEndElement(LogEntry const& entry) override { calls += "end " + entry.id().toString(); }
    void writeAttribute(LogValue const& value) override { calls += value.code().toString(); }

    QStringList calls;
};

QDateTime epoch()
{
    return QDateTime::fromMSecsSinceEpoch(0, Qt::UTC);
}

} // namespace

class TestLogEntry : public QObject {
    Q_OBJECT

private slots:
    void timeAndUserComeFirst();
    void timeIsThatOfConstruction_data();
    void timeIsThatOfConstruction();
    void valueByCode();
    void copyGoesByPlace();
    void copyOfFewerValues();
    void cloneIsACopy();
    void cloneOfAnUnknownTypeIsNull();
    void equality_data();
    void equality();
    void writerIsCalledForEachValueInOrder();
    void description_data();
    void description();
    void descriptionWithoutAText();
    void surplusValuesGiveNoWarning();
    void descriptionDoesNotExplode();
    void descriptionGrowsWithItsValuesAlone();
};

void TestLogEntry::timeAndUserComeFirst()
{
    OtherEntry entry;
    entry.with("valA", 1);
    QCOMPARE(entry.values().size(), 3);
    QCOMPARE(entry.values().at(0), static_cast<LogValue*>(&entry.time()));
    QCOMPARE(entry.values().at(1), static_cast<LogValue*>(&entry.user()));
    QCOMPARE(entry.time().code(), FourChars("Time"));
    QCOMPARE(entry.time().name(), QStringLiteral("Time"));
    QCOMPARE(entry.user().code(), FourChars("User"));
    QCOMPARE(entry.user().name(), QStringLiteral("User"));
    QVERIFY(!entry.user().hasValue());
}

void TestLogEntry::timeIsThatOfConstruction_data()
{
    QTest::addColumn<QString>("copiedBefore");
    QTest::newRow("of the first entry") << QString();
    QTest::newRow("of one made after a copy") << QStringLiteral("ExpD");
    QTest::newRow("of one made after a copy that could not be made") << QStringLiteral("Unkn");
}

void TestLogEntry::timeIsThatOfConstruction()
{
    QFETCH(QString, copiedBefore);
    if (!copiedBefore.isEmpty()) {
        std::unique_ptr<LogEntry> const copy(OtherEntry({}, copiedBefore).clone());
        QCOMPARE(!copy, copiedBefore == QLatin1String("Unkn"));
    }
    QDateTime const before = QDateTime::currentDateTime();
    OtherEntry const entry;
    QVERIFY(before <= entry.time().value());
    QVERIFY(entry.time().value() <= QDateTime::currentDateTime());
    QCOMPARE(entry.time().value().timeSpec(), Qt::LocalTime);
}

void TestLogEntry::valueByCode()
{
    OtherEntry entry;
    entry.with("same", 1).with("same", 2).with("othr", 3);
    QCOMPARE(entry.logValue("Time"), static_cast<LogValue*>(&entry.time()));
    QCOMPARE(entry.logValue("same"), entry.values().at(2));
    QVERIFY(!entry.logValue("none"));
    entry.logValue("othr")->setValue(QStringLiteral("5"));
    LogEntry const& constEntry = entry;
    QCOMPARE(constEntry.logValue("othr")->toString(), QStringLiteral("5"));
}

void TestLogEntry::copyGoesByPlace()
{
    OtherEntry from;
    from.with("aaaa", QStringLiteral("text")).with("bbbb", 2).with("cccc", true);
    from.user().setValue(QStringLiteral("Ann"));
    from.time().setValue(entries::time());
    OtherEntry to;
    to.with("xxxx", QString()).with("yyyy", QStringLiteral("kept")).with("zzzz", false);
    to.copyFrom(from);
    QCOMPARE(to.time().value(), entries::time());
    QCOMPARE(to.user().value(), QStringLiteral("Ann"));
    QCOMPARE(to.values().at(2)->toString(), QStringLiteral("text"));
    QCOMPARE(to.values().at(3)->toString(), QStringLiteral("kept")); // a number is no text
    QCOMPARE(to.values().at(4)->toString(), QStringLiteral("true"));
}

void TestLogEntry::copyOfFewerValues()
{
    OtherEntry shorter;
    shorter.with("aaaa", 1);
    OtherEntry longer;
    longer.with("aaaa", 2).with("bbbb", 3);
    longer.copyFrom(shorter);
    QCOMPARE(longer.values().at(2)->toString(), QStringLiteral("1"));
    QCOMPARE(longer.values().at(3)->toString(), QStringLiteral("3"));
    shorter.copyFrom(longer);
    QCOMPARE(shorter.values().size(), 3);
}

void TestLogEntry::cloneIsACopy()
{
    for (entries::Sample const& sample : entries::samples()) {
        std::unique_ptr<LogEntry> const copy(sample.entry->clone());
        QVERIFY2(copy, sample.name);
        QVERIFY(typeid(*copy) == typeid(*sample.entry));
        QCOMPARE(entries::texts(*copy), entries::texts(*sample.entry));
        copy->user().setValue(QStringLiteral("Bob"));
        QVERIFY(sample.entry->user().value() != QLatin1String("Bob"));
    }
}

void TestLogEntry::cloneOfAnUnknownTypeIsNull()
{
    QVERIFY(!OtherEntry({}, "Unkn").clone());
}

void TestLogEntry::equality_data()
{
    QTest::addColumn<QDateTime>("time");
    QTest::addColumn<QString>("id");
    QTest::addColumn<quint32>("category");
    QTest::addColumn<QString>("user");
    QTest::addColumn<int>("value");
    QTest::addColumn<bool>("isEqual");
    quint32 const system = LogCategorySystem;
    QTest::newRow("all the same") << epoch() << "Othr" << system << "Ann" << 1 << true;
    QTest::newRow("the same moment elsewhere") << epoch().toLocalTime() << "Othr" << system << "Ann" << 1 << true;
    QTest::newRow("another value of the type") << epoch() << "Othr" << system << "Ann" << 2 << true;
    QTest::newRow("another time") << epoch().addMSecs(1) << "Othr" << system << "Ann" << 1 << false;
    QTest::newRow("no time") << QDateTime() << "Othr" << system << "Ann" << 1 << false;
    QTest::newRow("another id") << epoch() << "othr" << system << "Ann" << 1 << false;
    QTest::newRow("another category") << epoch() << "Othr" << quint32(LogCategoryError) << "Ann" << 1 << false;
    QTest::newRow("another user") << epoch() << "Othr" << system << "ann" << 1 << false;
}

void TestLogEntry::equality()
{
    QFETCH(QDateTime, time);
    QFETCH(QString, id);
    QFETCH(quint32, category);
    QFETCH(QString, user);
    QFETCH(int, value);
    QFETCH(bool, isEqual);
    OtherEntry one;
    one.with("aaaa", 1);
    one.time().setValue(epoch());
    one.user().setValue(QStringLiteral("Ann"));
    OtherEntry other({}, id);
    other.with("aaaa", value);
    other.time().setValue(time);
    other.user().setValue(user);
    other.otherCategory = static_cast<ELogCategory>(category);
    QCOMPARE(one == other, isEqual);
    QCOMPARE(other == one, isEqual);
    QCOMPARE(one != other, !isEqual);
}

void TestLogEntry::writerIsCalledForEachValueInOrder()
{
    RecordingWriter writer;
    OtherEntry entry;
    entry.with("bbbb", 0).with("aaaa", QString());
    entry.writeTo(writer);
    QCOMPARE(writer.calls, (QStringList{"start Othr", "Time", "User", "bbbb", "aaaa", "end Othr"}));
}

void TestLogEntry::description_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("third");
    QTest::addColumn<QString>("fourth");
    QTest::addColumn<QString>("description");
    QTest::newRow("in order") << "from %1 to %2."
                              << "A"
                              << "B"
                              << "from A to B.";
    QTest::newRow("out of order") << "to %2 from %1."
                                  << "A"
                                  << "B"
                                  << "to B from A.";
    QTest::newRow("twice") << "%1 and %1, %2"
                           << "A"
                           << "B"
                           << "A and A, B";
    QTest::newRow("lowest numbers first, whatever they are") << "%7 %3"
                                                             << "A"
                                                             << "B"
                                                             << "B A";
    QTest::newRow("two digits") << "%10 %9"
                                << "A"
                                << "B"
                                << "B A";
    QTest::newRow("localised") << "%L1 %2"
                               << "A"
                               << "B"
                               << "A B";
    QTest::newRow("fewer places than values") << "only %1"
                                              << "A"
                                              << "B"
                                              << "only A";
    QTest::newRow("no places") << "nothing"
                               << "A"
                               << "B"
                               << "nothing";
    QTest::newRow("more places than values") << "%1 %2 %3"
                                             << "A"
                                             << "B"
                                             << "A B %3";
    QTest::newRow("empty value") << "'%1' '%2'"
                                 << ""
                                 << "B"
                                 << "'' 'B'";
    QTest::newRow("per cent signs") << "100% of %1%%%2"
                                    << "A"
                                    << "B"
                                    << "100% of A%%B";
    QTest::newRow("template that the next value fills") << "%1"
                                                        << "is '%1'."
                                                        << "B"
                                                        << "is 'B'.";
    QTest::newRow("value that looks like the next place") << "%1 %2"
                                                          << "%2"
                                                          << "B"
                                                          << "B B";
    QTest::newRow("value ends in a per cent sign") << "%1%2"
                                                   << "100%"
                                                   << "B"
                                                   << "100%B";
}

void TestLogEntry::description()
{
    QFETCH(QString, text);
    QFETCH(QString, third);
    QFETCH(QString, fourth);
    OtherEntry entry(text);
    entry.with("aaaa", third).with("bbbb", fourth);
    entry.user().setValue(QStringLiteral("nobody"));
    QTEST(entry.description(), "description");
}

void TestLogEntry::descriptionWithoutAText()
{
    OtherEntry entry;
    entry.with("aaaa", QStringLiteral("%1"))
        .with("bbbb", 0)
        .with("cccc", QString())
        .with("dddd", QStringList{"x", "y"});
    QCOMPARE(entry.description(), QStringLiteral("aaaa: %1 bbbb: 0 cccc:  dddd: x;y "));
    QCOMPARE(OtherEntry().description(), QString());
}

void TestLogEntry::surplusValuesGiveNoWarning()
{
    static bool isWarned = false;
    QtMessageHandler const before
        = qInstallMessageHandler([](QtMsgType, QMessageLogContext const&, QString const&) { isWarned = true; });
    OtherEntry entry(QStringLiteral("%1%L% %"));
    entry.with("aaaa", 1).with("bbbb", 2).with("cccc", 3);
    QString const text = entry.description();
    qInstallMessageHandler(before);
    QCOMPARE(text, QStringLiteral("1%L% %"));
    QVERIFY(!isWarned);
}

void TestLogEntry::descriptionDoesNotExplode()
{
    OtherEntry entry(QStringLiteral("%1"));
    QString const manyPlaces = QStringLiteral("%1").repeated(5000);
    for (int i = 0; i < 6; ++i)
        entry.with("aaaa", manyPlaces);
    // The second value makes 5,000 times 10,000 characters of them.
    QCOMPARE(entry.description(), manyPlaces);
    OtherEntry large(QStringLiteral("%1%2"));
    large.with("aaaa", QString(4 << 20, QLatin1Char('%'))).with("bbbb", QStringLiteral("x"));
    QCOMPARE(large.description().size(), (4 << 20) + 1);
}

/// A file of a megabyte has thousands of entries such as these, and each of them would make megabytes.
void TestLogEntry::descriptionGrowsWithItsValuesAlone()
{
    auto const described = [](int places, int size) {
        OtherEntry entry(QStringLiteral("%1"));
        entry.with("aaaa", QStringLiteral("%1").repeated(places)).with("bbbb", QString(size, QLatin1Char('x')));
        return entry.description();
    };
    QCOMPARE(described(50, 50), QString(2500, QLatin1Char('x')));
    QCOMPARE(described(50, 79), QString(3950, QLatin1Char('x')));
    QCOMPARE(described(50, 80), QStringLiteral("%1").repeated(50)); // 100 + 50 * 80 exceeds 4,096.
    QCOMPARE(described(7, 10000), QString(70000, QLatin1Char('x')));
    QCOMPARE(described(8, 10000), QString(80000, QLatin1Char('x')));
    QCOMPARE(described(9, 10000), QStringLiteral("%1").repeated(9));
}

QTEST_APPLESS_MAIN(TestLogEntry)
#include "tst_LogEntry.moc"
