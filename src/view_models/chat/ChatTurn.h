#pragma once

#include "view_models/chat/ChatViewModel.h"
#include "view_models/chat/TurnHistory.h"

#include <cstdint>
#include <memory>
#include <set>

namespace morvane {

// One turn from its start to its end. Holds what it works on, so that a turn may outlast a chat switch.
struct ChatViewModel::Turn {
    std::shared_ptr<ChatMessage> reply;
    std::shared_ptr<Conversation> conversation;
    TurnHistory::Items history;
    QString userWords = {};      // what the person wrote in this turn, without the text of an attachment
    bool isContinuation = false; // new text joins the reply's present text
    std::uint64_t number = 0;
    std::set<QUuid> formerProofs = {}; // proof rows that were there before this turn
};

} // namespace morvane
