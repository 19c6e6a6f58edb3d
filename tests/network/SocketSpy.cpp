#include "SocketSpy.h"

#include <QCoreApplication>
#include <QMetaObject>

#include <algorithm>
#include <atomic>

#include <dlfcn.h>
#include <netdb.h>
#include <sys/socket.h>

std::binary_semaphore SocketSpy::slowLookupBegan{0};
std::binary_semaphore SocketSpy::slowLookupMayEnd{0};

namespace {

std::atomic<int> connectCalls = 0;
std::atomic<int> lookupCalls = 0;
std::atomic<qint64> receivedBytes = 0;

} // namespace

int SocketSpy::connections()
{
    return connectCalls;
}

int SocketSpy::lookups()
{
    return lookupCalls;
}

qint64 SocketSpy::received()
{
    return receivedBytes;
}

// The program's own symbols come before the C library's, also for the libraries it uses.
extern "C" int connect(int descriptor, const sockaddr *address, socklen_t size)
{
    using Connect = int (*)(int, const sockaddr *, socklen_t);
    static const auto real = reinterpret_cast<Connect>(dlsym(RTLD_NEXT, "connect"));
    if (address->sa_family == AF_INET || address->sa_family == AF_INET6)
        ++connectCalls;
    return real(descriptor, address, size);
}

extern "C" ssize_t recv(int descriptor, void *buffer, std::size_t size, int flags)
{
    using Receive = ssize_t (*)(int, void *, std::size_t, int);
    static const auto real = reinterpret_cast<Receive>(dlsym(RTLD_NEXT, "recv"));
    const ssize_t count = real(descriptor, buffer, size, flags);
    receivedBytes += std::max<ssize_t>(count, 0);
    return count;
}

extern "C" int getaddrinfo(const char *node, const char *service, const addrinfo *hints, addrinfo **result)
{
    using Lookup = int (*)(const char *, const char *, const addrinfo *, addrinfo **);
    static const auto real = reinterpret_cast<Lookup>(dlsym(RTLD_NEXT, "getaddrinfo"));
    const QByteArrayView name(node);
    ++lookupCalls;
    if (name == "slow.test") {
        SocketSpy::slowLookupBegan.release();
        QMetaObject::invokeMethod(
            QCoreApplication::instance(), [] {}, Qt::QueuedConnection); // wake the test
        SocketSpy::slowLookupMayEnd.acquire();
    }
    return name.endsWith(".test") ? EAI_NONAME : real(node, service, hints, result);
}
