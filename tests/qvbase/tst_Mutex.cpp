// SPDX-License-Identifier: LGPL-2.1-or-later
#include <qvbase/Mutex.h>

#include <support/Random.h>

#include <QTest>

#include <stdexcept>
#include <thread>
#include <type_traits>
#include <vector>

namespace {

/// Whether another thread could take the mutex right now.
bool isFree(qv::Mutex& mutex)
{
    bool taken = false;
    std::thread([&] {
        taken = mutex.tryLock();
        if (taken)
            mutex.unlock();
    }).join();
    return taken;
}

} // namespace

class tst_Mutex : public QObject {
    Q_OBJECT

private slots:
    void startsFree();
    void lockKeepsOtherThreadsOut();
    void holderMayLockAgain();
    void holderMayTryAgain();
    void everyLockNeedsItsUnlock();
    void lockerHoldsForItsScope();
    void lockersNest();
    void lockerReleasesWhenAnExceptionPasses();
    void threadsTakeTurns();
    void neitherIsCopyable();
};

void tst_Mutex::startsFree()
{
    qv::Mutex mutex;
    QVERIFY(isFree(mutex));
}

void tst_Mutex::lockKeepsOtherThreadsOut()
{
    qv::Mutex mutex;
    mutex.lock();
    QVERIFY(!isFree(mutex));
    mutex.unlock();
    QVERIFY(isFree(mutex));
}

void tst_Mutex::holderMayLockAgain()
{
    qv::Mutex mutex;
    mutex.lock();
    mutex.lock();
    QVERIFY(!isFree(mutex));
    mutex.unlock();
    mutex.unlock();
}

void tst_Mutex::holderMayTryAgain()
{
    qv::Mutex mutex;
    mutex.lock();
    QVERIFY(mutex.tryLock());
    mutex.unlock();
    mutex.unlock();
    QVERIFY(isFree(mutex));
}

void tst_Mutex::everyLockNeedsItsUnlock()
{
    qv::Mutex mutex;
    for (int depth = 0; depth < 3; ++depth)
        mutex.lock();
    for (int depth = 0; depth < 3; ++depth) {
        QVERIFY(!isFree(mutex));
        mutex.unlock();
    }
    QVERIFY(isFree(mutex));
}

void tst_Mutex::lockerHoldsForItsScope()
{
    qv::Mutex mutex;
    {
        qv::MutexLocker const locker(mutex);
        QVERIFY(!isFree(mutex));
    }
    QVERIFY(isFree(mutex));
}

void tst_Mutex::lockersNest()
{
    qv::Mutex mutex;
    qv::MutexLocker const outer(mutex);
    {
        qv::MutexLocker const inner(mutex);
    }
    QVERIFY(!isFree(mutex));
}

void tst_Mutex::lockerReleasesWhenAnExceptionPasses()
{
    qv::Mutex mutex;
    auto const throwUnderLock = [&] {
        qv::MutexLocker const locker(mutex);
        throw std::runtime_error("passing");
    };
    QVERIFY_EXCEPTION_THROWN(throwUnderLock(), std::runtime_error);
    QVERIFY(isFree(mutex));
}

void tst_Mutex::threadsTakeTurns()
{
    int const each = support::rounds(20000);
    qv::Mutex mutex;
    int count = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < each; ++round) {
                qv::MutexLocker const locker(mutex);
                ++count;
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    QCOMPARE(count, 4 * each);
}

void tst_Mutex::neitherIsCopyable()
{
    QVERIFY(!std::is_copy_constructible_v<qv::Mutex>);
    QVERIFY(!std::is_copy_assignable_v<qv::Mutex>);
    QVERIFY(!std::is_copy_constructible_v<qv::MutexLocker>);
    QVERIFY(!std::is_copy_assignable_v<qv::MutexLocker>);
}

QTEST_GUILESS_MAIN(tst_Mutex)
#include "tst_Mutex.moc"
