// SPDX-License-Identifier: LGPL-2.1-or-later
#include <qvbase/FileEncrypt.h>
#include <qvbase/FileEncryptTesting_p.h>

#include <benchmark/benchmark.h>

#include <QTemporaryDir>
#include <QVector>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>

// What an encrypted log costs over a plain one. Build it with optimisation; the files go to $TMPDIR.
namespace {

constexpr int EntryBytes = 250;
constexpr qint64 Gigabyte = 1000 * 1000 * 1000;
constexpr int LargeWrite = 1000 * 1000;
constexpr int LastEntries = 10;

void require(bool holds, char const* what)
{
    if (holds)
        return;
    std::fprintf(stderr, "bench_FileEncrypt: %s\n", what);
    std::exit(1);
}

QString pathOf(char const* name)
{
    static QTemporaryDir const dir;
    return dir.filePath(QString::fromLatin1(name));
}

/// A device that is open for appending.
std::unique_ptr<qv::FileEncrypt> appendTo(QString const& path, char const* password)
{
    auto file = std::make_unique<qv::FileEncrypt>(path);
    file->setFileUserPassword(QStringLiteral("ann"), QString::fromLatin1(password));
    require(file->open(QIODevice::WriteOnly | QIODevice::Append), "a file cannot be opened");
    return file;
}

double nanosecondsOf(std::function<bool()> const& work)
{
    auto const start = std::chrono::steady_clock::now();
    require(work(), "an append failed");
    auto const stop = std::chrono::steady_clock::now();
    return std::chrono::duration<double, std::nano>(stop - start).count();
}

double median(QVector<double> times)
{
    auto const middle = times.begin() + times.size() / 2;
    std::nth_element(times.begin(), middle, times.end());
    return *middle;
}

// One after the other in turn, so that both meet the same moments of the machine. Both take the file's lock.
void compareAppends(benchmark::State& state)
{
    QByteArray const entry(EntryBytes, 'x');
    auto const plain = appendTo(pathOf("plain"), "");
    auto const encrypted = appendTo(pathOf("encrypted"), "secret");
    QVector<double> plainTimes;
    QVector<double> encryptedTimes;
    for (auto _ : state) {
        plainTimes += nanosecondsOf([&] { return plain->write(entry) == EntryBytes; });
        encryptedTimes += nanosecondsOf([&] { return encrypted->write(entry) == EntryBytes; });
    }
    state.counters["plain_ns"] = median(plainTimes);
    state.counters["encrypted_ns"] = median(encryptedTimes);
    state.counters["difference_ns"] = median(encryptedTimes) - median(plainTimes);
}
BENCHMARK(compareAppends)->Iterations(200000)->Unit(benchmark::kMicrosecond);

/// At least @p size bytes, then entries as they stand at the end of a log: opening for append checks the last write.
void fill(QString const& path, qint64 size)
{
    auto const file = appendTo(path, "secret");
    QByteArray const piece(LargeWrite, 'x');
    for (qint64 written = 0; written < size; written += LargeWrite)
        require(file->write(piece) == LargeWrite, "a large file cannot be written");
    for (int i = 0; size > 0 && i < LastEntries; ++i)
        require(file->write(QByteArray(EntryBytes, 'x')) == EntryBytes, "an entry cannot be written");
}

// The key is derived once, when the file is filled, and kept by the process.
void openForAppend(benchmark::State& state)
{
    QString const path = pathOf(state.range(0) == 0 ? "empty" : "filled");
    fill(path, state.range(0));
    for (auto _ : state)
        appendTo(path, "secret")->close();
    QFile::remove(path);
}
BENCHMARK(openForAppend)->Arg(0)->Arg(1)->Arg(Gigabyte)->Unit(benchmark::kMicrosecond);

void openForAppendDerivingTheKey(benchmark::State& state)
{
    QString const path = pathOf("empty");
    fill(path, 0);
    for (auto _ : state) {
        qv::FileEncryptTesting::clearKeyCache();
        appendTo(path, "secret")->close();
    }
    QFile::remove(path);
}
BENCHMARK(openForAppendDerivingTheKey)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
