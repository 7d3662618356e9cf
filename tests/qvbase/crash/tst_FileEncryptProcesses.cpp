// SPDX-License-Identifier: LGPL-2.1-or-later
#include "Child.h"
#include "Folder.h"
#include "Records.h"

#include <support/Random.h>

#include <QTest>

#include <algorithm>
#include <memory>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

using crash::Mode;

QString const fileName = QStringLiteral("log.qvl");

QString wordFor(Mode mode)
{
    return mode == Mode::Plain ? QStringLiteral("plain") : QStringLiteral("encrypted");
}

std::unique_ptr<qv::FileEncrypt> opened(
    crash::Folder const& folder, Mode mode, QIODevice::OpenMode how = QIODevice::Append)
{
    auto device = std::make_unique<qv::FileEncrypt>(folder.path(fileName));
    crash::prepare(*device, mode);
    device->open(how);
    return device;
}

bool append(qv::FileEncrypt& device, quint32 writer, quint32 index)
{
    QByteArray const record = records::make(writer, index);
    return device.write(record) == record.size() && device.flush();
}

bool appendRun(qv::FileEncrypt& device, quint32 writer, quint32 first, quint32 count)
{
    for (quint32 i = 0; i < count; ++i) {
        if (!append(device, writer, first + i))
            return false;
    }
    return true;
}

/// All records of all files; the fault of the first file that is not whole goes to @p fault.
QVector<records::Name> recordsIn(crash::Folder const& folder, Mode mode, QString& fault)
{
    QVector<records::Name> names;
    crash::Files const files = folder.files();
    for (QByteArray const& name : files.keys()) {
        QString const path = folder.path(QString::fromUtf8(name));
        QString error = crash::faultOf(path, mode);
        records::Found const found = records::parse(crash::contentOf(path, mode, error.isEmpty() ? &error : nullptr));
        names += found.names;
        if (error.isEmpty() && !found.rest.isEmpty())
            error = QStringLiteral("%1 torn or mixed bytes").arg(found.rest.size());
        if (fault.isEmpty() && !error.isEmpty())
            fault = QStringLiteral("%1: %2").arg(path, error);
    }
    return names;
}

/// Files that were moved aside sort in another order than they were written in.
QVector<quint32> sortedIndicesOf(QVector<records::Name> const& names, quint32 writer)
{
    QVector<quint32> indices = records::indicesOf(names, writer);
    std::sort(indices.begin(), indices.end());
    return indices;
}

/// Runs @p work in a fork of this process; whether it returned true.
template <class Work> pid_t forked(Work work)
{
    pid_t const process = fork();
    if (process == 0)
        _exit(work() ? 0 : 1);
    return process;
}

bool succeeded(pid_t process)
{
    int status = -1;
    return waitpid(process, &status, 0) == process && status == 0;
}

} // namespace

class tst_FileEncryptProcesses : public QObject {
    Q_OBJECT

private slots:
    void appendAtOnce_data();
    void appendAtOnce();
    void everyWriterKeepsItsOrder_data();
    void everyWriterKeepsItsOrder();
    void forkedProcessGoesOnWithTheDevice_data();
    void forkedProcessGoesOnWithTheDevice();
    void forkBeforeTheFirstWrite_data();
    void forkBeforeTheFirstWrite();
    void forkedProcessThatWritesNothingHarmsNothing_data();
    void forkedProcessThatWritesNothingHarmsNothing();
    void severalDevicesOfOneProcess_data();
    void severalDevicesOfOneProcess();
    void readerSeesWhatAnotherDeviceAppends_data();
    void readerSeesWhatAnotherDeviceAppends();
    void followsAFileThatIsMovedAside_data();
    void followsAFileThatIsMovedAside();
    void removedFileIsMadeAnew_data();
    void removedFileIsMadeAnew();
};

void tst_FileEncryptProcesses::appendAtOnce_data()
{
    QTest::addColumn<Mode>("mode");
    QTest::addColumn<int>("processes");
    QTest::addColumn<bool>("movingAside");
    for (Mode mode : {Mode::Plain, Mode::Encrypted}) {
        for (int processes : {2, 4}) {
            QTest::addRow("%d processes, %s", processes, qPrintable(wordFor(mode))) << mode << processes << false;
            QTest::addRow("%d processes, %s, moved aside now and then", processes, qPrintable(wordFor(mode)))
                << mode << processes << true;
        }
    }
}

