// SPDX-License-Identifier: LGPL-2.1-or-later
#include "QvlogScene.h"

#include <GenericUtilities/actionlog/ActionLog.h>
#include <GenericUtilities/actionlog/ExportActionLogMessageHandler.h>

#include <csignal>

/// `qvlog follow` beside whoever writes.
class QvlogFollowTest : public QObject {
    Q_OBJECT

private slots:
    void newEntriesAreShown_data();
    void newEntriesAreShown();
    void entriesThatAreThere();
    void conditionsAndFormats();
    void endedFileThatGoesOn();
    void halfAnEntryThatIsCutOff();
    void headerThatComesLater();
    void damageIsToldOnce();
    void splitBySize_data();
    void splitBySize();
    void splitsWithoutPause();
    void severalSplitsAtOnce();
    void filesOfOtherLogsAreLeftOut();
    void switchedLog();
    void restartedLog();
    void interruption_data();
    void interruption();
    void missingFile();
};

namespace {

/// The tool, following "a.qvl".
class Following {
public:
    explicit Following(QStringList const& options = {}, QByteArray const& password = {})
    {
        process.setProcessEnvironment(QvlogScene::environment(password));
        process.start(QVLOG_PROGRAM, QStringList{"follow", "a.qvl"} + options);
    }
    ~Following()
    {
        process.kill();
        process.waitForFinished();
    }
    Q_DISABLE_COPY_MOVE(Following)

    QString told()
    {
        m_told += QString::fromUtf8(process.readAllStandardError());
        return m_told;
    }
    QByteArray shown()
    {
        m_shown += process.readAllStandardOutput();
        return m_shown;
    }
    /// The texts of exports that are done.
    QByteArrayList texts()
    {
        QByteArrayList result;
        for (QByteArray const& line : shown().split('\n')) {
            if (int const at = line.indexOf("Export done: "); at >= 0)
                result += line.mid(at + 13);
        }
        return result;
    }

    TerminalProcess process;

private:
    QString m_told;
    QByteArray m_shown;
};

QByteArrayList numbers(int first, int last)
{
    QByteArrayList result;
    for (int i = first; i <= last; ++i)
        result += QByteArray::number(i);
    return result;
}

/// A log of this process into "a.qvl" of the scene.
class Writer {
public:
    explicit Writer(QvlogScene const& scene, QString const& password = {})
    {
        qv::FileEncryptTesting::setScryptCost(4, 1, 1);
        log().setFileInfo(QFileInfo(scene.path("a.qvl")));
        log().setFileUserPassword({}, password);
    }
    ~Writer() { qv::ActionLog::deleteActionLog(); }
    Q_DISABLE_COPY_MOVE(Writer)

    static qv::ActionLog& log() { return *qv::ActionLog::getInstance(); }
    static void write(int first, int last)
    {
        for (int i = first; i <= last; ++i)
            qv::ExportActionLog::send(QString::number(i), qv::ExportActionLog::Finished);
    }
};

#define FOLLOW(following) QTRY_VERIFY((following).told().contains("following 'a.qvl'\n"))

} // namespace

void QvlogFollowTest::newEntriesAreShown_data()
{
    QTest::addColumn<QByteArray>("password");

    QTest::newRow("plain") << QByteArray();
    QTest::newRow("encrypted") << QByteArray("secret");
}

void QvlogFollowTest::newEntriesAreShown()
{
    QvlogScene scene;
    QFETCH(QByteArray, password);
    Writer writer(scene, password);
    writer.write(1, 2);
    Following following({}, password);
    FOLLOW(following);
    writer.write(3, 3);
    QTRY_COMPARE(following.texts(), numbers(3, 3));
    writer.write(4, 50);
    QTRY_COMPARE(following.texts(), numbers(3, 50));
}

void QvlogFollowTest::entriesThatAreThere()
{
    QvlogScene scene;
    scene.write("a.qvl", scene.header() + scene.done("1") + scene.done("2"));
    Following following({"--all"});
    QTRY_COMPARE(following.texts(), numbers(1, 2));
    scene.append("a.qvl", scene.done("3"));
    QTRY_COMPARE(following.texts(), numbers(1, 3));
}

