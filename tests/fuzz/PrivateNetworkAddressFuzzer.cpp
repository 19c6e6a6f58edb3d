#include "network/PrivateNetworkAddress.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace morvane {

namespace {

void require(bool holds)
{
    if (!holds)
        std::abort();
}

} // namespace

// Any text as a host: what the judgements say of it must agree.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    using namespace PrivateNetworkAddress;
    const QString host =
        QString::fromUtf8(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    const auto bytes = addressBytes(host);
    const auto isPrivate = isPrivateLiteral(host);
    require(bytes.has_value() == isPrivate.has_value());
    require(!bytes || bytes->size() == 4 || bytes->size() == 16);
    require(isPrivate != std::optional(false) || classify(host) == HostClass::thirdParty);
    require(!bytes || isInside(host, {{*bytes, static_cast<int>(8 * bytes->size())}}));
    require(isInside(host, {}) == isPrivate.value_or(false));
    return 0;
}

} // namespace morvane
