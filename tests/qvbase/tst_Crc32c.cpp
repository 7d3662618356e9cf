// SPDX-License-Identifier: LGPL-2.1-or-later
#include <qvbase/Crc32c_p.h>
#include <qvbase/Octets.h>

#include <QTest>

namespace {

QByteArray counted(int from, int step)
{
    QByteArray bytes(32, '\0');
    for (int i = 0; i < bytes.size(); ++i)
        bytes[i] = char(from + step * i);
    return bytes;
}

} // namespace

class tst_Crc32c : public QObject {
    Q_OBJECT

private slots:
    void isThatOfTheStandard_data();
    void isThatOfTheStandard();
    void isTheSameWithAndWithoutTheInstruction();
};

void tst_Crc32c::isThatOfTheStandard_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<quint32>("expected");
    // RFC 3720, appendix B.4; the check value of the catalogues of CRCs; and nothing at all.
    QTest::newRow("32 zeros") << QByteArray(32, '\0') << 0x8A9136AAu;
    QTest::newRow("32 ones") << QByteArray(32, '\xFF') << 0x62A8AB43u;
    QTest::newRow("ascending") << counted(0, 1) << 0x46DD794Eu;
    QTest::newRow("descending") << counted(31, -1) << 0x113FDB5Cu;
    QTest::newRow("an iSCSI read command") << QByteArray::fromHex(
        "01c00000000000000000000000000000140000000000040000000014000000182800000000000000"
        "0200000000000000") << 0xD9963A56u;
    QTest::newRow("check value") << QByteArray("123456789") << 0xE3069283u;
    QTest::newRow("nothing") << QByteArray() << 0u;
}

void tst_Crc32c::isThatOfTheStandard()
{
    QFETCH(QByteArray, bytes);
    QFETCH(quint32, expected);
    QCOMPARE(qv::crc32c(octets(bytes), bytes.size()), expected);
    QCOMPARE(qv::crc32cByTables(octets(bytes), bytes.size()), expected);
}

void tst_Crc32c::isTheSameWithAndWithoutTheInstruction()
{
    QByteArray bytes;
    for (int i = 0; i < 300; ++i)
        bytes += char(i * 167 + i / 7);
    for (int from = 0; from < 9; ++from) {
        for (int size = 0; from + size <= bytes.size(); ++size)
            QCOMPARE(qv::crc32c(octets(bytes) + from, size), qv::crc32cByTables(octets(bytes) + from, size));
    }
}

QTEST_GUILESS_MAIN(tst_Crc32c)
#include "tst_Crc32c.moc"
