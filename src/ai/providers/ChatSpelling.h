#pragma once

#include "ai/contract/AIMessage.h"
#include "ai/contract/ProviderError.h"

#include <QJsonObject>

#include <optional>
#include <vector>

namespace morvane {

// How a server wants a chat-completions request spelled, where that differs from the usual form. Nobody
// announces it: it is learned from a refusal whose words name what they refuse.
struct ChatSpelling {
    bool omitsPurpose = false;
    bool omitsTemperature = false;
    bool namesCompletionTokens = false; // max_completion_tokens in place of max_tokens
    bool mergesSystem = false;          // the texts of all system messages in one, which comes first
    bool beginsWithUser = false;        // without what an assistant said ahead of the user's first words
    bool nullBesideCalls = false;       // for the content of a message that only calls tools

    bool operator==(const ChatSpelling &) const = default;

    // The spelling to try once more with; nothing when the refusal names nothing that can be spelled
    // otherwise, or that already is.
    [[nodiscard]] std::optional<ChatSpelling> after(const ProviderError &refusal,
                                                    const std::vector<AIMessage> &messages) const;

    [[nodiscard]] std::vector<AIMessage> applied(std::vector<AIMessage> messages) const;
    void apply(QJsonObject &body) const;
};

} // namespace morvane
