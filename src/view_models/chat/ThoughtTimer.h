#pragma once

#include <QString>

#include <chrono>
#include <optional>

namespace morvane {

// How long a model thought in the text of its reply, told from when the pieces came.
class ThoughtTimer {
public:
    enum class Phase {
        undecided, // too little has come to know
        thinking,
        answering,
    };

    // Takes the reply so far, which is never shorter than before. The work follows what is new.
    Phase hear(const QString &reply, std::chrono::milliseconds now);

    // So far, or until the answer began; nothing when the reply holds no thinking.
    [[nodiscard]] std::optional<std::chrono::milliseconds> taken() const;

    // The same in words: "Thought for 12 seconds".
    [[nodiscard]] static QString words(std::optional<std::chrono::milliseconds> taken);

private:
    void look(const QString &reply, std::chrono::milliseconds now);

    int m_looks = 0;
    Phase m_phase = Phase::undecided;
    qsizetype m_heard = 0; // length of the reply
    std::optional<std::chrono::milliseconds> m_since;
    std::optional<std::chrono::milliseconds> m_until;
};

} // namespace morvane
