#include "attestation/evidence/VeniceBootEvent.h"

#include "attestation/evidence/Digest.h"
#include "utils/bytes/Hex.h"

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

constexpr auto composeHashName = "compose-hash"_L1;
constexpr auto instanceIDName = "instance-id"_L1;
constexpr QByteArrayView eventType("\x01\x00\x00\x08", 4); // 0x08000001, little-endian

bool occursOnce(const std::vector<VeniceBootEvent> &events, QLatin1StringView name)
{
    return std::count_if(events.begin(), events.end(),
                         [name](const VeniceBootEvent &event) { return event.name == name; }) == 1;
}

// A live event takes the server's own value and may store none; any other must store one.
std::optional<QByteArray> payloadOf(const VeniceBootEvent &event, const QByteArray &composeHash,
                                    const QByteArray &instanceID)
{
    const bool isComposeHash = event.name == composeHashName;
    if (isComposeHash || event.name == instanceIDName) {
        if (event.payload)
            return std::nullopt;
        return isComposeHash ? composeHash : instanceID;
    }
    return event.payload ? Hex::decode(*event.payload) : std::nullopt;
}

} // namespace

std::optional<QByteArray> VeniceBootEvent::replay(const std::vector<VeniceBootEvent> &events,
                                                  const QByteArray &composeHash, const QByteArray &instanceID)
{
    if (composeHash.size() != 32 || instanceID.size() != 20)
        return std::nullopt;
    if (!occursOnce(events, composeHashName) || !occursOnce(events, instanceIDName))
        return std::nullopt;
    QByteArray reg(48, '\0');
    for (const VeniceBootEvent &event : events) {
        if (event.name.isEmpty() || event.name.contains(u':'))
            return std::nullopt;
        const auto payload = payloadOf(event, composeHash, instanceID);
        if (!payload)
            return std::nullopt;
        const QByteArray digest = Digest::sha384({eventType, ":", event.name.toUtf8(), ":", *payload});
        reg = Digest::sha384({reg, digest});
    }
    return reg;
}

} // namespace morvane
