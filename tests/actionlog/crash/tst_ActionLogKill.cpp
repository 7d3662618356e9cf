// SPDX-License-Identifier: LGPL-2.1-or-later
#include "Entries.h"

#include <qvbase/crash/Child.h>
#include <support/Random.h>

#include <QTest>

#include <limits>
#include <unistd.h>

using crash::Mode;

namespace {

constexpr int roundsPerFolder = 20;
constexpr int splitSize = 6000;

/// A log that processes write until they are killed, and what must be in it by their reports.
class Victim {
public:
    Victim(Mode mode, QRandomGenerator& random)
        : m_mode(mode)
        , m_random(random)
    {
    }

    /// Kills a process within so many microseconds after it set out to log.
    void logAndKill(int within);
    /// The last write as it is when it was never finished: without up to 40 bytes of its end.
    void tearEnd();
    QString fault();

private:
    QString path() const { return m_folder.path(QStringLiteral("Trail.qvl")); }

    crash::Folder m_folder;
    Mode m_mode;
    QRandomGenerator& m_random;
    int m_next = 0; // the first index that no file holds
    int m_certain = 0; // how many must be there
};

void Victim::logAndKill(int within)
{
    crash::Child child({QStringLiteral(LOGGER), path(),
        m_mode == Mode::Plain ? QStringLiteral("plain") : QStringLiteral("encrypted"), QStringLiteral("1"),
        QString::number(m_next), QString::number(std::numeric_limits<int>::max()), QString::number(splitSize)});
    child.awaitOutput(1);
    usleep(static_cast<useconds_t>(m_random.bounded(within)));
    usleep(static_cast<useconds_t>(m_random.bounded(within)));
    child.kill();
    m_certain = m_next + child.output().count('l');
}

void Victim::tearEnd()
{
    int const size = m_folder.files().value("Trail.qvl").size();
    // Not into the header, which is a write of its own.
    if (size < 500 || m_next == 0)
        return;
    QFile::resize(path(), size - m_random.bounded(1, 41));
    m_certain = m_next - 1;
}

QString Victim::fault()
{
    return entries::faultOf(m_folder, m_mode, m_certain, &m_next);
}

/// The full count outlasts Qt Test's patience: set QTEST_FUNCTION_TIMEOUT (milliseconds) as well.
int roundsOf(int inShort, int inFull)
{
    return qEnvironmentVariableIsSet("GENERICUTILITIES_FULL_TESTS") ? inFull : support::rounds(inShort);
}

} // namespace

/// What log() returned from is there when the process is killed at any instant.
class tst_ActionLogKill : public QObject {
    Q_OBJECT

private slots:
    void keepsWhatWasLogged_data();
    void keepsWhatWasLogged();
};

void tst_ActionLogKill::keepsWhatWasLogged_data()
{
    QTest::addColumn<Mode>("mode");
    QTest::addColumn<bool>("isTorn");
    QTest::addColumn<int>("kills");
    QTest::newRow("plain") << Mode::Plain << false << roundsOf(150, 6000);
    QTest::newRow("encrypted") << Mode::Encrypted << false << roundsOf(150, 6000);
    QTest::newRow("plain, the last write torn") << Mode::Plain << true << roundsOf(100, 4000);
    QTest::newRow("encrypted, the last write torn") << Mode::Encrypted << true << roundsOf(100, 4000);
}

void tst_ActionLogKill::keepsWhatWasLogged()
{
    QFETCH(Mode, mode);
    QFETCH(bool, isTorn);
    QFETCH(int, kills);
    QRandomGenerator random = support::generator();
    for (int first = 0; first < kills; first += roundsPerFolder) {
        Victim victim(mode, random);
        for (int round = first; round < qMin(first + roundsPerFolder, kills); ++round) {
            victim.logAndKill(round % 2 ? 400 : 4000);
            QString fault = victim.fault();
            QVERIFY2(fault.isEmpty(), qPrintable(fault + QStringLiteral(", ") + support::seedNote(round)));
            if (!isTorn)
                continue;
            victim.tearEnd();
            fault = victim.fault();
            QVERIFY2(fault.isEmpty(), qPrintable(fault + QStringLiteral(", torn, ") + support::seedNote(round)));
        }
    }
}

QTEST_GUILESS_MAIN(tst_ActionLogKill)
#include "tst_ActionLogKill.moc"
