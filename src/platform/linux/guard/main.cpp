// morvane-runtime-guard PARENT PROGRAM ARGUMENT…: runs a program so that nothing of it outlives PARENT, the
// process that started this one.
//
// The program gets a process group of its own, no descriptors but the three usual ones, and no signal mask.
// Whatever it starts is handed to this process when its own parent goes, so that all of it can be found and
// ended: when the program ends, when this process is told to (SIGTERM, SIGINT, SIGHUP), and when PARENT is
// gone, however it went.

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include <dirent.h>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr int grace = 5; // seconds that the program has to end by itself
constexpr int cannotRun = 127;

void closeInheritedDescriptors()
{
    constexpr unsigned first = 3;
    if (::close_range(first, ~0U, 0) == 0)
        return;
    for (int descriptor = first; descriptor < 1024; ++descriptor)
        ::close(descriptor);
}

// What the program holds in memory is the person's, and belongs into no file.
void leaveNoCore()
{
    const rlimit none{0, 0};
    ::setrlimit(RLIMIT_CORE, &none);
}

sigset_t watchedSignals()
{
    sigset_t signals;
    ::sigemptyset(&signals);
    for (const int signal : {SIGTERM, SIGINT, SIGHUP, SIGCHLD})
        ::sigaddset(&signals, signal);
    return signals;
}

pid_t start(char **command)
{
    const pid_t guard = ::getpid();
    const pid_t child = ::fork();
    if (child != 0)
        return child;
    ::setpgid(0, 0);
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != guard)
        ::_exit(cannotRun);
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    ::execv(command[0], command);
    std::perror("runtime");
    ::_exit(cannotRun);
}

// The parent's id of a process, by its line in /proc; 0 when it is gone.
pid_t parentOf(int id)
{
    std::array<char, 64> path{};
    std::snprintf(path.data(), path.size(), "/proc/%d/stat", id);
    const int file = ::open(path.data(), O_RDONLY | O_CLOEXEC);
    if (file < 0)
        return 0;
    std::array<char, 512> line{};
    const ssize_t size = ::read(file, line.data(), line.size() - 1);
    ::close(file);
    // The name in parentheses may hold anything, parentheses too.
    const char *const nameEnd = size > 0 ? std::strrchr(line.data(), ')') : nullptr;
    int parent = 0;
    char state = 0;
    return nameEnd != nullptr && std::sscanf(nameEnd + 1, " %c %d", &state, &parent) == 2 ? parent : 0;
}

// Everything below this process is its child in the end: what loses its parent comes here.
int killChildren()
{
    DIR *const processes = ::opendir("/proc");
    if (processes == nullptr)
        return 0;
    int count = 0;
    while (const dirent *const entry = ::readdir(processes)) {
        const int id = std::atoi(entry->d_name);
        if (id > 0 && parentOf(id) == ::getpid()) {
            ::kill(id, SIGKILL);
            ++count;
        }
    }
    ::closedir(processes);
    return count;
}

void endAll(pid_t group)
{
    ::kill(-group, SIGKILL);
    while (killChildren() > 0)
        if (::waitpid(-1, nullptr, 0) < 0 && errno == ECHILD)
            return;
}

// Takes in all that have ended; whether the program is among them.
bool reaped(pid_t child, int &status)
{
    bool isOver = false;
    int ended = 0;
    while (const pid_t process = ::waitpid(-1, &ended, WNOHANG)) {
        if (process < 0)
            break;
        if (process == child) {
            status = ended;
            isOver = true;
        }
    }
    return isOver;
}

time_t seconds()
{
    timespec now{};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec;
}

// Until the program has ended, or has had its time to.
int watch(pid_t child)
{
    const sigset_t signals = watchedSignals();
    int status = 0;
    time_t deadline = 0; // 0: nobody wants it to end
    while (!reaped(child, status)) {
        const timespec patience{.tv_sec = 1, .tv_nsec = 0};
        const int signal = ::sigtimedwait(&signals, nullptr, &patience);
        if (signal > 0 && signal != SIGCHLD && deadline == 0) {
            deadline = seconds() + grace;
            ::kill(child, SIGTERM);
        }
        if (deadline != 0 && seconds() >= deadline)
            return SIGKILL;
    }
    return status;
}

} // namespace

int main(int argc, char **argv)
{
    if (argc < 3) {
        std::fputs("usage: morvane-runtime-guard PARENT PROGRAM ARGUMENT…\n", stderr);
        return 2;
    }
    closeInheritedDescriptors();
    leaveNoCore();
    const sigset_t signals = watchedSignals();
    ::sigprocmask(SIG_SETMASK, &signals, nullptr);
    ::prctl(PR_SET_CHILD_SUBREAPER, 1);
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (::getppid() != std::atoi(argv[1])) // gone before this was told to hear of it
        return 1;
    const pid_t child = start(argv + 2);
    if (child < 0) {
        std::perror("fork");
        return cannotRun;
    }
    const int status = watch(child);
    endAll(child);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1;
}
