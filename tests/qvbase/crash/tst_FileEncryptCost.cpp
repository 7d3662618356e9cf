// SPDX-License-Identifier: LGPL-2.1-or-later
#include "Folder.h"
#include "SystemCalls.h"

#include <QTest>

using crash::Mode;

namespace {

constexpr int headerLength = 128;
constexpr int sessionLength = 96;
constexpr int recordHeaderLength = 44;
constexpr int mebibyte = 1 << 20;

QByteArray entry()
{
    return QByteArray(250, 'x');
}

QByteArray fileOf(crash::Folder const& folder, QList<QByteArray> const& writes)
{
    folder.hold({});
    qv::FileEncrypt device(folder.path(QStringLiteral("log.qvl")));
    crash::prepare(device, Mode::Encrypted);
    if (!device.open(QIODevice::Append))
        return {};
    for (QByteArray const& text : writes)
        device.write(text);
    device.close();
    return folder.files().value("log.qvl");
}

QByteArray repeated(QByteArray const& piece, int size)
{
    return piece.repeated(size / piece.size());
}

/// How many calls of the system on the file it takes to open it; -1 where that fails.
long callsToOpen(crash::Folder const& folder, QIODevice::OpenMode mode)
{
    qv::FileEncrypt device(folder.path(QStringLiteral("log.qvl")));
    crash::prepare(device, Mode::Encrypted);
    calls::watch(folder.path().toStdString());
    calls::inject({});
    bool const isOpen = device.open(mode);
    long const made = calls::heal();
    calls::stopWatching();
    return isOpen ? made : -1;
}

} // namespace

/// What opening an encrypted file costs, counted in calls of the system.
class tst_FileEncryptCost : public QObject {
    Q_OBJECT

private slots:
    void openingForAppend_data();
    void openingForAppend();
    void searchingAHostileEnd_data();
    void searchingAHostileEnd();

private:
    crash::Folder const m_folder;
};

void tst_FileEncryptCost::openingForAppend_data()
{
    QTest::addColumn<QList<QByteArray>>("writes");

    QList<QByteArray> thousands;
    for (int i = 0; i < 5000; ++i)
        thousands.append(entry());
    QTest::newRow("two entries") << QList<QByteArray>{entry(), entry()};
    QTest::newRow("5000 entries") << thousands;
    QTest::newRow("an entry behind 20 MiB") << QList<QByteArray>{QByteArray(20 * mebibyte, 'x'), entry()};
}

void tst_FileEncryptCost::openingForAppend()
{
    QFETCH(QList<QByteArray>, writes);
    fileOf(m_folder, {});
    long const ofEmpty = callsToOpen(m_folder, QIODevice::Append);
    QVERIFY(ofEmpty > 0);

    QVERIFY(!fileOf(m_folder, writes).isEmpty());
    long const made = callsToOpen(m_folder, QIODevice::Append);
    // The last record, and that of its session.
    QVERIFY2(made > 0 && made <= ofEmpty + 2, qPrintable(QStringLiteral("%1, empty %2").arg(made).arg(ofEmpty)));
}

void tst_FileEncryptCost::searchingAHostileEnd_data()
{
    QTest::addColumn<QByteArray>("end");

    QByteArray const file = fileOf(m_folder, {entry()});
    QByteArray const data = file.mid(headerLength + sessionLength);
    QCOMPARE(data.size(), 64 + 250);
    QTest::newRow("lengths of 260") << repeated(QByteArray::fromHex("04010000"), 2 * mebibyte);
    QTest::newRow("the greatest length") << repeated(QByteArray::fromHex("40001000"), 2 * mebibyte);
    QTest::newRow("headers without their records") << repeated(data.left(recordHeaderLength), 2 * mebibyte);
    QTest::newRow("records with a wrong tag") << repeated(data, 2 * mebibyte);
    QTest::newRow("records with a wrong tag, a byte apart") << repeated(data + '\0', 2 * mebibyte);
    QTest::newRow("zeros") << QByteArray(2 * mebibyte, '\0');
    QTest::newRow("ones") << QByteArray(2 * mebibyte, '\xff');
}

void tst_FileEncryptCost::searchingAHostileEnd()
{
    QFETCH(QByteArray, end);
    QByteArray const file = fileOf(m_folder, {entry()});
    m_folder.hold({{"log.qvl", file + end}});

    long const made = callsToOpen(m_folder, QIODevice::ReadOnly);
    // From the end and from its start, in pieces of 1 MiB each; and what opening the file takes without it.
    QVERIFY2(made > 0 && made <= 2 * 3 + 20, qPrintable(QString::number(made)));
}

QTEST_GUILESS_MAIN(tst_FileEncryptCost)

#include "tst_FileEncryptCost.moc"
