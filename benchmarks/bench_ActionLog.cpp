// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/actionlog/ActionLog.h>
#include <GenericUtilities/actionlog/ExportLogEntries.h>

#include <benchmark/benchmark.h>

#include <QFileInfo>
#include <QTemporaryDir>

// What an entry costs the thread that logs it, and what a log costs who reads it. The files go to $TMPDIR.
namespace {

using qv::ActionLog;

/// A fresh log that writes into a folder of its own.
class Scene {
public:
    Scene(char const* password, qv::EDurability durability)
    {
        ActionLog::deleteActionLog();
        log().setFileInfo(QFileInfo(m_folder.filePath(QStringLiteral("Trail.qvl"))));
        log().setFileUserPassword(QString(), QString::fromLatin1(password));
        log().setDurability(durability);
    }
    ~Scene() { ActionLog::deleteActionLog(); }
    Scene(Scene const&) = delete;
    Scene& operator=(Scene const&) = delete;

    static ActionLog& log() { return *ActionLog::getInstance(); }

private:
    QTemporaryDir m_folder;
};

void logOne()
{
    ExportDoneLogEntry entry;
    entry.text.setValue(QStringLiteral("Twelve clips of camera 7 were written to the archive."));
    Scene::log().log(entry);
}

void logEntry(benchmark::State& state, char const* password, qv::EDurability durability)
{
    Scene const scene(password, durability);
    logOne();
    for (auto _ : state)
        logOne();
    if (Scene::log().entryCount() != int(state.iterations()) + 1)
        state.SkipWithError("an entry was refused");
}
BENCHMARK_CAPTURE(logEntry, plain_flush, "", qv::DurabilityFlush)->Iterations(50000)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(logEntry, plain_data, "", qv::DurabilityData)->Iterations(2000)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(logEntry, encrypted_flush, "secret", qv::DurabilityFlush)
    ->Iterations(50000)
    ->Unit(benchmark::kMicrosecond);

void readLog(benchmark::State& state, char const* password)
{
    constexpr int entries = 10000;
    Scene const scene(password, qv::DurabilityFlush);
    for (int i = 0; i < entries; ++i)
        logOne();
    for (auto _ : state)
        Scene::log().readLog();
    if (Scene::log().entryCount() != entries)
        state.SkipWithError("the log was not read whole");
    state.SetItemsProcessed(state.iterations() * entries);
}
BENCHMARK_CAPTURE(readLog, plain, "")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(readLog, encrypted, "secret")->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
