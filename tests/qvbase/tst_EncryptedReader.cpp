// SPDX-License-Identifier: LGPL-2.1-or-later
#include <qvbase/FileEncrypt.h>
#include <qvbase/FileEncryptTesting_p.h>

#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <QTextCodec>

#include <memory>

using qv::FileEncrypt;

namespace {

struct Reading {
    int exitCode = -1;
    QByteArray text;
    QByteArray complaint;
};

} // namespace

/// What the device writes, read by a program that knows nothing but the description of the format.
class tst_EncryptedReader : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void writesAreRead_data();
    void writesAreRead();
    void sessionsAreRead();
    void alternatingDevicesAreRead();
    void fullCostIsRead();
    void shortenedFileIsRead_data();
    void shortenedFileIsRead();
    void credentialsBeyondAsciiAreRead_data();
    void credentialsBeyondAsciiAreRead();
    void changeIsComplainedAbout_data();
    void changeIsComplainedAbout();
    void wrongCredentialsAreComplainedAbout_data();
    void wrongCredentialsAreComplainedAbout();

private:
    QString path() const { return m_dir->filePath("log"); }
    void append(QByteArrayList const& writes, QString const& user = "ann", QString const& password = "secret");
    void flipBit(qint64 offset);
    Reading read(QString const& user = "ann", QString const& password = "secret") const;

    std::unique_ptr<QTemporaryDir> m_dir;
};

void tst_EncryptedReader::initTestCase()
{
    QTextCodec::setCodecForLocale(
        QTextCodec::codecForName("UTF-8")); // Arguments of programs are in that of the locale.
}

void tst_EncryptedReader::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
    qv::FileEncryptTesting::setScryptCost(4, 1, 1);
}

void tst_EncryptedReader::append(QByteArrayList const& writes, QString const& user, QString const& password)
{
    FileEncrypt file(path());
    file.setFileUserPassword(user, password);
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Append));
    for (QByteArray const& bytes : writes)
        QCOMPARE(file.write(bytes), qint64{bytes.size()});
}

void tst_EncryptedReader::flipBit(qint64 offset)
{
    QFile file(path());
    QVERIFY(file.open(QIODevice::ReadWrite));
    qint64 const position = offset < 0 ? file.size() + offset : offset;
    QVERIFY(file.seek(position));
    char byte = 0;
    QVERIFY(file.getChar(&byte) && file.seek(position));
    QVERIFY(file.putChar(static_cast<char>(byte ^ 1)));
}

