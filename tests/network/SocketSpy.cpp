#include "SocketSpy.h"

#include <QCoreApplication>
#include <QHostAddress>
#include <QMetaObject>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <map>
#include <mutex>

#include <dlfcn.h>
#include <netdb.h>
#include <sys/socket.h>

namespace morvane {

std::binary_semaphore SocketSpy::slowLookupBegan{0};
std::binary_semaphore SocketSpy::slowLookupMayEnd{0};

namespace {

std::atomic<int> connectCalls = 0;
std::atomic<int> outsideCalls = 0;
std::atomic<int> lookupCalls = 0;
std::atomic<qint64> receivedBytes = 0;

std::mutex answersMutex;
std::map<QByteArray, std::vector<QStringList>> answers; // guarded by answersMutex

std::optional<QStringList> addressesOf(const QByteArray &name)
{
    const std::scoped_lock lock(answersMutex);
    const auto known = answers.find(name);
    if (known == answers.end())
        return std::nullopt;
    const QStringList first = known->second.front();
    if (known->second.size() > 1)
        known->second.erase(known->second.begin());
    return first;
}

} // namespace

int SocketSpy::connections()
{
    return connectCalls;
}

int SocketSpy::lookups()
{
    return lookupCalls;
}

int SocketSpy::outsideConnections()
{
    return outsideCalls;
}

void SocketSpy::setAddresses(const QByteArray &name, const std::vector<QStringList> &all)
{
    const std::scoped_lock lock(answersMutex);
    answers.insert_or_assign(name, all);
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
    if (address->sa_family == AF_INET || address->sa_family == AF_INET6) {
        ++connectCalls;
        if (QHostAddress(address).isGlobal()) {
            ++outsideCalls;
            errno = ENETUNREACH;
            return -1;
        }
    }
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
    const auto addresses = addressesOf(name.toByteArray());
    if (!addresses)
        return name.endsWith(".test") ? EAI_NONAME : real(node, service, hints, result);
    // A chain of what the real resolver makes of each literal, which freeaddrinfo() takes apart again.
    addrinfo numeric = hints ? *hints : addrinfo{};
    numeric.ai_flags |= AI_NUMERICHOST;
    addrinfo **end = result;
    *end = nullptr;
    for (const QString &address : *addresses) {
        if (real(address.toLatin1().constData(), service, &numeric, end) != 0)
            *end = nullptr;
        while (*end)
            end = &(*end)->ai_next;
    }
    return *result ? 0 : EAI_NONAME;
}

} // namespace morvane
