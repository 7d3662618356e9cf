// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QtTest>

#include <linux/capability.h>
#include <sys/prctl.h>

/// Takes from the superuser the right to pass by permissions, so that a forbidden folder is one in any test run.
class PlainProcess : public QProcess {
protected:
    void setupChildProcess() override
    {
        prctl(PR_CAPBSET_DROP, CAP_DAC_OVERRIDE);
        prctl(PR_CAPBSET_DROP, CAP_DAC_READ_SEARCH);
    }
};

/// What a run of the example has printed.
struct RecordingsResult {
    int exitCode = -1;
    QString output;
    QString error;

    /// The search that the options ask for.
    QString lastSearch() const { return output.section("Your search\n", 1); }
    /// What stands behind the label, the last time that it comes.
    QString lastField(QString const& label) const
    {
        QString const start = QStringLiteral("  ") + label.leftJustified(11);
        QStringList const lines = output.split(QLatin1Char('\n')).filter(start);
        return lines.isEmpty() ? QString() : lines.constLast().mid(start.size());
    }
    /// The names of the files that the search the options ask for shows, in its order.
    QStringList lastFiles() const
    {
        QString const table = lastSearch().section("\n\n", 1, 1);
        QStringList names;
        for (QString const& line : table.split('\n').mid(1)) {
            if (line.startsWith(QLatin1String("    ")))
                names += line.simplified().section(' ', 0, 0);
        }
        return names;
    }
};

/// A folder "tree" of 7 files in 3 folders, and the example run on it. The folder around it is made the current one.
class RecordingsTree {
public:
    RecordingsTree()
    {
        QDir::setCurrent(m_dir.path());
        QDir().mkpath("tree/docs/deep");
        write("a.txt", 10, "2022-05-01T12:00:00Z");
        write("big.TXT", 10241, "2022-05-02T00:00:00Z");
        write(".hidden", 0, "2022-05-03T00:00:00Z");
        write("docs/README", 100, "2022-05-04T03:00:00Z");
        write("docs/docs.md", 10240, "2022-05-05T00:00:00Z");
        write("docs/deep/a.txt", 20, "2022-05-06T00:00:00Z");
        write("docs/deep/it's", 30, "2022-05-07T00:00:00Z");
    }
    ~RecordingsTree() { QDir::setCurrent(QDir::rootPath()); }
    Q_DISABLE_COPY_MOVE(RecordingsTree)

    QString root() const { return m_dir.path(); }
    QString path(QString const& name) const { return m_dir.filePath("tree/" + name); }
    QString database() const { return m_dir.filePath("recordings.sqlite"); }
    QString log() const { return m_dir.filePath("log.qvl"); }

    void write(QString const& name, int size, QString const& modified)
    {
        QFile file(path(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(QByteArray(size, 'x')), qint64{size});
        QVERIFY(file.flush()); // Else closing the file writes, and changes the time again.
        QVERIFY(file.setFileTime(QDateTime::fromString(modified, Qt::ISODate), QFileDevice::FileModificationTime));
        file.close();
        QVERIFY(file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup | QFile::ReadOther));
    }

    QStringList options() const { return {"--folder", path("."), "--database", database(), "--log", log()}; }
    /// Options in @p arguments come last, and so win over these.
    RecordingsResult run(QStringList const& arguments) const
    {
        PlainProcess process;
        process.start(RECORDINGS_PROGRAM, options() + arguments);
        if (!process.waitForFinished() || process.exitStatus() != QProcess::NormalExit)
            return {};
        return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
    }

    /// The first value that @p statement gives on the database of the last run; invalid where it fails.
    QVariant fromDatabase(QString const& statement) const { return runSql(database(), statement); }

    static QVariant runSql(QString const& file, QString const& statement)
    {
        auto database = QSqlDatabase::contains("test") ? QSqlDatabase::database("test", false)
                                                       : QSqlDatabase::addDatabase("QSQLITE", "test");
        database.setDatabaseName(file);
        if (!database.open())
            return {};
        QSqlQuery query(database);
        QVariant value = query.exec(statement) && query.next() ? query.value(0) : QVariant();
        query.clear();
        database.close();
        return value;
    }

private:
    QTemporaryDir m_dir;
};