Reading tst_EncryptedReader::read(QString const& user, QString const& password) const
{
    QProcess process;
    process.start(SYSTEM_PYTHON, {ENCRYPTED_READER, path(), user, password});
    if (!process.waitForFinished() || process.exitStatus() != QProcess::NormalExit)
        return {};
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

void tst_EncryptedReader::writesAreRead_data()
{
    QTest::addColumn<QByteArrayList>("writes");

    QByteArray everyByte;
    for (int byte = 0; byte < 256; ++byte)
        everyByte += static_cast<char>(byte);
    QByteArrayList lines;
    for (int i = 0; i < 200; ++i)
        lines += "line " + QByteArray::number(i) + '\n';

    QTest::newRow("nothing") << QByteArrayList();
    QTest::newRow("one byte") << QByteArrayList{"x"};
    QTest::newRow("one line") << QByteArrayList{"a line\n"};
    QTest::newRow("200 lines") << lines;
    QTest::newRow("every byte") << QByteArrayList{everyByte, everyByte};
    QTest::newRow("as much as a record holds") << QByteArrayList{QByteArray(1048576, 'a'), "end"};
    QTest::newRow("a byte more than a record holds") << QByteArrayList{QByteArray(1048577, 'a'), "end"};
    QTest::newRow("three records at once") << QByteArrayList{QByteArray(2500000, 'b'), "end"};
}

void tst_EncryptedReader::writesAreRead()
{
    QFETCH(QByteArrayList, writes);
    append(writes);
    Reading const reading = read();
    QCOMPARE(reading.complaint, QByteArray());
    QCOMPARE(reading.exitCode, 0);
    QCOMPARE(reading.text, writes.join());
}

void tst_EncryptedReader::sessionsAreRead()
{
    append({"one\n", "two\n"});
    append({});
    append({"three\n"});
    Reading const reading = read();
    QCOMPARE(reading.complaint, QByteArray());
    QCOMPARE(reading.text, QByteArray("one\ntwo\nthree\n"));
}

void tst_EncryptedReader::alternatingDevicesAreRead()
{
    FileEncrypt first(path());
    FileEncrypt second(path());
    for (FileEncrypt* file : {&first, &second}) {
        file->setFileUserPassword("ann", "secret");
        QVERIFY(file->open(QIODevice::WriteOnly | QIODevice::Append));
    }
    for (int i = 0; i < 3; ++i) {
        QCOMPARE(first.write("first\n"), qint64{6});
        QCOMPARE(second.write("second\n"), qint64{7});
    }
    Reading const reading = read();
    QCOMPARE(reading.complaint, QByteArray());
    QCOMPARE(reading.text, QByteArray("first\nsecond\nfirst\nsecond\nfirst\nsecond\n"));
}

void tst_EncryptedReader::fullCostIsRead()
{
    qv::FileEncryptTesting::setScryptCost(15, 8, 3);
    append({"dear\n"});
    QCOMPARE(read().text, QByteArray("dear\n"));
}

void tst_EncryptedReader::shortenedFileIsRead_data()
{
    QTest::addColumn<qint64>("size");

    QTest::newRow("between two records") << qint64{4};
    QTest::newRow("within a record") << qint64{6};
    QTest::newRow("to nothing") << qint64{0};
}

void tst_EncryptedReader::shortenedFileIsRead()
{
    QFETCH(qint64, size);
    append({"one\n", "two\n", "three\n"});
    FileEncrypt file(path());
    file.setFileUserPassword("ann", "secret");
    QVERIFY(file.open(QIODevice::ReadWrite) && file.resize(size));
    file.close();
    append({"four\n"});
    Reading const reading = read();
    QCOMPARE(reading.complaint, QByteArray());
    QCOMPARE(reading.text, QByteArray("one\ntwo\nthree\n").left(static_cast<int>(size)) + "four\n");
}

void tst_EncryptedReader::credentialsBeyondAsciiAreRead_data()
{
    QTest::addColumn<QString>("user");
    QTest::addColumn<QString>("password");

    QTest::newRow("no user") << ""
                             << "secret";
    QTest::newRow("user beyond ASCII") << QString::fromUtf8("J\u00f6rg") << "secret";
    QTest::newRow("password beyond ASCII") << "ann" << QString::fromUtf8("p\u00e4ssw\u00f6rd \U0001f511");
    QTest::newRow("password with blanks") << "ann"
                                          << " two words ";
    QTest::newRow("password of a thousand letters") << "ann" << QString(1000, 'x');
}

void tst_EncryptedReader::credentialsBeyondAsciiAreRead()
{
    QFETCH(QString, user);
    QFETCH(QString, password);
    append({"text"}, user, password);
    Reading const reading = read(user, password);
    QCOMPARE(reading.complaint, QByteArray());
    QCOMPARE(reading.text, QByteArray("text"));
}

void tst_EncryptedReader::changeIsComplainedAbout_data()
{
    QTest::addColumn<qint64>("offset"); // below 0: from the end of the file
    QTest::addColumn<QByteArray>("complaint");

    // Header 128 bytes, session record 64 + 32, data record 64 + 4.
    QTest::newRow("magic") << qint64{0} << QByteArray("no encrypted file\n");
    QTest::newRow("salt of the password") << qint64{28} << QByteArray("header: checksum\n");
    QTest::newRow("salt of the session") << qint64{128 + 44} << QByteArray("record 0 at 128: tag\n");
    QTest::newRow("index of a record") << qint64{224 + 8} << QByteArray("record 1 at 224: checksum\n");
    QTest::newRow("text") << qint64{224 + 44} << QByteArray("record 1 at 224: tag\n");
    QTest::newRow("tag") << qint64{-5} << QByteArray("record 1 at 224: tag\n");
    QTest::newRow("length at the end") << qint64{-4} << QByteArray("record 1 at 224: length\n");
}

void tst_EncryptedReader::changeIsComplainedAbout()
{
    QFETCH(qint64, offset);
    append({"text"});
    flipBit(offset);
    Reading const reading = read();
    QTEST(reading.complaint, "complaint");
    QCOMPARE(reading.text, QByteArray());
    QCOMPARE(reading.exitCode, 1);
}

void tst_EncryptedReader::wrongCredentialsAreComplainedAbout_data()
{
    QTest::addColumn<QString>("user");
    QTest::addColumn<QString>("password");

    QTest::newRow("another password") << "ann"
                                      << "Secret";
    QTest::newRow("another user") << "bob"
                                  << "secret";
    QTest::newRow("no user") << ""
                             << "secret";
}

void tst_EncryptedReader::wrongCredentialsAreComplainedAbout()
{
    QFETCH(QString, user);
    QFETCH(QString, password);
    append({"text"});
    QCOMPARE(read(user, password).complaint, QByteArray("wrong user or password\n"));
}

QTEST_GUILESS_MAIN(tst_EncryptedReader)
#include "tst_EncryptedReader.moc"
