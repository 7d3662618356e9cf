// SPDX-License-Identifier: LGPL-2.1-or-later
#include "RecordingsTree.h"

#include <GenericUtilities/actionlog/LogReader.h>

#include <csignal>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

/// What the example logs of its user.
class RecordingsTrailTest : public QObject {
    Q_OBJECT

private slots:
    void startSearchesAndQuit();
    void userIsTheAccountsOwner();
    void secondRunExtendsTheLog();
    void exportIsLogged();
    void exportOfAllRecordings();
    void exportThatFails_data();
    void exportThatFails();
    void exportThatIsInterrupted();
    void failureIsLoggedAsExitStatus();
    void logThatCannotBeWrittenIsTold();

private:
    static QStringList trailOf(QString const& file, QString* user = nullptr);
};

/// The entries as their ids and values, without their times.
QStringList RecordingsTrailTest::trailOf(QString const& file, QString* user)
{
    QFile log(file);
    if (!log.open(QIODevice::ReadOnly))
        return {"cannot be read"};
    qv::XMLLogReader reader(&log);
    QStringList trail;
    while (!reader.atEnd()) {
        std::unique_ptr<qv::LogEntry> const entry(reader.readNextLogEntry());
        if (!reader.isStartElement())
            continue;
        QStringList texts;
        for (QXmlStreamAttribute const& attribute : reader.attributes()) {
            if (attribute.name() == QLatin1String("User") && user)
                *user = attribute.value().toString();
            else if (attribute.name() != QLatin1String("Time") && attribute.name() != QLatin1String("User"))
                texts += attribute.value().toString();
        }
        trail += texts.join('|');
    }
    return trail;
}

void RecordingsTrailTest::startSearchesAndQuit()
{
    RecordingsTree tree;
    QCOMPARE(tree.run({"--suffix", "txt"}).exitCode, 0);
    QStringList const trail = trailOf(tree.log());
    QCOMPARE(trail.size(), 1 + 18 + 1);
    QCOMPARE(trail.first(), "RStr|" + QDir::cleanPath(tree.path(".")) + "|1.0.0");
    QCOMPARE(trail.at(18), QString("RSrc|suffix == \"txt\"|3"));
    QCOMPARE(trail.filter("RSrc").size(), 18);
    QCOMPARE(trail.last(), QString("RQit"));
}

void RecordingsTrailTest::userIsTheAccountsOwner()
{
    RecordingsTree tree;
    qunsetenv("USERNAME");
    QCOMPARE(tree.run({}).exitCode, 0);
    QString user;
    trailOf(tree.log(), &user);
    QCOMPARE(user, QFileInfo(tree.log()).owner() + " (System)");
    qputenv("USERNAME", "ann");
    QCOMPARE(tree.run({}).exitCode, 0);
    trailOf(tree.log(), &user);
    QCOMPARE(user, QString("ann (System)"));
}

void RecordingsTrailTest::secondRunExtendsTheLog()
{
    RecordingsTree tree;
    QCOMPARE(tree.run({}).exitCode, 0);
    QStringList const first = trailOf(tree.log());
    QCOMPARE(tree.run({}).exitCode, 0);
    QCOMPARE(trailOf(tree.log()), first + first);
}

void RecordingsTrailTest::exportIsLogged()
{
    RecordingsTree tree;
    QString const target = tree.root() + "/list";
    RecordingsResult const result = tree.run({"--suffix", "txt", "--larger-than", "10", "--export", "list"});
    QCOMPARE(result.error, QString());
    QCOMPARE(result.exitCode, 0);
    QVERIFY(result.output.contains("Exported 2 paths to " + target + '\n'));
    QString const folder = QDir::cleanPath(tree.path("."));
    QFile list(target);
    QVERIFY(list.open(QIODevice::ReadOnly));
    QStringList const paths = QString::fromUtf8(list.readAll()).split('\n');
    QCOMPARE(paths.size(), 3);
    QVERIFY(paths.contains(folder + "/big.TXT"));
    QVERIFY(paths.contains(folder + "/docs/deep/a.txt"));

    QStringList const trail = trailOf(tree.log()).filter("Exp");
    QCOMPARE(trail.size(), 3);
    // big.TXT is of 2022-05-02, deep/a.txt of 2022-05-06, both at midnight UTC.
    auto const text = [](QString const& iso) {
        return QLocale::system().toString(QDateTime::fromString(iso, Qt::ISODate).toLocalTime(), QLocale::ShortFormat);
    };
    QString const values = "|Format='%1'; Source='%2'; Date and time from='%4'; Date and time to '%5'; Target='%3'.|"
                           "unknown|"
        + folder + '|' + target + '|' + text("2022-05-02T00:00:00Z") + '|' + text("2022-05-06T00:00:00Z");
    QCOMPARE(trail.at(0), "ExpS" + values);
    QCOMPARE(trail.at(1), "ExpW" + values);
    QCOMPARE(trail.at(2), QString("ExpD|2 paths."));
}

