// SPDX-License-Identifier: LGPL-2.1-or-later
#include "Entries.h"

#include <GenericUtilities/actionlog/ActionLog.h>
#include <qvbase/crash/SystemCalls.h>

#include <QDir>
#include <QRegularExpression>
#include <QTest>

#include <algorithm>
#include <cerrno>
#include <functional>
#include <grp.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using crash::Files;
using crash::Mode;

namespace {

constexpr uid_t nobody = 65534;
constexpr int endTagSize = 12;

/// What @p work says in a process of its own, without the rights of root unless it is @p asRoot.
QByteArray inChild(std::function<QString()> const& work, bool asRoot = false)
{
    int ends[2];
    if (pipe(ends) != 0)
        return "no pipe";
    pid_t const child = fork();
    if (child == 0) {
        bool const isReady
            = asRoot || getuid() != 0 || (setgroups(0, nullptr) == 0 && setgid(nobody) == 0 && setuid(nobody) == 0);
        QByteArray const said = isReady ? work().toUtf8() : QByteArray("root's rights remain");
        _exit(write(ends[1], said.constData(), size_t(said.size())) == said.size() ? 0 : 1);
    }
    close(ends[1]);
    QFile pipe;
    pipe.open(ends[0], QIODevice::ReadOnly, QFile::AutoCloseHandle);
    QByteArray const said = pipe.readAll();
    int status = 0;
    waitpid(child, &status, 0);
    return status == 0 ? said : "the process ended with status " + QByteArray::number(status);
}

void giveTo(uid_t owner, QString const& path)
{
    if (getuid() == 0 && chown(QFile::encodeName(path).constData(), owner, owner) != 0)
        qFatal("cannot give %s away", qPrintable(path));
}

void setMode(QString const& path, mode_t mode)
{
    if (chmod(QFile::encodeName(path).constData(), mode) != 0)
        qFatal("cannot change the mode of %s", qPrintable(path));
}

/// Says what the log tells: "file 1", "xml".
class Listener {
public:
    explicit Listener(qv::ActionLog const& log)
    {
        QObject::connect(&log, &qv::ActionLog::errorFile,
            [this](QString const&, int type) { m_told << QStringLiteral("file %1").arg(type); });
        QObject::connect(&log, &qv::ActionLog::errorXml, [this] { m_told << QStringLiteral("xml"); });
    }
    QString told() const { return m_told.join(QStringLiteral(", ")); }
    int count() const { return m_told.size(); }

private:
    QStringList m_told;
};

QByteArray wholeFile()
{
    crash::Folder const folder;
    entries::openLog(folder.path(QStringLiteral("Trail.qvl")), Mode::Plain, 0);
    entries::log(1, 0);
    qv::ActionLog::deleteActionLog();
    return folder.files().value("Trail.qvl");
}

/// A disk of 64 KiB, or where the system grants none, calls that find theirs full.
class SmallDisk {
public:
    explicit SmallDisk(crash::Folder const& folder)
        : m_path(folder.path())
    {
        QByteArray const path = QFile::encodeName(m_path);
        m_isMounted = unshare(CLONE_NEWNS) == 0 && mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0
            && mount("tmpfs", path.constData(), "tmpfs", 0, "size=64k") == 0;
        if (m_isMounted) {
            QFile ballast(m_path + QStringLiteral("/ballast"));
            ballast.open(QIODevice::WriteOnly);
            ballast.write(QByteArray(32768, 'x'));
        } else {
            calls::watch(m_path.toStdString());
            calls::inject({calls::Fault::Changing, ENOSPC, 40, 1L << 30});
        }
    }
    void makeRoom()
    {
        if (m_isMounted)
            QFile::remove(m_path + QStringLiteral("/ballast"));
        else
            calls::heal();
    }

private:
    QString m_path;
    bool m_isMounted = false;
};

} // namespace

/// What the log does where it may not, or has no room.
class tst_ActionLogPermissions : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { entries::keepStateIn(m_state.path()); }
    void permissions_data();
    void permissions();
    void listStaysWhereNoSplitIsPossible();
    void fullDisk_data() { crash::modes(); }
    void fullDisk();

private:
    QTemporaryDir m_state;
};

void tst_ActionLogPermissions::permissions_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<int>("fileMode");
    QTest::addColumn<int>("folderMode");
    QTest::addColumn<int>("splitSize");
    QTest::addColumn<QString>("told");
    QTest::addColumn<bool>("isKept");
    QTest::addColumn<bool>("isMovedAside");
    QByteArray const whole = wholeFile();
    QTest::newRow("file that may only be read") << whole << 0444 << 0755 << 0 << "file 1, file 1" << true << false;
    QTest::newRow("file that may not be read") << whole << 0200 << 0755 << 0 << "file 1" << false << true;
    QTest::newRow("folder that may not be written") << whole << 0644 << 0555 << 0 << "" << false << false;
    QTest::newRow("folder that may not be written, a split is due")
        << whole << 0644 << 0555 << 1 << "" << false << false;
    QTest::newRow("folder that may not be written, no file")
        << QByteArray() << 0644 << 0555 << 0 << "file 1, file 1" << true << false;
    QTest::newRow("folder that may not be written, damaged file")
        << whole + "text" << 0644 << 0555 << 0 << "xml, file 1, xml, file 1" << true << true;
    QTest::newRow("folder that may not be written, header of another version")
        << QByteArray(whole).replace("\"v0.1\"", "\"v0.9\"") << 0644 << 0555 << 0 << "file 4, file 1, file 4, file 1"
        << true << true;
    QTest::newRow("folder that may not be entered") << whole << 0644 << 0000 << 0 << "file 1, file 1" << true << false;
}

