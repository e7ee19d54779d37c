#include "terminal.h"

#include "program.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <string_view>

#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

namespace {

// Written before the keyboard is taken, read by handlers as long as it is.
termios before;
std::atomic<bool> isTaken{false};

void takeTerminal()
{
    termios raw = before;
    raw.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
    raw.c_cc[VMIN] = 0;
    raw.c_cc[VTIME] = 0;
    tcflush(STDIN_FILENO, TCIFLUSH); // what was pressed before is not meant for this program
    tcsetattr(STDIN_FILENO, TCSANOW, &raw);
}

// Another program may have the terminal by now.
bool isInForeground()
{
    return tcgetpgrp(STDIN_FILENO) == getpgrp();
}

void onContinue(int)
{
    const int error = errno;
    if (isTaken && isInForeground())
        takeTerminal();
    errno = error;
}

void onStop(int signal)
{
    const int error = errno;
    restoreTerminal();
    kill(getpid(), SIGSTOP);
    // The signal to continue may come to another thread, and a read before that one has run would wait for a
    // whole line.
    onContinue(signal);
    errno = error;
}

void handle(int signal, void (*handler)(int))
{
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    sigfillset(&action.sa_mask);
    sigaction(signal, &action, nullptr);
}

constexpr char escape = '\033';

// Where a key ends whose bytes come behind an escape: a letter behind a bracket, or what is pressed with Alt.
std::size_t lastOfKey(std::string_view bytes, std::size_t at)
{
    if (bytes[at] != '[' && bytes[at] != 'O')
        return at;
    for (++at; at < bytes.size() && (bytes[at] < '@' || bytes[at] > '~');)
        ++at;
    return at;
}

// More bytes right behind an escape make it a part of another key's.
bool moreFollows()
{
    constexpr int patience = 30; // ms
    pollfd input = {STDIN_FILENO, POLLIN, 0};
    return poll(&input, 1, patience) > 0;
}

} // namespace

Keyboard::Keyboard()
    : m_isThere(isatty(STDIN_FILENO) == 1 && isInForeground() && tcgetattr(STDIN_FILENO, &before) == 0)
{
    if (!m_isThere)
        return;
    isTaken = true;
    handle(SIGTSTP, onStop);
    handle(SIGCONT, onContinue);
    takeTerminal();
}

Keyboard::~Keyboard()
{
    if (!m_isThere)
        return;
    restoreTerminal();
    isTaken = false;
    std::signal(SIGTSTP, SIG_DFL);
    std::signal(SIGCONT, SIG_DFL);
}

int Keyboard::descriptor() const
{
    return m_isThere && !m_isGone && isInForeground() ? STDIN_FILENO : -1;
}

Keyboard::Key Keyboard::read()
{
    std::array<char, 64> bytes;
    Key key = Key::None;
    pollfd input = {STDIN_FILENO, POLLIN, 0};
    // A terminal that another program has put back to whole lines is not readable before one is there.
    while (descriptor() >= 0 && poll(&input, 1, 0) > 0) {
        const ssize_t count = ::read(STDIN_FILENO, bytes.data(), bytes.size());
        if (count <= 0) {
            m_isGone = (input.revents & (POLLHUP | POLLERR)) != 0; // stays readable
            break;
        }
        const std::string_view pressed(bytes.data(), static_cast<std::size_t>(count));
        for (std::size_t at = 0; at < pressed.size(); ++at) {
            if (pressed[at] == '\n' || pressed[at] == '\r')
                key = Key::Enter;
            else if (pressed[at] != escape)
                continue;
            else if (at + 1 < pressed.size())
                at = lastOfKey(pressed, at + 1);
            else if (!moreFollows())
                key = Key::Escape;
        }
    }
    return key;
}

void restoreTerminal() noexcept
{
    if (isTaken && isInForeground())
        tcsetattr(STDIN_FILENO, TCSANOW, &before);
}

bool isTerminal(std::FILE* file)
{
    return isatty(fileno(file)) == 1;
}

StatusLine::StatusLine(std::FILE* file) : m_file(isTerminal(file) ? file : nullptr) {}

void StatusLine::show(const QString& text)
{
    if (!m_file || (text.isEmpty() && m_shown == 0))
        return;
    winsize size = {};
    const int columns = ioctl(fileno(m_file), TIOCGWINSZ, &size) == 0 && size.ws_col > 1 ? size.ws_col : 80;
    const QString shown = text.left(columns - 1);
    // What was longer before is overwritten.
    print(m_file, QLatin1Char('\r') + shown.leftJustified(qMin(m_shown, columns - 1)) +
                      (shown.isEmpty() ? QStringLiteral("\r") : QString()));
    std::fflush(m_file);
    m_shown = shown.size();
}
