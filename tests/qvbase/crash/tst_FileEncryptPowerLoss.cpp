// SPDX-License-Identifier: LGPL-2.1-or-later
#include "Disk.h"
#include "Folder.h"
#include "SystemCalls.h"

#include <support/Random.h>

#include <QCryptographicHash>
#include <QDataStream>
#include <QSet>
#include <QTest>

#include <algorithm>
#include <functional>
#include <memory>

namespace {

using crash::Files;
using crash::Mode;

constexpr char fileName[] = "log.qvl";

QByteArray text(int size)
{
    QByteArray bytes;
    while (bytes.size() < size)
        bytes += "entry " + QByteArray::number(bytes.size()) + '\n';
    return bytes.left(size);
}

/// A device whose calls are recorded. Every step is followed by sync() and marked in the record, before it begins and
/// after it is on the disk.
class Recording {
public:
    explicit Recording(crash::Folder const& folder, QByteArray const& content = {}, Mode mode = Mode::Encrypted)
        : m_mode(mode)
        , m_path(folder.path(QString::fromLatin1(fileName)))
        , m_states{content}
    {
        calls::watch(folder.path().toStdString());
        open();
    }
    ~Recording() { calls::stopWatching(); }
    Recording(Recording const&) = delete;
    Recording& operator=(Recording const&) = delete;

    void append(QByteArray const& bytes);
    void resize(int size);
    void reopen() { open(); }
    /// Goes on with another device, as another process would, and with the first again at the next call.
    void turn();

    bool isGood() const { return m_isGood; }
    /// What the file holds before the first step and after each.
    QVector<QByteArray> const& states() const { return m_states; }

private:
    void open();
    void step(QByteArray const& newState, std::function<bool()> const& act);

    Mode m_mode;
    QString m_path;
    std::unique_ptr<qv::FileEncrypt> m_device;
    std::unique_ptr<qv::FileEncrypt> m_other;
    QVector<QByteArray> m_states;
    bool m_isGood = true;
};

void Recording::open()
{
    m_device = std::make_unique<qv::FileEncrypt>(m_path);
    crash::prepare(*m_device, m_mode);
    m_isGood = m_device->open(QIODevice::ReadWrite | QIODevice::Append) && m_isGood;
}

void Recording::turn()
{
    std::swap(m_device, m_other);
    if (!m_device)
        open();
}

void Recording::step(QByteArray const& newState, std::function<bool()> const& act)
{
    m_states.append(newState);
    int const number = m_states.size() - 1;
    calls::mark(2 * number);
    m_isGood = act() && m_device->sync() && m_isGood;
    calls::mark(2 * number + 1);
}

void Recording::append(QByteArray const& bytes)
{
    step(m_states.last() + bytes, [&] { return m_device->write(bytes) == bytes.size(); });
}

void Recording::resize(int size)
{
    step(m_states.last().left(size), [&] { return m_device->resize(size); });
}

/// What a reader may find after a loss at some point of the recording.
class Promise {
public:
    explicit Promise(QVector<QByteArray> states)
        : m_states(std::move(states))
    {
    }

    void pass(calls::Event const& event);
    QByteArray const& safe() const { return m_states[m_synced]; }
    int begun() const { return m_begun; }
    int synced() const { return m_synced; }
    bool allows(QByteArray const& content) const;

private:
    QVector<QByteArray> m_states;
    int m_begun = 0;
    int m_synced = 0;
};

void Promise::pass(calls::Event const& event)
{
    if (event.kind == calls::Event::Mark)
        (event.file % 2 ? m_synced : m_begun) = event.file / 2;
}

bool Promise::allows(QByteArray const& content) const
{
    QByteArray const& wanted = m_states[m_begun];
    QByteArray const& shorter = safe().size() < wanted.size() ? safe() : wanted;
    QByteArray const& longer = safe().size() < wanted.size() ? wanted : safe();
    return content.startsWith(shorter) && longer.startsWith(content);
}

/// Puts what a disk held after a loss into a folder and reads it with the device, as after the next start.
class Restart {
public:
    /// Empty where the content is allowed and a new process goes on behind it.
    QString fault(Files const& files, Promise const& promise);

private:
    QString faultOf(Promise const& promise) const;
    QString path() const { return m_folder.path(QString::fromLatin1(fileName)); }

