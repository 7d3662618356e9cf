// SPDX-License-Identifier: LGPL-2.1-or-later
#include <qvbase/FileUtils.h>

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>
#include <QTextCodec>

#include <memory>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

using qv::FileUtils;

namespace {

int modeOf(QString const& path)
{
    struct stat status = {};
    return lstat(QFile::encodeName(path).constData(), &status) == 0 ? int(status.st_mode & 07777) : -1;
}

void setOrUnset(char const* variable, QByteArray const& value)
{
    value.isNull() ? qunsetenv(variable) : qputenv(variable, value);
}

} // namespace

class tst_FileUtils : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void dataFolder_data();
    void dataFolder();
    void dataFolderWithoutHomeIsThatOfTheAccount_data();
    void dataFolderWithoutHomeIsThatOfTheAccount();
    void dataFolderIsNotCreated();
    void environmentIsReadAnew();
    void logFolderIsNamedAfterTheApplication_data();
    void logFolderIsNamedAfterTheApplication();
    void logFolderStandsInTheDataFolder();
    void missingFoldersAreCreatedForTheOwnerAlone();
    void existingFoldersKeepTheirPermissions();
    void linkedFolderIsFollowed();
    void obstacleLeavesThePath_data();
    void obstacleLeavesThePath();
    void filesCanBeWrittenThere();

private:
    QString path(QString const& name) const { return m_dir->filePath(name); }

    std::unique_ptr<QTemporaryDir> m_dir;
    QByteArray m_home;
    QByteArray m_stateHome;
};

void tst_FileUtils::initTestCase()
{
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8")); // Of file names, in any locale.
    m_home = qgetenv("HOME");
    m_stateHome = qgetenv("XDG_STATE_HOME");
}

void tst_FileUtils::init()
{
    QCoreApplication::setApplicationName("client"); // First: a temporary folder is named after it, too.
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
    umask(0); // So that what is closed to others is so by its own mode.
    qputenv("XDG_STATE_HOME", QFile::encodeName(path("state")));
}

void tst_FileUtils::cleanup()
{
    umask(022);
    setOrUnset("HOME", m_home);
    setOrUnset("XDG_STATE_HOME", m_stateHome);
}

void tst_FileUtils::dataFolder_data()
{
    QTest::addColumn<QByteArray>("stateHome");
    QTest::addColumn<QByteArray>("home");
    QTest::addColumn<QString>("expected");

    auto const row = [](char const* name, QByteArray const& stateHome, QByteArray const& home, char const* expected) {
        QTest::newRow(name) << stateHome << home << QString::fromUtf8(expected);
    };
    row("variable set", "/var/state", "/people/ann", "/var/state");
    row("variable not set", QByteArray(), "/people/ann", "/people/ann/.local/state");
    row("variable empty", "", "/people/ann", "/people/ann/.local/state");
    row("variable relative is ignored", "state", "/people/ann", "/people/ann/.local/state");
    row("variable relative to the current folder is ignored", "./state", "/people/ann", "/people/ann/.local/state");
    row("tilde is relative, too", "~/state", "/people/ann", "/people/ann/.local/state");
    row("slash at the end is left out", "/var/state/", "/people/ann", "/var/state");
    row("repeated slashes become one", "//var///state", "/people/ann", "/var/state");
    row("dots are resolved", "/var/x/.././state/.", "/people/ann", "/var/state");
    row("root folder", "/", "/people/ann", "/");
    row("blank in a name", "/var/my state", "/people/ann", "/var/my state");
    row("home with a slash at the end", QByteArray(), "/people/ann/", "/people/ann/.local/state");
    row("home is the root folder", QByteArray(), "/", "/.local/state");
    row("home does not matter beside the variable", "/var/state", "", "/var/state");
}

void tst_FileUtils::dataFolder()
{
    QFETCH(QByteArray, stateHome);
    QFETCH(QByteArray, home);
    setOrUnset("XDG_STATE_HOME", stateHome);
    setOrUnset("HOME", home);
    QTEST(FileUtils::userDataDir(), "expected");
}

void tst_FileUtils::dataFolderWithoutHomeIsThatOfTheAccount_data()
{
    QTest::addColumn<QByteArray>("home");

    QTest::newRow("home not set") << QByteArray();
    QTest::newRow("home empty") << QByteArray("");
    QTest::newRow("home relative") << QByteArray("home/ann");
}

void tst_FileUtils::dataFolderWithoutHomeIsThatOfTheAccount()
{
    QFETCH(QByteArray, home);
    setOrUnset("XDG_STATE_HOME", QByteArray());
    setOrUnset("HOME", home);
    passwd const* const account = getpwuid(geteuid());
    QVERIFY(account);
    QCOMPARE(FileUtils::userDataDir(), QDir::cleanPath(QFile::decodeName(account->pw_dir) + "/.local/state"));
}

void tst_FileUtils::dataFolderIsNotCreated()
{
    QCOMPARE(FileUtils::userDataDir(), path("state"));
    QVERIFY(!QFileInfo::exists(path("state")));
}

void tst_FileUtils::environmentIsReadAnew()
{
    FileUtils::userDataDir();
    qputenv("XDG_STATE_HOME", QFile::encodeName(path("other")));
    QCOMPARE(FileUtils::userDataDir(), path("other"));
    QCOMPARE(FileUtils::userLogDir(), path("other/client"));
}