void RecordingsTrailTest::exportOfAllRecordings()
{
    RecordingsTree tree;
    QCOMPARE(tree.run({"--export", "list"}).exitCode, 0);
    QFile list(tree.root() + "/list");
    QVERIFY(list.open(QIODevice::ReadOnly));
    QCOMPARE(list.readAll().count('\n'), 7);
}

void RecordingsTrailTest::exportThatFails_data()
{
    QTest::addColumn<QString>("target");
    QTest::addColumn<QString>("reason");

    QTest::newRow("file exists") << "there"
                                 << "File exists";
    QTest::newRow("folder is missing") << "nowhere/list"
                                       << "No such file or directory";
}

void RecordingsTrailTest::exportThatFails()
{
    RecordingsTree tree;
    QFETCH(QString, target);
    QFETCH(QString, reason);
    QFile there(tree.root() + "/there");
    QVERIFY(there.open(QIODevice::WriteOnly));
    QCOMPARE(there.write("kept"), qint64{4});
    there.close();
    RecordingsResult const result = tree.run({"--export", target});
    QString const message = '\'' + tree.root() + '/' + target + "' cannot be written: " + reason;
    QCOMPARE(result.error, "recordings: " + message + '\n');
    QCOMPARE(result.exitCode, 2);
    QStringList const trail = trailOf(tree.log());
    QStringList const exports = trail.filter(QRegularExpression("^Exp"));
    QCOMPARE(exports.size(), 2);
    QVERIFY(exports.at(0).startsWith("ExpS|"));
    QCOMPARE(exports.at(1), "ExpE|" + message);
    QCOMPARE(trail.last(), QString("RQit|2"));
    QCOMPARE(QFileInfo(there).size(), qint64{4});
}

// The program is interrupted while it waits for somebody to read its report; so the export finds that it is not wanted.
void RecordingsTrailTest::exportThatIsInterrupted()
{
    RecordingsTree tree;
    QByteArray const pipe = QFile::encodeName(tree.root() + "/pipe");
    QCOMPARE(mkfifo(pipe.constData(), 0600), 0);
    int const reader = open(pipe.constData(), O_RDWR | O_CLOEXEC | O_NONBLOCK);
    QVERIFY(reader >= 0);
    QByteArray const full(65536, '\n'); // What a pipe holds.
    QCOMPARE(write(reader, full.constData(), static_cast<std::size_t>(full.size())), ssize_t{65536});
    PlainProcess process;
    process.setStandardOutputFile(QFile::decodeName(pipe));
    process.start(RECORDINGS_PROGRAM, tree.options() + QStringList{"--export", "list"});
    QTRY_VERIFY(!trailOf(tree.log()).filter("RSrc").isEmpty());
    QCOMPARE(kill(static_cast<pid_t>(process.processId()), SIGINT), 0);
    QByteArray bytes(65536, '\0');
    while (process.state() != QProcess::NotRunning) {
        while (read(reader, bytes.data(), static_cast<std::size_t>(bytes.size())) > 0) { }
        process.waitForFinished(10);
    }
    close(reader);
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(process.exitCode(), 130);
    QStringList const trail = trailOf(tree.log());
    QVERIFY(!trail.filter(QRegularExpression("^ExpS")).isEmpty());
    QCOMPARE(trail.at(trail.size() - 2), "ExpA|'" + tree.root() + "/list' was interrupted.");
    QCOMPARE(trail.last(), QString("RQit|130"));
    QVERIFY(!QFile::exists(tree.root() + "/list"));
}

void RecordingsTrailTest::failureIsLoggedAsExitStatus()
{
    RecordingsTree tree;
    QCOMPARE(tree.run({"--folder", "nowhere"}).exitCode, 2);
    QStringList const trail = trailOf(tree.log());
    QCOMPARE(trail.size(), 2);
    QCOMPARE(trail.last(), QString("RQit|2"));
}

void RecordingsTrailTest::logThatCannotBeWrittenIsTold()
{
    RecordingsTree tree;
    RecordingsResult const result = tree.run({"--log", "nowhere/log.qvl"});
    QCOMPARE(result.exitCode, 0);
    QVERIFY(
        result.error.startsWith("recordings: the action log '" + tree.root() + "/nowhere/log.qvl' cannot be used\n"));
    QVERIFY(result.output.endsWith("with the same rows.\n"));
}

QTEST_GUILESS_MAIN(RecordingsTrailTest)
#include "tst_RecordingsTrail.moc"
