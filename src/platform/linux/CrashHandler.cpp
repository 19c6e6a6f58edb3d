#include "platform/linux/CrashHandler.h"

#include "platform/linux/CrashStack.h"
#include "platform/linux/Sanitized.h"
#include "utils/files/PrivateFile.h"
#include "utils/text/Product.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <cxxabi.h>
#include <dlfcn.h>
#include <elf.h>
#include <exception>
#include <execinfo.h>
#include <fcntl.h>
#include <link.h>
#include <typeinfo>
#include <ucontext.h>
#include <unistd.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

struct Watched {
    int number;
    const char *name;
};
constexpr std::array watched{Watched{SIGSEGV, "SIGSEGV"}, Watched{SIGBUS, "SIGBUS"},
                             Watched{SIGILL, "SIGILL"},   Watched{SIGFPE, "SIGFPE"},
                             Watched{SIGABRT, "SIGABRT"}, Watched{SIGTRAP, "SIGTRAP"},
                             Watched{SIGSYS, "SIGSYS"}};
constexpr int deepest = 64;       // calls
constexpr unsigned patience = 10; // seconds that a report may take

enum class Cause { signal, terminate, fatalMessage };

// What the handler finds ready. Written before it can run, but for the cause.
std::array<char, PATH_MAX> prefix{};
std::array<char, PATH_MAX> oldest{}; // which gives way to a report; empty for none
pid_t process = 0;
pid_t mainThread = 0;
QtMessageHandler formerMessageHandler = nullptr;
std::atomic<Cause> cause{Cause::signal};
std::atomic<const char *> exceptionType{nullptr}; // its mangled name, which is part of the program
std::atomic<pid_t> crashed{0};                    // the first thread that did
static_assert(std::atomic<Cause>::is_always_lock_free && std::atomic<const char *>::is_always_lock_free &&
              std::atomic<pid_t>::is_always_lock_free);

// Text of bounded length, put together without the heap. What doesn't fit is left out.
template <std::size_t capacity>
class Words {
public:
    Words &operator<<(const char *text)
    {
        for (; *text != 0; ++text)
            put(*text);
        return *this;
    }

    Words &number(std::uint64_t value, unsigned base = 10, int digits = 1)
    {
        std::array<char, 24> reversed{};
        int count = 0;
        for (; value > 0 || count < digits; value /= base)
            reversed[count++] = "0123456789abcdef"[value % base];
        while (count > 0)
            put(reversed[--count]);
        return *this;
    }

    [[nodiscard]] const char *text() const { return m_text.data(); } // ends in a null

    void writeTo(int file) const
    {
        for (std::size_t done = 0; done < m_size;) {
            const ssize_t written = ::write(file, m_text.data() + done, m_size - done);
            if (written < 0 && errno != EINTR)
                return;
            done += written > 0 ? static_cast<std::size_t>(written) : 0;
        }
    }

private:
    void put(char character)
    {
        if (m_size + 1 < capacity)
            m_text[m_size++] = character;
    }

    std::array<char, capacity> m_text{};
    std::size_t m_size = 0;
};

using Line = Words<512>;

void *whereItWas([[maybe_unused]] const ucontext_t &context)
{
#if defined(__x86_64__)
    return reinterpret_cast<void *>(context.uc_mcontext.gregs[REG_RIP]);
#elif defined(__aarch64__)
    return reinterpret_cast<void *>(context.uc_mcontext.pc);
#else
    return nullptr;
#endif
}

// Of a call that has only just begun.
void *whereItReturnsTo([[maybe_unused]] const ucontext_t &context)
{
#if defined(__x86_64__)
    return *reinterpret_cast<void *const *>(context.uc_mcontext.gregs[REG_RSP]);
#elif defined(__aarch64__)
    return reinterpret_cast<void *>(context.uc_mcontext.regs[30]);
#else
    return nullptr;
#endif
}

const char *fileNameOf(const dl_find_object &module)
{
    const char *path = module.dlfo_link_map ? module.dlfo_link_map->l_name : nullptr;
    if (!path || *path == 0)
        return "morvane";
    const char *slash = std::strrchr(path, '/');
    return slash ? slash + 1 : path;
}

