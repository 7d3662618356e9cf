// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include "Terminals.h"

#include <qvbase/FileEncrypt.h>
#include <qvbase/FileEncryptTesting_p.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

struct QvlogResult {
    int exitCode = -1;
    QByteArray output;
    QString error;
};

/// A folder, made the current one, with log files, and the tool run on them.
class QvlogScene {
public:
    QvlogScene() { QDir::setCurrent(m_dir.path()); }
    ~QvlogScene() { QDir::setCurrent(QDir::rootPath()); }
    Q_DISABLE_COPY_MOVE(QvlogScene)

    QString path(QString const& name) const { return m_dir.filePath(name); }

    static QByteArray header(QByteArray const& date = "2024-05-31T18:00:00", QByteArray const& name = "/log/a.qvl")
    {
        return "<?xml version=\"1.0\" encoding=\"UTF-8\"?><Entries Version=\"v0.1\" LogFile=\"" + name + "\" Date=\""
            + date + "\">";
    }
    /// An export that is done; @p text and @p user as they stand in the file.
    static QByteArray done(QByteArray const& text, QByteArray const& time = "31 May 2024 18:30:00",
        QByteArray const& user = "ann (System)")
    {
        return "<Entry ID=\"ExpD\" Time=\"" + time + "\" User=\"" + user + "\" Text=\"" + text + "\"/>";
    }
    static QByteArray end() { return "\n</Entries>\n"; }

    static void write(QString const& name, QByteArray const& bytes)
    {
        QFile out(name);
        QVERIFY(out.open(QIODevice::WriteOnly));
        QCOMPARE(out.write(bytes), qint64{bytes.size()});
    }
    static void append(QString const& name, QByteArray const& bytes)
    {
        QFile out(name);
        QVERIFY(out.open(QIODevice::WriteOnly | QIODevice::Append));
        QCOMPARE(out.write(bytes), qint64{bytes.size()});
    }
    static QByteArray read(QString const& name)
    {
        QFile in(name);
        return in.open(QIODevice::ReadOnly) ? in.readAll() : QByteArray("cannot be read");
    }
    /// Encrypted with "secret", which is cheap to check; each piece is a record of its own.
    static void appendEncrypted(QString const& name, QByteArrayList const& pieces, QString const& user = {})
    {
        qv::FileEncryptTesting::setScryptCost(4, 1, 1);
        qv::FileEncrypt out(name);
        out.setFileUserPassword(user, "secret");
        QVERIFY(out.open(QIODevice::WriteOnly | QIODevice::Append));
        for (QByteArray const& piece : pieces)
            QCOMPARE(out.write(piece), qint64{piece.size()});
    }
    /// To @p size bytes of text.
    static void cutEncrypted(QString const& name, qint64 size)
    {
        qv::FileEncrypt file(name);
        file.setFileUserPassword({}, "secret");
        QVERIFY(file.resize(size));
    }
    static void flipBit(QString const& name, qint64 offset)
    {
        QFile file(name);
        char byte = 0;
        QVERIFY(file.open(QIODevice::ReadWrite) && file.seek(offset) && file.getChar(&byte) && file.seek(offset));
        QVERIFY(file.putChar(static_cast<char>(byte ^ 1)));
    }

    /// What the tool is run with; a null password sets no environment variable.
    static QProcessEnvironment environment(QByteArray const& password, QByteArray const& locale = "C")
    {
        QProcessEnvironment result = QProcessEnvironment::systemEnvironment();
        for (char const* name : {"QVLOG_PASSWORD", "QVLOG_NEW_PASSWORD", "COLUMNS", "LANGUAGE", "LANG"})
            result.remove(QString::fromLatin1(name));
        result.insert("LC_ALL", locale);
        if (!password.isNull())
            result.insert("QVLOG_PASSWORD", password);
        return result;
    }
    static QvlogResult run(
        QStringList const& arguments, QProcessEnvironment const& environment = QvlogScene::environment({}))
    {
        TerminalProcess process;
        process.setProcessEnvironment(environment);
        process.start(QVLOG_PROGRAM, arguments);
        process.closeWriteChannel();
        return resultOf(process);
    }
    static QvlogResult resultOf(QProcess& process)
    {
        if (!process.waitForFinished() || process.exitStatus() != QProcess::NormalExit)
            return {};
        return {process.exitCode(), process.readAllStandardOutput(), QString::fromUtf8(process.readAllStandardError())};
    }

private:
    QTemporaryDir m_dir;
};
