// SPDX-License-Identifier: LGPL-2.1-or-later
#include "LogScene.h"

#include <qvbase/EncryptedFiles.h>

using scene::Scene;

namespace {

QString const trail = QStringLiteral("Trail.qvl");

QStringList numbered(int count)
{
    QStringList texts;
    for (int i = 0; i < count; ++i)
        texts.append(QStringLiteral("entry %1 ").arg(i) + QString(200, 'x'));
    return texts;
}

void logEntries(Scene& scene, QStringList const& texts)
{
    for (QString const& text : texts)
        scene.logText(text);
}

using Change = void (*)(QVector<QByteArray>& records, int record);

void flipBit(QVector<QByteArray>& records, int record)
{
    QByteArray& bytes = records[record];
    bytes[bytes.size() / 2] = char(bytes.at(bytes.size() / 2) ^ 1);
}

void swapWithNext(QVector<QByteArray>& records, int record)
{
    records.swapItemsAt(record, record + 1);
}

void takeOut(QVector<QByteArray>& records, int record)
{
    records.remove(record);
}

} // namespace

Q_DECLARE_METATYPE(Change)

/// An encrypted log that somebody has changed where nothing was written since.
class tst_ActionLogTampering : public QObject {
    Q_OBJECT

private slots:
    void middle_data();
    void middle();
    void entriesBehindAreThere();
};

void tst_ActionLogTampering::middle_data()
{
    QTest::addColumn<int>("entries");
    QTest::addColumn<Change>("change");
    struct {
        char const* name;
        Change change;
    } const changes[] = {{"bit flipped", flipBit}, {"two swapped", swapWithNext}, {"one taken out", takeOut}};
    for (auto const& [name, change] : changes) {
        // It is met when the log looks for the file's end, or when it reads what is before that.
        QTest::addRow("%s among few", name) << 5 << change;
        QTest::addRow("%s among many", name) << 200 << change;
    }
}

void tst_ActionLogTampering::middle()
{
    QFETCH(int, entries);
    QFETCH(Change, change);
    Scene scene(QStringLiteral("correct horse"));
    QStringList const texts = numbered(entries);
    logEntries(scene, texts);
    qv::ActionLog::deleteActionLog();
    QByteArray const whole = scene.bytes();
    // The session, the header of the log, and the entries.
    QVector<QByteArray> records = encrypted::recordsOf(whole);
    QCOMPARE(records.size(), entries + 3);
    change(records, 4);
    QByteArray const changed = encrypted::joined(whole, records);
    scene.hold(changed);
    // Behind the entries before it stands one that tells of the damage, and has no text.
    QStringList const before = texts.mid(0, 2) << QString();
    QCOMPARE(scene.texts(), QStringList(before) << QStringLiteral("damaged"));

    scene.begin();
    scene.log().readLog();
    QCOMPARE(scene.listed(), before);
    QCOMPARE(scene.log().entry(2)->id(), qv::FourChars("XmlP"));
    QCOMPARE(scene.told.last(), QStringLiteral("errorXml line 1"));
    QCOMPARE(scene.bytes(), changed);

    scene.begin();
    logEntries(scene, {QStringLiteral("new"), QStringLiteral("next")});
    QCOMPARE(scene.told.filter(QStringLiteral("error")), QStringList(QStringLiteral("errorXml line 1")));
    QString const aside = QStringLiteral("2026-11-21 10-11-12 Trail.qvl.corrupt");
    QCOMPARE(scene.files(), QStringList({aside, trail}));
    QCOMPARE(scene.bytes(aside), changed);
    QCOMPARE(scene.texts(), QStringList({QStringLiteral("new"), QStringLiteral("next")}));
}

/// One record is lost: a device still reads those behind it.
void tst_ActionLogTampering::entriesBehindAreThere()
{
    Scene scene(QStringLiteral("correct horse"));
    QStringList const texts = numbered(5);
    logEntries(scene, texts);
    QVector<QByteArray> records = encrypted::recordsOf(scene.bytes());
    flipBit(records, 4);
    scene.hold(encrypted::joined(scene.bytes(), records));

    auto const device = encrypted::device(scene.path(), QStringLiteral("correct horse"), {});
    QVERIFY(device->open(QIODevice::ReadOnly));
    QByteArray behind;
    for (int i = 3; i < 5; ++i)
        behind += qv::xml::toXml(*scene.log().entry(i));
    QVERIFY(device->seek(device->size() - behind.size()));
    QCOMPARE(device->readAll(), behind);
}

QTEST_GUILESS_MAIN(tst_ActionLogTampering)
#include "tst_ActionLogTampering.moc"
