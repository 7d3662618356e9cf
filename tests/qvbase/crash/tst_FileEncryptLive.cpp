// SPDX-License-Identifier: LGPL-2.1-or-later
#include "Folder.h"
#include "SystemCalls.h"

#include <QTest>

#include <functional>

using crash::Mode;
using Verified = qv::FileEncrypt::VerifyResult;

namespace {

constexpr char fileName[] = "log.qvl";
constexpr int headerLength = 128;

QByteArray entry(char letter)
{
    return QByteArray(40, letter);
}

/// To the end or the first fault.
struct Reading {
    explicit Reading(qv::FileEncrypt& device)
    {
        QByteArray piece(100, '\0');
        qint64 count = 0;
        while ((count = device.read(piece.data(), piece.size())) > 0)
            text += piece.left(int(count));
        hasFailed = count < 0;
    }
    QByteArray text;
    bool hasFailed;
};

} // namespace

/// What a reader sees of a file that another process writes: it takes no lock, and meets half of a write.
class tst_FileEncryptLive : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void writeThatIsCompletedMeanwhile_data();
    void writeThatIsCompletedMeanwhile();

private:
    QString path() const { return m_folder.path(QString::fromLatin1(fileName)); }
    void append(QByteArray const& text) const;
    void addRaw(QByteArray const& bytes) const;

    crash::Folder const m_folder;
    /// Where the last write begins, and all of the file.
    int m_begin = 0;
    QByteArray m_whole;
};

void tst_FileEncryptLive::initTestCase()
{
    append(entry('a'));
    m_begin = m_folder.files().value(fileName).size();
    // A record of its session, and one with the text.
    append(entry('b'));
    m_whole = m_folder.files().value(fileName);
    QCOMPARE(m_whole.size(), headerLength + 2 * (96 + 64 + 40));
}

void tst_FileEncryptLive::append(QByteArray const& text) const
{
    qv::FileEncrypt device(path());
    crash::prepare(device, Mode::Encrypted);
    QVERIFY(device.open(QIODevice::Append));
    QCOMPARE(device.write(text), qint64(text.size()));
}

void tst_FileEncryptLive::addRaw(QByteArray const& bytes) const
{
    QFile file(path());
    QVERIFY(file.open(QIODevice::Append));
    QCOMPARE(file.write(bytes), qint64(bytes.size()));
}

void tst_FileEncryptLive::writeThatIsCompletedMeanwhile_data()
{
    QTest::addColumn<int>("written");
    QTest::newRow("a byte") << 1;
    QTest::newRow("part of the session's record") << 70;
    QTest::newRow("the session's record and a byte") << 96 + 1;
    QTest::newRow("part of a header") << 96 + 20;
    QTest::newRow("a header") << 96 + 44;
    QTest::newRow("the text, too") << 96 + 44 + 40;
    QTest::newRow("all but a byte") << 96 + 64 + 40 - 1;
}

/// Between any two calls that the reader makes, who has read all before it.
void tst_FileEncryptLive::writeThatIsCompletedMeanwhile()
{
    QFETCH(int, written);
    bool isCompleted = true;
    for (long call = 0; isCompleted; ++call) {
        m_folder.hold({{fileName, m_whole.left(m_begin)}});
        qv::FileEncrypt device(path());
        crash::prepare(device, Mode::Encrypted);
        QVERIFY(device.open(QIODevice::ReadOnly));
        QCOMPARE(Reading(device).text, entry('a'));
        addRaw(m_whole.mid(m_begin, written));

        isCompleted = false;
        calls::watch(m_folder.path().toStdString());
        calls::intervene(call, [&] {
            addRaw(m_whole.mid(m_begin + written));
            isCompleted = true;
        });
        Reading const reading(device);
        Verified const verified = device.verify();
        calls::heal();
        calls::stopWatching();
        QVERIFY2(!reading.hasFailed, qPrintable(QStringLiteral("call %1").arg(call)));
        QVERIFY(reading.text.isEmpty() || (isCompleted && reading.text == entry('b')));
        QVERIFY(verified.result == Verified::Torn || (isCompleted && verified.result == Verified::Intact));
        QVERIFY(call > 0 || isCompleted);
    }
}

QTEST_GUILESS_MAIN(tst_FileEncryptLive)
#include "tst_FileEncryptLive.moc"
