#pragma once

#include <QString>

namespace morvane {

class SettingsStore;

// Whom the key of the person's service may be told: the origin (scheme, host and port) that it was saved for.
// Pointing the settings at another host never takes the key along.
namespace KeyOrigin {

// Stands in the settings for a key that may be told to nobody: one that is being replaced, or was removed.
inline constexpr QLatin1StringView nobody{"none"};

// The key may go to that address.
[[nodiscard]] bool allows(const SettingsStore &settings, const QString &baseURL);

// The key may go to the address that the settings name now.
[[nodiscard]] bool allows(const SettingsStore &settings);

// A key from before origins were kept belongs to the address that it has been sent to all along. Called once
// at the start, before the person can name another.
void adopt(SettingsStore &settings);

} // namespace KeyOrigin

} // namespace morvane
