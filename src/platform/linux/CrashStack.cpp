#include "platform/linux/CrashStack.h"

#include "platform/linux/Sanitized.h"

#include <cerrno>
#include <csignal>
#include <dlfcn.h>
#include <memory>
#include <new>
#include <pthread.h>
#include <sys/mman.h>

namespace morvane {

CrashStack::CrashStack()
{
    void *const place =
        ::mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_STACK, -1, 0);
    if (place == MAP_FAILED)
        return;
    stack_t stack{};
    stack.ss_sp = place;
    stack.ss_size = bytes;
    if (::sigaltstack(&stack, nullptr) == 0)
        m_place = place;
    else
        ::munmap(place, bytes);
}

CrashStack::~CrashStack()
{
    if (!m_place)
        return;
    stack_t none{};
    none.ss_flags = SS_DISABLE;
    ::sigaltstack(&none, nullptr);
    ::munmap(m_place, bytes);
}

} // namespace morvane

#ifndef MORVANE_SANITIZED // which does the same

namespace {

struct Start {
    void *(*run)(void *);
    void *argument;
};

// A thread that ends by pthread_exit() unwinds as well.
void *runWithCrashStack(void *given)
{
    const morvane::CrashStack stack;
    const Start start = *std::unique_ptr<Start>(static_cast<Start *>(given));
    return start.run(start.argument);
}

} // namespace

// In front of the C library's.
extern "C" __attribute__((visibility("default"))) int pthread_create(pthread_t *thread,
                                                                     const pthread_attr_t *attributes,
                                                                     void *(*run)(void *),
                                                                     void *argument) noexcept
{
    static const auto create =
        reinterpret_cast<decltype(&pthread_create)>(::dlsym(RTLD_NEXT, "pthread_create"));
    std::unique_ptr<Start> start(new (std::nothrow) Start{run, argument});
    if (!start)
        return EAGAIN;
    const int error = create(thread, attributes, runWithCrashStack, start.get());
    if (error == 0)
        static_cast<void>(start.release()); // the thread's
    return error;
}

#endif
