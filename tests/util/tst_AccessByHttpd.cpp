// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/util/Crypt.h>

#include "Httpd.h"

#include <QProcess>
#include <QTest>

using qvgen::Crypt;

namespace {

struct User {
    char const* row;
    QString name;
    QString password;
};

// clang-format off
User const users[] = {
    {"letters", "anna", "secret"},
    {"eight characters", "bert", "pa55w0rd"},
    {"more than eight", "carl", "Circle Of Life"},
    {"one character", "dora", "p"},
    {"marks", "emil", "\"\\'$%:;<&>"},
    {"beyond ASCII", "fritz", QStringLiteral("\u00fcb\u00e4r")},
    {"blank in the name", "g h", "secret"},
};
// clang-format on

QString const realm = QStringLiteral("camera@site");

} // namespace

/// A web server lets in who is named in files made from access lines, and no one else.
class tst_AccessByHttpd : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void rightPasswordIsLetIn_data();
    void rightPasswordIsLetIn();
    void othersAreKeptOut_data();
    void othersAreKeptOut();

private:
    /// The HTTP status that curl meets; the credentials go through its standard input.
    int status(QString const& way, QString const& user, QString const& password) const;

    Httpd m_server;
};

void tst_AccessByHttpd::initTestCase()
{
    QByteArray basicFile;
    QByteArray digestFile;
    for (User const& user : users) {
        QStringList const fields = Crypt::cameraUserAccess(user.name, user.password, "label", realm).split(':');
        basicFile += (fields[0] + ':' + fields[2] + '\n').toLatin1();
        digestFile += (fields[0] + ':' + realm + ':' + fields[3] + '\n').toLatin1();
    }
    QVERIFY2(m_server.start(realm, basicFile, digestFile), m_server.errorLog());
}

int tst_AccessByHttpd::status(QString const& way, QString const& user, QString const& password) const
{
    auto const quoted = [](QString text) { return text.replace('\\', "\\\\").replace('"', "\\\"").toLatin1(); };
    QProcess curl;
    curl.start(CURL_PROGRAM,
        {"--config", "-", "--silent", "--output", "/dev/null", "--write-out", "%{http_code}", "--noproxy", "*",
            "--max-time", "30", "--" + way, m_server.address(way)});
    curl.write("user = \"" + quoted(user) + ':' + quoted(password) + "\"\n");
    curl.closeWriteChannel();
    return curl.waitForFinished() ? curl.readAllStandardOutput().toInt() : -1;
}

void tst_AccessByHttpd::rightPasswordIsLetIn_data()
{
    QTest::addColumn<QString>("user");
    QTest::addColumn<QString>("password");
    for (User const& user : users)
        QTest::newRow(user.row) << user.name << user.password;
}

void tst_AccessByHttpd::rightPasswordIsLetIn()
{
    QFETCH(QString, user);
    QFETCH(QString, password);
    QCOMPARE(status("basic", user, password), 200);
    QCOMPARE(status("digest", user, password), 200);
}

void tst_AccessByHttpd::othersAreKeptOut_data()
{
    QTest::addColumn<QString>("user");
    QTest::addColumn<QString>("password");
    QTest::addColumn<int>("basicStatus");

    QTest::newRow("another password") << "anna"
                                      << "Secret" << 401;
    QTest::newRow("no password") << "anna"
                                 << "" << 401;
    QTest::newRow("another's password") << "anna"
                                        << "pa55w0rd" << 401;
    QTest::newRow("unknown user") << "zoe"
                                  << "secret" << 401;
    QTest::newRow("a hash as the password") << "dora" << Crypt::crypt("p", "ab") << 401;
    // All that the DES hash sees of a password is its first eight characters.
    QTest::newRow("the first eight characters") << "carl"
                                                << "Circle O" << 200;
}

void tst_AccessByHttpd::othersAreKeptOut()
{
    QFETCH(QString, user);
    QFETCH(QString, password);
    QTEST(status("basic", user, password), "basicStatus");
    QCOMPARE(status("digest", user, password), 401);
}

QTEST_GUILESS_MAIN(tst_AccessByHttpd)
#include "tst_AccessByHttpd.moc"
