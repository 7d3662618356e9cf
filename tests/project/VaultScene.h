// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <qvbase/FileEncrypt.h>
#include <qvbase/FileEncryptTesting_p.h>

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <cstdlib>
#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

/// A process without a terminal, or with a terminal of its own.
class TerminalProcess : public QProcess {
public:
    explicit TerminalProcess(QByteArray const& terminal = {})
        : m_terminal(terminal)
    {
    }

protected:
    void setupChildProcess() override
    {
        setsid();
        if (!m_terminal.isEmpty()) // The first terminal that a session opens becomes its own.
            ::open(m_terminal.constData(), O_RDWR);
    }

private:
    QByteArray m_terminal;
};

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

/// A terminal that the test sits at.
class Terminal {
public:
    Terminal()
        : m_handle(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC))
    {
        grantpt(m_handle);
        unlockpt(m_handle);
        fcntl(m_handle, F_SETFL, O_NONBLOCK);
        m_slave
            = open(ptsname(m_handle), O_RDWR | O_NOCTTY | O_CLOEXEC); // Keeps the terminal's state between programs.
    }
    ~Terminal()
    {
        close(m_slave);
        close(m_handle);
    }
    Q_DISABLE_COPY_MOVE(Terminal)

    QByteArray name() const { return ptsname(m_handle); }
    void type(QByteArray const& keys) const
    {
        QCOMPARE(::write(m_handle, keys.constData(), static_cast<std::size_t>(keys.size())), ssize_t{keys.size()});
    }
    /// What has been shown, with plain line breaks.
    QByteArray shown()
    {
        char bytes[1024];
        ssize_t length = 0;
        while ((length = ::read(m_handle, bytes, sizeof bytes)) > 0)
            m_shown.append(bytes, static_cast<int>(length));
        return QByteArray(m_shown).replace("\r\n", "\n");
    }
    bool echoes() const
    {
        termios state = {};
        return tcgetattr(m_slave, &state) == 0 && (state.c_lflag & ECHO) != 0;
    }

private:
    int m_handle;
    int m_slave;
    QByteArray m_shown;
};
