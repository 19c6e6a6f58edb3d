#pragma once

#include "async/Clock.h"

#include <map>

namespace morvane {

// A clock that stands still until a test turns it.
class ManualClock final : public Clock {
public:
    explicit ManualClock(
        const QDateTime &start = QDateTime::fromString(QStringLiteral("2026-03-01T12:00:00Z"), Qt::ISODate));

    [[nodiscard]] QDateTime now() const override { return m_start.addMSecs(m_elapsed.count()); }
    [[nodiscard]] std::chrono::milliseconds elapsed() const override { return m_elapsed; }
    [[nodiscard]] std::unique_ptr<Alarm> after(std::chrono::milliseconds delay,
                                               std::function<void()> fire) override;

    // Moves time on, firing each alarm at its own moment, in order, with queued calls handled in between.
    void advance(std::chrono::milliseconds duration);

    // Those that have neither fired nor been called off.
    [[nodiscard]] std::size_t pendingAlarms() const;

private:
    QDateTime m_start;
    std::chrono::milliseconds m_elapsed{0};
    std::multimap<std::chrono::milliseconds, std::weak_ptr<std::function<void()>>> m_alarms; // by moment due
};

} // namespace morvane
