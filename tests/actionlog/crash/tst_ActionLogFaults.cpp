// SPDX-License-Identifier: LGPL-2.1-or-later
#include "Entries.h"

#include <GenericUtilities/actionlog/ActionLog.h>
#include <qvbase/crash/SystemCalls.h>

#include <QDir>
#include <QTest>

#include <cerrno>
#include <functional>

using calls::Fault;
using crash::Files;
using crash::Mode;

namespace {

constexpr long forGood = 1L << 30;
constexpr int splitSize = 1000;
constexpr int logged = 5;

struct Fate {
    char const* name;
    Fault::Calls calls;
    int error;
    long count;
};

// Nothing is interrupted for good: both Qt and the C library's users go on until they are not.
constexpr Fate fates[] = {
    {"EIO once", Fault::Any, EIO, 1},
    {"EIO twice", Fault::Any, EIO, 2},
    {"EIO for good", Fault::Any, EIO, forGood},
    {"ENOSPC once", Fault::Changing, ENOSPC, 1},
    {"ENOSPC for good", Fault::Changing, ENOSPC, forGood},
    {"EMFILE once", Fault::Opening, EMFILE, 1},
    {"EMFILE for good", Fault::Opening, EMFILE, forGood},
    {"EINTR three times", Fault::Interruptible, EINTR, 3},
    {"short once", Fault::Transferring, 0, 1},
    {"short for good", Fault::Transferring, 0, forGood},
};

/// A log in bad times: keeps book of which entries it took.
class Witness {
public:
    Witness(crash::Folder const& folder, Mode mode, qv::EDurability durability)
        : m_folder(folder)
        , m_mode(mode)
        , m_log(&entries::openLog(folder.path(QStringLiteral("Trail.qvl")), mode, splitSize))
    {
        m_log->setDurability(durability);
        QObject::connect(m_log, &qv::ActionLog::errorFile, [this](QString const&, int type) {
            m_isRefused = true;
            require(type == 1, "an error of the system is told as one of the header");
        });
        QObject::connect(m_log, &qv::ActionLog::errorXml, [this] {
            m_isRefused = true;
            require(false, "an error of the system is told as damage");
        });
    }
    ~Witness() { qv::ActionLog::deleteActionLog(); }
    Witness(Witness const&) = delete;
    Witness& operator=(Witness const&) = delete;

    void log(int index)
    {
        m_isRefused = false;
        entries::log(1, index);
        (m_isRefused ? m_refused : m_taken).append(index);
    }

    /// The cause is gone: the log goes on, and all it took is there.
    void recover(int index)
    {
        log(index);
        require(!m_isRefused, "the log does not go on");
        qv::ActionLog::deleteActionLog();
        entries::Found const found = entries::findAll(m_folder, m_mode);
        require(found.fault.isEmpty(), qPrintable(found.fault));
        QVector<int> kept = found.indices.value(1);
        // What a failed sync leaves on the disk, nobody can tell.
        for (int const refused : m_refused)
            kept.removeOne(refused);
        require(kept == m_taken, "an entry that was taken is lost, doubled or out of order");
        for (QByteArray const& name : m_folder.files().keys())
            require(!name.endsWith(".corrupt") && !name.endsWith(".invalidHeader"), "a good file is moved aside");
    }

    void expect(int taken) { m_taken = entries::run(0, taken); }
    QString const& fault() const { return m_fault; }

private:
    void require(bool ok, char const* what)
    {
        if (!ok && m_fault.isEmpty())
            m_fault = QString::fromUtf8(what);
    }

    crash::Folder const& m_folder;
    Mode m_mode;
    qv::ActionLog* m_log;
    bool m_isRefused = false;
    QVector<int> m_taken;
    QVector<int> m_refused;
    QString m_fault;
};

/// What is there before, holding the first @p count entries.
struct Start {
    Files files;
    int count = 0;
};

Start nothing(Mode)
{
    return {};
}

Start threeEntries(Mode mode)
{
    crash::Folder const folder;
    entries::openLog(folder.path(QStringLiteral("Trail.qvl")), mode, 0);
    for (int i = 0; i < 3; ++i)
        entries::log(1, i);
    qv::ActionLog::deleteActionLog();
    return {folder.files(), 3};
}

/// The end tag was never written, and half of the third entry is missing.
Start torn(Mode mode)
{
    Start start = threeEntries(mode);
    start.files["Trail.qvl"].chop(mode == Mode::Encrypted ? 150 : 40);
    start.count = 2;
    return start;
}

using MakeStart = Start (*)(Mode);

} // namespace

Q_DECLARE_METATYPE(MakeStart)
Q_DECLARE_METATYPE(Fault)
Q_DECLARE_METATYPE(qv::EDurability)

/// The system refuses the n-th call, for every n.
class tst_ActionLogFaults : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { entries::keepStateIn(m_state.path()); }
    void everyCallFails_data();
    void everyCallFails();

private:
    QTemporaryDir m_state;
};

void tst_ActionLogFaults::everyCallFails_data()
{
    QTest::addColumn<Mode>("mode");
    QTest::addColumn<qv::EDurability>("durability");
    QTest::addColumn<MakeStart>("start");
    QTest::addColumn<Fault>("fault");
    auto const rows = [](char const* name, Mode mode, qv::EDurability durability, MakeStart start) {
        for (Fate const& fate : fates) {
            // Syncing brings no other calls that need room, handles or time.
            if (durability == qv::DurabilityData && fate.error != EIO)
                continue;
            QTest::addRow("%s, %s, %s", name, mode == Mode::Plain ? "plain" : "encrypted", fate.name)
                << mode << durability << start << Fault{fate.calls, fate.error, 0, fate.count};
        }
    };
    for (Mode mode : {Mode::Plain, Mode::Encrypted}) {
        rows("new file", mode, qv::DurabilityFlush, nothing);
        rows("file that was there", mode, qv::DurabilityFlush, threeEntries);
        rows("torn file", mode, qv::DurabilityFlush, torn);
        rows("synced", mode, qv::DurabilityData, threeEntries);
    }
}

void tst_ActionLogFaults::everyCallFails()
{
    QFETCH(Mode, mode);
    QFETCH(qv::EDurability, durability);
    QFETCH(MakeStart, start);
    QFETCH(Fault, fault);
    Start const begin = start(mode);
    crash::Folder const folder;
    for (long made = 1; fault.first < made; ++fault.first) {
        folder.hold(begin.files);
        Witness witness(folder, mode, durability);
        witness.expect(begin.count);
        calls::watch(folder.path().toStdString());
        calls::inject(fault);
        for (int i = 0; i < logged; ++i)
            witness.log(begin.count + i);
        made = calls::heal();
        calls::stopWatching();
        witness.recover(begin.count + logged);
        QVERIFY2(
            witness.fault().isEmpty(), qPrintable(QStringLiteral("call %1: %2").arg(fault.first).arg(witness.fault())));
    }
    QVERIFY(fault.first > 0);
}

QTEST_GUILESS_MAIN(tst_ActionLogFaults)
#include "tst_ActionLogFaults.moc"
