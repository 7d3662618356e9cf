// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/util/Crypt.h>

#include <QRegularExpression>
#include <QTest>

using qvgen::Crypt;

namespace {

QString const form = QStringLiteral("\\A\\$scrypt\\$ln=15,r=8,p=3\\$[A-Za-z0-9+/]{22}\\$[A-Za-z0-9+/]{43}\\z");

/// RFC 7914, 12: of "pleaseletmein", salt "SodiumChloride", N 16384, r 8, p 1.
QString const standardHash
    = QStringLiteral("$scrypt$ln=14,r=8,p=1$U29kaXVtQ2hsb3JpZGU$"
                     "cCO9yzr9c0hGHAbNgf046/2o+7qQT44+qbVD9lRdofLVQylVYT8Pz2LUlwUkKpr55h6F3A1lHkDfzwF7RVdYhw");

} // namespace

class tst_PasswordHash : public QObject {
    Q_OBJECT

private slots:
    void hashIsVerified_data();
    void hashIsVerified();
    void everyHashHasItsSalt();
    void publishedVector();
    void hashOfAnotherProgram();
    void shortPasswordAtLowCost_data();
    void shortPasswordAtLowCost();
    void costsAtTheLimits_data();
    void costsAtTheLimits();
    void otherTextIsRefused_data();
    void otherTextIsRefused();
    void changedHashIsRefused();
};

void tst_PasswordHash::hashIsVerified_data()
{
    QTest::addColumn<QString>("password");
    QTest::addColumn<QString>("other");

    QTest::newRow("nothing") << ""
                             << " ";
    QTest::newRow("the ninth character counts") << "password1"
                                                << "password2";
    QTest::newRow("what follows a zero character counts")
        << QStringLiteral("\u20ac") + QChar(0) + 'b' << QStringLiteral("\u20ac") + QChar(0) + 'c';
    QTest::newRow("beyond Latin-1, 10,000 letters") << QString(10000, QChar(0x20ac)) << QString(10000, '?');
}

void tst_PasswordHash::hashIsVerified()
{
    QFETCH(QString, password);
    QFETCH(QString, other);
    QString const hash = Crypt::hashPassword(password);
    QVERIFY2(QRegularExpression(form).match(hash).hasMatch(), qPrintable(hash));
    QVERIFY(Crypt::verifyPassword(password, hash));
    QVERIFY(!Crypt::verifyPassword(other, hash));
}

void tst_PasswordHash::everyHashHasItsSalt()
{
    QString const one = Crypt::hashPassword("secret");
    QString const two = Crypt::hashPassword("secret");
    QVERIFY(one.section('$', 3, 3) != two.section('$', 3, 3));
    QVERIFY(one.section('$', 4, 4) != two.section('$', 4, 4));
}

void tst_PasswordHash::publishedVector()
{
    QVERIFY(Crypt::verifyPassword("pleaseletmein", standardHash));
    QVERIFY(!Crypt::verifyPassword("pleaseletmeout", standardHash));
}

void tst_PasswordHash::hashOfAnotherProgram()
{
    // As the documentation of Python's passlib shows it.
    QVERIFY(Crypt::verifyPassword(
        "password", "$scrypt$ln=16,r=8,p=1$aM15713r3Xsvxbi31lqr1Q$nFNh2CVHVjNldFVKDHDlm4CbdRSCdEBsjjJxD+iCs5E"));
}

void tst_PasswordHash::shortPasswordAtLowCost_data()
{
    QTest::addColumn<QString>("hash");

    // Of "p" and the salt "saltsalt", by Python's hashlib.scrypt: 32, 16 and 64 bytes, and other costs.
    QTest::newRow("lowest") << "$scrypt$ln=1,r=1,p=1$c2FsdHNhbHQ$NYKEiBaSWMH5kaPUOAen4X137b1dfAXr+4IXM4PLlaQ";
    QTest::newRow("16 bytes") << "$scrypt$ln=4,r=1,p=1$c2FsdHNhbHQ$TcF1Sv3ZA/znGGEZaeYYsQ";
    QTest::newRow("64 bytes") << "$scrypt$ln=4,r=1,p=1$c2FsdHNhbHQ$TcF1Sv3ZA/"
                                 "znGGEZaeYYsam5GeCji06nCd9lRBRc0nk7pKYKjcaQUUCRDAyobaf5oeYqKw0tJbzX/q1GH0Vhvg";
    QTest::newRow("high r") << "$scrypt$ln=4,r=64,p=1$c2FsdHNhbHQ$nqsAmTsFH9b0r1zpN0gNXWfd2MgZMtmGR6l497L34FA";
    QTest::newRow("high p") << "$scrypt$ln=4,r=8,p=100$c2FsdHNhbHQ$tzUgSxqmweyodjDJNJuRgb6jmiuL7WBYmGqMgbhtUk8";
}

