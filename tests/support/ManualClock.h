#pragma once

#include "async/Clock.h"

#include <list>

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

    [[nodiscard]] std::size_t pendingAlarms() const { return m_alarms->size(); }

private:
    struct Pending {
        std::chrono::milliseconds due;
        std::function<void()> fire;
    };
    class ManualAlarm;

    QDateTime m_start;
    std::chrono::milliseconds m_elapsed{0};
    std::shared_ptr<std::list<Pending>> m_alarms = std::make_shared<std::list<Pending>>();
};

} // namespace morvane
