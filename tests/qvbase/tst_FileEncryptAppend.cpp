// SPDX-License-Identifier: LGPL-2.1-or-later
#include <qvbase/EncryptedFiles.h>

#include <QElapsedTimer>

#include <sys/wait.h>
#include <unistd.h>

using qv::FileEncrypt;
using Verified = FileEncrypt::VerifyResult;

Q_DECLARE_METATYPE(QIODevice::OpenMode)

/// Opening, appending by several, cutting, and what goes wrong on the way.
class tst_FileEncryptAppend : public QObject {
    Q_OBJECT

private slots:
    void init();
    void plainRefusesAnEncryptedFile_data();
    void plainRefusesAnEncryptedFile();
    void failureToOpenIsNoHeaderError_data();
    void failureToOpenIsNoHeaderError();
    void headerErrorIsForgotten();
    void opensAgainAfterFailure();
    void reopeningAddsNothing();
    void reopeningGoesOn();
    void oneWriteIsOneRecord();
    void sizeOfClosedFile();
    void truncatingKeepsTheFileId();
    void cutBetweenRecordsIsInPlace();
    void cutWithinARecordTakesTheName();
    void cutByOneIsSeenByAnother_data();
    void cutByOneIsSeenByAnother();
    void devicesTakeTurns_data() { passwords(); }
    void devicesTakeTurns();
    void childGoesOnWithItsDevice_data() { passwords(); }
    void childGoesOnWithItsDevice();
    void movedAsideIsLeft_data() { passwords(); }
    void movedAsideIsLeft();
    void switchedFileIsRefused_data();
    void switchedFileIsRefused();
    void readerSeesWhatIsAppended();
    void readerOfAnEmptyFileSeesItBegun();
    void readerHoldsNoLock();
    void credentialsTakeEffectAtOpen();
    void rotationDerivesNoKey();
    void verifyTellsWhatCannotBeRead();
    void verifyOfPlainDevice();
    void sync_data() { passwords(); }
    void sync();

private:
    static void passwords();
    std::unique_ptr<FileEncrypt> opened(
        QIODevice::OpenMode mode, QString const& password = QStringLiteral("secret")) const;
    QString name() const { return path("log.qvl"); }
    QString path(char const* file) const { return m_folder->filePath(QString::fromLatin1(file)); }
    QByteArray text(QString const& file, QString const& password) const;

    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_FileEncryptAppend::init()
{
    encrypted::useCheapKeys();
    m_folder = encrypted::folder();
}

void tst_FileEncryptAppend::passwords()
{
    QTest::addColumn<QString>("password");
    QTest::newRow("plain") << "";
    QTest::newRow("encrypted") << "secret";
}

std::unique_ptr<FileEncrypt> tst_FileEncryptAppend::opened(QIODevice::OpenMode mode, QString const& password) const
{
    auto file = encrypted::device(name(), password);
    if (!file->open(mode))
        qWarning("%s", qPrintable(file->errorString()));
    return file;
}

QByteArray tst_FileEncryptAppend::text(QString const& file, QString const& password) const
{
    auto const reader = encrypted::device(file, password);
    return reader->open(QIODevice::ReadOnly) ? reader->readAll() : QByteArray("not opened");
}

void tst_FileEncryptAppend::plainRefusesAnEncryptedFile_data()
{
    QTest::addColumn<QIODevice::OpenMode>("mode");
    QTest::newRow("reading") << QIODevice::OpenMode(QIODevice::ReadOnly);
    QTest::newRow("writing") << QIODevice::OpenMode(QIODevice::ReadWrite);
    QTest::newRow("appending") << QIODevice::OpenMode(QIODevice::Append);
    QTest::newRow("truncating") << QIODevice::OpenMode(QIODevice::WriteOnly | QIODevice::Truncate);
}

void tst_FileEncryptAppend::plainRefusesAnEncryptedFile()
{
    QFETCH(QIODevice::OpenMode, mode);
    encrypted::appendAll(name(), {"kept"});
    QByteArray const before = encrypted::rawBytes(name());
    FileEncrypt plain(name());
    QVERIFY(!plain.open(mode));
    QCOMPARE(plain.headerError(), FileEncrypt::NotOurFormat);
    QCOMPARE(encrypted::rawBytes(name()), before);
}

void tst_FileEncryptAppend::failureToOpenIsNoHeaderError_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QIODevice::OpenMode>("mode");
    QTest::addColumn<QString>("password");
    for (char const* password : {"", "secret"}) {
        auto const row = [password](char const* meaning, char const* file, QIODevice::OpenMode mode) {
            QTest::addRow("%s, %s", meaning, *password ? "encrypted" : "plain") << file << mode << password;
        };
        row("no such file", "missing", QIODevice::ReadOnly);
        row("no such folder, reading", "missing/file", QIODevice::ReadOnly);
        row("no such folder, appending", "missing/file", QIODevice::Append);
        row("a folder, reading", ".", QIODevice::ReadOnly);
        row("a folder, writing", ".", QIODevice::ReadWrite);
        row("must be new", "there", QIODevice::NewOnly);
        row("must exist", "missing", QIODevice::WriteOnly | QIODevice::ExistingOnly);
        row("no mode", "there", QIODevice::NotOpen);
    }
}