void tst_ActionLogPermissions::permissions()
{
    QFETCH(QByteArray, content);
    QFETCH(int, fileMode);
    QFETCH(int, folderMode);
    QFETCH(int, splitSize);
    QFETCH(bool, isKept);
    QFETCH(bool, isMovedAside);
    crash::Folder const folder;
    QString const path = folder.path(QStringLiteral("Trail.qvl"));
    if (!content.isEmpty()) {
        folder.hold({{"Trail.qvl", content}});
        giveTo(nobody, path);
        setMode(path, mode_t(fileMode));
    }
    giveTo(nobody, folder.path());
    setMode(folder.path(), mode_t(folderMode));
    QByteArray const told = inChild([&] {
        entries::keepStateIn(folder.path() + QStringLiteral("/state"));
        Listener const listener(entries::openLog(path, Mode::Plain, splitSize));
        entries::log(1, 1);
        entries::log(1, 2);
        QString const before = listener.told();
        setMode(QFileInfo(path).absolutePath(), 0755);
        if (QFile::exists(path))
            setMode(path, 0644);
        int const errors = listener.count();
        entries::log(1, 3);
        // A bad file is told of once more, and gives way.
        bool const isBad = before.startsWith(QLatin1String("xml")) || before.startsWith(QLatin1String("file 4"));
        bool const goesOn
            = qv::ActionLog::getInstance()->entryCount() > 0 && listener.count() - errors <= (isBad ? 1 : 0);
        qv::ActionLog::deleteActionLog();
        return goesOn ? before : QStringLiteral("does not go on");
    });
    QTEST(QString::fromUtf8(told), "told");
    Files const files = folder.files();
    QVector<int> const kept = entries::findAll(folder, Mode::Plain).indices.value(1);
    QVERIFY(kept.contains(3));
    QCOMPARE(kept.contains(1) && kept.contains(2), !isKept);
    QRegularExpression const aside(
        QStringLiteral("^\\d{4}(-\\d\\d){2} \\d\\d(-\\d\\d){2} Trail\\.qvl\\.(corrupt|invalidHeader)$"));
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files).filter(aside).size(), isMovedAside ? 1 : 0);
    // The end tag may have been taken off.
    QByteArray const old = content.chopped(qMin(content.size(), endTagSize));
    bool const isThere
        = std::any_of(files.begin(), files.end(), [&](QByteArray const& bytes) { return bytes.startsWith(old); });
    QVERIFY(isThere);
}

void tst_ActionLogPermissions::listStaysWhereNoSplitIsPossible()
{
    crash::Folder const folder;
    QString const path = folder.path(QStringLiteral("Trail.qvl"));
    folder.hold({{"Trail.qvl", wholeFile()}});
    giveTo(nobody, path);
    setMode(folder.path(), 0555);
    QByteArray const said = inChild([&] {
        qv::ActionLog const& log = entries::openLog(path, Mode::Plain, 1);
        entries::log(1, 1);
        entries::log(1, 2);
        return QString::number(log.entryCount());
    });
    setMode(folder.path(), 0755);
    QCOMPARE(said, QByteArray("3"));
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files), QStringList{QStringLiteral("Trail.qvl")});
}

void tst_ActionLogPermissions::fullDisk()
{
    QFETCH(Mode, mode);
    crash::Folder const folder;
    QByteArray const said = inChild(
        [&] {
            SmallDisk disk(folder);
            Listener const listener(entries::openLog(folder.path(QStringLiteral("Trail.qvl")), mode, 0));
            int index = 0;
            while (listener.count() == 0 && index < 10000)
                entries::log(1, index++);
            int const taken = index - 1;
            for (int i = 0; i < 3; ++i)
                entries::log(1, taken);
            disk.makeRoom();
            entries::log(1, taken);
            QString const fault = entries::faultOf(folder, mode, taken + 1);
            int const files = folder.files().size();
            return QStringLiteral("%1; %2; %3").arg(listener.told(), fault).arg(files);
        },
        true);
    QCOMPARE(said, QByteArray("file 1, file 1, file 1, file 1; ; 1"));
}

QTEST_GUILESS_MAIN(tst_ActionLogPermissions)
#include "tst_ActionLogPermissions.moc"
