// SPDX-License-Identifier: LGPL-2.1-or-later
#include "Folder.h"
#include "SystemCalls.h"

#include <QDir>
#include <QTest>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <functional>

namespace {

using calls::Fault;
using crash::Files;
using crash::Mode;

constexpr char fileName[] = "log.qvl";
constexpr long forGood = 1L << 30;

QByteArray text(char letter, int size = 300)
{
    return QByteArray(size, letter);
}

int openHandles()
{
    return QDir(QStringLiteral("/proc/self/fd"))
        .entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot)
        .size();
}

/// A device in bad times: does one thing after the other, and keeps book of what the file may hold in the end and of
/// what was not told as it should be.
class Witness {
public:
    Witness(crash::Folder const& folder, Mode mode, QByteArray const& content);

    void open(QIODevice::OpenMode how);
    void append(QByteArray const& bytes);
    void sync();
    void resize(int size);
    void close() { m_device.close(); }
    void readAll();
    void readLastHalf();
    void renameAside()
    {
        m_movedAside = std::rename(qPrintable(m_path), qPrintable(m_path + QStringLiteral(".1"))) == 0;
    }

    /// The cause is gone: the same device works again, and a new one reads what it should.
    void recover();

    QString fault() const { return m_fault; }

private:
    void require(bool ok, char const* what);
    void checkTold(bool succeeded, char const* what);

    qv::FileEncrypt m_device;
    QString m_path;
    Mode m_mode;
    QVector<QByteArray> m_mayHold;
    bool m_movedAside = false;
    QString m_fault;
};

Witness::Witness(crash::Folder const& folder, Mode mode, QByteArray const& content)
    : m_device(folder.path(QString::fromLatin1(fileName)))
    , m_path(m_device.fileName())
    , m_mode(mode)
    , m_mayHold{content}
{
    crash::prepare(m_device, mode);
}

void Witness::require(bool ok, char const* what)
{
    if (!ok && m_fault.isEmpty())
        m_fault = QString::fromLatin1(what);
}

void Witness::checkTold(bool succeeded, char const* what)
{
    if (succeeded)
        return;
    require(crash::hasError(m_device), what);
    require(m_device.headerError() == qv::FileEncrypt::NoHeaderError,
        "an error of the system is told as one of the header");
}

void Witness::open(QIODevice::OpenMode how)
{
    bool const opened = m_device.open(how);
    checkTold(opened, "open fails without an error");
    require(opened == m_device.isOpen(), "open and isOpen differ");
    if (!(how & QIODevice::Truncate))
        return;
    if (opened)
        m_mayHold = {QByteArray()};
    else
        m_mayHold.append(QByteArray());
}

void Witness::append(QByteArray const& bytes)
{
    if (!m_device.isOpen())
        return;
    qint64 const written = m_device.write(bytes);
    require(written == bytes.size() || written == -1, "write is neither done nor refused");
    bool const flushed = m_device.flush();
    checkTold(written >= 0 && flushed, "write fails without an error");
    if (written < 0)
        return;
    QVector<QByteArray> const before = m_mayHold;
    if (flushed)
        m_mayHold.clear();
    for (QByteArray const& content : before)
        m_mayHold.append(content + bytes);
}

void Witness::sync()
{
    if (m_device.isOpen())
        checkTold(m_device.sync(), "sync fails without an error");
}

void Witness::resize(int size)
{
    if (!m_device.isOpen())
        return;
    bool const resized = m_device.resize(size);
    checkTold(resized, "resize fails without an error");
    QVector<QByteArray> const before = m_mayHold;
    if (resized)
        m_mayHold.clear();
    for (QByteArray const& content : before)
        m_mayHold.append(content.left(size));
}

void Witness::readAll()
{
    if (!m_device.isOpen())
        return;
    QByteArray const read = m_device.readAll();
    require(m_mayHold.first().startsWith(read), "wrong bytes are read");
    checkTold(read == m_mayHold.first(), "reading ends early without an error");
}

void Witness::readLastHalf()
{
    if (!m_device.isOpen())
        return;
    int const half = m_mayHold.first().size() / 2;
    bool const sought = m_device.seek(half);
    QByteArray const read = sought ? m_device.readAll() : QByteArray();
    require(m_mayHold.first().mid(half).startsWith(read), "wrong bytes are read behind a seek");
    checkTold(read == m_mayHold.first().mid(half), "reading behind a seek ends early without an error");
}

