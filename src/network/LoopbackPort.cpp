#include "network/LoopbackPort.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace morvane {

std::optional<int> LoopbackPort::unused()
{
    const int descriptor = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (descriptor < 0)
        return std::nullopt;
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof(address);
    auto *const plain = reinterpret_cast<sockaddr *>(&address);
    const bool isGiven = ::bind(descriptor, plain, size) == 0 && ::getsockname(descriptor, plain, &size) == 0;
    ::close(descriptor);
    return isGiven ? std::optional(static_cast<int>(ntohs(address.sin_port))) : std::nullopt;
}

} // namespace morvane
