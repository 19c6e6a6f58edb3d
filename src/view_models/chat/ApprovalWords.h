#pragma once

#include "ai/contract/AIMessage.h"

#include <QString>
#include <QStringList>

#include <functional>

namespace morvane {

// What an approval card says about a call besides its verb.
namespace ApprovalWords {

// The notes that a description matches.
using NotesMatching = std::function<QStringList(const QString &about)>;

// What would leave or be changed, in full and in words: the query, the address, the event, the notes that
// would go. Nothing that the call would not use. Without `notes` the description stands for them.
[[nodiscard]] QString detail(const AIToolCall &call, const NotesMatching &notes = {});

// Where the words go; empty for calls that send nothing out.
[[nodiscard]] QString footnote(const AIToolCall &call, bool searchesWithOwnKey);

} // namespace ApprovalWords

} // namespace morvane
