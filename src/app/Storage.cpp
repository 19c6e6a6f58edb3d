#include "app/Storage.h"

#include "async/Clock.h"
#include "persistence/ChatStoreLocation.h"
#include "persistence/ConversationRepository.h"
#include "persistence/DepartedData.h"
#include "persistence/LegacyBundleMigration.h"
#include "persistence/PersistenceController.h"
#include "persistence/SettingsStore.h"
#include "persistence/UserDefaultsSettingsRepository.h"
#include "security/KeychainError.h"
#include "security/KeychainServicing.h"
#include "security/LocalDataVault.h"
#include "security/ProcessKeySealing.h"
#include "utils/log/Log.h"
#include "utils/text/Product.h"

#include <QFileInfo>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

bool hasChats(const SupportFolders &folders)
{
    return QFileInfo::exists(ChatStoreLocation::storePath(folders)) ||
           QFileInfo::exists(ChatStoreLocation::oldStorePath(folders));
}

} // namespace

Storage::Storage(const CommandLine &commandLine, Host host, Clock &clock, const Secrets &secrets)
    : folders(commandLine.folders())
    , usedBefore(hasChats(folders))
    , vault(std::make_shared<LocalDataVault>(secrets.keychain))
    , defaults(std::make_unique<UserDefaultsSettingsRepository>(
          UserDefaultsSettingsRepository::path(folders, Product::serviceName)))
{
    if (host == Host::application)
        moveFormerData(secrets);
    settings = std::make_unique<SettingsStore>(*defaults);
    if (host == Host::application)
        expectKey(secrets);
    if (commandLine.resetOnboarding)
        settings->setOnboardingComplete(false);
    openStore(clock);
}

Storage::~Storage() = default;

// What older builds kept under other names and in the clear. Each part runs once, before anything reads what
// it moves.
void Storage::moveFormerData(const Secrets &secrets)
{
    const auto openDomain = [this](const QString &identifier) -> std::unique_ptr<SettingsRepository> {
        return UserDefaultsSettingsRepository::existing(
            UserDefaultsSettingsRepository::path(folders, identifier));
    };
    LegacyBundleMigration::runOnce({.folders = folders,
                                    .defaults = *defaults,
                                    .openDomain = openDomain,
                                    .legacySecrets = secrets.legacy,
                                    .keychain = secrets.keychain});
    const QStringList sealed = vault->sealLeftovers(folders.data);
    if (!sealed.isEmpty())
        Log::info(Log::Category::App, "Sealed %ld store(s) an older build left in the clear"_L1,
                  {sealed.size()});
    DepartedData::removeCodingEngineOnce(folders, *defaults);
    DepartedData::removeModulesOnce(folders, *defaults);
}

// Where data has been sealed before, a missing key is an error and never a fresh start.
void Storage::expectKey(const Secrets &secrets)
{
    bool holdsKey = false;
    try {
        holdsKey = secrets.keychain.read(LocalDataVault::keyAccount).has_value();
    } catch (const KeychainError &) {
        holdsKey = true; // refused is not missing
    }
    if (holdsKey || settings->onboardingComplete())
        vault->requireExistingKey();
}

// A store that won't open doesn't stop the start: one in memory takes its place, and the window says why.
void Storage::openStore(Clock &clock)
{
    const PersistenceController::Place place{.folders = folders,
                                             .defaults = *defaults,
                                             .isVaultLocked = [vault = vault] { return vault->isLocked(); }};
    try {
        persistence = PersistenceController::onDisk(place, vault);
    } catch (const PersistenceError &error) {
        startupError = error;
        persistence = PersistenceController::inMemory(std::make_shared<ProcessKeySealing>());
    }
    repository = std::make_unique<ConversationRepository>(persistence->mainContext(), clock, defaults.get());
    try {
        repository->sealPlainTexts();
    } catch (const PersistenceError &) {
        // Tried again at the next start.
    }
}

void Storage::applyRetention(const Clock &clock)
{
    try {
        repository->prune(retentionInterval(settings->conversationRetention()), clock.now());
    } catch (const PersistenceError &) {
        // The chats stay until the next start.
    }
}

} // namespace morvane
