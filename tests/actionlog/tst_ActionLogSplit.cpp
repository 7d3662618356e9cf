// SPDX-License-Identifier: LGPL-2.1-or-later
#include "LogScene.h"

#include <QTest>

#include <algorithm>

using scene::Scene;

Q_DECLARE_METATYPE(qv::ESplitPolicy)

namespace {

QDateTime noon(int year, int month, int day)
{
    return QDateTime(QDate(year, month, day), QTime(12, 0));
}

} // namespace

/// When the log splits its file, what it calls it, and what that does to the list.
class tst_ActionLogSplit : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { QCoreApplication::setApplicationName(QStringLiteral("Viewer")); }
    void byCalendar_data();
    void byCalendar();
    void earlierFileIsDatedByItsHeader_data();
    void earlierFileIsDatedByItsHeader();
    void earlierFileWithoutADateIsDatedByItsLastChange();
    void baseNameEndsAtTheFirstDot();
    void movedFileIsEnded();
    void bySize_data();
    void bySize();
    void tellsInOrder();
    void freshFileIsBegunWithAHeader();
    void applicationNameStaysInTheFolder();
    void thousandWithinASecond();
};

void tst_ActionLogSplit::byCalendar_data()
{
    QTest::addColumn<qv::ESplitPolicy>("policy");
    QTest::addColumn<QDateTime>("begun");
    QTest::addColumn<QDateTime>("now");
    QTest::addColumn<QString>("aside");
    QTest::newRow("none") << qv::SplitNone << noon(2026, 11, 21) << noon(2026, 12, 31) << "";
    QTest::newRow("daily, the same day") << qv::SplitDaily << noon(2026, 11, 21) << noon(2026, 11, 21).addSecs(60)
                                         << "";
    QTest::newRow("daily, the next day") << qv::SplitDaily << noon(2026, 11, 21) << noon(2026, 11, 22)
                                         << "2026-47-21 Trail.qvl";
    QTest::newRow("daily, the new year") << qv::SplitDaily << noon(2026, 12, 31) << noon(2027, 1, 1) << "";
    QTest::newRow("weekly, the same week") << qv::SplitWeekly << noon(2026, 11, 21) << noon(2026, 11, 22) << "";
    QTest::newRow("weekly, the next week")
        << qv::SplitWeekly << noon(2026, 11, 21) << noon(2026, 11, 23) << "2026-47 Trail.qvl";
    QTest::newRow("monthly, the same month") << qv::SplitMonthly << noon(2026, 11, 21) << noon(2026, 11, 30) << "";
    QTest::newRow("monthly, the next month")
        << qv::SplitMonthly << noon(2026, 5, 21) << noon(2026, 6, 1)
        << QLocale::system().toString(QDate(2026, 5, 21), QStringLiteral("yyyy-MMM")) + QStringLiteral(" Trail.qvl");
}

void tst_ActionLogSplit::byCalendar()
{
    QFETCH(qv::ESplitPolicy, policy);
    QFETCH(QDateTime, begun);
    QFETCH(QDateTime, now);
    QFETCH(QString, aside);
    Scene scene;
    scene.log().setSplitPolicy(policy, 1);
    scene.now = begun;
    scene.logText(QStringLiteral("old"));
    scene.now = now;
    scene.logText(QStringLiteral("new"));
    if (aside.isEmpty()) {
        QCOMPARE(scene.texts(), QStringList({QStringLiteral("old"), QStringLiteral("new")}));
        QCOMPARE(scene.files().size(), 1);
        return;
    }
    QCOMPARE(scene.files(), QStringList({aside, QStringLiteral("Trail.qvl")}));
    QCOMPARE(scene.texts(aside), QStringList({QStringLiteral("old")}));
    QCOMPARE(scene.texts(), QStringList({QStringLiteral("new")}));
}

void tst_ActionLogSplit::earlierFileIsDatedByItsHeader_data()
{
    QTest::addColumn<QByteArray>("date");
    QTest::addColumn<QString>("aside");
    QTest::newRow("begun yesterday") << QByteArray("2026-11-20T23:59:59") << "2026-47-20 Trail.qvl";
    QTest::newRow("begun today") << QByteArray("2026-11-21T00:00:00") << "";
    QTest::newRow("begun tomorrow") << QByteArray("2026-11-22T00:00:00") << "";
}

void tst_ActionLogSplit::earlierFileIsDatedByItsHeader()
{
    QFETCH(QByteArray, date);
    QFETCH(QString, aside);
    Scene scene;
    QByteArray const before
        = scene::header(scene.path(), date.constData()) + scene::element(QStringLiteral("old")) + scene::endTag;
    scene.hold(before);
    scene.log().setSplitPolicy(qv::SplitDaily, 0);
    scene.logText(QStringLiteral("new"));
    if (aside.isEmpty()) {
        QCOMPARE(scene.texts(), QStringList({QStringLiteral("old"), QStringLiteral("new")}));
        return;
    }
    QCOMPARE(scene.bytes(aside), before);
    QCOMPARE(scene.texts(), QStringList({QStringLiteral("new")}));
    QCOMPARE(scene.listed(), QStringList({QStringLiteral("new")}));
}

