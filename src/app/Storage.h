#pragma once

#include "app/CommandLine.h"
#include "persistence/PersistenceError.h"

#include <QUuid>

#include <memory>
#include <optional>
#include <vector>

namespace morvane {

class Clock;
class ConversationRepository;
class KeychainServicing;
class LegacySecretListing;
class LocalDataVault;
class PersistenceController;
class SettingsRepository;
class SettingsStore;

// Under a test host nothing of the person's is moved and no window opens.
enum class Host { application, test };

// The keychain, open and ready; both faces are usually one object.
struct Secrets {
    KeychainServicing &keychain;
    LegacySecretListing &legacy;
    bool isKeyBehindPresence = false; // as it was found at the start
    bool isKeyWrapped = false;        // likewise: under a passphrase
};

// What is kept on this machine, made first: what older builds left is moved before anything reads it, then
// come the settings, the key and the chats. What it is given outlives it.
struct Storage {
    Storage(const CommandLine &commandLine, Host host, Clock &clock, const Secrets &secrets);
    ~Storage();

    const SupportFolders folders;
    const std::shared_ptr<LocalDataVault> vault;
    const std::unique_ptr<SettingsRepository> defaults;
    std::unique_ptr<SettingsStore> settings;
    std::unique_ptr<PersistenceController> persistence;
    // Why the store on disk did not open; one in memory stands in for it then.
    std::optional<PersistenceError> startupError;
    // What to do about that, and where its folder is; empty for none.
    [[nodiscard]] QString startupAdvice() const;
    // Chats that are older than the person keeps them have gone, before one of them can be opened.
    std::unique_ptr<ConversationRepository> repository;
    std::vector<QUuid> expired; // those that went

    // Seals what stands readable in the store and in files, as far as it can be sealed now. Never throws.
    void sealWhatIsReadable();

    // What the start left for the time when the key is there.
    void catchUpAfterUnlock();

private:
    const Host m_host;

    void moveFormerData(const Secrets &secrets);
    void lockAtStart(bool isKeyGuarded);
    void expectKey();
    void sealLeftovers();
    void sealPlainTexts();
    void removeDepartedData();
    void openStore(Clock &clock);
    void applyRetention(const Clock &clock);
};

} // namespace morvane