    crash::Folder m_folder;
    QSet<QByteArray> m_known; ///< Losses often leave the same behind; one look at each is enough.
};

QString Restart::fault(Files const& files, Promise const& promise)
{
    QByteArray situation;
    QDataStream stream(&situation, QIODevice::WriteOnly);
    stream << files << promise.begun() << promise.synced();
    QByteArray const key = QCryptographicHash::hash(situation, QCryptographicHash::Sha1);
    if (m_known.contains(key))
        return {};
    m_known.insert(key);
    m_folder.hold(files);
    return faultOf(promise);
}

QString Restart::faultOf(Promise const& promise) const
{
    QByteArray const content = QFile::exists(path()) ? crash::contentOf(path(), Mode::Encrypted) : QByteArray();
    if (!promise.allows(content))
        return QStringLiteral("%1 bytes read with step %2 synced").arg(content.size()).arg(promise.synced());
    qv::FileEncrypt device(path());
    crash::prepare(device, Mode::Encrypted);
    if (!device.open(QIODevice::Append))
        return promise.safe().isEmpty() ? QString() : QStringLiteral("cannot be appended to: ") + device.errorString();
    if (device.write("and on") != 6 || crash::contentOf(path(), Mode::Encrypted) != content + "and on")
        return QStringLiteral("does not go on behind %1 bytes").arg(content.size());
    return {};
}

using Script = std::function<void(Recording&)>;

void appendOften(Recording& recording)
{
    for (int size : {1, 250, 600, 1100, 17})
        recording.append(text(size));
}

void reopenOften(Recording& recording)
{
    for (int size : {250, 40, 600}) {
        recording.append(text(size));
        recording.reopen();
    }
    recording.append(text(90));
}

void takeTurns(Recording& recording)
{
    for (int size : {250, 600, 40, 300}) {
        recording.append(text(size));
        recording.turn();
    }
    recording.resize(890);
    recording.turn();
    recording.append(text(100));
}

void cutBetweenRecords(Recording& recording)
{
    for (int size : {300, 200, 500})
        recording.append(text(size));
    recording.resize(500);
    recording.append(text(200));
    recording.resize(300);
    recording.append(text(30));
}

void cutWithinARecord(Recording& recording)
{
    for (int size : {300, 200, 600})
        recording.append(text(size));
    recording.resize(700);
    recording.append(text(200));
    recording.resize(10);
    recording.append(text(30));
}

void scripts()
{
    QTest::addColumn<Script>("script");
    QTest::newRow("records of many sizes") << Script(appendOften);
    QTest::newRow("opened again and again") << Script(reopenOften);
    QTest::newRow("by two devices in turn") << Script(takeTurns);
    QTest::newRow("cut between records") << Script(cutBetweenRecords);
    QTest::newRow("cut within a record") << Script(cutWithinARecord);
}

/// A file that a crash left with part of its last write.
Files tornFiles()
{
    crash::Folder const folder;
    Recording recording(folder);
    recording.append(text(400));
    recording.append(text(900));
    Files files = folder.files();
    files[fileName].chop(100);
    return files;
}

} // namespace

Q_DECLARE_METATYPE(Script)

class tst_FileEncryptPowerLoss : public QObject {
    Q_OBJECT

private slots:
    void everyPrefix_data() { scripts(); }
    void everyPrefix();
    void everyPartOfEveryWrite_data() { scripts(); }
    void everyPartOfEveryWrite();
    void lossesAndReorderings_data() { scripts(); }
    void lossesAndReorderings();
    void lossesDuringRecovery();
    void tornBytesAreKeptAtEveryPrefix();
    void partsOfAWriteOfSeveralRecords();
    void unsyncedWritesAreReadUpToTheFirstLoss();
    void syncedPlainTextIsKept_data();
    void syncedPlainTextIsKept();
};

