#pragma once

#include "persistence/SettingsRepository.h"
#include "utils/files/SupportFolders.h"

#include <functional>
#include <memory>

namespace morvane {

class KeychainServicing;
class LegacySecretListing;

// Carries over, once, what builds under other identifiers left: settings, support files and stored secrets.
// Never throws: a step that fails is logged and leaves the old data where it was.
namespace LegacyBundleMigration {

inline constexpr QLatin1StringView flagKey{"didMigrateFromLegacyBundleIdentifier.v2"};

struct Surroundings {
    SupportFolders folders;
    SettingsRepository &defaults;
    // The defaults domain of that name; null when there is none.
    std::function<std::unique_ptr<SettingsRepository>(const QString &identifier)> openDomain;
    LegacySecretListing &legacySecrets;
    KeychainServicing &keychain;
};

// Waits for the keychain: not for a thread that draws.
void runOnce(const Surroundings &surroundings);

} // namespace LegacyBundleMigration

} // namespace morvane
