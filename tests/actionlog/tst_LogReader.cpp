// SPDX-License-Identifier: LGPL-2.1-or-later
#include "EntryTypes.h"

#include <GenericUtilities/actionlog/LogReader.h>
#include <GenericUtilities/actionlog/LogWriter.h>

#include <QBuffer>
#include <QTemporaryFile>
#include <QTest>

using namespace qv;

class TestLogReader : public QObject {
    Q_OBJECT

private slots:
    void everyTypeReadsBack_data();
    void everyTypeReadsBack();
};

void TestLogReader::everyTypeReadsBack_data()
{
    QTest::addColumn<int>("index");
    int index = 0;
    for (entries::Sample const& sample : entries::samples())
        QTest::newRow(sample.name) << index++;
}

void TestLogReader::everyTypeReadsBack()
{
    QFETCH(int, index);
    entries::Sample const sample = entries::samples().at(index);
    QTemporaryFile file;
    QVERIFY(file.open());
    LogFileHeader header;
    header.logFile = QStringLiteral("/var/a.qvl");
    header.date = entries::time();
    bool ok = false;
    file.write(xml::toXml(header));
    QByteArray const bytes = xml::toXml(*sample.entry, &ok);
    QVERIFY(ok);
    QCOMPARE(bytes, sample.xml);
    file.write(bytes);
    file.seek(0);
    XMLLogReader reader(&file);
    std::unique_ptr<LogEntry> const entry(reader.readNextLogEntry());
    QVERIFY(entry);
    QCOMPARE(entries::texts(*entry), entries::texts(*sample.entry));
    QVERIFY(!reader.readNextLogEntry());
}

QTEST_APPLESS_MAIN(TestLogReader)
#include "tst_LogReader.moc"
