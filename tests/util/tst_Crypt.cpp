// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/util/Crypt.h>

#include "SaltsOfSeconds.h"

#include <QTest>

#include <array>
#include <cstdlib>
#include <memory>

using qvgen::Crypt;

namespace {
QString reentrant(QString const& password, QByteArray const& salt)
{
    std::array<char, 14> out;
    out.fill('#');
    char const* const result = Crypt::crypt_r(password.toLatin1().constData(), salt.constData(), out.data());
    return result == out.data() && out.back() == '\0' ? QString::fromLatin1(result) : QStringLiteral("not in out");
}

/// The salt as a hash shows it: a missing character is "G".
QString asShown(QByteArray const& salt)
{
    return QString::fromLatin1(salt.left(2).leftJustified(2, 'G'));
}

} // namespace

class tst_Crypt : public QObject {
    Q_OBJECT

private slots:
    void knownHashes_data();
    void knownHashes();
    void passwordIsLatin1_data();
    void passwordIsLatin1();
    void zeroCharacterIsAnEmptyPlace();
    void nothingWithNothingIsHashed();
    void oddSalts_data();
    void oddSalts();
    void hashIsItsOwnSalt_data();
    void hashIsItsOwnSalt();
    void saltlessHashHasOneSalt_data();
    void saltlessHashHasOneSalt();
    void to64WritesTheLowestFirst_data();
    void to64WritesTheLowestFirst();
    void opensslsHashes();
    void opensslRefusesOddSalts();
    void md5OfKnownTexts_data();
    void md5OfKnownTexts();
};

void tst_Crypt::knownHashes_data()
{
    QTest::addColumn<QString>("password");
    QTest::addColumn<QByteArray>("salt");
    QTest::addColumn<QString>("hash");

    QTest::newRow("one letter") << "p" << QByteArray("ab") << "ab8Smhzf5D4wA";
    QTest::newRow("nothing") << "" << QByteArray("ab") << "abmF1QH4PEr.E";
    QTest::newRow("nothing, another salt") << "" << QByteArray("SD") << "SDbsugeBiC58A";
    QTest::newRow("eight letters") << "password" << QByteArray("ab") << "abJnggxhB/yWI";
    QTest::newRow("more than eight") << "password and more" << QByteArray("ab") << "abJnggxhB/yWI";
    QTest::newRow("thirteen letters") << "rasmuslerdorf" << QByteArray("rl") << "rl.3StKT.4T8M";
    QTest::newRow("seven characters") << "U*U***U" << QByteArray("CC") << "CCX.K.MFy4Ois";
    QTest::newRow("eight characters") << "U*U***U*" << QByteArray("CC") << "CC4rMpbg9AMZ.";
    QTest::newRow("two taking turns") << "U*U*U*U*" << QByteArray("CC") << "CCNf8Sbh3HDfQ";
    QTest::newRow("two taking turns, the other first") << "*U*U*U*U" << QByteArray("XX") << "XXxzOu6maQKqQ";
    QTest::newRow("salt longer than two") << "p" << QByteArray("abcdefgh") << "ab8Smhzf5D4wA";
    QTest::newRow("a hash as the salt") << "password" << QByteArray("abJnggxhB/yWI") << "abJnggxhB/yWI";
    QTest::newRow("100,000 letters") << "password" + QString(100000, 'x') << QByteArray("ab") << "abJnggxhB/yWI";
}

void tst_Crypt::knownHashes()
{
    QFETCH(QString, password);
    QFETCH(QByteArray, salt);
    QFETCH(QString, hash);
    QCOMPARE(Crypt::crypt(password, QString::fromLatin1(salt)), hash);
    QCOMPARE(reentrant(password, salt), hash);
    QCOMPARE(QString(Crypt::crypt_sll(password.toLatin1().constData(), salt.constData())), hash);
}

void tst_Crypt::passwordIsLatin1_data()
{
    QTest::addColumn<QString>("password");
    QTest::addColumn<QString>("alike");

    QTest::newRow("the eighth bit does not count") << QStringLiteral("p\u00e4ss") << "pdss";
    QTest::newRow("beyond Latin-1 is a question mark") << QStringLiteral("p\u20acss") << "p?ss";
}

void tst_Crypt::passwordIsLatin1()
{
    QFETCH(QString, password);
    QFETCH(QString, alike);
    QCOMPARE(Crypt::crypt(password, "ab"), Crypt::crypt(alike, "ab"));
    QCOMPARE(reentrant(password, "ab"), reentrant(alike, "ab"));
}

void tst_Crypt::zeroCharacterIsAnEmptyPlace()
{
    QString const password = QStringLiteral("ab") + QChar(0) + QStringLiteral("cd");
    QVERIFY(Crypt::crypt(password, "ab") != Crypt::crypt("ab", "ab"));
    QCOMPARE(Crypt::crypt(QString(3, QChar(0)), "ab"), QString("abmF1QH4PEr.E"));
}

void tst_Crypt::nothingWithNothingIsHashed()
{
    QCOMPARE(Crypt::crypt("", ""), QString("GGqaynD1Gln3I"));
    QCOMPARE(reentrant("", ""), QString("GGqaynD1Gln3I"));
}