void Witness::recover()
{
    m_device.close();
    require(m_device.open(QIODevice::WriteOnly | QIODevice::Append), "the device cannot be opened again");
    require(m_device.write("again") == 5 && m_device.flush(), "the device cannot be written to again");
    m_device.close();

    QString error;
    QByteArray content = crash::contentOf(m_path, m_mode, &error);
    if (m_movedAside)
        content.prepend(crash::contentOf(m_path + QStringLiteral(".1"), m_mode, &error));
    require(error.isEmpty(), "a new device cannot read the file");
    bool const isRight
        = std::any_of(m_mayHold.begin(), m_mayHold.end(), [&](QByteArray const& c) { return content == c + "again"; });
    require(isRight, "the file holds something else than was written");
    require(crash::faultOf(m_path, m_mode).isEmpty(), "the file is not intact");
}

using Scenario = std::function<void(Witness&)>;

void append(Witness& witness)
{
    witness.open(QIODevice::WriteOnly | QIODevice::Append);
    witness.append(text('a'));
    witness.sync();
    witness.append(text('b', 5000));
    witness.append(text('c'));
    witness.close();
}

void appendAndRead(Witness& witness)
{
    witness.open(QIODevice::ReadWrite | QIODevice::Append);
    witness.append(text('a'));
    witness.close();
    witness.open(QIODevice::ReadOnly);
    witness.readAll();
    witness.close();
}

void read(Witness& witness)
{
    witness.open(QIODevice::ReadOnly);
    witness.readAll();
    witness.readLastHalf();
    witness.close();
}

void truncate(Witness& witness)
{
    witness.open(QIODevice::WriteOnly | QIODevice::Truncate);
    witness.append(text('a'));
    witness.close();
}

void cutBetweenRecords(Witness& witness)
{
    witness.open(QIODevice::ReadWrite);
    witness.resize(600);
    witness.close();
}

void cutWithinARecord(Witness& witness)
{
    witness.open(QIODevice::ReadWrite);
    witness.resize(500);
    witness.close();
}

void appendAcrossARename(Witness& witness)
{
    witness.open(QIODevice::WriteOnly | QIODevice::Append);
    witness.append(text('a'));
    witness.renameAside();
    witness.append(text('b'));
    witness.append(text('c'));
    witness.close();
}

struct Start {
    Files files;
    QByteArray content;
};

Start noFile(Mode)
{
    return {};
}

/// Three writes of 300 bytes.
Start threeWrites(Mode mode)
{
    crash::Folder const folder;
    qv::FileEncrypt device(folder.path(QString::fromLatin1(fileName)));
    crash::prepare(device, mode);
    device.open(QIODevice::WriteOnly | QIODevice::Append);
    for (char letter : {'x', 'y', 'z'})
        device.write(text(letter));
    device.close();
    return {folder.files(), text('x') + text('y') + text('z')};
}

/// The third is torn.
Start tornWrite(Mode mode)
{
    Start start = threeWrites(mode);
    start.files[fileName].chop(100);
    start.content.chop(mode == Mode::Encrypted ? 300 : 100);
    return start;
}

using MakeStart = Start (*)(Mode);

struct Fate {
    char const* name;
    Fault::Calls calls;
    int error;
    long count;
};

// Nothing is interrupted for good: both Qt and the C library's users go on until they are not.
constexpr Fate fates[] = {
    {"EIO once", Fault::Any, EIO, 1},
    {"EIO for good", Fault::Any, EIO, forGood},
    {"ENOSPC once", Fault::Changing, ENOSPC, 1},
    {"ENOSPC for good", Fault::Changing, ENOSPC, forGood},
    {"EMFILE once", Fault::Opening, EMFILE, 1},
    {"EMFILE for good", Fault::Opening, EMFILE, forGood},
    {"EINTR once", Fault::Interruptible, EINTR, 1},
    {"EINTR three times", Fault::Interruptible, EINTR, 3},
    {"short once", Fault::Transferring, 0, 1},
    {"short for good", Fault::Transferring, 0, forGood},
};

void addFates(char const* name, Mode mode, MakeStart start, Scenario const& scenario)
{
    for (Fate const& fate : fates) {
        QTest::addRow("%s, %s, %s", name, mode == Mode::Plain ? "plain" : "encrypted", fate.name)
            << mode << start << scenario << Fault{fate.calls, fate.error, 0, fate.count};
    }
}

} // namespace

Q_DECLARE_METATYPE(Scenario)
Q_DECLARE_METATYPE(MakeStart)
Q_DECLARE_METATYPE(Fault)

