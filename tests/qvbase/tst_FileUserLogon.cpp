// SPDX-License-Identifier: LGPL-2.1-or-later
#include <qvbase/FileUserLogon.h>

#include <QTest>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <dlfcn.h>
#include <pwd.h>
#include <thread>
#include <unistd.h>
#include <vector>

using qv::FileUserLogon;

namespace {

/// The user database that the library finds in this program, in place of the system's.
struct FakeDatabase {
    bool inForce = false;
    QByteArray name;
    QByteArray fullName;
    std::size_t neededBytes = 0;
    int interruptions = 0;
    int error = 0;
    // What was asked.
    std::vector<std::size_t> sizes;
    int calls = 0;
};

FakeDatabase database;

int answer(char const* name, passwd* entry, char* buffer, std::size_t size, passwd** found)
{
    ++database.calls;
    database.sizes.push_back(size);
    *found = nullptr;
    if (database.interruptions-- > 0)
        return EINTR;
    if (size < database.neededBytes)
        return ERANGE;
    if (database.error != 0 || database.name != name)
        return database.error;
    *entry = {};
    entry->pw_name = std::strcpy(buffer, database.name.constData());
    entry->pw_gecos = std::strcpy(buffer + database.name.size() + 1, database.fullName.constData());
    entry->pw_dir = entry->pw_name;
    *found = entry;
    return 0;
}

} // namespace

extern "C" Q_DECL_EXPORT int getpwnam_r(char const* name, passwd* entry, char* buffer, std::size_t size, passwd** found)
{
    using Call = int (*)(char const*, passwd*, char*, std::size_t, passwd**);
    static auto const system = reinterpret_cast<Call>(dlsym(RTLD_NEXT, "getpwnam_r"));
    return (database.inForce ? answer : system)(name, entry, buffer, size, found);
}

class tst_FileUserLogon : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup() { FileUserLogon::setProvider({}); }
    void ownAccountIsFound();
    void unknownAccount_data();
    void unknownAccount();
    void nameWithNulIsNotAsked();
    void passwordIsNotAskedFor();
    void reasonAndErrorMayBeNull();
    void successClearsReasonAndError();
    void fullName_data();
    void fullName();
    void longEntryIsFound_data();
    void longEntryIsFound();
    void entryWithoutEndIsGivenUp();
    void interruptedCallIsRepeated();
    void errorOfTheDatabase_data();
    void errorOfTheDatabase();
    void providerTakesTheCall();
    void providerRefuses();
    void providerThrows();
    void emptyProviderRestoresTheBuiltIn();
    void providerMayExchangeItself();
    void providerIsExchangedWhileOthersLogOn();
};

void tst_FileUserLogon::init()
{
    database = {};
}

void tst_FileUserLogon::ownAccountIsFound()
{
    passwd const* const account = getpwuid(geteuid());
    QVERIFY(account);
    auto const logon = FileUserLogon::logon(QString::fromUtf8(account->pw_name), {});
    QVERIFY(logon);
    QCOMPARE(logon->firstName(), QString::fromUtf8(account->pw_name));
}

void tst_FileUserLogon::unknownAccount_data()
{
    QTest::addColumn<QString>("user");

    QTest::newRow("nobody's name") << "no-such-account";
    QTest::newRow("empty") << "";
    QTest::newRow("null") << QString();
    QTest::newRow("number that is an account's") << "0";
    QTest::newRow("blank around") << " root";
    QTest::newRow("line of the database") << "root:x:0:0";
    QTest::newRow("beyond ASCII") << QString::fromUtf8("r\u00f6\u00f6t");
    QTest::newRow("lone surrogate") << QString(QChar(0xd800));
    QTest::newRow("huge") << QString(100000, 'x');
}

void tst_FileUserLogon::unknownAccount()
{
    QFETCH(QString, user);
    QString reason;
    int error = 0;
    QVERIFY(!FileUserLogon::logon(user, "secret", &reason, &error));
    QCOMPARE(reason, QString::fromLocal8Bit(std::strerror(ENOENT)));
    QCOMPARE(error, ENOENT);
}