void tst_FileEncryptAppend::failureToOpenIsNoHeaderError()
{
    QFETCH(QString, file);
    QFETCH(QIODevice::OpenMode, mode);
    QFETCH(QString, password);
    encrypted::setRawBytes(path("there"), "not ours");
    auto const device = encrypted::device(m_folder->filePath(file), password);
    QVERIFY(!device->open(mode));
    QCOMPARE(device->headerError(), FileEncrypt::NoHeaderError);
    QCOMPARE(encrypted::rawBytes(path("there")), QByteArray("not ours"));
}

void tst_FileEncryptAppend::headerErrorIsForgotten()
{
    encrypted::setRawBytes(name(), "not ours");
    auto const file = encrypted::device(name());
    QVERIFY(!file->open(QIODevice::ReadOnly));
    QCOMPARE(file->headerError(), FileEncrypt::NotOurFormat);
    QVERIFY(QFile::remove(name()));
    QVERIFY(!file->open(QIODevice::ReadOnly));
    QCOMPARE(file->headerError(), FileEncrypt::NoHeaderError);
}

void tst_FileEncryptAppend::opensAgainAfterFailure()
{
    encrypted::setRawBytes(name(), "not ours");
    auto const file = encrypted::device(name());
    QVERIFY(!file->open(QIODevice::Append));
    QVERIFY(!file->isOpen());
    QVERIFY(QFile::remove(name()));
    QVERIFY(file->open(QIODevice::Append));
    QCOMPARE(file->write("ours"), qint64(4));
    QCOMPARE(encrypted::readBack(name()).text, QByteArray("ours"));
}

void tst_FileEncryptAppend::reopeningAddsNothing()
{
    encrypted::appendAll(name(), {"one"});
    QByteArray const before = encrypted::rawBytes(name());
    opened(QIODevice::Append);
    opened(QIODevice::ReadWrite);
    opened(QIODevice::ReadOnly);
    QCOMPARE(encrypted::rawBytes(name()), before);
}

void tst_FileEncryptAppend::reopeningGoesOn()
{
    QByteArray expected;
    for (int i = 0; i < 20; ++i) {
        QByteArray const entry = QByteArray::number(i) + '\n';
        encrypted::appendAll(name(), {entry});
        expected += entry;
    }
    QCOMPARE(encrypted::readBack(name()).text, expected);
    QCOMPARE(int(encrypted::verified(name()).result), int(Verified::Intact));
}

void tst_FileEncryptAppend::oneWriteIsOneRecord()
{
    encrypted::appendAll(name(), {"a", QByteArray(100000, 'b'), QByteArray(1048576, 'c'), QByteArray(1048577, 'd')});
    QVector<int> sizes;
    for (QByteArray const& record : encrypted::recordsOf(encrypted::rawBytes(name())))
        sizes << record.size() - 64;
    QCOMPARE(sizes, (QVector<int>{32, 1, 100000, 1048576, 1048576, 1}));
}

void tst_FileEncryptAppend::sizeOfClosedFile()
{
    auto const file = encrypted::device(name());
    QCOMPARE(file->size(), qint64(0));
    encrypted::appendAll(name(), {"abc", "def"});
    QCOMPARE(file->size(), qint64(6));
}

void tst_FileEncryptAppend::truncatingKeepsTheFileId()
{
    encrypted::appendAll(name(), {"old"});
    QByteArray const header = encrypted::rawBytes(name()).left(encrypted::HeaderLength);
    opened(QIODevice::WriteOnly);
    QCOMPARE(encrypted::rawBytes(name()), header);
    QCOMPARE(encrypted::readBack(name()).text, QByteArray());
}

