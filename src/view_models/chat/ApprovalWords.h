#pragma once

#include "ai/contract/AIMessage.h"

#include <QDateTime>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

namespace morvane {

// What an approval card says about a call besides its verb.
namespace ApprovalWords {

// The notes that a description matches.
using NotesMatching = std::function<QStringList(const QString &about)>;

// What would leave or be changed, in full and in words: the query, the address, the event, the notes that
// would go. Nothing that the call would not use. `asked` is when the call was made: with it an event has its
// time in the person's zone and format, else how far off it is. Without `notes` the description stands for
// them.
[[nodiscard]] QString detail(const AIToolCall &call, const std::optional<QDateTime> &asked = {},
                             const NotesMatching &notes = {});

// Where the words go and what will be done with them; empty where the detail says it all.
[[nodiscard]] QString footnote(const AIToolCall &call, bool searchesWithOwnKey);

} // namespace ApprovalWords

} // namespace morvane