namespace {

/// What was recorded of a script, to be replayed.
struct Recorded {
    std::vector<calls::Event> events;
    QVector<QByteArray> states;
    bool isGood;
};

Recorded recorded(Script const& script, Files const& files = {}, QByteArray const& content = {})
{
    crash::Folder const folder;
    folder.hold(files);
    Recording recording(folder, content);
    script(recording);
    return {calls::events(), recording.states(), recording.isGood()};
}

/// The fault at the first event for which @p look finds one.
QString replay(
    Recorded const& run, std::function<QString(crash::Disk const&, calls::Event const&, Promise const&)> const& look)
{
    crash::Disk disk;
    Promise promise(run.states);
    for (size_t i = 0; i < run.events.size(); ++i) {
        bool const hasBegun = run.events[i].kind != calls::Event::Found;
        QString const fault = hasBegun ? look(disk, run.events[i], promise) : QString();
        if (!fault.isEmpty())
            return QStringLiteral("event %1: %2").arg(i).arg(fault);
        disk.apply(run.events[i]);
        promise.pass(run.events[i]);
    }
    return look(disk, {}, promise);
}

/// Random losses, @p count of them over the whole run.
QString replayLosses(Recorded const& run, int count)
{
    QRandomGenerator random = support::generator();
    Restart restart;
    int const perEvent = count / static_cast<int>(run.events.size() + 1) + 1;
    return replay(run, [&](crash::Disk const& disk, calls::Event const&, Promise const& promise) {
        for (int round = 0; round < perEvent; ++round) {
            QString const fault = restart.fault(disk.afterLoss(random), promise);
            if (!fault.isEmpty())
                return fault + QStringLiteral(", ") + support::seedNote(round);
        }
        return QString();
    });
}

/// Every part of each write that @p takes names.
QString replayParts(Recorded const& run, std::function<bool(int part, int size)> const& takes)
{
    Restart restart;
    return replay(run, [&](crash::Disk const& disk, calls::Event const& event, Promise const& promise) {
        int const size = event.kind == calls::Event::Write ? static_cast<int>(event.bytes.size()) : 0;
        QString fault;
        for (int part = 0; part < size && fault.isEmpty(); ++part) {
            if (!takes(part, size))
                continue;
            crash::Disk torn = disk;
            torn.applyPart(event, part);
            fault = restart.fault(torn.seen(), promise);
        }
        return fault;
    });
}

} // namespace

void tst_FileEncryptPowerLoss::everyPrefix()
{
    QFETCH(Script, script);
    Recorded const run = recorded(script);
    QVERIFY(run.isGood);
    Restart restart;
    QString const fault = replay(run, [&](crash::Disk const& disk, calls::Event const&, Promise const& promise) {
        return restart.fault(disk.seen(), promise);
    });
    QVERIFY2(fault.isEmpty(), qPrintable(fault));
}

void tst_FileEncryptPowerLoss::everyPartOfEveryWrite()
{
    QFETCH(Script, script);
    Recorded const run = recorded(script);
    QVERIFY(run.isGood);
    QString const fault = replayParts(run, [](int, int) { return true; });
    QVERIFY2(fault.isEmpty(), qPrintable(fault));
}

void tst_FileEncryptPowerLoss::lossesAndReorderings()
{
    QFETCH(Script, script);
    Recorded const run = recorded(script);
    QVERIFY(run.isGood);
    QString const fault = replayLosses(run, support::rounds(25000));
    QVERIFY2(fault.isEmpty(), qPrintable(fault));
}

