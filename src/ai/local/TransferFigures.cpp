#include "ai/local/TransferFigures.h"

#include <cmath>

namespace morvane {

using namespace std::chrono_literals;

TransferFigures TransferMeter::note(qint64 done, std::optional<qint64> total, std::chrono::milliseconds now)
{
    if (!m_marks.empty() && done < m_marks.back().second)
        m_marks.clear();
    // Marks in between say nothing more, and there would be thousands.
    if (m_marks.empty() || now - m_marks.back().first >= 100ms)
        m_marks.emplace_back(now, done);
    while (m_marks.size() > 2 && now - m_marks.front().first > window)
        m_marks.pop_front();

    TransferFigures figures{done, total, std::nullopt, std::nullopt};
    const auto [since, from] = m_marks.front();
    if (now - since < 1s)
        return figures;
    const double seconds = std::chrono::duration<double>(now - since).count();
    figures.bytesPerSecond = static_cast<double>(done - from) / seconds;
    constexpr double longest = 100.0 * 3600; // seconds; beyond it a number says nothing
    if (total && *total >= done && *figures.bytesPerSecond > 0) {
        const double left = static_cast<double>(*total - done) / *figures.bytesPerSecond;
        if (left < longest)
            figures.timeLeft = std::chrono::seconds(static_cast<std::int64_t>(std::ceil(left)));
    }
    return figures;
}

} // namespace morvane
