#include "app/Storage.h"

#include "app/WhatChangedNotice.h"
#include "async/Clock.h"
#include "attestation/VeniceMeasurementListStore.h"
#include "persistence/ChatStoreLocation.h"
#include "persistence/ConversationRepository.h"
#include "persistence/DepartedData.h"
#include "persistence/LegacyBundleMigration.h"
#include "persistence/PersistenceController.h"
#include "persistence/SealedData.h"
#include "persistence/SettingsStore.h"
#include "persistence/UserDefaultsSettingsRepository.h"
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

PersistenceController::Place placeOf(const Storage &storage)
{
    return {.folders = storage.folders,
            .defaults = *storage.defaults,
            .isVaultLocked = [vault = storage.vault] { return vault->isLocked(); }};
}

} // namespace

Storage::Storage(const CommandLine &commandLine, Host host, Clock &clock, const Secrets &secrets)
    : folders(commandLine.folders())
    , vault(std::make_shared<LocalDataVault>(secrets.keychain))
    , defaults(std::make_unique<UserDefaultsSettingsRepository>(
          UserDefaultsSettingsRepository::path(folders, Product::serviceName)))
    , m_host(host)
{
    if (host == Host::application)
        moveFormerData(secrets);
    settings = std::make_unique<SettingsStore>(*defaults);
    lockAtStart(secrets.isKeyBehindPresence || secrets.isKeyWrapped);
    if (host == Host::application) {
        expectKey();
        sealLeftovers();
        VeniceMeasurementListStore::settleFormerFiles(folders);
        removeDepartedData();
        // Before there is a store: a first start that is killed later must not take its person for one who
        // has been here before.
        WhatChangedNotice::decideOnce(*defaults, hasChats(folders));
    }
    if (commandLine.resetOnboarding)
        settings->setOnboardingComplete(false);
    else if (commandLine.practiceServer || commandLine.devRelay) // there is nothing to choose
        settings->setOnboardingComplete(true);
    openStore(clock);
    applyRetention(clock);
}

Storage::~Storage() = default;

// What older builds kept under other names, once, before anything reads what it moves.
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
}

// A lost setting must not open what the key's place says is locked.
void Storage::lockAtStart(bool isKeyGuarded)
{
    if (isKeyGuarded)
        settings->setAppLockEnabled(true);
    if (settings->appLockEnabled())
        vault->lock();
}

// Where something has been sealed before, a missing key is an error and never a fresh start.
void Storage::expectKey()
{
    if (vault->mayHoldKey() || SealedData::exists(folders))
        vault->requireExistingKey();
}

void Storage::sealLeftovers()
{
    const QStringList sealed = vault->sealLeftovers(folders.data);
    if (!sealed.isEmpty())
        Log::info(Log::Category::App, "Sealed %ld store(s) an older build left in the clear"_L1,
                  {sealed.size()});
}

void Storage::removeDepartedData()
{
    DepartedData::removeCodingEngineOnce(folders, *defaults);
    DepartedData::removeModulesOnce(folders, *defaults);
}

// A store that won't open doesn't stop the start: one in memory takes its place, and the window says why.
void Storage::openStore(Clock &clock)
{
    try {
        persistence = PersistenceController::onDisk(placeOf(*this), vault);
        // A damaged file is not to be written over before the person knows of it.
        persistence->mainContext().setWriting(Database::Writing::ToLogAlone);
    } catch (const PersistenceError &error) {
        startupError = error;
        persistence = PersistenceController::inMemory(std::make_shared<ProcessKeySealing>());
    }
    repository = std::make_unique<ConversationRepository>(persistence->mainContext(), clock, defaults.get());
    sealPlainTexts();
}

void Storage::sealPlainTexts()
{
    try {
        repository->sealPlainTexts();
    } catch (const PersistenceError &) {
        // Tried again at the next start.
    }
}

void Storage::sealWhatIsReadable()
{
    sealPlainTexts();
    if (m_host == Host::application)
        sealLeftovers();
}

// The sweep goes first: what it finds may be part of what is moved.
void Storage::catchUpAfterUnlock()
{
    sealWhatIsReadable();
    if (!startupError)
        persistence->moveAfterUnlock(placeOf(*this));
}

QString Storage::startupAdvice() const
{
    if (!startupError)
        return {};
    const QString advice = startupError->recoverySuggestion().value_or(QString());
    if (startupError->reason().cause == PersistenceError::Cause::otherProcess)
        return advice;
    return advice + u"\n\n"_s + QFileInfo(ChatStoreLocation::storePath(folders)).path();
}

void Storage::applyRetention(const Clock &clock)
{
    try {
        expired = repository->prune(retentionInterval(settings->conversationRetention()), clock.now());
    } catch (const PersistenceError &) {
        // The chats stay until the next start.
    }
}

} // namespace morvane
