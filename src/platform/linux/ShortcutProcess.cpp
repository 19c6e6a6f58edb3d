#include "platform/linux/ShortcutProcess.h"

#include "async/CancelledError.h"

#include <QFile>

#include <array>
#include <cerrno>
#include <csignal>
#include <optional>
#include <tuple>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

constexpr int betweenLooks = 20;      // milliseconds until a stop or the watchdog is seen
constexpr int looksAfterTheTerm = 25; // so long it may put its things away
constexpr int drains = 64;            // reads of what a program left behind in its pipe

class Descriptor {
public:
    explicit Descriptor(int number = -1)
        : m_number(number)
    {}
    ~Descriptor() { close(); }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;

    void close()
    {
        if (m_number >= 0)
            ::close(m_number);
        m_number = -1;
    }
    [[nodiscard]] int number() const { return m_number; }

private:
    int m_number;
};

// What a desktop's programs need to find the person's things and the screen, and nothing else of ours.
QList<QByteArray> environment()
{
    QList<QByteArray> variables{"PATH=/usr/local/bin:/usr/bin:/bin"};
    for (const char *name : {"HOME",
                             "USER",
                             "LOGNAME",
                             "SHELL",
                             "LANG",
                             "LANGUAGE",
                             "LC_ALL",
                             "LC_CTYPE",
                             "LC_TIME",
                             "TZ",
                             "DISPLAY",
                             "XAUTHORITY",
                             "WAYLAND_DISPLAY",
                             "DBUS_SESSION_BUS_ADDRESS",
                             "XDG_RUNTIME_DIR",
                             "XDG_CURRENT_DESKTOP",
                             "XDG_SESSION_TYPE",
                             "XDG_DATA_DIRS",
                             "XDG_DATA_HOME",
                             "XDG_CONFIG_HOME"})
        if (const QByteArray value = qgetenv(name); !value.isEmpty())
            variables.append(QByteArray(name) + '=' + value);
    return variables;
}

// Pointers into `texts`, and a null at the end, as the system takes them.
std::vector<char *> pointers(QList<QByteArray> &texts)
{
    std::vector<char *> pointers;
    for (QByteArray &text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

// The process id; nothing when it couldn't be started.
std::optional<pid_t> start(const ShortcutProcess::Program &program, int output)
{
    QList<QByteArray> arguments{QFile::encodeName(program.path)};
    for (const QString &argument : program.arguments)
        arguments.append(QFile::encodeName(argument));
    QList<QByteArray> variables = environment();

    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    ::posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    ::posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    ::posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1);
    ::posix_spawn_file_actions_addchdir_np(&actions, QFile::encodeName(program.folder).constData());
    posix_spawnattr_t attributes;
    ::posix_spawnattr_init(&attributes);
    ::posix_spawnattr_setflags(&attributes,
                               POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    sigset_t signals{};
    ::sigemptyset(&signals);
    ::posix_spawnattr_setsigmask(&attributes, &signals);
    ::sigfillset(&signals);
    ::posix_spawnattr_setsigdefault(&attributes, &signals);

    pid_t process = -1;
    const int error = ::posix_spawn(&process, arguments.front().constData(), &actions, &attributes,
                                    pointers(arguments).data(), pointers(variables).data());
    ::posix_spawnattr_destroy(&attributes);
    ::posix_spawn_file_actions_destroy(&actions);
    return error == 0 ? std::optional(process) : std::nullopt;
}

// A started program. Its id stays its own until it is reaped, so the group is ended before that.
class Child {
public:
    explicit Child(pid_t process)
        : m_process(process)
    {}
    ~Child() { std::ignore = reap(); }
    Child(const Child &) = delete;
    Child &operator=(const Child &) = delete;

    // Without reaping it.
    [[nodiscard]] bool hasEnded() const
    {
        siginfo_t info{};
        return ::waitid(P_PID, static_cast<id_t>(m_process), &info, WEXITED | WNOHANG | WNOWAIT) == 0 &&
               info.si_pid == m_process;
    }

    void terminate() const
    {
        ::kill(-m_process, SIGTERM);
        for (int i = 0; i < looksAfterTheTerm && !hasEnded(); ++i)
            ::poll(nullptr, 0, betweenLooks);
    }

    // Ends what is left of its group. Its exit code, or -1.
    [[nodiscard]] int reap()
    {
        if (m_process < 0)
            return -1;
        ::kill(-m_process, SIGKILL);
        int status = 0;
        while (::waitpid(m_process, &status, 0) < 0 && errno == EINTR) {
        }
        m_process = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

private:
    pid_t m_process;
};

// Reads what there is. Whether more may come.
bool take(int pipe, QByteArray &kept)
{
    std::array<char, 64 << 10> bytes{};
    const ssize_t count = ::read(pipe, bytes.data(), bytes.size());
    if (count > 0)
        kept.append(bytes.data(), std::min<qsizetype>(count, ShortcutProcess::mostKept - kept.size()));
    return count > 0 || (count < 0 && (errno == EAGAIN || errno == EINTR));
}

// Until the program has ended, its time is up or it is stopped.
void listen(const Child &child, int pipe, QByteArray &kept, const TimeoutFlag &flag,
            const std::stop_token &stop)
{
    pollfd watched{pipe, POLLIN, 0};
    while (!stop.stop_requested() && !flag.isExpired() && !child.hasEnded()) {
        ::poll(&watched, 1, betweenLooks);
        if (watched.revents != 0 && !take(pipe, kept))
            watched.fd = -1; // closed by all who held it
    }
    for (int i = 0; i < drains && kept.size() < ShortcutProcess::mostKept && ::poll(&watched, 1, 0) > 0; ++i)
        if (!take(pipe, kept))
            break;
}

} // namespace

ShortcutProcess::End ShortcutProcess::run(const Program &program, TimeoutFlag &flag,
                                          const std::stop_token &stop)
{
    throwIfStopped(stop);
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0)
        return {};
    const Descriptor reading(ends[0]);
    Descriptor writing(ends[1]);
    ::fcntl(reading.number(), F_SETFL, O_NONBLOCK);
    const auto process = start(program, writing.number());
    writing.close();
    if (!process)
        return {};
    Child child(*process);
    End end;
    listen(child, reading.number(), end.output, flag, stop);
    end.timedOut = flag.end();
    if (end.timedOut || stop.stop_requested())
        child.terminate();
    end.exitCode = child.reap();
    throwIfStopped(stop);
    return end;
}

} // namespace morvane
