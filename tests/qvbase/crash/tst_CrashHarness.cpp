// SPDX-License-Identifier: LGPL-2.1-or-later
// The other tests of this folder are worth what their tools see.
#include "Disk.h"
#include "Folder.h"
#include "Records.h"
#include "SystemCalls.h"

#include <support/Random.h>

#include <QFile>
#include <QTest>

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace {

using calls::Event;
using crash::Files;

QString name(char const* text)
{
    return QString::fromLatin1(text);
}

void append(QString const& path, QByteArray const& bytes, bool syncing)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::Append));
    QCOMPARE(file.write(bytes), qint64(bytes.size()));
    QVERIFY(file.flush());
    QVERIFY(!syncing || fdatasync(file.handle()) == 0);
}

void syncFolder(QString const& path)
{
    int const folder = open(qPrintable(path), O_RDONLY | O_DIRECTORY);
    QCOMPARE(fsync(folder), 0);
    close(folder);
}

crash::Disk replayed()
{
    crash::Disk disk;
    for (Event const& event : calls::events())
        disk.apply(event);
    return disk;
}

/// What may be on the disk, by a thousand losses.
QSet<QByteArray> contentsAfterLoss(crash::Disk const& disk, QByteArray const& file)
{
    QRandomGenerator random = support::generator();
    QSet<QByteArray> contents;
    for (int i = 0; i < 1000; ++i)
        contents.insert(disk.afterLoss(random).value(file, "no file"));
    return contents;
}

} // namespace

class tst_CrashHarness : public QObject {
    Q_OBJECT

private slots:
    void cleanup();
    void recordsWhatQtDoes();
    void seesNothingElsewhere();
    void unsyncedNameMayBeLost();
    void unsyncedPiecesAreLostEachForItself();
    void renameBeforeSyncMayKeepAnEmptyFile();
    void everyCallMayFail_data();
    void everyCallMayFail();
    void shortWriteLeavesHalf();
    void parseStopsAtTheFirstWrongByte();
};

void tst_CrashHarness::cleanup()
{
    calls::stopWatching();
}

void tst_CrashHarness::recordsWhatQtDoes()
{
    crash::Folder const folder;
    folder.hold({{"old", "text"}});
    calls::watch(folder.path().toStdString());
    append(folder.path(name("old")), " and more", true);
    QVERIFY(QFile::rename(folder.path(name("old")), folder.path(name("new"))));
    append(folder.path(name("other")), "!", false);
    QVERIFY(QFile::resize(folder.path(name("new")), 6));
    QVERIFY(QFile::remove(folder.path(name("other"))));
    QVector<int> kinds;
    for (Event const& event : calls::events())
        kinds.append(event.kind);
    QCOMPARE(kinds,
        (QVector<int>{Event::Found, Event::Write, Event::Sync, Event::Rename, Event::Create, Event::Write,
            Event::Truncate, Event::Remove}));
    QCOMPARE(replayed().seen(), (Files{{"new", "text a"}}));
    QCOMPARE(replayed().seen(), folder.files());
}

void tst_CrashHarness::seesNothingElsewhere()
{
    crash::Folder const folder;
    crash::Folder const other;
    calls::watch(folder.path().toStdString());
    calls::inject({calls::Fault::Any, EIO, 0, 1000});
    append(other.path(name("file")), "text", true);
    QCOMPARE(calls::heal(), 0L);
    QVERIFY(calls::events().empty());
}

void tst_CrashHarness::unsyncedNameMayBeLost()
{
    crash::Folder const folder;
    calls::watch(folder.path().toStdString());
    append(folder.path(name("file")), "text", true);
    QCOMPARE(contentsAfterLoss(replayed(), "file"), (QSet<QByteArray>{"no file", "text"}));
    syncFolder(folder.path());
    QCOMPARE(contentsAfterLoss(replayed(), "file"), (QSet<QByteArray>{"text"}));
}

void tst_CrashHarness::unsyncedPiecesAreLostEachForItself()
{
    crash::Folder const folder;
    QByteArray const piece(512, 'a');
    QByteArray const zeros(512, '\0');
    folder.hold({{"file", piece}});
    calls::watch(folder.path().toStdString());
    append(folder.path(name("file")), piece + piece, false);
    QCOMPARE(contentsAfterLoss(replayed(), "file"),
        (QSet<QByteArray>{
            piece, piece + zeros + zeros, piece + piece + zeros, piece + zeros + piece, piece + piece + piece}));
}

void tst_CrashHarness::renameBeforeSyncMayKeepAnEmptyFile()
{
    crash::Folder const folder;
    folder.hold({{"file", "old"}});
    calls::watch(folder.path().toStdString());
    append(folder.path(name("file.tmp")), "new", false);
    QCOMPARE(::rename(qPrintable(folder.path(name("file.tmp"))), qPrintable(folder.path(name("file")))), 0);
    QVERIFY(contentsAfterLoss(replayed(), "file").contains(""));
}

void tst_CrashHarness::everyCallMayFail_data()
{
    QTest::addColumn<long>("number");
    QTest::newRow("open") << 0L;
    QTest::newRow("write") << 1L;
    QTest::newRow("sync") << 2L;
    QTest::newRow("close") << 3L;
}

void tst_CrashHarness::everyCallMayFail()
{
    QFETCH(long, number);
    crash::Folder const folder;
    calls::watch(folder.path().toStdString());
    calls::inject({calls::Fault::Any, ENOSPC, number, 1});
    int const file = ::open(qPrintable(folder.path(name("file"))), O_WRONLY | O_CREAT, 0600);
    QVector<long> const results = {file, write(file, "text", 4), fsync(file), close(file)};
    for (int call = 0; call < results.size() && number > 0; ++call)
        QCOMPARE(results[call] == -1, call == number);
    QCOMPARE(file == -1, number == 0);
}

void tst_CrashHarness::shortWriteLeavesHalf()
{
    crash::Folder const folder;
    calls::watch(folder.path().toStdString());
    calls::inject({calls::Fault::Transferring, 0, 0, 1});
    int const file = ::open(qPrintable(folder.path(name("file"))), O_WRONLY | O_CREAT, 0600);
    QCOMPARE(write(file, "abcdef", 6), ssize_t(3));
    QCOMPARE(write(file, "def", 3), ssize_t(3));
    close(file);
    QCOMPARE(replayed().seen(), (Files{{"file", "abcdef"}}));
}

void tst_CrashHarness::parseStopsAtTheFirstWrongByte()
{
    QByteArray bytes = records::make(1, 7) + records::make(2, 8);
    QCOMPARE(records::parse(bytes).names.size(), 2);
    QCOMPARE(records::parse(bytes.chopped(1)).names.size(), 1);
    bytes[records::make(1, 7).size() - 5] = '?';
    QCOMPARE(records::parse(bytes).names.size(), 0);
    QCOMPARE(records::parse(bytes).rest, bytes);
}

QTEST_GUILESS_MAIN(tst_CrashHarness)
#include "tst_CrashHarness.moc"