void tst_FileUserLogon::nameWithNulIsNotAsked()
{
    database.inForce = true;
    database.name = "ann";
    int error = 0;
    QVERIFY(!FileUserLogon::logon(QString::fromLatin1("ann\0x", 5), {}, nullptr, &error));
    QCOMPARE(error, ENOENT);
    QCOMPARE(database.calls, 0);
}

void tst_FileUserLogon::passwordIsNotAskedFor()
{
    database.inForce = true;
    database.name = "ann";
    for (QString const& password : {QString(), QString("one"), QString("another")})
        QVERIFY(FileUserLogon::logon("ann", password));
}

void tst_FileUserLogon::reasonAndErrorMayBeNull()
{
    QVERIFY(!FileUserLogon::logon("no-such-account", {}, nullptr, nullptr));
    QVERIFY(!FileUserLogon::logon("no-such-account", {}));
}

void tst_FileUserLogon::successClearsReasonAndError()
{
    database.inForce = true;
    database.name = "ann";
    QString reason = "an older one";
    int error = EIO;
    QVERIFY(FileUserLogon::logon("ann", {}, &reason, &error));
    QCOMPARE(reason, QString());
    QCOMPARE(error, 0);
}

void tst_FileUserLogon::fullName_data()
{
    QTest::addColumn<QByteArray>("field");
    QTest::addColumn<QString>("expected");

    auto const row = [](char const* name, QByteArray const& field, char const* expected) {
        QTest::newRow(name) << field << QString::fromUtf8(expected);
    };
    row("plain", "Ann Other", "Ann Other");
    row("other fields follow", "Ann Other,Room 3,12,34", "Ann Other");
    row("only other fields", ",Room 3,12", "");
    row("commas alone, as adduser leaves them", ",,,", "");
    row("empty", "", "");
    row("blanks around", "  Ann Other ,x", "Ann Other");
    row("blank field", "  ,x", "");
    row("ampersand is the login name, capitalised", "& Other", "Ann Other");
    row("two ampersands", "& & Jr.", "Ann Ann Jr.");
    row("ampersand behind the comma", "Other,&", "Other");
    row("UTF-8", "Ann \xc3\x96ther", "Ann \u00d6ther");
    row("not UTF-8", "Ann \xd6ther", "Ann \ufffdther");
}

void tst_FileUserLogon::fullName()
{
    QFETCH(QByteArray, field);
    database.inForce = true;
    database.name = "ann";
    database.fullName = field;
    auto const logon = FileUserLogon::logon("ann", {});
    QVERIFY(logon);
    QCOMPARE(logon->firstName(), QString("ann"));
    QTEST(logon->secondName(), "expected");
}

void tst_FileUserLogon::longEntryIsFound_data()
{
    QTest::addColumn<int>("length");

    QTest::newRow("a hundred bytes") << 100;
    QTest::newRow("five kibibytes") << 5 * 1024;
    QTest::newRow("half a mebibyte") << 512 * 1024;
}

void tst_FileUserLogon::longEntryIsFound()
{
    QFETCH(int, length);
    database.inForce = true;
    database.name = "ann";
    database.fullName = QByteArray(length, 'n');
    database.neededBytes = std::size_t(length) + 5;
    auto const logon = FileUserLogon::logon("ann", {});
    QVERIFY(logon);
    QCOMPARE(logon->secondName(), QString(length, 'n'));
}

void tst_FileUserLogon::entryWithoutEndIsGivenUp()
{
    database.inForce = true;
    database.neededBytes = std::size_t(-1);
    int error = 0;
    QVERIFY(!FileUserLogon::logon("ann", {}, nullptr, &error));
    QCOMPARE(error, ERANGE);
    for (std::size_t i = 1; i < database.sizes.size(); ++i)
        QVERIFY(database.sizes[i] > database.sizes[i - 1]);
    QVERIFY(database.sizes.back() <= std::size_t(16) * 1024 * 1024);
}

void tst_FileUserLogon::interruptedCallIsRepeated()
{
    database.inForce = true;
    database.name = "ann";
    database.interruptions = 5;
    int error = -1;
    QVERIFY(FileUserLogon::logon("ann", {}, nullptr, &error));
    QCOMPARE(error, 0);
    QCOMPARE(database.calls, 6);
}

