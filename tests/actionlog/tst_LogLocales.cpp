// SPDX-License-Identifier: LGPL-2.1-or-later
#include "EntryTypes.h"
#include "LogDocument.h"

#include <GenericUtilities/actionlog/LogReader.h>

#include <QBuffer>
#include <QTest>

using namespace qv;

namespace {

struct Locale {
    char const* name;
    QString written; ///< 29 February 2020, 15:04:56.789
    QDateTime read; ///< the same as it comes back
};

QDateTime moment(int year, int second)
{
    return {QDate(year, 2, 29), QTime(15, 4, second)};
}

// What comes back lacks seconds nearly everywhere, and the century where the year has two digits.
QList<Locale> locales()
{
    return {
        {"C", QStringLiteral("29 Feb 2020 15:04:56"), moment(2020, 56)},
        {"de_DE", QStringLiteral("29.02.20 15:04"), moment(1920, 0)},
        {"en_GB", QStringLiteral("29/02/2020 15:04"), moment(2020, 0)},
        {"en_US", QStringLiteral("2/29/20 3:04 PM"), moment(1920, 0)},
        {"fr_FR", QStringLiteral("29/02/2020 15:04"), moment(2020, 0)},
        {"sv_SE", QStringLiteral("2020-02-29 15:04"), moment(2020, 0)},
    };
}

QDateTime readBack(QByteArray const& text)
{
    QBuffer buffer;
    buffer.setData(document::header() + document::element("ExpD", "Time=\"" + text + '"'));
    buffer.open(QIODevice::ReadOnly);
    XMLLogReader reader(&buffer, QString());
    std::unique_ptr<LogEntry> const entry(reader.readNextLogEntry());
    return entry ? entry->time().value() : QDateTime::currentDateTime();
}

} // namespace

Q_DECLARE_METATYPE(Locale)

/// The text form of a time is that of the system's locale, which is fixed at its first use: run once in each.
class TestLogLocales : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void workedExample();
    void written();
    void read();
    void ofOtherLocales_data();
    void ofOtherLocales();

private:
    Locale m_here;
};

void TestLogLocales::initTestCase()
{
    QByteArray const name = qgetenv("LC_ALL").split('.').first();
    for (Locale const& each : locales()) {
        if (name == each.name)
            m_here = each;
    }
    QVERIFY2(!m_here.written.isEmpty(), "LC_ALL names none of the locales in the table");
}

// As in docs/formats.md.
void TestLogLocales::workedExample()
{
    QByteArray expected = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>"
                          "<Entries Version=\"v0.1\" LogFile=\"/var/log/gate.qvl\" Date=\"2020-02-29T15:04:00\""
                          " ApplicationVersion=\"4.2\">"
                          "<Entry ID=\"ExpR\" Time=\"29 Feb 2020 15:04:56\" User=\"ann (Ann &amp; Bob)\""
                          " Text=\"'/mnt/a.mp4' to '/mnt/b.mp4'.\" path=\"/mnt/\" src=\"a.mp4\" dest=\"b.mp4\"/>"
                          "<Entry ID=\"ALog\" Time=\"29 Feb 2020 15:04:56\" filO=\"/var/log/gate.qvl\""
                          " filN=\"/var/log/yard.qvl\"/>";
    expected.replace("29 Feb 2020 15:04:56", m_here.written.toUtf8());
    LogFileHeader header;
    header.logFile = QStringLiteral("/var/log/gate.qvl");
    header.date = moment(2020, 0);
    header.applicationVersion = QStringLiteral("4.2");
    ExportRenameLogEntry rename;
    rename.time().setValue(moment(2020, 56));
    rename.user().setValue(QStringLiteral("ann (Ann & Bob)"));
    rename.text.setValue(QStringLiteral("'/mnt/a.mp4' to '/mnt/b.mp4'."));
    rename.path.setValue(QStringLiteral("/mnt/"));
    rename.source.setValue(QStringLiteral("a.mp4"));
    rename.dest.setValue(QStringLiteral("b.mp4"));
    ActionLogContextSwitchEntry other;
    other.time().setValue(moment(2020, 56));
    other.oldFile.setValue(QStringLiteral("/var/log/gate.qvl"));
    other.newFile.setValue(QStringLiteral("/var/log/yard.qvl"));
    QCOMPARE(xml::toXml(header) + xml::toXml(rename) + xml::toXml(other), expected);
}

void TestLogLocales::written()
{
    ExportDoneLogEntry entry;
    entry.time().setValue(moment(2020, 56).addMSecs(789));
    QCOMPARE(xml::toXml(entry), "<Entry ID=\"ExpD\" Time=\"" + m_here.written.toUtf8() + "\"/>");
    entry.time().setValue(QDateTime(QDate(2020, 2, 29), QTime(15, 4, 56), Qt::UTC));
    QVERIFY(xml::toXml(entry).contains(m_here.written.toUtf8())); // that it was UTC is lost
}

void TestLogLocales::read()
{
    QCOMPARE(readBack(m_here.written.toUtf8()), m_here.read);
}

void TestLogLocales::ofOtherLocales_data()
{
    QTest::addColumn<Locale>("other");
    for (Locale const& each : locales()) {
        if (each.written != m_here.written)
            QTest::newRow(each.name) << each;
    }
}

void TestLogLocales::ofOtherLocales()
{
    QFETCH(Locale, other);
    QVERIFY(readBack(other.written.toUtf8()).isNull());
}

QTEST_APPLESS_MAIN(TestLogLocales)
#include "tst_LogLocales.moc"
