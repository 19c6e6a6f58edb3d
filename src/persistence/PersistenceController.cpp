#include "persistence/PersistenceController.h"

#include "persistence/PersistenceError.h"
#include "persistence/StoreSchema.h"
#include "utils/Log.h"

#include <functional>

using namespace Qt::StringLiterals;

namespace {

constexpr auto category = Log::Category::Persistence;

Database openInMemory()
{
    Database database = Database::inMemory();
    StoreSchema::prepare(database);
    return database;
}

// Tells the log how opening went, and the caller only that it failed.
Database opened(bool isInMemory, const std::function<Database()> &open)
{
    try {
        Database database = open();
        Log::info(category, "Model container opened (inMemory: %{bool}d)"_L1, {isInMemory});
        return database;
    } catch (const DatabaseError &error) {
        Log::error(category, "Failed to open model container: %s"_L1, {error.what()});
        throw PersistenceError(PersistenceError::Reason::StoreUnavailable);
    }
}

} // namespace

PersistenceController::PersistenceController(bool isInMemory, Database database,
                                             std::shared_ptr<const FieldSealing> sealing)
    : m_isInMemory(isInMemory)
    , m_context(std::move(database), std::move(sealing))
{}

std::unique_ptr<PersistenceController>
PersistenceController::inMemory(std::shared_ptr<const FieldSealing> sealing)
{
    return std::unique_ptr<PersistenceController>(
        new PersistenceController(true, opened(true, openInMemory), std::move(sealing)));
}
