#pragma once

#include "ai/contract/AIConfiguration.h"

#include <optional>

namespace morvane {

class KeychainServicing;
class LocalModelServing;
class SettingsStore;
struct PrivateCloud;

// The configurations that a turn may run on, as the settings stand now. Messages, tools and what the turn
// carries are not part of them. `identity` is the system prompt's first part.
namespace RouteConfiguration {

// Where the keychain holds the key of the person's service.
[[nodiscard]] QString apiKeyAccount();

// The person's key where it was saved for the server at that address. Throws KeychainError.
[[nodiscard]] std::optional<QString> keyFor(const SettingsStore &settings, KeychainServicing &keychain,
                                            const QString &baseURL);

// What the person set up, with the key only where it was saved for that server. Throws KeychainError when the
// key can't be read.
[[nodiscard]] AIConfiguration configured(const SettingsStore &settings, KeychainServicing &keychain,
                                         const QString &identity);

// Without a base address when this build can't reach the private cloud.
[[nodiscard]] AIConfiguration privateCloud(const SettingsStore &settings, const PrivateCloud &cloud,
                                           const QString &identity);

// The managed runtime; nothing unless it is ready with a model. `runtime` may be null.
[[nodiscard]] std::optional<AIConfiguration> local(const SettingsStore &settings,
                                                   const LocalModelServing *runtime, const QString &identity);

// The fewest tokens that a model nearby may answer with.
inline constexpr std::int64_t smallestLocalOutput = 4096;

// The tokens that a reply from that address may have when the settings name so many.
[[nodiscard]] std::int64_t replyLimit(std::int64_t configured, const QString &baseURL);

} // namespace RouteConfiguration

} // namespace morvane