void tst_FileEncryptAppend::cutBetweenRecordsIsInPlace()
{
    encrypted::appendAll(name(), {"entry", "end tag"});
    QVector<QByteArray> const records = encrypted::recordsOf(encrypted::rawBytes(name()));
    QByteArray const kept = encrypted::joined(encrypted::rawBytes(name()), records.mid(0, 2));
    QFile watcher(name());
    QVERIFY(watcher.open(QIODevice::ReadOnly));
    QVERIFY(opened(QIODevice::ReadWrite)->resize(5));
    QCOMPARE(watcher.readAll(), kept);
}

void tst_FileEncryptAppend::cutWithinARecordTakesTheName()
{
    encrypted::appendAll(name(), {"entry", "end tag"});
    QByteArray const before = encrypted::rawBytes(name());
    QFile watcher(name());
    QVERIFY(watcher.open(QIODevice::ReadOnly));
    QVERIFY(opened(QIODevice::ReadWrite)->resize(8));
    // Who had it open still has it whole.
    QCOMPARE(watcher.readAll(), before);
    QCOMPARE(encrypted::readBack(name()).text, QByteArray("entryend"));
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files), QStringList(QStringLiteral("log.qvl")));
}

void tst_FileEncryptAppend::cutByOneIsSeenByAnother_data()
{
    QTest::addColumn<int>("size");
    QTest::newRow("to nothing") << 0;
    QTest::newRow("between two records") << 3;
    QTest::newRow("within a record") << 5;
    QTest::newRow("within the first record") << 1;
}

void tst_FileEncryptAppend::cutByOneIsSeenByAnother()
{
    QFETCH(int, size);
    auto const other = opened(QIODevice::Append);
    auto const cutter = opened(QIODevice::Append);
    QCOMPARE(other->write("abc"), qint64(3));
    QCOMPARE(other->write("def"), qint64(3));
    QVERIFY(cutter->resize(size));
    QCOMPARE(other->write("other"), qint64(5));
    QCOMPARE(cutter->write("cutter"), qint64(6));
    QCOMPARE(encrypted::readBack(name()).text, QByteArray("abcdef").left(size) + "othercutter");
    QCOMPARE(int(encrypted::verified(name()).result), int(Verified::Intact));
}

void tst_FileEncryptAppend::devicesTakeTurns()
{
    QFETCH(QString, password);
    auto const first = opened(QIODevice::Append, password);
    auto const second = opened(QIODevice::Append, password);
    QByteArray expected;
    for (int i = 0; i < 100; ++i) {
        QByteArray const entry = QByteArray::number(i) + ' ';
        QCOMPARE((i % 3 ? first : second)->write(entry), qint64(entry.size()));
        expected += entry;
    }
    QCOMPARE(text(name(), password), expected);
    QCOMPARE(first->size(), qint64(expected.size()));
}

void tst_FileEncryptAppend::childGoesOnWithItsDevice()
{
    QFETCH(QString, password);
    auto const file = opened(QIODevice::Append, password);
    QCOMPARE(file->write("parent "), qint64(7));
    pid_t const child = ::fork();
    if (child == 0)
        ::_exit(file->write("child ") == 6 && file->write("child ") == 6 ? 0 : 1);
    int status = -1;
    QCOMPARE(::waitpid(child, &status, 0), child);
    QCOMPARE(status, 0);
    QCOMPARE(file->write("parent"), qint64(6));
    QCOMPARE(text(name(), password), QByteArray("parent child child parent"));
}

void tst_FileEncryptAppend::movedAsideIsLeft()
{
    QFETCH(QString, password);
    auto const file = opened(QIODevice::Append, password);
    auto const other = opened(QIODevice::Append, password);
    QCOMPARE(file->write("old"), qint64(3));
    QVERIFY(QFile::rename(name(), path("aside")));
    QCOMPARE(file->write("new"), qint64(3));
    QCOMPARE(other->write("er"), qint64(2));
    QCOMPARE(text(path("aside"), password), QByteArray("old"));
    QCOMPARE(text(name(), password), QByteArray("newer"));
}

void tst_FileEncryptAppend::switchedFileIsRefused_data()
{
    QTest::addColumn<QString>("password");
    QTest::addColumn<QString>("otherPassword");
    QTest::addColumn<int>("error");
    QTest::newRow("plain to encrypted") << ""
                                        << "secret" << int(FileEncrypt::NotOurFormat);
    QTest::newRow("encrypted to plain") << "secret"
                                        << "" << int(FileEncrypt::NotOurFormat);
    QTest::newRow("another password") << "secret"
                                      << "other" << int(FileEncrypt::WrongCredentials);
}

