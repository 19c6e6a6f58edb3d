#pragma once

#include "ai/contract/AIConfiguration.h"
#include "ai/contract/AIMessage.h"
#include "ai/contract/AITool.h"
#include "ai/routing/ContextBuilder.h"
#include "ai/routing/JudgedPlace.h"

#include <optional>
#include <vector>

namespace morvane {

// What a turn asks the router to prepare.
struct TurnRequest {
    std::vector<ContextBuilder::HistoryItem> history;
    std::optional<QString> rollingSummary;
    QString scopeKey; // "chat:" and the conversation's id; scoped approvals use it
    SensitiveDataSet carrying;
    std::optional<QString> visionModel; // takes the place of the configured model
    std::optional<QString> toolsModel;
    std::optional<std::int64_t> outputBudget; // in place of the settings' limit
    bool isContinuation = false;              // of a reply that hit its limit; gets a budget of its own
    bool memoryAllowed = true;                // a Ghost chat keeps no notes
};

// What a turn goes on with.
struct PreparedRequest {
    std::vector<AIMessage> messages;
    AIConfiguration configuration;
    std::vector<AITool> tools;
    bool memoryAllowed = false;
    JudgedPlace place;
};

} // namespace morvane