void tst_PasswordHash::shortPasswordAtLowCost()
{
    QFETCH(QString, hash);
    QVERIFY(Crypt::verifyPassword("p", hash));
    QVERIFY(!Crypt::verifyPassword("q", hash));
}

void tst_PasswordHash::costsAtTheLimits_data()
{
    QTest::addColumn<QString>("hash"); // made likewise: no other reason to refuse it
    QTest::addColumn<bool>("isAccepted");

    QTest::newRow("table of 128 MiB") << "$scrypt$ln=17,r=8,p=1$c2FsdHNhbHQ$LkN2v4U4d51S+wwhY8QA9LOv3NI8L+w9JkiZqRo9xpo"
                                      << true;
    QTest::newRow("table of 144 MiB") << "$scrypt$ln=17,r=9,p=1$c2FsdHNhbHQ$2FBEdDVpGaUUME8YNu0jyROuocOcr39X6R/IK5wcHr0"
                                      << false;
    // The many small blocks of a high p take the longest, much longer than their tables.
    QTest::newRow("more blocks than a second makes")
        << "$scrypt$ln=1,r=1,p=65537$c2FsdHNhbHQ$aRmmsg5yJOd7fuRMOxy0ZIb7C//XqdDqOgfMp3t/M1E" << false;
    QTest::newRow("work beyond seconds")
        << "$scrypt$ln=10,r=8,p=513$c2FsdHNhbHQ$78Tjb7gqrXeqXF1bNkHe/WYSZCgyqqwZRu2zvvW+SM0" << false;
}

void tst_PasswordHash::costsAtTheLimits()
{
    QFETCH(QString, hash);
    QTEST(Crypt::verifyPassword("p", hash), "isAccepted");
}

void tst_PasswordHash::otherTextIsRefused_data()
{
    QTest::addColumn<QString>("hash");
    QString const good = standardHash;
    auto const changed = [&good](char const* from, QString const& to) { return QString(good).replace(from, to); };

    QTest::newRow("nothing") << "";
    QTest::newRow("the password itself") << "pleaseletmein";
    QTest::newRow("a DES hash") << Crypt::crypt("pleaseletmein", "ab");
    QTest::newRow("another scheme") << changed("$scrypt$", "$argon2id$");
    QTest::newRow("text before it") << " " + good;
    QTest::newRow("line end behind it") << good + "\n";
    QTest::newRow("padding") << good + "==";
    QTest::newRow("no hash") << good.section('$', 0, 3);
    QTest::newRow("empty hash") << good.section('$', 0, 3) + "$";
    QTest::newRow("hash of 15 bytes") << good.section('$', 0, 3) + "$" + QString(20, 'A');
    QTest::newRow("empty salt") << changed("U29kaXVtQ2hsb3JpZGU", "");
    QTest::newRow("no parameters") << changed("ln=14,r=8,p=1", "");
    QTest::newRow("parameters in another order") << changed("ln=14,r=8,p=1", "r=8,ln=14,p=1");
    QTest::newRow("sign") << changed("r=8", "r=+8");
    QTest::newRow("leading zero") << changed("ln=14", "ln=014");
    QTest::newRow("cost of nothing, N") << changed("ln=14", "ln=0");
    QTest::newRow("cost of nothing, r") << changed("r=8", "r=0");
    QTest::newRow("cost of nothing, p") << changed("p=1", "p=0");
    QTest::newRow("cost of 256 MiB, N") << changed("ln=14", "ln=18");
    QTest::newRow("cost of gigabytes, N") << changed("ln=14", "ln=63");
    QTest::newRow("cost of gigabytes, r") << changed("r=8", "r=9999999");
    QTest::newRow("cost of minutes, p") << changed("p=1", "p=9999999");
    QTest::newRow("number beyond 64 bits") << changed("r=8", "r=18446744073709551624");
    QTest::newRow("other digits") << changed("r=8", QStringLiteral("r=\u0668"));
    QTest::newRow("Base64 of web addresses") << changed("/2o+", "_2o-");
    QTest::newRow("megabytes") << good + QString(10000000, 'A');
    QTest::newRow("zero character") << good + QChar(0);
}

void tst_PasswordHash::otherTextIsRefused()
{
    QFETCH(QString, hash);
    QVERIFY(!Crypt::verifyPassword("pleaseletmein", hash));
}

void tst_PasswordHash::changedHashIsRefused()
{
    QString const cheap
        = QStringLiteral("$scrypt$ln=4,r=1,p=1$c2FsdHNhbHQ$TcF1Sv3ZA/znGGEZaeYYsam5GeCji06nCd9lRBRc0nk");
    QVERIFY(Crypt::verifyPassword("p", cheap));
    for (int i = 0; i < cheap.size(); ++i) {
        QString changed = cheap;
        changed[i] = changed[i] == 'A' ? 'B' : 'A';
        QVERIFY2(!Crypt::verifyPassword("p", changed), qPrintable(changed));
    }
}

QTEST_APPLESS_MAIN(tst_PasswordHash)
#include "tst_PasswordHash.moc"
