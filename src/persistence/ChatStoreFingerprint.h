#pragma once

#include "persistence/Database.h"
#include "security/FieldSealing.h"

#include <QString>
#include <QUuid>

#include <map>
#include <optional>
#include <set>

namespace morvane {

namespace ChatStoreLocation {

// What a store holds, for proof that a copy is whole.
struct Fingerprint {
    std::set<QUuid> conversations;
    std::set<QUuid> messages;
    std::set<QUuid> documents;
    std::map<QString, std::int64_t> fieldBytes; // by sealed field: the length of all its stored text
    std::int64_t unreadable = 0;                // sealed fields that don't open with this machine's key

    [[nodiscard]] bool isEmpty() const
    {
        return conversations.empty() && messages.empty() && documents.empty();
    }
};

// Of the whole store, or of those rows alone that `only` names. The database may still have the former column
// names. Throws DatabaseError.
[[nodiscard]] Fingerprint fingerprint(Database &database, const FieldSealing &sealing,
                                      const Fingerprint *only = nullptr);

// What was said in a store whose fingerprint is `whole`, and the files that came along: chats without
// messages don't count. Throws DatabaseError.
[[nodiscard]] Fingerprint fingerprintOfWhatWasSaid(Database &database, const FieldSealing &sealing,
                                                   Fingerprint whole);

// Why the copy isn't whole; nothing when it is.
[[nodiscard]] std::optional<QString> shortcoming(const Fingerprint &source, const Fingerprint &copy);

} // namespace ChatStoreLocation

} // namespace morvane