void tst_FileEncryptPowerLoss::lossesDuringRecovery()
{
    Recorded const run = recorded(
        [](Recording& recording) {
            recording.append(text(1300));
            recording.append(text(20));
        },
        tornFiles(), text(400));
    QVERIFY(run.isGood);
    QString const fault = replayLosses(run, support::rounds(10000));
    QVERIFY2(fault.isEmpty(), qPrintable(fault));
}

void tst_FileEncryptPowerLoss::tornBytesAreKeptAtEveryPrefix()
{
    Files const torn = tornFiles();
    Recorded const run = recorded([](Recording& recording) { recording.append(text(1300)); }, torn, text(400));
    QVERIFY(run.isGood);
    QByteArray const tail = torn[fileName].right(700);
    QString const fault = replay(run, [&](crash::Disk const& disk, calls::Event const&, Promise const&) {
        Files const files = disk.seen();
        bool const isKept
            = std::any_of(files.begin(), files.end(), [&](QByteArray const& f) { return f.endsWith(tail); });
        return isKept ? QString() : QStringLiteral("torn bytes are lost");
    });
    QVERIFY2(fault.isEmpty(), qPrintable(fault));
}

void tst_FileEncryptPowerLoss::partsOfAWriteOfSeveralRecords()
{
    Recorded const run = recorded([](Recording& recording) {
        recording.append(text(100));
        recording.append(text(3 << 20));
        recording.append(text(100));
    });
    QVERIFY(run.isGood);
    QString const fault
        = replayParts(run, [](int part, int size) { return part % 262139 < 3 || (size > 1000 && size - part < 3); });
    QVERIFY2(fault.isEmpty(), qPrintable(fault));
}

void tst_FileEncryptPowerLoss::unsyncedWritesAreReadUpToTheFirstLoss()
{
    QVector<QByteArray> states;
    crash::Folder const folder;
    {
        calls::watch(folder.path().toStdString());
        qv::FileEncrypt device(folder.path(QString::fromLatin1(fileName)));
        crash::prepare(device, Mode::Encrypted);
        QVERIFY(device.open(QIODevice::Append));
        for (int i = 0; i < 20; ++i)
            QCOMPARE(device.write(text(300)), qint64(300));
    }
    crash::Disk disk;
    for (calls::Event const& event : calls::events())
        disk.apply(event);
    calls::stopWatching();
    QByteArray const all = text(300).repeated(20);
    QRandomGenerator random = support::generator();
    for (int round = 0; round < support::rounds(1000, 10000); ++round) {
        folder.hold(disk.afterLoss(random));
        QByteArray const read = crash::contentOf(folder.path(QString::fromLatin1(fileName)), Mode::Encrypted);
        QVERIFY2(all.startsWith(read), qPrintable(support::seedNote(round)));
    }
}

void tst_FileEncryptPowerLoss::syncedPlainTextIsKept_data()
{
    QTest::addColumn<Files>("files");
    QTest::newRow("new file") << Files();
    QTest::newRow("file that was there") << Files{{fileName, "before\n"}};
}

void tst_FileEncryptPowerLoss::syncedPlainTextIsKept()
{
    QFETCH(Files, files);
    crash::Folder const folder;
    folder.hold(files);
    Recording recording(folder, files.value(fileName), Mode::Plain);
    appendOften(recording);
    QVERIFY(recording.isGood());
    QRandomGenerator random = support::generator();
    Recorded const run = {calls::events(), recording.states(), true};
    QString const fault = replay(run, [&](crash::Disk const& disk, calls::Event const&, Promise const& promise) {
        for (int round = 0; round < 100; ++round) {
            if (!disk.afterLoss(random).value(fileName).startsWith(promise.safe()))
                return QStringLiteral("step %1 is lost, ").arg(promise.synced()) + support::seedNote(round);
        }
        return QString();
    });
    QVERIFY2(fault.isEmpty(), qPrintable(fault));
}

QTEST_GUILESS_MAIN(tst_FileEncryptPowerLoss)
#include "tst_FileEncryptPowerLoss.moc"
