// SPDX-License-Identifier: LGPL-2.1-or-later
#include "Entries.h"

#include <GenericUtilities/actionlog/ActionLog.h>
#include <support/Random.h>

#include <QTest>

#include <atomic>
#include <thread>
#include <vector>

using crash::Mode;

namespace {

void inThreads(int count, std::function<void(int)> const& work)
{
    std::vector<std::thread> threads;
    threads.reserve(size_t(count));
    for (int i = 0; i < count; ++i)
        threads.emplace_back(work, i);
    for (std::thread& thread : threads)
        thread.join();
}

} // namespace

/// Threads that log at once, and others that look on.
class tst_ActionLogThreads : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { entries::keepStateIn(m_state.path()); }
    void logAtOnce();
    void lookOnWhileOthersLog();

private:
    QTemporaryDir m_state;
};

void tst_ActionLogThreads::logAtOnce()
{
    constexpr int threads = 16;
    int const count = support::rounds(5000);
    crash::Folder const folder;
    qv::ActionLog const& log = entries::openLog(folder.path(QStringLiteral("Trail.qvl")), Mode::Plain, 0);
    inThreads(threads, [count](int writer) {
        for (int i = 0; i < count; ++i)
            entries::log(writer, i);
    });
    QCOMPARE(log.entryCount(), threads * count);
    qv::ActionLog::deleteActionLog();
    entries::Found const found = entries::findAll(folder, Mode::Plain);
    QVERIFY2(found.fault.isEmpty(), qPrintable(found.fault));
    QCOMPARE(found.indices.size(), threads);
    for (QVector<int> const& indices : found.indices)
        QVERIFY(indices == entries::run(0, count));
}

void tst_ActionLogThreads::lookOnWhileOthersLog()
{
    crash::Folder const folder;
    qv::ActionLog& log = entries::openLog(folder.path(QStringLiteral("Trail.qvl")), Mode::Encrypted, 4000);
    std::atomic<int> logging{4};
    std::atomic<int> added{0};
    QObject::connect(&log, &qv::ActionLog::logEntriesAdded, [&] { ++added; });
    inThreads(8, [&](int thread) {
        if (thread < 4) {
            for (int i = 0; i < 100; ++i)
                entries::log(thread, i);
            --logging;
            return;
        }
        while (logging > 0) {
            for (auto const& entry : log.snapshot())
                QVERIFY(entry->user().value() == log.userName());
            log.setApplicationVersion(QString::number(log.entryCount()));
        }
    });
    QCOMPARE(added, 400);
    qv::ActionLog::deleteActionLog();
}

QTEST_GUILESS_MAIN(tst_ActionLogThreads)
#include "tst_ActionLogThreads.moc"
