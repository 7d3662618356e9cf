// SPDX-License-Identifier: LGPL-2.1-or-later
#include "Child.h"
#include "Folder.h"
#include "Records.h"

#include <support/Random.h>

#include <QTest>

#include <algorithm>
#include <cstring>
#include <limits>
#include <unistd.h>

namespace {

using crash::Mode;

constexpr quint32 writer = 1;
constexpr int roundsPerFile = 20;

/// A file that processes append to until they are killed, and what must be in it by their reports.
class Victim {
public:
    Victim(Mode mode, QRandomGenerator& random)
        : m_mode(mode)
        , m_random(random)
    {
    }

    /// Kills a process within so many microseconds after it set out to open the file, or flushed so many @p records.
    void appendAndKill(int within, int records);
    /// The last write as it is when it was never finished: without up to 8 bytes of its end.
    void tearLastRecord();
    /// What a caller of the plain device does himself.
    void cutTornText();

    /// Empty where each record that was flushed is there, in order, once, and at most one more.
    QString fault();
    /// Whether what tearLastRecord() left is still at the end of the file, or was kept aside.
    bool hasTornBytes() const;

private:
    QString path() const { return m_folder.path(QStringLiteral("log.qvl")); }

    crash::Folder m_folder;
    Mode m_mode;
    QRandomGenerator& m_random;
    quint32 m_next = 0; ///< the first index that no file content was seen of
    quint32 m_flushed = 0;
    QByteArray m_torn;
};

void Victim::appendAndKill(int within, int records)
{
    crash::Child child({QStringLiteral(APPENDER), path(),
        m_mode == Mode::Plain ? QStringLiteral("plain") : QStringLiteral("encrypted"), QString::number(writer),
        QString::number(m_next), QString::number(std::numeric_limits<quint32>::max())});
    child.awaitOutput(1 + records * int(sizeof(quint32)));
    usleep(static_cast<useconds_t>(m_random.bounded(within)));
    child.kill();
    int const reports = (child.output().size() - 1) / int(sizeof(quint32));
    m_flushed = m_next + static_cast<quint32>(reports);
}

QString Victim::fault()
{
    records::Found const found = records::parse(crash::contentOf(path(), m_mode));
    m_next = static_cast<quint32>(found.names.size());
    if (m_mode == Mode::Encrypted && !found.rest.isEmpty())
        return QStringLiteral("%1 bytes behind the last record").arg(found.rest.size());
    if (records::indicesOf(found.names, writer) != records::run(0, m_next))
        return QStringLiteral("records are doubled, missing or out of order");
    if (m_next < m_flushed || m_next > m_flushed + 1)
        return QStringLiteral("%1 records flushed, %2 found").arg(m_flushed).arg(m_next);
    return {};
}

void Victim::tearLastRecord()
{
    QByteArray const bytes = m_folder.files().value("log.qvl");
    // The kill itself may have torn a long write.
    if (m_next == 0 || !crash::faultOf(path(), m_mode).isEmpty())
        return;
    // The last four bytes of a record are its length.
    quint32 length = 0;
    std::memcpy(&length, bytes.constData() + bytes.size() - int(sizeof length), sizeof length);
    int const cut = m_random.bounded(1, 9);
    m_torn = bytes.right(static_cast<int>(length)).chopped(cut);
    QFile::resize(path(), bytes.size() - cut);
    m_flushed = --m_next;
}

bool Victim::hasTornBytes() const
{
    crash::Files const files = m_folder.files();
    return m_torn.isEmpty()
        || std::any_of(files.begin(), files.end(), [this](QByteArray const& bytes) { return bytes.endsWith(m_torn); });
}

void Victim::cutTornText()
{
    int const torn = records::parse(m_folder.files().value("log.qvl")).rest.size();
    if (torn > 0)
        QFile::resize(path(), QFileInfo(path()).size() - torn);
}

} // namespace

class tst_FileEncryptKill : public QObject {
    Q_OBJECT

private slots:
    void keepsWhatWasFlushed_data();
    void keepsWhatWasFlushed();
    void survivesBeingKilledDuringRecovery();
};

void tst_FileEncryptKill::keepsWhatWasFlushed_data()
{
    QTest::addColumn<Mode>("mode");
    QTest::addColumn<int>("kills");
    QTest::newRow("plain") << Mode::Plain << support::rounds(100, 1000);
    QTest::newRow("encrypted") << Mode::Encrypted << support::rounds(350, 15000);
}

void tst_FileEncryptKill::keepsWhatWasFlushed()
{
    QFETCH(Mode, mode);
    QFETCH(int, kills);
    QRandomGenerator random = support::generator();
    for (int file = 0; file < kills / roundsPerFile + 1; ++file) {
        Victim victim(mode, random);
        for (int round = 0; round < qMin(roundsPerFile, kills - file * roundsPerFile); ++round) {
            victim.appendAndKill(round % 2 ? 300 : 3000, round % 4 ? 0 : 5);
            QString const fault = victim.fault();
            QVERIFY2(fault.isEmpty(), qPrintable(fault + QStringLiteral(", ") + support::seedNote(round)));
            if (mode == Mode::Plain)
                victim.cutTornText();
        }
    }
}

void tst_FileEncryptKill::survivesBeingKilledDuringRecovery()
{
    QRandomGenerator random = support::generator();
    int const kills = support::rounds(150, 5000);
    for (int file = 0; file < kills / roundsPerFile + 1; ++file) {
        Victim victim(Mode::Encrypted, random);
        for (int round = 0; round < qMin(roundsPerFile, kills - file * roundsPerFile); ++round) {
            // Now and then it gets through the recovery, however slow the machine.
            victim.appendAndKill(round % 4 ? 300 : 2000, round % 4 ? 0 : 1);
            QString fault = victim.fault();
            QVERIFY2(fault.isEmpty(), qPrintable(fault + QStringLiteral(", ") + support::seedNote(round)));
            QVERIFY2(victim.hasTornBytes(), qPrintable(support::seedNote(round)));
            victim.tearLastRecord();
            fault = victim.fault();
            QVERIFY2(fault.isEmpty(), qPrintable(fault + QStringLiteral(", torn, ") + support::seedNote(round)));
        }
    }
}

QTEST_GUILESS_MAIN(tst_FileEncryptKill)
#include "tst_FileEncryptKill.moc"
