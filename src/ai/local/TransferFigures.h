#pragma once

#include <QtGlobal>

#include <chrono>
#include <deque>
#include <optional>
#include <utility>

namespace morvane {

// How far something is that is being fetched.
struct TransferFigures {
    qint64 done = 0;                              // bytes
    std::optional<qint64> total;                  // bytes, where it is known
    std::optional<double> bytesPerSecond;         // over the last seconds; nothing right after the start
    std::optional<std::chrono::seconds> timeLeft; // at that speed

    bool operator==(const TransferFigures &) const = default;
};

// Works the figures out from what has come so far. A resumed part counts as done and not as speed.
class TransferMeter {
public:
    static constexpr std::chrono::milliseconds window{8'000};

    // `done` may start anywhere, and anew when something else is fetched.
    [[nodiscard]] TransferFigures note(qint64 done, std::optional<qint64> total,
                                       std::chrono::milliseconds now);

private:
    std::deque<std::pair<std::chrono::milliseconds, qint64>> m_marks; // oldest first
};

} // namespace morvane