// The notes of a module lie in its mapped headers.
void putBuildId(Line &line, const dl_find_object &module)
{
    const auto *const start = static_cast<const char *>(module.dlfo_map_start);
    const auto *const end = static_cast<const char *>(module.dlfo_map_end);
    const auto *const header = reinterpret_cast<const ElfW(Ehdr) *>(start);
    if (std::memcmp(header->e_ident, ELFMAG, SELFMAG) != 0)
        return;
    const auto *segment = reinterpret_cast<const ElfW(Phdr) *>(start + header->e_phoff);
    for (int i = 0; i < header->e_phnum; ++i, ++segment) {
        if (segment->p_type != PT_NOTE)
            continue;
        const char *at = reinterpret_cast<const char *>(module.dlfo_link_map->l_addr + segment->p_vaddr);
        const char *const last = at + segment->p_memsz;
        while (at >= start && last <= end && at + sizeof(ElfW(Nhdr)) <= last) {
            const auto *const note = reinterpret_cast<const ElfW(Nhdr) *>(at);
            const char *const value = at + sizeof *note + ((note->n_namesz + 3) & ~3U);
            at = value + ((note->n_descsz + 3) & ~3U);
            if (note->n_type != NT_GNU_BUILD_ID || at > last)
                continue;
            line << " (build ";
            for (unsigned byte = 0; byte < note->n_descsz; ++byte)
                line.number(static_cast<unsigned char>(value[byte]), 16, 2);
            line << ")";
            return;
        }
    }
}

// An address that lies in no module may be anything, data included.
void putCall(int file, int index, void *address)
{
    Line line;
    line << "  ";
    line.number(static_cast<unsigned>(index)) << "  ";
    dl_find_object module{};
    if (_dl_find_object(address, &module) != 0) {
        (line << "outside of every module\n").writeTo(file);
        return;
    }
    line << fileNameOf(module) << "+0x";
    line.number(reinterpret_cast<std::uintptr_t>(address) - module.dlfo_link_map->l_addr, 16);
    putBuildId(line, module);
    (line << "\n").writeTo(file);
}

void putTime(Line &line, std::time_t seconds)
{
    using namespace std::chrono;
    const sys_seconds time{std::chrono::seconds{seconds}};
    const auto day = floor<days>(time);
    const year_month_day date{day};
    const hh_mm_ss clock{time - day};
    line.number(static_cast<unsigned>(static_cast<int>(date.year())), 10, 4) << "-";
    line.number(static_cast<unsigned>(date.month()), 10, 2) << "-";
    line.number(static_cast<unsigned>(date.day()), 10, 2) << " ";
    line.number(static_cast<unsigned>(clock.hours().count()), 10, 2) << ":";
    line.number(static_cast<unsigned>(clock.minutes().count()), 10, 2) << ":";
    line.number(static_cast<unsigned>(clock.seconds().count()), 10, 2) << " UTC";
}

void putCause(Line &line)
{
    switch (cause.load()) {
    case Cause::signal:
        return;
    case Cause::terminate:
        line << ", an exception that nobody caught";
        if (const char *type = exceptionType.load())
            line << ", of the type " << type;
        return;
    case Cause::fatalMessage:
        line << ", a fatal message of Qt";
        return;
    }
}

void putHead(int file, int number, std::time_t now)
{
    const auto *const known = std::find_if(watched.begin(), watched.end(),
                                           [number](const Watched &each) { return each.number == number; });
    Line line;
    line << Product::name.data() << " " << Product::version.data() << " crashed.\nTime: ";
    putTime(line, now);
    line << "\nCause: " << (known == watched.end() ? "signal" : known->name);
    putCause(line);
    line
        << "\nThread: " << (::gettid() == mainThread ? "main" : "another") << "\n\n"
        << "The calls that led there, the last one first, each as a module and an offset in it. Nothing that "
           "stood in memory is in this file.\n";
    line.writeTo(file);
}

