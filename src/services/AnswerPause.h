#pragma once

#include <chrono>

namespace morvane {

class Clock;

// Wrong answers of a person in a row, and how long no further attempt begins after them: a second after the
// first, twice as long after each further one, up to 64. GUI thread.
class AnswerPause {
public:
    // `clock` outlives this.
    explicit AnswerPause(Clock &clock)
        : m_clock(clock)
    {}

    // Zero for an attempt at once.
    [[nodiscard]] std::chrono::seconds left() const;
    void wrong();
    void right();

private:
    Clock &m_clock;
    int m_wrongAnswers = 0;
    std::chrono::milliseconds m_until{0};
};

} // namespace morvane
