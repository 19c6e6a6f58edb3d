// crashing_program FOLDER WAY: crashes in that way, as the program is while it works.

#include "platform/linux/CrashHandler.h"
#include "platform/linux/ProcessPrivacy.h"

#include <QString>

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

volatile int *volatile nowhere = nullptr;
volatile int depth = 0;
std::string words; // a person's, in memory

int overflow(int level) // NOLINT(misc-no-recursion)
{
    if (depth < 0) // never, which no compiler knows
        return 0;
    volatile char room[4096] = {};
    room[level % 4096] = 1;
    depth = depth + 1;
    return overflow(level + 1) + room[0];
}

void crash(const std::string &way)
{
    if (way == "segv")
        *nowhere = 1;
    else if (way == "abort")
        std::abort();
    else if (way == "overflow")
        overflow(0);
    else if (way == "throw")
        throw std::runtime_error(words);
    else if (way == "fatal")
        qFatal("%s", words.c_str());
    else if (way == "jump") // to where no module is: the words, taken for an address of 46 bits
        reinterpret_cast<void (*)()> (*reinterpret_cast<const std::uintptr_t *>(words.data()) &
                                      0x3fff'ffff'ffff)();
}

} // namespace

int main(int argc, char **argv)
{
    using namespace morvane;
    if (argc < 3)
        return 2;
    ProcessPrivacy::keep();
    CrashHandler::install(QString::fromLocal8Bit(argv[1]), 5);
    words.append("marked").append(" words of a chat");
    const std::string way = argv[2];
    if (way == "thread" || way == "threads" || way == "fullthread") {
        std::thread first(crash, way == "fullthread" ? "overflow" : "segv");
        if (way == "threads")
            crash("abort");
        first.join();
    } else if (way == "child") {
        if (::fork() == 0)
            crash("segv");
        ::wait(nullptr);
    }
    crash(way);
    return 0;
}
