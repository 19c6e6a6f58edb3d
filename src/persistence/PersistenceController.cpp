#include "persistence/PersistenceController.h"

#include "persistence/PersistenceError.h"
#include "persistence/StoreFiles.h"
#include "persistence/StoreSchema.h"
#include "utils/files/PrivateFile.h"
#include "utils/log/Log.h"

#include <QFileInfo>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

constexpr auto category = Log::Category::Persistence;

ChatStoreLocation::Move moveTo(const PersistenceController::Place &place,
                               std::shared_ptr<const FieldSealing> sealing)
{
    return {.source = ChatStoreLocation::oldStorePath(place.folders),
            .target = ChatStoreLocation::storePath(place.folders),
            .defaults = place.defaults,
            .sealing = std::move(sealing),
            .isVaultLocked = place.isVaultLocked};
}

[[noreturn]] void fail(const char *description,
                       PersistenceError::Cause cause = PersistenceError::Cause::store)
{
    Log::error(category, "Failed to open model container: %s"_L1, {description});
    throw PersistenceError(PersistenceError::Reason::storeUnavailable, cause);
}

// Runs `open`, and tells the log how it went.
template <typename Open>
Database opened(bool isInMemory, Open open)
{
    try {
        Database database = open();
        Log::info(category, "Model container opened (inMemory: %{bool}d)"_L1, {isInMemory});
        return database;
    } catch (const DatabaseError &error) {
        fail(error.what(), error.isHeldElsewhere() ? PersistenceError::Cause::otherProcess
                                                   : PersistenceError::Cause::store);
    } catch (const std::exception &error) {
        fail(error.what());
    }
}

FileLock rightTo(const QString &path, std::chrono::milliseconds patience)
{
    std::optional<FileLock> lock;
    try {
        PrivateFile::createFolder(QFileInfo(path).path());
        lock = StoreFiles::lock(path, patience);
    } catch (const FileError &error) {
        fail(error.what());
    }
    if (!lock)
        fail("another process has the store open", PersistenceError::Cause::otherProcess);
    return *std::move(lock);
}

} // namespace

PersistenceController::PersistenceController(bool isInMemory, std::optional<FileLock> lock, Database database,
                                             std::shared_ptr<const FieldSealing> sealing)
    : m_isInMemory(isInMemory)
    , m_lock(std::move(lock))
    , m_context(std::move(database), std::move(sealing))
{}

std::unique_ptr<PersistenceController>
PersistenceController::inMemory(std::shared_ptr<const FieldSealing> sealing)
{
    Database database = opened(true, [] {
        Database memory = Database::inMemory();
        StoreSchema::prepare(memory);
        return memory;
    });
    return std::unique_ptr<PersistenceController>(
        new PersistenceController(true, std::nullopt, std::move(database), std::move(sealing)));
}

std::unique_ptr<PersistenceController>
PersistenceController::onDisk(const Place &place, std::shared_ptr<const FieldSealing> sealing)
{
    (void)ChatStoreLocation::moveIfNeeded(moveTo(place, sealing));
    const QString path = ChatStoreLocation::storePath(place.folders);
    FileLock lock = rightTo(path, place.patience);
    Database database = opened(false, [&] { return StoreFiles::open(path); });
    return std::unique_ptr<PersistenceController>(
        new PersistenceController(false, std::move(lock), std::move(database), std::move(sealing)));
}

void PersistenceController::moveAfterUnlock(const Place &place)
{
    try {
        m_context.save();
    } catch (const DatabaseError &error) {
        Log::error(category, "Save failed: %s"_L1, {error.what()});
        return;
    }
    auto move = moveTo(place, m_context.sealing());
    move.targetIs = ChatStoreLocation::Target::OpenHere;
    (void)ChatStoreLocation::moveIfNeeded(move);
}

} // namespace morvane
