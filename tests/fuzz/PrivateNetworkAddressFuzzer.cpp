#include "fuzz/Fuzz.h"

#include "network/PrivateNetworkAddress.h"

// Any text as a host: what the judgements say of it must agree.
void morvane::fuzz(QByteArrayView input)
{
    using namespace PrivateNetworkAddress;
    const QString host = QString::fromUtf8(input);
    const auto bytes = addressBytes(host);
    const auto isPrivate = isPrivateLiteral(host);
    require(bytes.has_value() == isPrivate.has_value());
    require(!bytes || bytes->size() == 4 || bytes->size() == 16);
    require(isPrivate != std::optional(false) || classify(host) == HostClass::thirdParty);
    require(!bytes || isInside(host, {{*bytes, static_cast<int>(8 * bytes->size())}}));
    require(isInside(host, {}) == isPrivate.value_or(false));
}
