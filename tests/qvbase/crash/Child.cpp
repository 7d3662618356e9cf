// SPDX-License-Identifier: LGPL-2.1-or-later
#include "Child.h"

#include <QFile>
#include <QVector>

#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace crash {

namespace {

    pid_t start(QStringList const& command, int output)
    {
        QList<QByteArray> words;
        QVector<char*> arguments;
        for (QString const& word : command)
            words.append(QFile::encodeName(word));
        for (QByteArray& word : words)
            arguments.append(word.data());
        arguments.append(nullptr);

        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
        pid_t process = -1;
        posix_spawn(&process, arguments.first(), &actions, nullptr, arguments.data(), environ);
        posix_spawn_file_actions_destroy(&actions);
        return process;
    }

} // namespace

Child::Child(QStringList const& command)
{
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        qFatal("no pipe");
    m_process = start(command, ends[1]);
    m_pipe = ends[0];
    close(ends[1]);
}

Child::~Child()
{
    if (m_process > 0) {
        kill();
        output();
    }
}

bool Child::readSome()
{
    char buffer[65536];
    ssize_t const size = read(m_pipe, buffer, sizeof buffer);
    if (size > 0)
        m_output.append(buffer, static_cast<int>(size));
    return size > 0;
}

void Child::awaitOutput(int bytes)
{
    while (m_output.size() < bytes && readSome()) { }
}

void Child::kill()
{
    ::kill(m_process, SIGKILL);
}

QByteArray Child::output()
{
    while (readSome()) { }
    close(m_pipe);
    waitpid(m_process, &m_status, 0);
    m_process = -1;
    return m_output;
}

} // namespace crash