void tst_FileEncryptProcesses::appendAtOnce()
{
    QFETCH(Mode, mode);
    QFETCH(int, processes);
    QFETCH(bool, movingAside);
    crash::Folder const folder;
    auto const count = static_cast<quint32>(movingAside ? support::rounds(25000) : support::rounds(5000, 25000));
    std::vector<std::unique_ptr<crash::Child>> children;
    for (int i = 0; i < processes; ++i) {
        QString const habit = movingAside && i == 0 ? QStringLiteral("aside") : QStringLiteral("quiet");
        children.push_back(std::make_unique<crash::Child>(QStringList{QStringLiteral(APPENDER), folder.path(fileName),
            wordFor(mode), QString::number(i), QStringLiteral("0"), QString::number(count), habit}));
    }
    for (auto const& child : children) {
        child->output();
        QVERIFY(child->succeeded());
    }
    QString fault;
    QVector<records::Name> const found = recordsIn(folder, mode, fault);
    QVERIFY2(fault.isEmpty(), qPrintable(fault));
    QCOMPARE(found.size(), processes * static_cast<int>(count));
    for (int i = 0; i < processes; ++i)
        QVERIFY(sortedIndicesOf(found, static_cast<quint32>(i)) == records::run(0, count));
    QCOMPARE(folder.files().size() > 1, movingAside && count >= 1000);
}

void tst_FileEncryptProcesses::everyWriterKeepsItsOrder_data()
{
    crash::modes();
}

void tst_FileEncryptProcesses::everyWriterKeepsItsOrder()
{
    QFETCH(Mode, mode);
    crash::Folder const folder;
    QVector<pid_t> processes;
    for (quint32 writer : {1U, 2U, 3U})
        processes.append(forked([&] { return appendRun(*opened(folder, mode), writer, 0, 500); }));
    for (pid_t process : processes)
        QVERIFY(succeeded(process));
    QString fault;
    QVector<records::Name> const found = recordsIn(folder, mode, fault);
    QVERIFY2(fault.isEmpty(), qPrintable(fault));
    for (quint32 writer : {1U, 2U, 3U})
        QVERIFY(records::indicesOf(found, writer) == records::run(0, 500));
}

void tst_FileEncryptProcesses::forkedProcessGoesOnWithTheDevice_data()
{
    crash::modes();
}

void tst_FileEncryptProcesses::forkedProcessGoesOnWithTheDevice()
{
    QFETCH(Mode, mode);
    crash::Folder const folder;
    auto const device = opened(folder, mode);
    QVERIFY(appendRun(*device, 0, 0, 5));
    pid_t const child = forked([&] { return appendRun(*device, 1, 0, 2000); });
    QVERIFY(appendRun(*device, 0, 5, 2000));
    QVERIFY(succeeded(child));
    QString fault;
    QVector<records::Name> const found = recordsIn(folder, mode, fault);
    QVERIFY2(fault.isEmpty(), qPrintable(fault));
    QVERIFY(records::indicesOf(found, 0) == records::run(0, 2005));
    QVERIFY(records::indicesOf(found, 1) == records::run(0, 2000));
}

void tst_FileEncryptProcesses::forkBeforeTheFirstWrite_data()
{
    crash::modes();
}

void tst_FileEncryptProcesses::forkBeforeTheFirstWrite()
{
    QFETCH(Mode, mode);
    crash::Folder const folder;
    auto const device = opened(folder, mode);
    pid_t const first = forked([&] { return appendRun(*device, 1, 0, 500); });
    pid_t const second = forked([&] { return appendRun(*device, 2, 0, 500); });
    QVERIFY(succeeded(first) && succeeded(second));
    QVERIFY(append(*device, 0, 0));
    QString fault;
    QVector<records::Name> const found = recordsIn(folder, mode, fault);
    QVERIFY2(fault.isEmpty(), qPrintable(fault));
    QVERIFY(records::indicesOf(found, 1) == records::run(0, 500));
    QVERIFY(records::indicesOf(found, 2) == records::run(0, 500));
    QVERIFY(records::indicesOf(found, 0) == records::run(0, 1));
}

