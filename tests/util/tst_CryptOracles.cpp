// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/util/Crypt.h>

#include <support/Random.h>

#include <QTest>

#include <array>
#include <crypt.h>

using qvgen::Crypt;

namespace {

QByteArray const alphabet = "./0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";

/// 0 to 12 characters of 1 to 255.
QByteArray randomPassword(QRandomGenerator& random)
{
    QByteArray password(random.bounded(13), '\0');
    for (char& character : password)
        character = static_cast<char>(random.bounded(1, 256));
    return password;
}

QByteArray saltOf(int number)
{
    return QByteArray().append(alphabet[number % 64]).append(alphabet[number / 64]);
}

QByteArray vectorForm(QByteArray const& password, QByteArray const& salt)
{
    return Crypt::crypt(QString::fromLatin1(password), QString::fromLatin1(salt)).toLatin1();
}

QByteArray reentrantForm(QByteArray const& password, QByteArray const& salt)
{
    std::array<char, 14> out = {};
    return Crypt::crypt_r(password.constData(), salt.constData(), out.data());
}

QByteArray ofTheSystem(QByteArray const& password, QByteArray const& salt)
{
    static crypt_data data;
    return ::crypt_r(password.constData(), salt.constData(), &data);
}

} // namespace

/// Both forms of the DES hash against libxcrypt's and OpenSSL's.
class tst_CryptOracles : public QObject {
    Q_OBJECT

private slots:
    void randomPasswords();
    void everySalt();
    void saltsOutsideOfTheAlphabet();
};

void tst_CryptOracles::randomPasswords()
{
    QRandomGenerator random = support::generator();
    for (int i = 0; i < support::rounds(100000); ++i) {
        QByteArray const password = randomPassword(random);
        QByteArray const salt = saltOf(random.bounded(4096));
        QByteArray const expected = ofTheSystem(password, salt);
        bool const isEqual = vectorForm(password, salt) == expected && reentrantForm(password, salt) == expected;
        QVERIFY2(isEqual, qPrintable(support::seedNote(i)));
    }
}

void tst_CryptOracles::everySalt()
{
    for (int number = 0; number < 4096; ++number) {
        QByteArray const salt = saltOf(number);
        QByteArray const expected = ofTheSystem("p\xe4ssword", salt);
        QCOMPARE(vectorForm("p\xe4ssword", salt), expected);
        QCOMPARE(reentrantForm("p\xe4ssword", salt), expected);
    }
}

void tst_CryptOracles::saltsOutsideOfTheAlphabet()
{
    int compared = 0;
    for (int first = 1; first < 256; ++first) {
        for (int second = 1; second < 256; ++second) {
            QByteArray const salt = QByteArray().append(static_cast<char>(first)).append(static_cast<char>(second));
            char const* const expected = Crypt::crypt_sll("password", salt.constData());
            if (!expected)
                continue;
            QCOMPARE(vectorForm("password", salt), QByteArray(expected));
            QCOMPARE(reentrantForm("password", salt), QByteArray(expected));
            ++compared;
        }
    }
    QCOMPARE(compared, 127 * 127); // ASCII
}

QTEST_APPLESS_MAIN(tst_CryptOracles)
#include "tst_CryptOracles.moc"
