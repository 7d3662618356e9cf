// SPDX-License-Identifier: LGPL-2.1-or-later
#include <qvbase/NamedFile_p.h>

#include <QProcess>
#include <QTest>

#include <cerrno>
#include <functional>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr char advice[] = "PROCESS_NUMBER_ADVICE";

/// Whether @p holds in a process forked off this one.
bool holdsInChild(std::function<bool()> const& holds)
{
    pid_t const child = ::fork();
    if (child == 0)
        ::_exit(holds() ? 0 : 1);
    int status = 0;
    return child > 0 && ::waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

} // namespace

/// Stands before the system's: in a process that was started for it, as on a system that wipes nothing.
extern "C" int madvise(void* address, size_t size, int what) noexcept
{
    if (!qEnvironmentVariableIsSet(advice))
        return int(::syscall(SYS_madvise, address, size, what));
    errno = EINVAL;
    return qEnvironmentVariable(advice) == QLatin1String("ignored") ? 0 : -1;
}

class tst_ProcessNumber : public QObject {
    Q_OBJECT

private slots:
    void staysWithinAProcess();
    void changesWithEveryFork();
    void holdsWhereNothingIsWiped_data();
    void holdsWhereNothingIsWiped();
};

void tst_ProcessNumber::staysWithinAProcess()
{
    quint64 const number = qv::posix::processNumber();
    QVERIFY(number != 0);
    QVERIFY(holdsInChild([] { return true; }));
    QCOMPARE(qv::posix::processNumber(), number);
}

void tst_ProcessNumber::changesWithEveryFork()
{
    quint64 const own = qv::posix::processNumber();
    QVERIFY(holdsInChild([own] {
        quint64 const ofChild = qv::posix::processNumber();
        return ofChild != own && qv::posix::processNumber() == ofChild && holdsInChild([own, ofChild] {
            quint64 const ofGrandchild = qv::posix::processNumber();
            return ofGrandchild != own && ofGrandchild != ofChild;
        });
    }));
    // A child that never asked does not keep its own from being told.
    QVERIFY(holdsInChild([own] { return holdsInChild([own] { return qv::posix::processNumber() != own; }); }));
    QCOMPARE(qv::posix::processNumber(), own);
}

void tst_ProcessNumber::holdsWhereNothingIsWiped_data()
{
    QTest::addColumn<QString>("how");
    QTest::newRow("advice is refused") << QStringLiteral("refused");
    QTest::newRow("any advice is taken and ignored") << QStringLiteral("ignored");
}

void tst_ProcessNumber::holdsWhereNothingIsWiped()
{
    QFETCH(QString, how);
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QLatin1String(advice), how);
    process.setProcessEnvironment(environment);
    process.start(QCoreApplication::applicationFilePath(),
        {QStringLiteral("staysWithinAProcess"), QStringLiteral("changesWithEveryFork")});
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(process.exitCode(), 0);
}

QTEST_GUILESS_MAIN(tst_ProcessNumber)
#include "tst_ProcessNumber.moc"