void tst_FileUtils::logFolderIsNamedAfterTheApplication_data()
{
    QTest::addColumn<QString>("application");
    QTest::addColumn<QString>("folder");

    auto const row = [](char const* name, QString const& application, QString const& folder) {
        QTest::newRow(name) << application << folder;
    };
    row("plain", "client", "client");
    row("blank within", "Video Client", "Video Client");
    row("dots within", "client.2..3", "client.2..3");
    row("hidden", ".client", ".client");
    row("slash", "video/client", "video_client");
    row("only slashes", "//", "__");
    row("way out of the folder", "../../etc", ".._.._etc");
    row("absolute", "/etc", "_etc");
    row("this folder", ".", "application");
    row("the folder above", "..", "application");
    row("three dots are a name", "...", "...");
    row("backslash is a character", "a\\b", "a\\b");
    row("NUL within", QString::fromLatin1("a\0b", 3), "a_b");
    row("as long as a file name gets", QString(255, 'x'), QString(255, 'x'));
    row("longer than a file name gets", QString(256, 'x'), QString(255, 'x'));
    row("two bytes a character", QString(200, QChar(0xe4)), QString(127, QChar(0xe4)));
    row("four bytes a character", QString::fromUtf8("\U0001f511").repeated(100),
        QString::fromUtf8("\U0001f511").repeated(63));
    row("cut within a character", QString(254, 'x') + QString::fromUtf8("\U0001f511"), QString(254, 'x'));
    row("half a character at the end", QString("x") + QChar(0xd83d), "x");
    row("huge", QString(100000, 'x'), QString(255, 'x'));
}

void tst_FileUtils::logFolderIsNamedAfterTheApplication()
{
    QFETCH(QString, application);
    QFETCH(QString, folder);
    QCoreApplication::setApplicationName(application);
    QCOMPARE(FileUtils::userLogDir(), path("state/" + folder));
    QVERIFY(QFileInfo(path("state/" + folder)).isDir());
    QCOMPARE(QDir(path("state")).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot), {folder});
}

void tst_FileUtils::logFolderStandsInTheDataFolder()
{
    qputenv("XDG_STATE_HOME", "relative");
    qputenv("HOME", QFile::encodeName(path("home")));
    QCOMPARE(FileUtils::userLogDir(), path("home/.local/state/client"));
    QCOMPARE(FileUtils::userLogDir(), FileUtils::userDataDir() + "/client");
    QVERIFY(!QFileInfo::exists("relative"));
}

void tst_FileUtils::missingFoldersAreCreatedForTheOwnerAlone()
{
    qputenv("XDG_STATE_HOME", QFile::encodeName(path("a/b/state")));
    FileUtils::userLogDir();
    for (char const* folder : {"a", "a/b", "a/b/state", "a/b/state/client"})
        QCOMPARE(modeOf(path(folder)), 0700);
}

void tst_FileUtils::existingFoldersKeepTheirPermissions()
{
    for (char const* folder : {"state", "state/client"})
        QCOMPARE(mkdir(QFile::encodeName(path(folder)).constData(), 0755), 0);
    QCOMPARE(FileUtils::userLogDir(), path("state/client"));
    QCOMPARE(modeOf(path("state")), 0755);
    QCOMPARE(modeOf(path("state/client")), 0755);
}

void tst_FileUtils::linkedFolderIsFollowed()
{
    QVERIFY(QDir(m_dir->path()).mkdir("elsewhere"));
    QVERIFY(QFile::link("elsewhere", path("state")));
    QCOMPARE(FileUtils::userLogDir(), path("state/client"));
    QCOMPARE(modeOf(path("elsewhere/client")), 0700);
}

void tst_FileUtils::obstacleLeavesThePath_data()
{
    QTest::addColumn<QString>("obstacle");

    QTest::newRow("file in place of the data folder") << "state";
    QTest::newRow("file in place of the log folder") << "state/client";
}

void tst_FileUtils::obstacleLeavesThePath()
{
    QFETCH(QString, obstacle);
    QVERIFY(QDir().mkpath(QFileInfo(path(obstacle)).path()));
    QFile file(path(obstacle));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(FileUtils::userLogDir(), path("state/client"));
    QVERIFY(QFileInfo(path(obstacle)).isFile());
}

void tst_FileUtils::filesCanBeWrittenThere()
{
    QFile file(FileUtils::userLogDir() + "/ActionLog.qvl");
    QVERIFY2(file.open(QIODevice::WriteOnly), qPrintable(file.errorString()));
}

namespace {

/// Before there is an application its name is empty.
bool namelessFolderIsApplication()
{
    QTemporaryDir const dir;
    qputenv("XDG_STATE_HOME", QFile::encodeName(dir.path()));
    bool const holds = FileUtils::userLogDir() == dir.filePath("application");
    qunsetenv("XDG_STATE_HOME");
    return holds;
}

} // namespace

int main(int argc, char* argv[])
{
    if (!namelessFolderIsApplication()) {
        qCritical("the log folder of a nameless application is not \"application\"");
        return 1;
    }
    QCoreApplication const application(argc, argv);
    tst_FileUtils test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_FileUtils.moc"
