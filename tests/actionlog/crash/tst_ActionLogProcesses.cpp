// SPDX-License-Identifier: LGPL-2.1-or-later
#include "Entries.h"

#include <GenericUtilities/actionlog/ActionLog.h>
#include <qvbase/FileEncryptTesting_p.h>
#include <qvbase/crash/Child.h>
#include <support/Random.h>

#include <QTest>

#include <algorithm>
#include <csignal>
#include <fcntl.h>
#include <memory>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

using crash::Mode;

Q_DECLARE_METATYPE(qv::EDurability)

namespace {

/// A process that has a file's lock and is stopped, as by a debugger; it ends with the object.
class StoppedLocker {
public:
    explicit StoppedLocker(QString const& path)
    {
        QByteArray const name = QFile::encodeName(path);
        m_process = ::fork();
        if (m_process == 0) {
            bool const isLocked = ::flock(::open(name.constData(), O_RDONLY | O_CLOEXEC), LOCK_EX) == 0;
            ::raise(isLocked ? SIGSTOP : SIGKILL);
            ::_exit(0);
        }
        ::waitpid(m_process, &m_status, WUNTRACED);
    }
    ~StoppedLocker()
    {
        ::kill(m_process, SIGKILL);
        ::waitpid(m_process, nullptr, 0);
    }
    Q_DISABLE_COPY_MOVE(StoppedLocker)

    bool isStopped() const { return WIFSTOPPED(m_status); }

private:
    pid_t m_process = -1;
    int m_status = 0;
};

} // namespace

/// Several processes that log into one file, while each of them splits it.
class tst_ActionLogProcesses : public QObject {
    Q_OBJECT

private slots:
    void logAtOnce_data();
    void logAtOnce();
    void stoppedWithTheLock_data();
    void stoppedWithTheLock();
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

void tst_ActionLogProcesses::stoppedWithTheLock_data()
{
    QTest::addColumn<Mode>("mode");
    QTest::addColumn<qv::EDurability>("durability");
    QTest::addColumn<bool>("isOpen");
    for (Mode const mode : {Mode::Plain, Mode::Encrypted}) {
        char const* const kind = mode == Mode::Plain ? "plain" : "encrypted";
        QTest::addRow("%s, file that is open", kind) << mode << qv::DurabilityFlush << true;
        QTest::addRow("%s, file to be opened", kind) << mode << qv::DurabilityFlush << false;
        QTest::addRow("%s, entries that wait", kind) << mode << qv::DurabilityNone << true;
    }
}

/// Nobody waits for it for ever: the entry is lost, and told to be.
void tst_ActionLogProcesses::stoppedWithTheLock()
{
    QFETCH(Mode, mode);
    QFETCH(qv::EDurability, durability);
    QFETCH(bool, isOpen);
    crash::Folder const folder;
    entries::keepStateIn(folder.path(QStringLiteral("state")));
    qv::FileEncryptTesting::setLockWait(50);
    QString const path = folder.path(QStringLiteral("Trail.qvl"));
    entries::openLog(path, mode, 0);
    entries::log(1, 0);
    if (!isOpen)
        qv::ActionLog::deleteActionLog();
    qv::ActionLog& log = entries::openLog(path, mode, 0);
    log.setDurability(durability);
    QVector<int> errors;
    QObject::connect(&log, &qv::ActionLog::errorFile, [&errors](QString const&, int type) { errors.append(type); });
    crash::Files const before = folder.files();
    {
        StoppedLocker const locker(path);
        QVERIFY(locker.isStopped());
        entries::log(1, 1);
        QCOMPARE(errors, QVector<int>{1});
        QVERIFY(folder.files() == before);
    }
    entries::log(1, 2);
    qv::ActionLog::deleteActionLog();
    qv::FileEncryptTesting::setLockWait(0);
    QCOMPARE(errors.size(), 1);
    entries::Found const found = entries::findAll(folder, mode);
    QCOMPARE(found.fault, QString());
    QCOMPARE(found.indices.value(1), (QVector<int>{0, 2}));
}

QTEST_GUILESS_MAIN(tst_ActionLogProcesses)
#include "tst_ActionLogProcesses.moc"