void QvlogFollowTest::conditionsAndFormats()
{
    QvlogScene scene;
    scene.write("a.qvl", scene.header());
    Following following({"--user", "ann", "--format", "csv"});
    FOLLOW(following);
    scene.append(
        "a.qvl", scene.done("1", "31 May 2024 18:30:00", "bob") + scene.done("2", "31 May 2024 18:30:00", "ann"));
    QTRY_COMPARE(following.shown(),
        QByteArray("time,user,category,category_name,id,action,description,file\r\n"
                   "2024-05-31T18:30:00,ann,Expt,Export,ExpD,Export done,2,a.qvl\r\n"));
}

void QvlogFollowTest::endedFileThatGoesOn()
{
    QvlogScene scene;
    QByteArray const log = scene.header() + scene.done("1") + scene.done("2");
    scene.write("a.qvl", log + scene.end());
    Following following;
    FOLLOW(following);
    QVERIFY(QFile::resize("a.qvl", log.size()));
    scene.append("a.qvl", scene.done("3"));
    QTRY_COMPARE(following.texts(), numbers(3, 3));
    scene.append("a.qvl", scene.done("4") + scene.end());
    QTRY_COMPARE(following.texts(), numbers(3, 4));
}

void QvlogFollowTest::halfAnEntryThatIsCutOff()
{
    QvlogScene scene;
    QByteArray const log = scene.header() + scene.done("1");
    scene.write("a.qvl", log + scene.done("cut").left(40));
    Following following({"--all"});
    QTRY_COMPARE(following.texts(), numbers(1, 1));
    QVERIFY(QFile::resize("a.qvl", log.size()));
    scene.append("a.qvl", scene.done("2"));
    QTRY_COMPARE(following.texts(), numbers(1, 2));
    QCOMPARE(following.told(), QString("qvlog: following 'a.qvl'\n"));
}

void QvlogFollowTest::headerThatComesLater()
{
    QvlogScene scene;
    scene.write("a.qvl", "");
    Following following;
    FOLLOW(following);
    scene.append("a.qvl", scene.header().left(50));
    scene.append("a.qvl", scene.header().mid(50));
    scene.append("a.qvl", scene.done("1"));
    QTRY_COMPARE(following.texts(), numbers(1, 1));
}

void QvlogFollowTest::damageIsToldOnce()
{
    QvlogScene scene;
    scene.write("a.qvl", scene.header());
    Following following;
    FOLLOW(following);
    scene.append("a.qvl", scene.done("1") + "</x>");
    QTRY_VERIFY(following.told().contains("qvlog: 'a.qvl': line 1, column "));
    scene.append("a.qvl", scene.done("lost"));
    QVERIFY(QFile::rename("a.qvl", "a.qvl.corrupt"));
    scene.write("a.qvl", scene.header() + scene.done("2"));
    QTRY_COMPARE(following.texts(), numbers(1, 2));
    QCOMPARE(following.told().count("line 1, column "), 1);
}

void QvlogFollowTest::splitBySize_data()
{
    newEntriesAreShown_data();
}

void QvlogFollowTest::splitBySize()
{
    QvlogScene scene;
    QFETCH(QByteArray, password);
    Writer writer(scene, password);
    writer.log().setSplitPolicy(qv::SplitBySize, 2000);
    writer.write(0, 0);
    Following following({}, password);
    FOLLOW(following);
    for (int i = 1; i <= 200; i += 4) {
        writer.write(i, i + 3);
        QTest::qWait(10);
    }
    QVERIFY(QDir().entryList({"*.qvl"}).size() > 3);
    QTRY_COMPARE_WITH_TIMEOUT(following.texts(), numbers(1, 200), 20000);
}

