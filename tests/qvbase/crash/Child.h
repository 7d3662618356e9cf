// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <QByteArray>
#include <QStringList>

#include <sys/types.h>

namespace crash {

/// A process that a test may kill at any instant. What it writes to standard output is kept for the test.
class Child {
public:
    explicit Child(QStringList const& command);
    ~Child();
    Child(Child const&) = delete;
    Child& operator=(Child const&) = delete;

    /// Waits for so many bytes of output or its end.
    void awaitOutput(int bytes);
    void kill();
    /// Waits for its end. What it wrote since it was started.
    QByteArray output();
    /// After output(): whether it ended by itself, with exit code 0.
    bool succeeded() const { return m_status == 0; }

private:
    bool readSome();

    pid_t m_process = -1;
    int m_pipe = -1;
    int m_status = -1;
    QByteArray m_output;
};

} // namespace crash
