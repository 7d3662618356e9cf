// SPDX-License-Identifier: LGPL-2.1-or-later
#include "Entries.h"

#include <qvbase/crash/Child.h>
#include <support/Random.h>

#include <QTest>

#include <algorithm>
#include <memory>
#include <vector>

using crash::Mode;

/// Several processes that log into one file, while each of them splits it.
class tst_ActionLogProcesses : public QObject {
    Q_OBJECT

private slots:
    void logAtOnce_data();
    void logAtOnce();
};

void tst_ActionLogProcesses::logAtOnce_data()
{
    QTest::addColumn<Mode>("mode");
    QTest::addColumn<int>("processes");
    QTest::addColumn<int>("splitSize");
    QTest::newRow("plain, split by size") << Mode::Plain << 2 << 200000;
    QTest::newRow("plain, split all the time") << Mode::Plain << 2 << 8000;
    QTest::newRow("encrypted, split by size") << Mode::Encrypted << 2 << 200000;
    QTest::newRow("four processes, never split") << Mode::Plain << 4 << 0;
}

void tst_ActionLogProcesses::logAtOnce()
{
    QFETCH(Mode, mode);
    QFETCH(int, processes);
    QFETCH(int, splitSize);
    int const count = support::rounds(10000);
    crash::Folder const folder;
    std::vector<std::unique_ptr<crash::Child>> children;
    for (int writer = 0; writer < processes; ++writer) {
        children.push_back(
            std::make_unique<crash::Child>(QStringList{QStringLiteral(LOGGER), folder.path(QStringLiteral("Trail.qvl")),
                mode == Mode::Plain ? QStringLiteral("plain") : QStringLiteral("encrypted"), QString::number(writer),
                QStringLiteral("0"), QString::number(count), QString::number(splitSize)}));
    }
    for (auto const& child : children) {
        child->output();
        QVERIFY(child->succeeded());
    }
    entries::Found found = entries::findAll(folder, mode);
    QVERIFY2(found.fault.isEmpty(), qPrintable(found.fault));
    QCOMPARE(found.files > 1, splitSize > 0);
    QCOMPARE(found.indices.size(), processes);
    for (QVector<int>& indices : found.indices) {
        std::sort(indices.begin(), indices.end());
        QVERIFY(indices == entries::run(0, count));
    }
}

QTEST_GUILESS_MAIN(tst_ActionLogProcesses)
#include "tst_ActionLogProcesses.moc"
