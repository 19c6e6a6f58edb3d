#pragma once

#include "ai/contract/AIMessage.h"

#include <QByteArrayView>

#include <optional>
#include <vector>

namespace morvane {

// One line of a reply in Ollama's own interface, which is one JSON object. Any thread.
struct OllamaChunk {
    QString text;
    std::vector<AIToolCall> toolCalls; // each whole; an id is empty when the server gave none
    bool done = false;                 // the reply's last line
    std::optional<QString> doneReason;
    std::optional<QString> errorMessage;
    bool isThinking = false; // a piece of the model's reasoning came, whose text is not kept

    bool operator==(const OllamaChunk &) const = default;

    // Nothing for a line that is no JSON object. Bytes that are no UTF-8 count as replacement characters.
    [[nodiscard]] static std::optional<OllamaChunk> parse(QByteArrayView line);
};

} // namespace morvane
