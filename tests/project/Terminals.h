// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <QProcess>
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
