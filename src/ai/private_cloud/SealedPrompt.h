#pragma once

#include "ai/contract/AIMessage.h"
#include "ai/contract/AITool.h"

#include <QString>

#include <vector>

namespace morvane {

// A conversation as the sealed server takes it: one system text and one user text. It knows no messages and
// no tools, so both are written out, and what a tool gave back stands between markers, named as data.
struct SealedPrompt {
    QString system;
    QString prompt;

    // With `thinksLonger` false the model is asked to keep its reasoning short. Images are left out: the
    // server takes text alone.
    [[nodiscard]] static SealedPrompt fold(const std::vector<AIMessage> &messages,
                                           const QString &systemPrompt, const std::vector<AITool> &tools,
                                           bool thinksLonger);
};

} // namespace morvane