void tst_FileEncryptAppend::switchedFileIsRefused()
{
    QFETCH(QString, password);
    QFETCH(QString, otherPassword);
    auto const file = opened(QIODevice::Append, password);
    QVERIFY(QFile::rename(name(), path("aside")));
    auto const other = opened(QIODevice::Append, otherPassword);
    QCOMPARE(other->write("taken"), qint64(5));
    for (int attempt = 0; attempt < 2; ++attempt) {
        QCOMPARE(file->write("x"), qint64(-1));
        QTEST(int(file->headerError()), "error");
    }
    QCOMPARE(text(name(), otherPassword), QByteArray("taken"));
    QVERIFY(QFile::remove(name()));
    QCOMPARE(file->write("x"), qint64(1));
}

void tst_FileEncryptAppend::readerSeesWhatIsAppended()
{
    auto const writer = opened(QIODevice::Append);
    auto const reader = opened(QIODevice::ReadOnly);
    for (char const* entry : {"one\n", "two\n", "three\n"}) {
        QCOMPARE(reader->readAll(), QByteArray());
        QVERIFY(writer->write(entry) > 0);
        QVERIFY(!reader->atEnd());
        QCOMPARE(reader->readLine(), QByteArray(entry));
        QVERIFY(reader->atEnd());
    }
}

void tst_FileEncryptAppend::readerOfAnEmptyFileSeesItBegun()
{
    encrypted::setRawBytes(name(), {});
    auto const reader = opened(QIODevice::ReadOnly);
    QVERIFY(reader->isOpen());
    QCOMPARE(reader->size(), qint64(0));
    encrypted::appendAll(name(), {"begun"});
    QCOMPARE(reader->readAll(), QByteArray("begun"));
}

void tst_FileEncryptAppend::readerHoldsNoLock()
{
    encrypted::appendAll(name(), {"abc"});
    auto const reader = opened(QIODevice::ReadOnly);
    QCOMPARE(reader->read(1), QByteArray("a"));
    encrypted::appendAll(name(), {"def"});
    QCOMPARE(reader->readAll(), QByteArray("bcdef"));
}

void tst_FileEncryptAppend::credentialsTakeEffectAtOpen()
{
    auto const file = opened(QIODevice::Append);
    file->setFileUserPassword(QStringLiteral("bob"), QStringLiteral("other"));
    QCOMPARE(file->write("abc"), qint64(3));
    QVERIFY(QFile::rename(name(), path("aside")));
    QCOMPARE(file->write("def"), qint64(3));
    QCOMPARE(encrypted::readBack(name()).text, QByteArray("def"));
    file->close();
    QVERIFY(!file->open(QIODevice::Append));
    QCOMPARE(file->headerError(), FileEncrypt::WrongCredentials);
}

void tst_FileEncryptAppend::rotationDerivesNoKey()
{
    // Half a second each, were it done again for every file.
    qv::FileEncryptTesting::setScryptCost(15, 8, 3);
    opened(QIODevice::Append);
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < 20; ++i) {
        QVERIFY(QFile::rename(name(), path("aside") + QString::number(i)));
        opened(QIODevice::Append);
    }
    QVERIFY2(timer.elapsed() < 2000, qPrintable(QString::number(timer.elapsed())));
}

void tst_FileEncryptAppend::verifyTellsWhatCannotBeRead()
{
    QCOMPARE(int(encrypted::verified(name()).result), int(Verified::NotReadable));
    QVERIFY(!encrypted::verified(name()).text.isEmpty());
    encrypted::setRawBytes(name(), {});
    QCOMPARE(int(encrypted::verified(name()).result), int(Verified::Intact));
}

void tst_FileEncryptAppend::verifyOfPlainDevice()
{
    encrypted::setRawBytes(name(), "plain");
    Verified const result = FileEncrypt(name()).verify();
    QCOMPARE(int(result.result), int(Verified::HeaderRefused));
    QVERIFY(!result.text.isEmpty());
}

void tst_FileEncryptAppend::sync()
{
    QFETCH(QString, password);
    auto const file = encrypted::device(name(), password);
    QVERIFY(!file->sync());
    QVERIFY(file->open(QIODevice::Append));
    QCOMPARE(file->write("abc"), qint64(3));
    QVERIFY(file->sync());
    QVERIFY(file->sync());
    QVERIFY(file->flush());
}

QTEST_GUILESS_MAIN(tst_FileEncryptAppend)
#include "tst_FileEncryptAppend.moc"
