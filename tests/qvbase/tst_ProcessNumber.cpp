// SPDX-License-Identifier: LGPL-2.1-or-later
#include <qvbase/NamedFile_p.h>

#include <QTest>

#include <functional>
#include <sys/wait.h>
#include <unistd.h>

namespace {

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

class tst_ProcessNumber : public QObject {
    Q_OBJECT

private slots:
    void staysWithinAProcess();
    void changesWithEveryFork();
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

QTEST_GUILESS_MAIN(tst_ProcessNumber)
#include "tst_ProcessNumber.moc"