void tst_ActionLogSplit::earlierFileWithoutADateIsDatedByItsLastChange()
{
    Scene scene;
    scene.hold(scene::header(scene.path(), "yesterday") + scene::element(QStringLiteral("old")));
    QFile file(scene.path());
    QVERIFY(file.open(QIODevice::ReadWrite));
    QVERIFY(file.setFileTime(noon(2026, 11, 20), QFileDevice::FileModificationTime));
    file.close();
    scene.log().setSplitPolicy(qv::SplitDaily, 0);
    scene.logText(QStringLiteral("new"));
    QCOMPARE(scene.files(), QStringList({QStringLiteral("2026-47-20 Trail.qvl"), QStringLiteral("Trail.qvl")}));
}

void tst_ActionLogSplit::baseNameEndsAtTheFirstDot()
{
    Scene scene;
    scene.log().setFileInfo(QFileInfo(scene.path(QStringLiteral("Trail.north.qvl"))));
    scene.log().setSplitPolicy(qv::SplitDaily, 0);
    scene.logText(QStringLiteral("old"));
    scene.now = scene.now.addDays(1);
    scene.logText(QStringLiteral("new"));
    QCOMPARE(scene.files(), QStringList({QStringLiteral("2026-47-21 Trail.qvl"), QStringLiteral("Trail.north.qvl")}));
}

void tst_ActionLogSplit::movedFileIsEnded()
{
    Scene scene;
    scene.log().setSplitPolicy(qv::SplitDaily, 0);
    scene.logText(QStringLiteral("old"));
    QByteArray const before = scene.bytes();
    scene.now = scene.now.addDays(1);
    scene.logText(QStringLiteral("new"));
    QCOMPARE(scene.bytes(QStringLiteral("2026-47-21 Trail.qvl")), before + scene::endTag);
}

void tst_ActionLogSplit::bySize_data()
{
    QTest::addColumn<QString>("password");
    QTest::newRow("plain") << "";
    QTest::newRow("encrypted: of the plain text") << "correct horse";
}

void tst_ActionLogSplit::bySize()
{
    QFETCH(QString, password);
    Scene scene(password);
    scene.logText(QStringLiteral("old"));
    int const size = (scene::header(scene.path()) + qv::xml::toXml(*scene.log().entry(0))).size();
    scene.log().setSplitPolicy(qv::SplitBySize, size);
    scene.logText(QStringLiteral("at the size, not above it"));
    QCOMPARE(scene.files().size(), 1);
    scene.logText(QStringLiteral("new"));
    QCOMPARE(
        scene.files(), QStringList({QStringLiteral("2026-11-21 10-11-12 Viewer.qvl"), QStringLiteral("Trail.qvl")}));
    QCOMPARE(scene.texts(), QStringList({QStringLiteral("new")}));
}

void tst_ActionLogSplit::tellsInOrder()
{
    Scene scene;
    scene.logText(QStringLiteral("one"));
    scene.logText(QStringLiteral("two"));
    scene.told.clear();
    scene.log().setSplitPolicy(qv::SplitBySize, 0);
    scene.logText(QStringLiteral("three"));
    QCOMPARE(scene.told,
        QStringList({QStringLiteral("removing 0 1 of 2"), QStringLiteral("removed 0 1 of 0"),
            QStringLiteral("adding 0 0 of 0"), QStringLiteral("added 0 0 of 1")}));
}

void tst_ActionLogSplit::freshFileIsBegunWithAHeader()
{
    Scene scene;
    scene.logText(QStringLiteral("old"));
    scene.log().setSplitPolicy(qv::SplitBySize, 0);
    scene.now = scene.now.addSecs(5);
    scene.logText(QStringLiteral("new"));
    QCOMPARE(scene.bytes(), scene::header(scene.path(), "2026-11-21T10:11:17") + qv::xml::toXml(*scene.log().entry(0)));
}

void tst_ActionLogSplit::applicationNameStaysInTheFolder()
{
    Scene scene;
    scene.logText(QStringLiteral("one"));
    scene.log().setSplitPolicy(qv::SplitBySize, 0);
    QCoreApplication::setApplicationName(QStringLiteral("../Viewer"));
    scene.logText(QStringLiteral("two"));
    QCoreApplication::setApplicationName(QStringLiteral("Viewer"));
    QCOMPARE(
        scene.files(), QStringList({QStringLiteral("2026-11-21 10-11-12 .._Viewer.qvl"), QStringLiteral("Trail.qvl")}));
}

void tst_ActionLogSplit::thousandWithinASecond()
{
    constexpr int count = 1000;
    Scene scene;
    scene.log().setSplitPolicy(qv::SplitBySize, 0);
    QStringList logged;
    for (int i = 0; i <= count; ++i) {
        logged << QStringLiteral("entry %1").arg(i);
        scene.logText(logged.last());
    }
    QStringList const files = scene.files();
    QCOMPARE(files.size(), count + 1);
    QVERIFY(files.contains(QStringLiteral("2026-11-21 10-11-12 Viewer.qvl")));
    QVERIFY(files.contains(QStringLiteral("2026-11-21 10-11-12 Viewer (1000).qvl")));
    QStringList found;
    for (QString const& file : files)
        found << scene.texts(file);
    std::sort(found.begin(), found.end());
    std::sort(logged.begin(), logged.end());
    QCOMPARE(found, logged);
}

QTEST_GUILESS_MAIN(tst_ActionLogSplit)
#include "tst_ActionLogSplit.moc"