void tst_FileEncryptProcesses::forkedProcessThatWritesNothingHarmsNothing_data()
{
    crash::modes();
}

void tst_FileEncryptProcesses::forkedProcessThatWritesNothingHarmsNothing()
{
    QFETCH(Mode, mode);
    crash::Folder const folder;
    auto device = opened(folder, mode);
    QVERIFY(append(*device, 0, 0));
    QVERIFY(succeeded(forked([&] {
        device.reset();
        return true;
    })));
    QVERIFY(append(*device, 0, 1));
    QString fault;
    QVERIFY(records::indicesOf(recordsIn(folder, mode, fault), 0) == records::run(0, 2));
    QVERIFY2(fault.isEmpty(), qPrintable(fault));
}

void tst_FileEncryptProcesses::severalDevicesOfOneProcess_data()
{
    crash::modes();
}

void tst_FileEncryptProcesses::severalDevicesOfOneProcess()
{
    QFETCH(Mode, mode);
    crash::Folder const folder;
    std::unique_ptr<qv::FileEncrypt> const devices[]
        = {opened(folder, mode), opened(folder, mode), opened(folder, mode)};
    QVector<records::Name> expected;
    QRandomGenerator random = support::generator();
    quint32 next[3] = {};
    for (int round = 0; round < 1000; ++round) {
        quint32 const writer = static_cast<quint32>(random.bounded(3));
        expected.append({writer, next[writer]});
        QVERIFY2(append(*devices[writer], writer, next[writer]++), qPrintable(support::seedNote(round)));
    }
    QString fault;
    QVERIFY(recordsIn(folder, mode, fault) == expected);
    QVERIFY2(fault.isEmpty(), qPrintable(fault));
}

void tst_FileEncryptProcesses::readerSeesWhatAnotherDeviceAppends_data()
{
    crash::modes();
}

void tst_FileEncryptProcesses::readerSeesWhatAnotherDeviceAppends()
{
    QFETCH(Mode, mode);
    crash::Folder const folder;
    auto const writer = opened(folder, mode);
    QVERIFY(append(*writer, 0, 0));
    auto const reader = opened(folder, mode, QIODevice::ReadOnly);
    QVERIFY(records::parse(reader->readAll()).names == (QVector<records::Name>{{0, 0}}));
    QVERIFY(append(*writer, 0, 1));
    QCOMPARE(reader->readAll(), records::make(0, 1));
}

void tst_FileEncryptProcesses::followsAFileThatIsMovedAside_data()
{
    crash::modes();
}

void tst_FileEncryptProcesses::followsAFileThatIsMovedAside()
{
    QFETCH(Mode, mode);
    crash::Folder const folder;
    auto const first = opened(folder, mode);
    auto const second = opened(folder, mode);
    QVERIFY(append(*first, 1, 0) && append(*second, 2, 0));
    QVERIFY(QFile::rename(folder.path(fileName), folder.path(QStringLiteral("old.qvl"))));
    QVERIFY(append(*first, 1, 1) && append(*second, 2, 1) && append(*first, 1, 2));
    QVERIFY(records::parse(crash::contentOf(folder.path(QStringLiteral("old.qvl")), mode)).names
        == (QVector<records::Name>{{1, 0}, {2, 0}}));
    QVERIFY(records::parse(crash::contentOf(folder.path(fileName), mode)).names
        == (QVector<records::Name>{{1, 1}, {2, 1}, {1, 2}}));
}

void tst_FileEncryptProcesses::removedFileIsMadeAnew_data()
{
    crash::modes();
}

void tst_FileEncryptProcesses::removedFileIsMadeAnew()
{
    QFETCH(Mode, mode);
    crash::Folder const folder;
    auto const device = opened(folder, mode);
    QVERIFY(append(*device, 1, 0));
    QVERIFY(QFile::remove(folder.path(fileName)));
    QVERIFY(append(*device, 1, 1));
    QVERIFY(records::parse(crash::contentOf(folder.path(fileName), mode)).names == (QVector<records::Name>{{1, 1}}));
}

QTEST_GUILESS_MAIN(tst_FileEncryptProcesses)
#include "tst_FileEncryptProcesses.moc"