void tst_Crypt::oddSalts_data()
{
    QTest::addColumn<QByteArray>("salt");
    QTest::addColumn<QByteArray>("alike"); // by the code of each character

    QTest::newRow("none") << QByteArray() << QByteArray("GG");
    QTest::newRow("one character") << QByteArray("a") << QByteArray("aG");
    QTest::newRow("before the digits") << QByteArray("-.") << QByteArray("z.");
    QTest::newRow("after the digits") << QByteArray(":@") << QByteArray("39");
    QTest::newRow("between capitals and small letters") << QByteArray("[`") << QByteArray("UZ");
    QTest::newRow("after the small letters") << QByteArray("{~") << QByteArray(".1");
    QTest::newRow("blanks") << QByteArray("  ") << QByteArray("mm");
    QTest::newRow("colon and line end") << QByteArray(":\n") << QByteArray("3Q");
    QTest::newRow("beyond ASCII") << QByteArray("\xe4\xff") << QByteArray("d2");
}

void tst_Crypt::oddSalts()
{
    QFETCH(QByteArray, salt);
    QFETCH(QByteArray, alike);
    QString const hash = Crypt::crypt("password", QString::fromLatin1(salt));
    QCOMPARE(hash.mid(2), Crypt::crypt("password", QString::fromLatin1(alike)).mid(2));
    QCOMPARE(hash.left(2), asShown(salt));
    QCOMPARE(reentrant("password", salt), hash);
}

void tst_Crypt::hashIsItsOwnSalt_data()
{
    oddSalts_data();
}

void tst_Crypt::hashIsItsOwnSalt()
{
    QFETCH(QByteArray, salt);
    QString const hash = Crypt::crypt("password", QString::fromLatin1(salt));
    QCOMPARE(hash.size(), 13);
    QCOMPARE(Crypt::crypt("password", hash), hash);
}

void tst_Crypt::saltlessHashHasOneSalt_data()
{
    QTest::addColumn<QString>("password");
    QTest::newRow("nothing") << "";
    QTest::newRow("a word") << "password";
    QTest::newRow("another") << "U*U*U*U*";
}

void tst_Crypt::saltlessHashHasOneSalt()
{
    QFETCH(QString, password);
    QString const hash = Crypt::crypt(password);
    QCOMPARE(hash.left(2), QString("nd"));
    QCOMPARE(hash, Crypt::crypt(password, "nd"));
    QCOMPARE(hash, Crypt::crypt(password));
}

void tst_Crypt::to64WritesTheLowestFirst_data()
{
    QTest::addColumn<int>("value");
    QTest::addColumn<int>("count");
    QTest::addColumn<QByteArray>("text");

    QTest::newRow("none") << 5 << 0 << QByteArray();
    QTest::newRow("count below none") << 5 << -1 << QByteArray();
    QTest::newRow("zero") << 0 << 3 << QByteArray("...");
    QTest::newRow("63") << 63 << 2 << QByteArray("z.");
    QTest::newRow("64") << 64 << 2 << QByteArray("./");
    QTest::newRow("the random number of seed 64") << 422709875 << 2 << QByteArray("nd");
    QTest::newRow("highest") << 2147483647 << 6 << QByteArray("zzzzz/");
    QTest::newRow("below zero") << -1 << 4 << QByteArray("zzzz");
}

void tst_Crypt::to64WritesTheLowestFirst()
{
    QFETCH(int, value);
    QFETCH(int, count);
    QFETCH(QByteArray, text);
    QByteArray written(10, '#');
    Crypt::to64(written.data(), value, count);
    QCOMPARE(written, text.leftJustified(10, '#'));
}

void tst_Crypt::opensslsHashes()
{
    char const* const first = Crypt::crypt_sll("password", "ab");
    QCOMPARE(Crypt::crypt_sll("p", "ab"), "ab8Smhzf5D4wA");
    QCOMPARE(first, "ab8Smhzf5D4wA"); // the next call takes its place

    auto const before = std::time(nullptr);
    QByteArray const hash = Crypt::crypt_sll("password");
    QCOMPARE(hash.size(), 13);
    QVERIFY2(saltsOfSeconds(before, std::time(nullptr)).contains(hash.left(2)), hash);
    QCOMPARE(QString::fromLatin1(hash), Crypt::crypt("password", QString::fromLatin1(hash)));
}

void tst_Crypt::opensslRefusesOddSalts()
{
    QVERIFY(!Crypt::crypt_sll("password", ""));
    QVERIFY(!Crypt::crypt_sll("password", "a"));
    QVERIFY(!Crypt::crypt_sll("password", "a\xe4"));
}

void tst_Crypt::md5OfKnownTexts_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("digest");

    // RFC 1321, A.5
    QTest::newRow("nothing") << QByteArray() << QByteArray("d41d8cd98f00b204e9800998ecf8427e");
    QTest::newRow("abc") << QByteArray("abc") << QByteArray("900150983cd24fb0d6963f7d28e17f72");
    QTest::newRow("alphabet") << QByteArray("abcdefghijklmnopqrstuvwxyz")
                              << QByteArray("c3fcd3d76192e4007dfb496cca67e13b");
    QTest::newRow("digits") << QByteArray("1234567890").repeated(8) << QByteArray("57edf4a22be3c955ac49da2e2107b67a");
    QTest::newRow("a zero byte") << QByteArray(1, '\0') << QByteArray("93b885adfe0da089cdf634904fd59f71");
}

void tst_Crypt::md5OfKnownTexts()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, digest);
    QCOMPARE(Crypt::md5(text).toHex(), digest);
    std::unique_ptr<unsigned char, decltype(&std::free)> const made(
        Crypt::md5_sql(text.constData(), static_cast<unsigned long>(text.size())), &std::free);
    QVERIFY(made);
    QCOMPARE(QByteArray(reinterpret_cast<char const*>(made.get()), 16).toHex(), digest);
}

QTEST_APPLESS_MAIN(tst_Crypt)
#include "tst_Crypt.moc"
