// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include "Terminals.h"

#include <qvbase/FileEncrypt.h>
#include <qvbase/FileEncryptTesting_p.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

struct VaultResult {
    int exitCode = -1;
    QByteArray output;
    QString error;
};

/// A folder, made the current one, and the example run in it on the file "events.vault".
class VaultScene {
public:
    VaultScene() { QDir::setCurrent(m_dir.path()); }
    ~VaultScene() { QDir::setCurrent(QDir::rootPath()); }
    Q_DISABLE_COPY_MOVE(VaultScene)

    static QString file() { return QStringLiteral("events.vault"); }
    QString path(QString const& name) const { return m_dir.filePath(name); }

    static void write(QString const& name, QByteArray const& bytes)
    {
        QFile out(name);
        QVERIFY(out.open(QIODevice::WriteOnly));
        QCOMPARE(out.write(bytes), qint64{bytes.size()});
    }
    static QByteArray read(QString const& name)
    {
        QFile in(name);
        return in.open(QIODevice::ReadOnly) ? in.readAll() : QByteArray("cannot be read");
    }

    /// A vault of these lines whose password is cheap to check.
    static void create(QByteArrayList const& lines)
    {
        qv::FileEncryptTesting::setScryptCost(4, 1, 1);
        qv::FileEncrypt out(file());
        out.setFileUserPassword(QString(), "secret");
        QVERIFY(out.open(QIODevice::WriteOnly | QIODevice::Append));
        for (QByteArray const& line : lines)
            QCOMPARE(out.write(line), qint64{line.size()});
    }

    static QProcessEnvironment environment(QByteArray const& password)
    {
        QProcessEnvironment result = QProcessEnvironment::systemEnvironment();
        result.remove("VAULT_PASSWORD");
        if (!password.isNull())
            result.insert("VAULT_PASSWORD", password);
        return result;
    }

    /// A null @p password sets no environment variable.
    static VaultResult run(
        QStringList const& arguments, QByteArray const& input = {}, QByteArray const& password = "secret")
    {
        TerminalProcess process;
        process.setProcessEnvironment(environment(password));
        process.start(VAULT_PROGRAM, arguments);
        process.write(input);
        process.closeWriteChannel();
        return resultOf(process);
    }
    static VaultResult resultOf(QProcess& process)
    {
        if (!process.waitForFinished() || process.exitStatus() != QProcess::NormalExit)
            return {};
        return {process.exitCode(), process.readAllStandardOutput(), QString::fromUtf8(process.readAllStandardError())};
    }

private:
    QTemporaryDir m_dir;
};
