#pragma once

#include "persistence/ObjectContext.h"

// Opens the store that holds the chats and owns its context. Main thread only.
class PersistenceController {
public:
    // A store that is gone with the controller. Throws PersistenceError::StoreUnavailable.
    [[nodiscard]] static std::unique_ptr<PersistenceController>
    inMemory(std::shared_ptr<const FieldSealing> sealing);

    [[nodiscard]] bool isInMemory() const { return m_isInMemory; }
    [[nodiscard]] ObjectContext &mainContext() { return m_context; }

private:
    PersistenceController(bool isInMemory, Database database, std::shared_ptr<const FieldSealing> sealing);

    bool m_isInMemory;
    ObjectContext m_context;
};