class tst_FileEncryptErrors : public QObject {
    Q_OBJECT

private slots:
    void everyCallFails_data();
    void everyCallFails();
    void refusedFileStaysAsItIs_data();
    void refusedFileStaysAsItIs();
};

void tst_FileEncryptErrors::everyCallFails_data()
{
    QTest::addColumn<Mode>("mode");
    QTest::addColumn<MakeStart>("start");
    QTest::addColumn<Scenario>("scenario");
    QTest::addColumn<Fault>("fault");
    for (Mode mode : {Mode::Plain, Mode::Encrypted}) {
        addFates("append to a new file", mode, noFile, append);
        addFates("append to a file", mode, threeWrites, append);
        addFates("append and read", mode, threeWrites, appendAndRead);
        addFates("read", mode, threeWrites, read);
        addFates("truncate while opening", mode, threeWrites, truncate);
    }
    addFates("append behind a torn write", Mode::Encrypted, tornWrite, append);
    addFates("cut between records", Mode::Encrypted, threeWrites, cutBetweenRecords);
    addFates("cut within a record", Mode::Encrypted, threeWrites, cutWithinARecord);
    addFates("append to a file moved aside", Mode::Encrypted, threeWrites, appendAcrossARename);
}

void tst_FileEncryptErrors::everyCallFails()
{
    QFETCH(Mode, mode);
    QFETCH(MakeStart, start);
    QFETCH(Scenario, scenario);
    QFETCH(Fault, fault);
    Start const begin = start(mode);
    crash::Folder const folder;
    int const handles = openHandles();
    for (long made = 1; fault.first < made; ++fault.first) {
        folder.hold(begin.files);
        Witness witness(folder, mode, begin.content);
        calls::watch(folder.path().toStdString());
        calls::inject(fault);
        scenario(witness);
        made = calls::heal();
        calls::stopWatching();
        witness.recover();
        QVERIFY2(
            witness.fault().isEmpty(), qPrintable(QStringLiteral("call %1: %2").arg(fault.first).arg(witness.fault())));
        QCOMPARE(openHandles(), handles);
    }
    QVERIFY(fault.first > 0);
}

void tst_FileEncryptErrors::refusedFileStaysAsItIs_data()
{
    QTest::addColumn<Files>("files");
    QTest::addColumn<QString>("password");
    QTest::addColumn<int>("openMode");
    QTest::addColumn<Fault>("fault");
    Files const plainFile = threeWrites(Mode::Plain).files;
    Files const encryptedFile = threeWrites(Mode::Encrypted).files;
    for (Fate const& fate : fates) {
        Fault const fault = {fate.calls, fate.error, 0, fate.count};
        for (QIODevice::OpenMode how : {QIODevice::Append, QIODevice::Truncate, QIODevice::ReadWrite}) {
            QTest::addRow("encrypted file, no password, mode %d, %s", int(how), fate.name)
                << encryptedFile << QString() << int(how) << fault;
            QTest::addRow("encrypted file, wrong password, mode %d, %s", int(how), fate.name)
                << encryptedFile << QStringLiteral("wrong horse") << int(how) << fault;
            QTest::addRow("plain file, a password, mode %d, %s", int(how), fate.name)
                << plainFile << QStringLiteral("correct horse") << int(how) << fault;
        }
    }
}

void tst_FileEncryptErrors::refusedFileStaysAsItIs()
{
    QFETCH(Files, files);
    QFETCH(QString, password);
    QFETCH(int, openMode);
    QFETCH(Fault, fault);
    crash::Folder const folder;
    folder.hold(files);
    for (long made = 1; fault.first < made; ++fault.first) {
        qv::FileEncrypt device(folder.path(QString::fromLatin1(fileName)));
        device.setFileUserPassword(QStringLiteral("operator"), password);
        calls::watch(folder.path().toStdString());
        calls::inject(fault);
        bool const opened = device.open(QIODevice::OpenMode(openMode) | QIODevice::WriteOnly);
        made = calls::heal();
        calls::stopWatching();
        QVERIFY2(!opened && !device.isOpen(), qPrintable(QStringLiteral("call %1").arg(fault.first)));
        QVERIFY2(crash::hasError(device), qPrintable(QStringLiteral("call %1").arg(fault.first)));
        QCOMPARE(folder.files(), files);
    }
}

QTEST_GUILESS_MAIN(tst_FileEncryptErrors)
#include "tst_FileEncryptErrors.moc"
