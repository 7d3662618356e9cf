// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/actionlog/FourChars.h>

#include <QTest>
#include <QTextStream>

#include <type_traits>

using qv::FourChars;

static_assert(sizeof(FourChars) == 4 && std::is_trivially_copyable_v<FourChars>);
static_assert(std::is_convertible_v<QString, FourChars>);
static_assert(FourChars("ALog").value() == 0x414C6F67);
static_assert(FourChars().value() == 0x20202020);
static_assert(FourChars("\xE4\xF6\xFC\xFF").value() == 0xE4F6FCFF);

class TestFourChars : public QObject {
    Q_OBJECT

private slots:
    void ofText_data();
    void ofText();
    void ofPointer();
    void ofBytes_data();
    void ofBytes();
    void toText_data();
    void toText();
    void comparisons_data();
    void comparisons();
};

void TestFourChars::ofText_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<quint32>("value");
    QTest::newRow("four characters") << QStringLiteral("ALog") << 0x414C6F67U;
    QTest::newRow("another one") << QStringLiteral("Time") << 0x54696D65U;
    QTest::newRow("null") << QString() << 0x20202020U;
    QTest::newRow("empty") << QStringLiteral("") << 0x20202020U;
    QTest::newRow("one, filled up with blanks") << QStringLiteral("a") << 0x61202020U;
    QTest::newRow("two, filled up with blanks") << QStringLiteral("ab") << 0x61622020U;
    QTest::newRow("three, filled up with a blank") << QStringLiteral("abc") << 0x61626320U;
    QTest::newRow("more than four, cut") << QStringLiteral("ExportX") << 0x4578706FU;
    QTest::newRow("the root's name, cut") << QStringLiteral("Entries") << 0x456E7472U;
    QTest::newRow("Latin-1 beyond ASCII") << QStringLiteral(u"\u00E4\u00FF\u0080\u00DF") << 0xE4FF80DFU;
    QTest::newRow("beyond Latin-1") << QStringLiteral(u"a\u20ACb") << 0x613F6220U;
    QTest::newRow("zero first") << QString(QLatin1String("\0src", 4)) << 0x00737263U;
    QTest::newRow("megabytes") << QString(4 << 20, QLatin1Char('x')) << 0x78787878U;
}

void TestFourChars::ofText()
{
    QFETCH(QString, text);
    QFETCH(quint32, value);
    QCOMPARE(FourChars(text).value(), value);
    QCOMPARE(FourChars(&text).value(), value);
}

void TestFourChars::ofPointer()
{
    QString const* const none = nullptr;
    QCOMPARE(FourChars(none), FourChars("    "));
}

void TestFourChars::ofBytes_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArray>("extended");
    QTest::addColumn<quint32>("value");
    QTest::newRow("none") << QByteArray() << QByteArray("    ") << 0x20202020U;
    QTest::newRow("three") << QByteArray("src") << QByteArray("src ") << 0x73726320U;
    QTest::newRow("four") << QByteArray("srcP") << QByteArray("srcP") << 0x73726350U;
    QTest::newRow("five") << QByteArray("srcPX") << QByteArray("srcPX") << 0x73726350U;
}

void TestFourChars::ofBytes()
{
    QFETCH(QByteArray, bytes);
    QFETCH(quint32, value);
    FourChars code;
    code.initFourChars(bytes);
    QCOMPARE(code.value(), value);
    QTEST(bytes, "extended");
}

void TestFourChars::toText_data()
{
    QTest::addColumn<quint32>("value");
    QTest::addColumn<QString>("text");
    QTest::newRow("no code") << 0x20202020U << QStringLiteral("    ");
    QTest::newRow("trailing blanks are kept") << 0x61622020U << QStringLiteral("ab  ");
    QTest::newRow("leading zero is kept") << 0x00737263U << QString(QLatin1String("\0src", 4));
    QTest::newRow("zeros") << 0U << QString(4, QLatin1Char('\0'));
    QTest::newRow("Latin-1") << 0xE4FF80DFU << QStringLiteral(u"\u00E4\u00FF\u0080\u00DF");
}

void TestFourChars::toText()
{
    QFETCH(quint32, value);
    QFETCH(QString, text);
    FourChars const code(value);
    QCOMPARE(code.toString(), text);
    QCOMPARE(code.toString().size(), 4);
    QCOMPARE(FourChars(code.toString()), code);
    QString written;
    QTextStream stream(&written);
    code.writeTo(stream);
    stream.flush();
    QCOMPARE(written, text);
}

void TestFourChars::comparisons_data()
{
    QTest::addColumn<quint32>("left");
    QTest::addColumn<quint32>("right");
    QTest::addColumn<int>("order");
    QTest::newRow("upper before lower case") << FourChars("ALog").value() << FourChars("aLog").value() << -1;
    QTest::newRow("equal") << FourChars("ALog").value() << 0x414C6F67U << 0;
    QTest::newRow("last character decides") << FourChars("ALoh").value() << FourChars("ALog").value() << 1;
    QTest::newRow("unsigned") << 0xE4202020U << 0x7A202020U << 1;
    QTest::newRow("first character counts most") << 0x41FFFFFFU << 0x42000000U << -1;
}

void TestFourChars::comparisons()
{
    QFETCH(quint32, left);
    QFETCH(quint32, right);
    QFETCH(int, order);
    FourChars const a(left);
    FourChars const b(right);
    QCOMPARE(a == b, order == 0);
    QCOMPARE(a != b, order != 0);
    QCOMPARE(a < b, order < 0);
    QCOMPARE(a <= b, order <= 0);
    QCOMPARE(a > b, order > 0);
    QCOMPARE(a >= b, order >= 0);
    QCOMPARE(b<a, order> 0);
}

QTEST_APPLESS_MAIN(TestFourChars)
#include "tst_FourChars.moc"
