#pragma once

#include "ai/routing/ContextBuilder.h"
#include "documents/ImportedAttachment.h"
#include "network/EgressTypes.h"

#include <memory>
#include <optional>
#include <vector>

namespace morvane {

class ChatMessage;
class Conversation;
class ConversationRepository;
class MessageListModel;

// What a turn tells the model of its chat, and which private data that takes along.
namespace TurnHistory {

using Items = std::vector<ContextBuilder::HistoryItem>;

// Every message with content in order, but for `except` and messages whose role nobody knows.
[[nodiscard]] Items of(const MessageListModel &messages, const ChatMessage *except);

// The same up to and including `last`.
[[nodiscard]] Items upTo(const MessageListModel &messages, const ChatMessage &last);

// Gives the item of the newest user message its attachment, with the text that came beside it.
void attach(Items &history, const ImportedAttachment &attachment, const QString &text);

// A picture or a screen reading marks every later turn of its chat, whatever the history still holds.
[[nodiscard]] SensitiveDataSet carriedBy(const Items &history, const Conversation &conversation,
                                         ConversationRepository &repository);

} // namespace TurnHistory

} // namespace morvane