void tst_FileUserLogon::errorOfTheDatabase_data()
{
    QTest::addColumn<int>("number");

    QTest::newRow("input/output error") << EIO;
    QTest::newRow("too many open files") << EMFILE;
    QTest::newRow("no memory") << ENOMEM;
}

void tst_FileUserLogon::errorOfTheDatabase()
{
    QFETCH(int, number);
    database.inForce = true;
    database.error = number;
    QString reason;
    int error = 0;
    QVERIFY(!FileUserLogon::logon("ann", {}, &reason, &error));
    QCOMPARE(reason, QString::fromLocal8Bit(std::strerror(number)));
    QCOMPARE(error, number);
    QCOMPARE(database.calls, 1);
}

void tst_FileUserLogon::providerTakesTheCall()
{
    FileUserLogon::setProvider([](QString const& user, QString const& password, QString*, int*) {
        return std::make_unique<FileUserLogon>(user.toUpper(), password + "!");
    });
    auto const logon = FileUserLogon::logon("no-such-account", "secret");
    QVERIFY(logon);
    QCOMPARE(logon->firstName(), QString("NO-SUCH-ACCOUNT"));
    QCOMPARE(logon->secondName(), QString("secret!"));
}

void tst_FileUserLogon::providerRefuses()
{
    FileUserLogon::setProvider(
        [](QString const& user, QString const&, QString* reason, int* error) -> std::unique_ptr<FileUserLogon> {
            *reason = "not today, " + user;
            *error = EACCES;
            return nullptr;
        });
    QString reason;
    int error = 0;
    QVERIFY(!FileUserLogon::logon("root", {}, &reason, &error));
    QCOMPARE(reason, QString("not today, root"));
    QCOMPARE(error, EACCES);
    QVERIFY(!FileUserLogon::logon("root", {})); // A provider is given places even where the caller has none.
}

void tst_FileUserLogon::providerThrows()
{
    FileUserLogon::setProvider([](QString const&, QString const&, QString*, int*) -> std::unique_ptr<FileUserLogon> {
        throw std::runtime_error("no directory service");
    });
    QVERIFY_EXCEPTION_THROWN(FileUserLogon::logon("root", {}), std::runtime_error);
    QVERIFY_EXCEPTION_THROWN(FileUserLogon::logon("root", {}), std::runtime_error); // No lock is left behind.
}

void tst_FileUserLogon::emptyProviderRestoresTheBuiltIn()
{
    FileUserLogon::setProvider([](QString const&, QString const&, QString*, int*) {
        return std::make_unique<FileUserLogon>("from", "outside");
    });
    FileUserLogon::setProvider({});
    QVERIFY(!FileUserLogon::logon("no-such-account", {}));
}

void tst_FileUserLogon::providerMayExchangeItself()
{
    FileUserLogon::setProvider([](QString const& user, QString const&, QString*, int*) {
        FileUserLogon::setProvider({});
        return std::make_unique<FileUserLogon>(user, "once");
    });
    auto const first = FileUserLogon::logon("no-such-account", {});
    QVERIFY(first);
    QCOMPARE(first->secondName(), QString("once"));
    QVERIFY(!FileUserLogon::logon("no-such-account", {}));
}

void tst_FileUserLogon::providerIsExchangedWhileOthersLogOn()
{
    auto const providerNamed = [](QString const& name) {
        return [name](QString const&, QString const&, QString*, int*) {
            return std::make_unique<FileUserLogon>(name, name);
        };
    };
    FileUserLogon::setProvider(providerNamed("one"));
    std::atomic<int> torn{0};
    auto const logOnOften = [&torn] {
        for (int i = 0; i < 5000; ++i) {
            auto const logon = FileUserLogon::logon("ann", {});
            torn += !logon || logon->firstName() != logon->secondName();
        }
    };
    std::thread first(logOnOften);
    std::thread second(logOnOften);
    for (int i = 0; i < 5000; ++i)
        FileUserLogon::setProvider(providerNamed(i % 2 ? "one" : "two"));
    first.join();
    second.join();
    QCOMPARE(torn.load(), 0);
}

QTEST_GUILESS_MAIN(tst_FileUserLogon)
#include "tst_FileUserLogon.moc"
