#include "documents/extraction/Confinement.h"

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sched.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <vector>

namespace morvane {

namespace {

constexpr rlim_t mostMemory = 1536UL << 20; // bytes to write to; a large photograph takes a third
constexpr rlim_t mostSpace = 64UL << 30;    // bytes of addresses; PDF readers reserve 16 GB of them
constexpr rlim_t mostSeconds = 60;          // of processor time

#if defined(__x86_64__)
constexpr std::uint32_t architecture = AUDIT_ARCH_X86_64;
#elif defined(__aarch64__)
constexpr std::uint32_t architecture = AUDIT_ARCH_AARCH64;
#else
#error "Say what the system calls of this processor are called."
#endif

// The sanitizers take terabytes of address space for their own notes.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool isSanitized = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
constexpr bool isSanitized = true;
#else
constexpr bool isSanitized = false;
#endif
#else
constexpr bool isSanitized = false;
#endif

constexpr std::array allowed{SYS_read,
                             SYS_write,
                             SYS_readv,
                             SYS_writev,
                             SYS_close,
                             SYS_lseek,
                             SYS_fstat,
                             SYS_munmap,
                             SYS_brk,
                             SYS_mremap,
                             SYS_madvise,
                             SYS_futex,
                             SYS_exit,
                             SYS_exit_group,
                             SYS_rt_sigreturn,
                             SYS_rt_sigaction,
                             SYS_rt_sigprocmask,
                             SYS_sigaltstack,
                             SYS_clock_gettime,
                             SYS_gettimeofday,
                             SYS_getrandom,
                             SYS_sched_yield,
                             SYS_getpid,
                             SYS_gettid,
                             SYS_sched_getaffinity,
                             SYS_ppoll,
                             SYS_eventfd2,
                             SYS_sysinfo,
                             SYS_rseq,
                             SYS_set_robust_list,
                             SYS_restart_syscall,
                             SYS_clock_nanosleep};

using Filter = std::vector<sock_filter>;

void load(Filter &filter, std::size_t offset)
{
    filter.push_back(BPF_STMT(BPF_LD | BPF_W | BPF_ABS, static_cast<std::uint32_t>(offset)));
}

void answer(Filter &filter, std::uint32_t with)
{
    filter.push_back(BPF_STMT(BPF_RET | BPF_K, with));
}

// With the call's number loaded: this one is answered.
void answerCall(Filter &filter, long call, std::uint32_t with)
{
    filter.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<std::uint32_t>(call), 0, 1));
    answer(filter, with);
}

// This one is allowed when its argument has any of the bits, or when it has none of them. The low half is
// enough: all flags lie there.
void allowByBits(Filter &filter, long call, unsigned argument, std::uint32_t bits, bool mustHave)
{
    constexpr std::uint32_t refused = SECCOMP_RET_ERRNO | EPERM;
    filter.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<std::uint32_t>(call), 0, 4));
    load(filter, offsetof(seccomp_data, args) + argument * sizeof(std::uint64_t));
    filter.push_back(BPF_JUMP(BPF_JMP | BPF_JSET | BPF_K, bits, 0, 1));
    answer(filter, mustHave ? SECCOMP_RET_ALLOW : refused);
    answer(filter, mustHave ? refused : SECCOMP_RET_ALLOW);
}

// This one is refused when its argument has any of the bits, and judged further when it has none of them.
void refuseByBits(Filter &filter, long call, unsigned argument, std::uint32_t bits)
{
    filter.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<std::uint32_t>(call), 0, 4));
    load(filter, offsetof(seccomp_data, args) + argument * sizeof(std::uint64_t));
    filter.push_back(BPF_JUMP(BPF_JMP | BPF_JSET | BPF_K, bits, 0, 1));
    answer(filter, SECCOMP_RET_ERRNO | EPERM);
    load(filter, offsetof(seccomp_data, nr));
}

Filter filter()
{
    Filter filter;
    load(filter, offsetof(seccomp_data, arch));
    filter.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, architecture, 1, 0));
    answer(filter, SECCOMP_RET_KILL_PROCESS);
    load(filter, offsetof(seccomp_data, nr));
    for (const long call : allowed)
        answerCall(filter, call, SECCOMP_RET_ALLOW);
#ifdef SYS_poll
    answerCall(filter, SYS_poll, SECCOMP_RET_ALLOW);
#endif
    if (isSanitized) // they try through a pipe whether memory can be read
        answerCall(filter, SYS_pipe2, SECCOMP_RET_ALLOW);
    // Its arguments lie in memory, where a filter doesn't see them; the library does with the older call
    // then.
    answerCall(filter, SYS_clone3, SECCOMP_RET_ERRNO | ENOSYS);
    allowByBits(filter, SYS_clone, 0, CLONE_THREAD, true);
    // Memory that is shared or grows like a stack doesn't count as data, so the bound wouldn't see it.
    refuseByBits(filter, SYS_mmap, 3, MAP_SHARED | MAP_GROWSDOWN);
    allowByBits(filter, SYS_mmap, 2, PROT_EXEC, false);
    allowByBits(filter, SYS_mprotect, 2, PROT_EXEC, false);
    answer(filter, SECCOMP_RET_ERRNO | EPERM);
    return filter;
}

void limitTo(__rlimit_resource_t resource, rlim_t most)
{
    const rlimit both{most, most};
    ::setrlimit(resource, &both);
}

} // namespace

void Confinement::limit()
{
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    ::prctl(PR_SET_DUMPABLE, 0);
    ::syscall(SYS_close_range, 3U, ~0U, 0U);
    limitTo(RLIMIT_CORE, 0);
    limitTo(RLIMIT_FSIZE, 0);
    limitTo(RLIMIT_CPU, mostSeconds);
    if (!isSanitized) {
        limitTo(RLIMIT_DATA, mostMemory);
        limitTo(RLIMIT_AS, mostSpace);
    }
    static_cast<void>(::unshare(CLONE_NEWUSER | CLONE_NEWNET));
}

bool Confinement::seal()
{
    Filter instructions = filter();
    const sock_fprog program{static_cast<unsigned short>(instructions.size()), instructions.data()};
    return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           ::syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, SECCOMP_FILTER_FLAG_TSYNC, &program) == 0;
}

} // namespace morvane
