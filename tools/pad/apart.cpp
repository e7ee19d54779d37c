#include "apart.h"

#include "failures.h"
#include "interrupts.h"
#include "text.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <exception>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QElapsedTimer>

namespace {

constexpr int patience = 30'000; // ms
constexpr char lastByte = '\0';  // behind a whole answer

// A child that is ended with this object if it has not ended by itself.
class Child
{
public:
    Child(pid_t process, int output) : m_process(process), m_output(output) {}
    ~Child()
    {
        if (m_process > 0) {
            kill(m_process, SIGKILL);
            waitpid(m_process, nullptr, 0);
        }
        close(m_output);
    }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    // False at the end.
    bool read(QByteArray& text) const
    {
        std::array<char, 4096> block;
        const ssize_t count = ::read(m_output, block.data(), block.size());
        if (count > 0)
            text.append(block.data(), static_cast<int>(count));
        return count > 0 || (count < 0 && (errno == EAGAIN || errno == EINTR));
    }
    int output() const { return m_output; }
    int wait()
    {
        int status = 0;
        waitpid(m_process, &status, 0);
        m_process = -1;
        return status;
    }

private:
    pid_t m_process;
    int m_output;
};

[[noreturn]] void answer(const std::function<QByteArray()>& work, int output)
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT})
        std::signal(signal, SIG_DFL);
    const rlimit none = {};
    setrlimit(RLIMIT_CORE, &none);
    QByteArray text;
    try {
        text = work() + lastByte;
    } catch (const std::exception& error) {
        text = error.what();
    }
    for (int written = 0; written < text.size();) {
        const ssize_t count =
            write(output, text.constData() + written, static_cast<std::size_t>(text.size() - written));
        if (count <= 0)
            break;
        written += static_cast<int>(count);
    }
    _exit(0); // nothing of the parent's is ended here
}

QString endOf(int status)
{
    return WIFSIGNALED(status)
               ? Text::tr("crashes: %1").arg(QString::fromLocal8Bit(strsignal(WTERMSIG(status))))
               : Text::tr("ends the process with exit code %1").arg(WEXITSTATUS(status));
}

} // namespace

Apart workApart(const std::function<QByteArray()>& work)
{
    std::array<int, 2> pipe{};
    if (pipe2(pipe.data(), O_CLOEXEC | O_NONBLOCK) != 0)
        throw Failure{Text::tr("no pipe: %1").arg(QString::fromLocal8Bit(std::strerror(errno)))};
    const pid_t process = fork();
    if (process == 0) {
        fcntl(pipe[1], F_SETFL, 0);
        answer(work, pipe[1]);
    }
    close(pipe[1]);
    Child child(process, pipe[0]);
    if (process < 0)
        throw Failure{Text::tr("no process: %1").arg(QString::fromLocal8Bit(std::strerror(errno)))};

    Apart result;
    QElapsedTimer clock;
    clock.start();
    while (child.read(result.answer)) {
        if (clock.hasExpired(patience)) {
            result.fault = Text::tr("does not come back within %1 seconds").arg(patience / 1000);
            return result;
        }
        waitFor({child.output()}, patience);
    }
    const int status = child.wait();
    if (!result.answer.endsWith(lastByte))
        result.fault = endOf(status);
    else
        result.answer.chop(1);
    return result;
}
