// SPDX-License-Identifier: LGPL-2.1-or-later
#include <qvbase/EncryptedFiles.h>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

using qv::FileEncrypt;

/// The lock that spans several operations of a device.
class tst_FileEncryptLock : public QObject {
    Q_OBJECT

private slots:
    void init();
    void othersWait_data() { passwords(); }
    void othersWait();
    void endsWithTheOutermost_data() { passwords(); }
    void endsWithTheOutermost();
    void endsWithTheDevice_data() { passwords(); }
    void endsWithTheDevice();
    void tellsOfAnotherFile_data() { passwords(); }
    void tellsOfAnotherFile();
    void sizeIsThatOfTheFileLocked_data() { passwords(); }
    void sizeIsThatOfTheFileLocked();
    void childDoesNotEndIt_data() { passwords(); }
    void childDoesNotEndIt();
    void isNotWaitedForInVain_data() { passwords(); }
    void isNotWaitedForInVain();
    void refused_data();
    void refused();
    void refusedWhereAnotherKindTookTheName_data() { passwords(); }
    void refusedWhereAnotherKindTookTheName();

private:
    static void passwords();
    QString name() const { return m_folder->filePath(QStringLiteral("log.qvl")); }
    std::unique_ptr<FileEncrypt> appending() const;
    bool isFree() const;

    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_FileEncryptLock::init()
{
    encrypted::useCheapKeys();
    m_folder = encrypted::folder();
}

void tst_FileEncryptLock::passwords()
{
    QTest::addColumn<QString>("password");
    QTest::newRow("plain") << "";
    QTest::newRow("encrypted") << "secret";
}

std::unique_ptr<FileEncrypt> tst_FileEncryptLock::appending() const
{
    QFETCH(QString, password);
    auto file = encrypted::device(name(), password);
    if (!file->open(QIODevice::Append))
        qWarning("%s", qPrintable(file->errorString()));
    return file;
}

/// Whether somebody else would get the lock at once.
bool tst_FileEncryptLock::isFree() const
{
    int const fd = ::open(QFile::encodeName(name()).constData(), O_RDONLY | O_CLOEXEC);
    bool const isFree = ::flock(fd, LOCK_EX | LOCK_NB) == 0;
    ::close(fd);
    return isFree;
}

void tst_FileEncryptLock::othersWait()
{
    auto const file = appending();
    QVERIFY(isFree());
    QVERIFY(file->lock());
    QVERIFY(!isFree());
    file->unlock();
    QVERIFY(isFree());
}

void tst_FileEncryptLock::endsWithTheOutermost()
{
    auto const file = appending();
    QVERIFY(file->lock());
    QVERIFY(file->lock());
    QCOMPARE(file->write("text"), qint64(4));
    file->unlock();
    QVERIFY(!isFree());
    file->unlock();
    QVERIFY(isFree());
    file->unlock();
    QVERIFY(file->lock());
    QVERIFY(!isFree());
}

void tst_FileEncryptLock::endsWithTheDevice()
{
    auto const file = appending();
    QVERIFY(file->lock());
    file->close();
    QVERIFY(isFree());
    file->unlock();
    QVERIFY(file->open(QIODevice::Append));
    QVERIFY(isFree());
}

void tst_FileEncryptLock::tellsOfAnotherFile()
{
    auto const file = appending();
    bool isAnother = false;
    QVERIFY(file->lock(&isAnother));
    QVERIFY(isAnother);
    file->unlock();
    QVERIFY(file->lock(&isAnother));
    QVERIFY(!isAnother);
    QVERIFY(QFile::rename(name(), name() + QStringLiteral(".1")));
    file->unlock();
    QVERIFY(file->lock(&isAnother));
    QVERIFY(isAnother);
    QVERIFY(QFile::exists(name()));
}

void tst_FileEncryptLock::sizeIsThatOfTheFileLocked()
{
    auto const file = appending();
    auto const other = appending();
    QCOMPARE(file->write("mine"), qint64(4));
    QCOMPARE(other->write(" and yours"), qint64(10));
    QVERIFY(file->lock());
    QCOMPARE(file->size(), qint64(14));
    QCOMPARE(file->pos(), qint64(14));
    file->unlock();
    QVERIFY(QFile::rename(name(), name() + QStringLiteral(".1")));
    QVERIFY(file->lock());
    QCOMPARE(file->size(), qint64(0));
    QCOMPARE(file->pos(), qint64(0));
}

void tst_FileEncryptLock::childDoesNotEndIt()
{
    auto const file = appending();
    QVERIFY(file->lock());
    pid_t const child = ::fork();
    if (child == 0) {
        file->unlock();
        ::_exit(0);
    }
    ::waitpid(child, nullptr, 0);
    QVERIFY(!isFree());
}

/// Whoever holds it may have been stopped.
void tst_FileEncryptLock::isNotWaitedForInVain()
{
    QFETCH(QString, password);
    qv::FileEncryptTesting::setLockWait(50);
    auto const file = appending();
    auto const other = appending();
    QVERIFY(other->lock());
    QVERIFY(!file->lock());
    QCOMPARE(file->write("text"), qint64(-1));
    // With a password, its end is looked at when it is opened.
    QCOMPARE(encrypted::device(name(), password)->open(QIODevice::Append), password.isEmpty());
    other->unlock();
    QCOMPARE(file->write("text"), qint64(4));
    qv::FileEncryptTesting::setLockWait(0);
}

void tst_FileEncryptLock::refused_data()
{
    QTest::addColumn<QString>("password");
    QTest::addColumn<int>("mode");
    for (char const* password : {"", "secret"}) {
        char const* const kind = *password ? "encrypted" : "plain";
        QTest::addRow("not open, %s", kind) << password << int(QIODevice::NotOpen);
        QTest::addRow("open for reading, %s", kind) << password << int(QIODevice::ReadOnly);
        QTest::addRow("open for writing anywhere, %s", kind) << password << int(QIODevice::ReadWrite);
    }
}

void tst_FileEncryptLock::refused()
{
    QFETCH(QString, password);
    QFETCH(int, mode);
    QVERIFY(encrypted::device(name(), password)->open(QIODevice::Append));
    auto const file = encrypted::device(name(), password);
    QVERIFY(mode == QIODevice::NotOpen || file->open(QIODevice::OpenMode(mode)));
    QVERIFY(!file->lock());
    QVERIFY(isFree());
}

void tst_FileEncryptLock::refusedWhereAnotherKindTookTheName()
{
    QFETCH(QString, password);
    auto const file = appending();
    QVERIFY(file->lock());
    file->unlock();
    QVERIFY(QFile::remove(name()));
    auto const other = encrypted::device(name(), password.isEmpty() ? QStringLiteral("secret") : QString());
    QVERIFY(other->open(QIODevice::Append));
    QVERIFY(other->write("other") == 5);
    for (int attempt = 0; attempt < 2; ++attempt) {
        QVERIFY(!file->lock());
        QCOMPARE(file->headerError(), FileEncrypt::NotOurFormat);
        QVERIFY(isFree());
    }
}

QTEST_GUILESS_MAIN(tst_FileEncryptLock)
#include "tst_FileEncryptLock.moc"
