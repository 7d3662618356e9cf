// SPDX-License-Identifier: LGPL-2.1-or-later
#include "Entries.h"

#include <GenericUtilities/actionlog/ActionLog.h>
#include <qvbase/crash/Disk.h>
#include <qvbase/crash/SystemCalls.h>
#include <support/Random.h>

#include <QTest>

#include <functional>

using crash::Disk;
using crash::Files;
using crash::Mode;

namespace {

constexpr int splitSize = 2500;

/// What happened to the files while entries were logged with DurabilityData. A mark tells how many were.
std::vector<calls::Event> recorded(Mode mode)
{
    crash::Folder const folder;
    calls::watch(folder.path().toStdString());
    for (int run = 0; run < 3; ++run) {
        // Each run takes off the end tag of the one before.
        entries::openLog(folder.path(QStringLiteral("Trail.qvl")), mode, splitSize).setDurability(qv::DurabilityData);
        for (int i = 7 * run; i < 7 * (run + 1); ++i) {
            entries::log(1, i);
            calls::mark(i + 1);
        }
        qv::ActionLog::deleteActionLog();
    }
    std::vector<calls::Event> events = calls::events();
    calls::stopWatching();
    return events;
}

/// Puts what a disk held after a loss into a folder, and goes on logging there as after the next start.
class Restart {
public:
    explicit Restart(Mode mode)
        : m_mode(mode)
    {
    }

    /// Empty where the first @p certain entries are there and the log goes on behind them without a complaint.
    QString fault(Files const& files, int certain)
    {
        m_folder.hold(files);
        QVector<int> const before = entries::findAll(m_folder, m_mode).indices.value(1);
        int const count = before.size();
        if (before != entries::run(0, count) || count < certain || count > certain + 1)
            return QStringLiteral("%1 entries were logged, %2 found").arg(certain).arg(count);
        QString fault = goOn(count);
        entries::Found const after = entries::findAll(m_folder, m_mode);
        if (fault.isEmpty())
            fault = after.fault;
        if (fault.isEmpty() && after.indices.value(1) != entries::run(0, count + 1))
            fault = QStringLiteral("it does not go on behind %1 entries").arg(count);
        return fault;
    }

private:
    QString goOn(int index) const
    {
        QString fault;
        qv::ActionLog const& log = entries::openLog(m_folder.path(QStringLiteral("Trail.qvl")), m_mode, 0);
        QObject::connect(&log, &qv::ActionLog::errorXml, [&](QString const& error) { fault = error; });
        QObject::connect(&log, &qv::ActionLog::errorFile,
            [&](QString const&, int type) { fault = QStringLiteral("errorFile %1").arg(type); });
        entries::log(1, index);
        qv::ActionLog::deleteActionLog();
        return fault;
    }

    crash::Folder m_folder;
    Mode m_mode;
};

using Look = std::function<QString(Disk const& disk, calls::Event const& next, int certain)>;

/// The fault at the first event before which @p look finds one.
QString replay(std::vector<calls::Event> const& events, Look const& look)
{
    Disk disk;
    int certain = 0;
    for (calls::Event const& event : events) {
        QString const fault = look(disk, event, certain);
        if (!fault.isEmpty())
            return fault;
        disk.apply(event);
        if (event.kind == calls::Event::Mark)
            certain = event.file;
    }
    return look(disk, {}, certain);
}

} // namespace

/// With DurabilityData, what log() returned from is there when the power fails at any instant.
class tst_ActionLogPowerLoss : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { entries::keepStateIn(m_state.path()); }
    void everyPrefix_data() { crash::modes(); }
    void everyPrefix();
    void partsOfWrites_data() { crash::modes(); }
    void partsOfWrites();
    void lossesAndReorderings_data() { crash::modes(); }
    void lossesAndReorderings();

private:
    QTemporaryDir m_state;
};

void tst_ActionLogPowerLoss::everyPrefix()
{
    QFETCH(Mode, mode);
    Restart restart(mode);
    QString const fault = replay(recorded(mode),
        [&](Disk const& disk, calls::Event const&, int certain) { return restart.fault(disk.seen(), certain); });
    QVERIFY2(fault.isEmpty(), qPrintable(fault));
}

void tst_ActionLogPowerLoss::partsOfWrites()
{
    QFETCH(Mode, mode);
    Restart restart(mode);
    int const parts = support::rounds(20);
    QString const fault = replay(recorded(mode), [&](Disk const& disk, calls::Event const& event, int certain) {
        int const size = event.kind == calls::Event::Write ? int(event.bytes.size()) : 0;
        QString found;
        for (int part = 1; part < size && found.isEmpty(); part += size / parts + 1) {
            Disk torn = disk;
            torn.applyPart(event, part);
            found = restart.fault(torn.seen(), certain);
        }
        return found;
    });
    QVERIFY2(fault.isEmpty(), qPrintable(fault));
}

void tst_ActionLogPowerLoss::lossesAndReorderings()
{
    QFETCH(Mode, mode);
    QRandomGenerator random = support::generator();
    Restart restart(mode);
    bool const isFull = qEnvironmentVariableIsSet("GENERICUTILITIES_FULL_TESTS");
    std::vector<calls::Event> const events = recorded(mode);
    QVERIFY(events.size() > 60);
    int const perEvent = (isFull ? 100000 : support::rounds(1000)) / int(events.size()) + 1;
    QString const fault = replay(events, [&](Disk const& disk, calls::Event const&, int certain) {
        QString found;
        for (int round = 0; round < perEvent && found.isEmpty(); ++round)
            found = restart.fault(disk.afterLoss(random), certain);
        return found;
    });
    QVERIFY2(fault.isEmpty(), qPrintable(fault + QStringLiteral(", ") + support::seedNote(perEvent)));
}

QTEST_GUILESS_MAIN(tst_ActionLogPowerLoss)
#include "tst_ActionLogPowerLoss.moc"
