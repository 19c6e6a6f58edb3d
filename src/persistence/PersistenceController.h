#pragma once

#include "persistence/ChatStoreLocation.h"
#include "persistence/FileLock.h"
#include "persistence/ObjectContext.h"

namespace morvane {

// Opens the store that holds the chats and owns its context. Main thread only.
class PersistenceController {
public:
    // A store that is gone with the controller. Throws PersistenceError::storeUnavailable.
    [[nodiscard]] static std::unique_ptr<PersistenceController>
    inMemory(std::shared_ptr<const FieldSealing> sealing);

    // Where the store is, and what its opening needs to know.
    struct Place {
        SupportFolders folders;
        SettingsRepository &defaults;
        std::function<bool()> isVaultLocked;
        // How long another process that still has the store open is waited for.
        std::chrono::milliseconds patience = std::chrono::seconds(2);
    };

    // The store on disk, after what an older build kept elsewhere has been moved into it. One process at a
    // time has it open. Throws PersistenceError::storeUnavailable, and then every file is as it was.
    [[nodiscard]] static std::unique_ptr<PersistenceController>
    onDisk(const Place &place, std::shared_ptr<const FieldSealing> sealing);

    [[nodiscard]] bool isInMemory() const { return m_isInMemory; }
    [[nodiscard]] ObjectContext &mainContext() { return m_context; }

    // The move that waited for the vault, once that is unlocked. Saves first; a failure there puts the move
    // off to the next start. Records that it brings are seen by the next fetch.
    void moveAfterUnlock(const Place &place);

private:
    PersistenceController(bool isInMemory, std::optional<FileLock> lock, Database database,
                          std::shared_ptr<const FieldSealing> sealing);

    bool m_isInMemory;
    std::optional<FileLock> m_lock; // given back after the context has closed the store
    ObjectContext m_context;
};

} // namespace morvane
