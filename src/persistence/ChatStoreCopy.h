#pragma once

#include "persistence/ChatStoreLocation.h"
#include "persistence/Database.h"

namespace morvane {

// The two ways to bring the records of an older store to their new place. Either all of them arrive as they
// were, or the new place is as before. The source is only read. Nothing throws.
namespace ChatStoreCopy {

// Copies the file, which nobody here has open, to a neighbour of the target, proves it whole and puts it in
// the target's place.
[[nodiscard]] ChatStoreLocation::Outcome intoFreshFile(const ChatStoreLocation::Move &move,
                                                       const ChatStoreLocation::Fingerprint &expected);

// Copies the rows into the store at the target, when that has no chat with messages. One that holds all that
// was said in the source already counts as moved into.
[[nodiscard]] ChatStoreLocation::Outcome intoLiveStore(const ChatStoreLocation::Move &move, Database &source,
                                                       const ChatStoreLocation::Fingerprint &expected);

} // namespace ChatStoreCopy

} // namespace morvane
