#pragma once

#include "persistence/ChatStoreFingerprint.h"
#include "persistence/FileLock.h"
#include "persistence/SettingsRepository.h"
#include "utils/files/SupportFolders.h"

#include <QStringList>

#include <functional>
#include <memory>
#include <variant>

namespace morvane {

using ChatStoreMigrationLock = FileLock;

// Where the chats are kept, and the move of an older build's chats to that place: once, and with proof that
// the copy is whole before the old file goes.
//
// No failure throws, and none loses a record: the old file then stays as it was.
namespace ChatStoreLocation {

inline constexpr QLatin1StringView movedFlagKey{"didMoveChatStoreOutOfDefaultStore.v1"};
inline constexpr QLatin1StringView leftOldFileKey{"chatStoreLeftOldFileAt.v1"};

[[nodiscard]] QString storePath(const SupportFolders &folders);

// Where older builds kept the chats.
[[nodiscard]] QString oldStorePath(const SupportFolders &folders);

// The files of the store there, while it is this application's; none otherwise.
[[nodiscard]] QStringList ownOldStore(const SupportFolders &folders);

enum class MoveKind {
    FreshFile, // nothing stands at the target: the whole file is copied
    LiveStore, // a store stands there: the records are copied into it
};

struct Moved {
    std::int64_t conversations = 0;
    std::int64_t messages = 0;
    std::int64_t documents = 0;
};
struct KeptBoth {
    QString oldStore;
    std::int64_t conversations = 0; // left behind
};
struct Failed {
    QString reason;
};
struct NothingToMove {};
struct AnotherLaunchIsMoving {};
struct WaitingForUnlock {};

using Outcome = std::variant<Moved, KeptBoth, Failed, NothingToMove, AnotherLaunchIsMoving, WaitingForUnlock>;

// Whether this process already has the right to the target, as after an unlock, when its store is open.
enum class Target { Free, OpenHere };

struct Move {
    QString source;
    QString target;
    SettingsRepository &defaults;
    std::shared_ptr<const FieldSealing> sealing;
    std::function<bool()> isVaultLocked;
    Target targetIs = Target::Free;
    std::chrono::milliseconds lockLimit = std::chrono::seconds(10);
    FileLock::Pause pause = FileLock::sleep;
    // Copies one file. Tests let it fail.
    std::function<bool(const QString &from, const QString &to)> copyFile = copyPrivately;

    static bool copyPrivately(const QString &from, const QString &to);
};

// Main thread, before the target is opened or, after an unlock, with nothing unsaved in it.
Outcome moveIfNeeded(const Move &move);

} // namespace ChatStoreLocation

} // namespace morvane
