#pragma once

#include <QString>

namespace morvane {

// Takes a model's private reasoning out of the start of its reply, wherever a piece is cut. Holds back no
// more than the reply's first 600 characters.
class ThinkingFilter {
public:
    // The text that may be shown now; empty for none.
    [[nodiscard]] QString accept(const QString &text);

    // What was still held back when the reply ended.
    [[nodiscard]] QString flush();

    // The server sends reasoning in a field of its own, so text without a tag is the answer.
    void noteServerSendsReasoning() { m_serverSendsReasoning = true; }

    // Thinking without an opening tag stood in the answer.
    [[nodiscard]] bool droppedThinking() const { return m_droppedThinking; }

private:
    enum class State { deciding, inThinking, afterThinking, passing };

    QString decide();
    QString think();
    QString skipWhiteSpace();
    QString pass();

    State m_state = State::deciding;
    QString m_buffer;
    bool m_serverSendsReasoning = false;
    bool m_droppedThinking = false;
};

} // namespace morvane
