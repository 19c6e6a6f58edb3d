#pragma once

#include <cstddef>

namespace morvane {

// A second stack of this thread, on which its signal handlers run: one of a full stack has no room on that.
// A program that is linked with this gives one to each thread that is started in it, by whichever library,
// but under a sanitizer. It takes addresses, and memory only once it is used. Without memory to be had there
// is none.
class CrashStack {
public:
    static constexpr std::size_t bytes = 1 << 16;

    CrashStack();
    ~CrashStack();
    CrashStack(const CrashStack &) = delete;
    CrashStack &operator=(const CrashStack &) = delete;

private:
    void *m_place = nullptr;
};

} // namespace morvane
