// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/util/Crypt.h>

#include "SaltsOfSeconds.h"

#include <QTest>

using qvgen::Crypt;

class tst_CameraUserAccess : public QObject {
    Q_OBJECT

private slots:
    void fields_data();
    void fields();
    void hashIsThatOfThePassword_data();
    void hashIsThatOfThePassword();
    void saltIsThatOfTheSecond();
    void fieldsAreNotQuoted();
};

void tst_CameraUserAccess::fields_data()
{
    QTest::addColumn<QString>("user");
    QTest::addColumn<QString>("password");
    QTest::addColumn<QString>("label");
    QTest::addColumn<QString>("realm");
    QTest::addColumn<QString>("digest");

    QTest::newRow("example of RFC 2617") << "Mufasa"
                                         << "Circle Of Life"
                                         << "staff"
                                         << "testrealm@host.com"
                                         << "939e7578ed9e3c518a452acee763bce9";
    // MD5 of "u:r:p"
    QTest::newRow("one letter each") << "u"
                                     << "p"
                                     << "g"
                                     << "r"
                                     << "44add22b6f3179b751eafd68ee370f7d";
    // Neither does the label count for the digest nor is it reduced to Latin-1.
    QTest::newRow("label beyond Latin-1") << "u"
                                          << "p" << QStringLiteral("Tor 3 \u20ac") << "r"
                                          << "44add22b6f3179b751eafd68ee370f7d";
    // MD5 of "::"
    QTest::newRow("all empty") << ""
                               << ""
                               << ""
                               << ""
                               << "4501c091b0366d76ea3218b6cfdd8097";
    // MD5 of the bytes 75 3a 72 3a e4: "u:r:" and a umlaut in Latin-1
    QTest::newRow("beyond ASCII") << "u" << QStringLiteral("\u00e4") << "g"
                                  << "r"
                                  << "7c2fc56b711b8f7184983b74d2bef266";
}

void tst_CameraUserAccess::fields()
{
    QFETCH(QString, user);
    QFETCH(QString, password);
    QFETCH(QString, label);
    QFETCH(QString, realm);
    QStringList const line = Crypt::cameraUserAccess(user, password, label, realm).split(':');
    QCOMPARE(line.size(), 4);
    QCOMPARE(line[0], user);
    QCOMPARE(line[1], label);
    QCOMPARE(line[2].size(), 13);
    QTEST(line[3], "digest");
}

void tst_CameraUserAccess::hashIsThatOfThePassword_data()
{
    QTest::addColumn<QString>("password");
    QTest::addColumn<QString>("other");
    QTest::addColumn<bool>("isAlike");

    QTest::newRow("the same") << "secret"
                              << "secret" << true;
    QTest::newRow("another") << "secret"
                             << "Secret" << false;
    QTest::newRow("nothing") << ""
                             << "" << true;
    QTest::newRow("the ninth character does not count") << "password1"
                                                        << "password2" << true;
    QTest::newRow("beyond ASCII") << QStringLiteral("p\u00e4ss") << QStringLiteral("p\u00e4ss") << true;
}

void tst_CameraUserAccess::hashIsThatOfThePassword()
{
    QFETCH(QString, password);
    QFETCH(QString, other);
    QString const hash = Crypt::cameraUserAccess("u", password, "g", "r").section(':', 2, 2);
    QTEST(Crypt::crypt(other, hash) == hash, "isAlike");
}

void tst_CameraUserAccess::saltIsThatOfTheSecond()
{
    auto const before = std::time(nullptr);
    QString const hash = Crypt::cameraUserAccess("u", "p", "g", "r").section(':', 2, 2);
    QByteArray const salt = hash.left(2).toLatin1();
    QVERIFY2(saltsOfSeconds(before, std::time(nullptr)).contains(salt), salt);
}

/// Who puts a colon into a name gets a line of more fields: checking names is the caller's affair.
void tst_CameraUserAccess::fieldsAreNotQuoted()
{
    QVERIFY(Crypt::cameraUserAccess("u:v", "p", "g", "r").startsWith("u:v:g:"));
    QVERIFY(Crypt::cameraUserAccess("u", "p", "g\nh", "r").startsWith("u:g\nh:"));
}

QTEST_APPLESS_MAIN(tst_CameraUserAccess)
#include "tst_CameraUserAccess.moc"
