#pragma once

#include "models/Conversation.h"

namespace morvane {

// What was said in one place of a chat and said anew: a reply that was made again, and a message that the
// person wrote again, with its replies. All versions stay stored, and one of them is shown and sent; the
// others are set aside. Nothing here saves.
namespace MessageVersions {

// Of a reply, in the order in which they were made; the message alone where there is no other.
[[nodiscard]] Conversation::Messages of(const Conversation &conversation, const ChatMessage &message);

// The group that a message belongs to; one is begun for a message that had no other version.
[[nodiscard]] QUuid groupOf(ChatMessage &message);

// Shows a reply in place of its other versions, and with it the question that it answers.
void choose(const Conversation &conversation, const ChatMessage &reply);

// What goes when the person deletes a message: a reply with its versions and the questions that only those
// answer, a question with its versions and all their replies.
[[nodiscard]] Conversation::Messages standingWith(const Conversation &conversation,
                                                  const ChatMessage &message);

} // namespace MessageVersions

} // namespace morvane
