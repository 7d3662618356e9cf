// SPDX-License-Identifier: LGPL-2.1-or-later
#include <terminal/Terminal.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <fcntl.h>
#include <iterator>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

namespace {

constexpr int MaxAnswerBytes = 4096; // What a terminal takes as one line.
constexpr int interruptions[] = {SIGINT, SIGTERM, SIGQUIT, SIGHUP, SIGTSTP};

volatile std::sig_atomic_t interruption = 0;

extern "C" void noteInterruption(int number)
{
    interruption = number;
}

/// Catches what would end or stop the program while the terminal is silent, and lets it happen afterwards.
class DelayedInterruptions {
public:
    DelayedInterruptions()
    {
        struct sigaction action = {};
        action.sa_handler = noteInterruption; // Without SA_RESTART: a read ends.
        for (std::size_t i = 0; i < std::size(interruptions); ++i)
            sigaction(interruptions[i], &action, &m_previous[i]);
    }
    ~DelayedInterruptions()
    {
        for (std::size_t i = 0; i < std::size(interruptions); ++i)
            sigaction(interruptions[i], &m_previous[i], nullptr);
        if (interruption != 0)
            raise(interruption);
    }
    DelayedInterruptions(DelayedInterruptions const&) = delete;
    DelayedInterruptions& operator=(DelayedInterruptions const&) = delete;

private:
    struct sigaction m_previous[std::size(interruptions)] = {};
};

/// The terminal without echo, as long as the object lives.
class SilentTerminal {
public:
    SilentTerminal()
        : m_handle(open("/dev/tty", O_RDWR | O_NOCTTY | O_CLOEXEC))
    {
        if (m_handle < 0 || tcgetattr(m_handle, &m_previous) != 0)
            return;
        termios silent = m_previous;
        silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        m_silent = tcsetattr(m_handle, TCSAFLUSH, &silent) == 0;
    }
    ~SilentTerminal()
    {
        if (m_silent)
            tcsetattr(m_handle, TCSAFLUSH, &m_previous);
        if (m_handle >= 0)
            close(m_handle);
    }
    SilentTerminal(SilentTerminal const&) = delete;
    SilentTerminal& operator=(SilentTerminal const&) = delete;

    bool isSilent() const { return m_silent; }
    bool write(QByteArray const& text) const
    {
        return ::write(m_handle, text.constData(), static_cast<std::size_t>(text.size())) == text.size();
    }
    std::optional<QByteArray> readLine() const
    {
        std::array<char, MaxAnswerBytes> bytes = {};
        ssize_t length = -1;
        do
            length = read(m_handle, bytes.data(), bytes.size());
        while (length < 0 && errno == EINTR && interruption == 0);
        if (length <= 0)
            return {};
        QByteArray line(bytes.data(), static_cast<int>(length));
        if (line.endsWith('\n'))
            line.chop(1);
        return line;
    }

private:
    int m_handle;
    termios m_previous = {};
    bool m_silent = false;
};

} // namespace

std::optional<QByteArray> askHidden(QByteArray const& question)
{
    DelayedInterruptions const delayed;
    SilentTerminal const terminal;
    if (!terminal.isSilent() || !terminal.write(question))
        return {};
    auto answer = terminal.readLine();
    terminal.write("\n");
    return answer;
}

std::optional<int> terminalWidth()
{
    winsize size{};
    bool const isKnown = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return isKnown ? std::make_optional<int>(size.ws_col) : std::nullopt;
}
