#include "documents/extraction/Confinement.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

namespace morvane {

namespace {

// The sanitizers need more memory than a confined process has.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr std::size_t tooMuch = std::size_t{1} << 60;
#else
constexpr std::size_t tooMuch = std::size_t{2} << 30;
#endif

// How many things the process could still do, in a thread made afterwards.
int leftOpen(int inherited)
{
    Confinement::limit();
    if (!Confinement::seal())
        return 255;
    int open = 0;
    std::thread([&open, inherited] {
        constexpr int memory = PROT_READ | PROT_WRITE;
        constexpr int anonymous = MAP_PRIVATE | MAP_ANONYMOUS;
        void *const reserved = ::mmap(nullptr, std::size_t{16} << 30, PROT_NONE, anonymous, -1, 0);
        const bool could[] = {reserved == MAP_FAILED, // which the reader of PDFs needs
                              ::mprotect(reserved, tooMuch, memory) == 0,
                              ::mmap(nullptr, tooMuch, memory, anonymous, -1, 0) != MAP_FAILED,
                              ::mmap(nullptr, 4096, memory, MAP_SHARED | MAP_ANONYMOUS, -1, 0) != MAP_FAILED,
                              ::mmap(nullptr, 4096, memory, anonymous | MAP_GROWSDOWN, -1, 0) != MAP_FAILED,
                              ::fcntl(inherited, F_GETFD) != -1,
                              ::open("/etc/passwd", O_RDONLY) >= 0,
                              ::open("/tmp/morvane-confinement", O_CREAT | O_WRONLY, 0600) >= 0,
                              ::socket(AF_INET, SOCK_STREAM, 0) >= 0,
                              ::socket(AF_UNIX, SOCK_STREAM, 0) >= 0,
                              ::syscall(SYS_clone, 17, 0, 0, 0, 0) >= 0,
                              ::kill(::getppid(), 0) == 0,
                              ::mmap(nullptr, 4096, PROT_READ | PROT_EXEC, anonymous, -1, 0) != MAP_FAILED};
        for (std::size_t i = 0; i < std::size(could); ++i)
            open += could[i] ? 1 : 0;
    }).join();
    return open;
}

TEST(ConfinementDeathTest, LeavesNoFilesNoSocketsAndNoProcesses)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    const int inherited = ::open("/dev/null", O_RDONLY);
    ASSERT_GT(inherited, 2);
    EXPECT_EXIT(::_exit(leftOpen(inherited)), testing::ExitedWithCode(0), "");
}

} // namespace

} // namespace morvane