// From the call that crashed on: those above it are of the handler. The unwinder reads the code of each call,
// which a broken pointer has none of.
void putCalls(int file, const ucontext_t &context)
{
    void *const crash = whereItWas(context);
    dl_find_object module{};
    if (_dl_find_object(crash, &module) != 0) {
        putCall(file, 0, crash);
        putCall(file, 1, whereItReturnsTo(context));
        return;
    }
    std::array<void *, deepest> calls{};
    const int count = ::backtrace(calls.data(), deepest);
    const auto end = calls.begin() + count;
    const auto found = std::find(calls.begin(), end, crash);
    const auto first = found == end ? calls.begin() : found;
    for (auto call = first; call != end; ++call)
        putCall(file, static_cast<int>(call - first), *call);
}

void report(int number, const ucontext_t &context)
{
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    Words<PATH_MAX + 64> path;
    path << prefix.data();
    path.number(static_cast<std::uint64_t>(now.tv_sec), 10, 12) << "-";
    path.number(static_cast<std::uint64_t>(process)) << ".txt";
    const int file = ::open(path.text(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (file < 0)
        return;
    if (oldest[0] != 0)
        ::unlink(oldest.data());
    putHead(file, number, now.tv_sec);
    putCalls(file, context);
    ::close(file);
}

// The process ends by the signal, as whoever started it expects.
[[noreturn]] void endBy(int number)
{
    struct sigaction usual {};
    usual.sa_handler = SIG_DFL;
    ::sigaction(number, &usual, nullptr);
    sigset_t set{};
    ::sigemptyset(&set);
    ::sigaddset(&set, number);
    ::pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
    ::raise(number);
    ::_exit(128 + number);
}

void handle(int number, siginfo_t *, void *context)
{
    pid_t nobody = 0;
    if (::getpid() == process) { // and no child on its way to another program
        if (!crashed.compare_exchange_strong(nobody, ::gettid())) {
            while (nobody != ::gettid()) // that one writes, and ends the process
                ::pause();
            endBy(number); // writing crashed as well
        }
        std::signal(SIGALRM, SIG_DFL); // unwinding what was overwritten may never end
        ::alarm(patience);
        report(number, *static_cast<const ucontext_t *>(context));
    }
    endBy(number);
}

// What it says of itself may be a person's words.
[[noreturn]] void terminated()
{
    cause = Cause::terminate;
    if (const std::type_info *type = abi::__cxa_current_exception_type())
        exceptionType = type->name();
    std::abort();
}

void hear(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (type == QtFatalMsg)
        cause = Cause::fatalMessage;
    formerMessageHandler(type, context, message);
}

bool place(std::array<char, PATH_MAX> &room, const QString &path)
{
    const QByteArray bytes = QFile::encodeName(path);
    if (bytes.size() >= PATH_MAX)
        return false;
    std::copy(bytes.begin(), bytes.end(), room.begin());
    room[bytes.size()] = 0;
    return true;
}

// The names begin with the time, so that the oldest comes first.
bool prepareFolder(const QString &folder, int kept)
{
    try {
        PrivateFile::createFolder(folder);
    } catch (const FileError &) {
        return false;
    }
    QStringList reports = QDir(folder).entryList({u"crash-*.txt"_s}, QDir::Files, QDir::Name);
    while (reports.size() > kept)
        QFile::remove(folder + u'/' + reports.takeFirst());
    return place(prefix, folder + u"/crash-"_s) &&
           (reports.size() < kept || place(oldest, folder + u'/' + reports.constFirst()));
}

void takeSignals()
{
    static const auto *const ofMainThread = new CrashStack; // to the end
    static_cast<void>(ofMainThread);
    struct sigaction action {};
    action.sa_sigaction = handle;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK;
    for (const Watched &each : watched)
        ::sigaction(each.number, &action, nullptr);
}

} // namespace

bool CrashHandler::isPossible()
{
#ifdef MORVANE_SANITIZED
    return false;
#else
    return true;
#endif
}

void CrashHandler::install(const QString &folder, int kept)
{
    if (!isPossible() || !prepareFolder(folder, kept))
        return;
    process = ::getpid();
    mainThread = ::gettid();
    std::array<void *, 1> call{};
    ::backtrace(call.data(), 1); // loads the unwinder
    formerMessageHandler = qInstallMessageHandler(hear);
    std::set_terminate(terminated);
    takeSignals();
}

} // namespace morvane