// While the tool looks, too.
void QvlogFollowTest::splitsWithoutPause()
{
    QvlogScene scene;
    Writer writer(scene);
    writer.log().setSplitPolicy(qv::SplitBySize, 400);
    writer.write(0, 0);
    Following following;
    FOLLOW(following);
    for (int i = 1; i <= 600; ++i) {
        writer.write(i, i);
        QTest::qSleep(3);
    }
    QTRY_COMPARE_WITH_TIMEOUT(following.texts(), numbers(1, 600), 20000);
}

// Faster than anyone can look.
void QvlogFollowTest::severalSplitsAtOnce()
{
    QvlogScene scene;
    Writer writer(scene);
    writer.write(0, 0);
    Following following;
    FOLLOW(following);
    writer.log().setSplitPolicy(qv::SplitBySize, 1);
    writer.write(1, 30);
    QTRY_COMPARE_WITH_TIMEOUT(following.texts(), numbers(1, 30), 20000);
}

void QvlogFollowTest::filesOfOtherLogsAreLeftOut()
{
    QvlogScene scene;
    scene.write("a.qvl", scene.header());
    Following following;
    FOLLOW(following);
    scene.append("a.qvl", scene.done("1") + scene.end());
    scene.write("z.qvl", scene.header("2024-05-31T18:00:00", "/log/z.qvl") + scene.done("other log"));
    QVERIFY(QFile::rename("a.qvl", "2024 a.qvl"));
    scene.write("a.qvl", scene.header("2024-05-31T19:00:00") + scene.done("2"));
    QTRY_COMPARE(following.texts(), numbers(1, 2));
}

void QvlogFollowTest::switchedLog()
{
    QvlogScene scene;
    Writer writer(scene);
    writer.write(1, 1);
    Following following;
    FOLLOW(following);
    writer.write(2, 2);
    writer.log().switchFileHandle(scene.path("b.qvl"));
    writer.write(3, 3);
    QTRY_COMPARE_WITH_TIMEOUT(following.texts(), numbers(2, 3), 20000);
    QVERIFY(following.shown().contains("Switched log: Switched logging from "));
    QVERIFY(following.told().contains("going on in './b.qvl'"));
    writer.write(4, 4);
    writer.log().switchFileHandle(scene.path("a.qvl"));
    writer.write(5, 5);
    QTRY_COMPARE_WITH_TIMEOUT(following.texts(), numbers(2, 5), 20000);
}

void QvlogFollowTest::restartedLog()
{
    QvlogScene scene;
    {
        Writer writer(scene);
        writer.write(1, 1);
    }
    Following following;
    FOLLOW(following);
    for (int run = 2; run < 5; ++run) {
        Writer writer(scene);
        writer.write(run, run);
    }
    QTRY_COMPARE_WITH_TIMEOUT(following.texts(), numbers(2, 4), 20000);
}

void QvlogFollowTest::interruption_data()
{
    QTest::addColumn<int>("signal");

    QTest::newRow("Ctrl-C") << SIGINT;
    QTest::newRow("end of the system") << SIGTERM;
}

void QvlogFollowTest::interruption()
{
    QvlogScene scene;
    scene.write("a.qvl", scene.header() + scene.done("1"));
    Following following({"--format", "xml", "--all"});
    QTRY_VERIFY(following.shown().contains("</entry>"));
    QFETCH(int, signal);
    QCOMPARE(kill(static_cast<pid_t>(following.process.processId()), signal), 0);
    QVERIFY(following.process.waitForFinished());
    QCOMPARE(following.process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(following.process.exitCode(), 0);
    QVERIFY(following.shown().endsWith("</log>\n"));
}

void QvlogFollowTest::missingFile()
{
    QvlogScene scene;
    Following following;
    QVERIFY(following.process.waitForFinished());
    QCOMPARE(following.told(), QString("qvlog: 'a.qvl': it cannot be read: No such file or directory\n"));
    QCOMPARE(following.process.exitCode(), 3);
}

QTEST_GUILESS_MAIN(QvlogFollowTest)
#include "tst_QvlogFollow.moc"
