#include "support/WipeSpy.h"

#include <dlfcn.h>

namespace morvane {

namespace {

std::atomic<WipeSpy *> spy = nullptr;

} // namespace

WipeSpy::WipeSpy(const QString &secret)
    : m_narrow(secret.toUtf8())
    , m_wide(reinterpret_cast<const char *>(secret.utf16()), 2 * secret.size())
{
    spy = this;
}

WipeSpy::~WipeSpy()
{
    spy = nullptr;
}

void WipeSpy::note(QByteArrayView memory)
{
    if (memory.contains(m_narrow) || memory.contains(m_wide))
        ++m_count;
}

// The program's own symbols come before those of the libraries it uses.
extern "C" void OPENSSL_cleanse(void *memory, std::size_t size)
{
    using Cleanse = void (*)(void *, std::size_t);
    static const auto real = reinterpret_cast<Cleanse>(dlsym(RTLD_NEXT, "OPENSSL_cleanse"));
    if (WipeSpy *const watching = spy)
        watching->note({static_cast<const char *>(memory), static_cast<qsizetype>(size)});
    real(memory, size);
}

} // namespace morvane
