#pragma once

#include <QDateTime>

#include <chrono>

namespace morvane {

// Whether something learnt at a moment may still be used. An age that a change of the clock made negative is
// no age.
[[nodiscard]] inline bool isFresh(const QDateTime &learntAt, const QDateTime &now,
                                  std::chrono::milliseconds keptFor)
{
    const std::chrono::milliseconds age(learntAt.msecsTo(now));
    return age.count() >= 0 && age < keptFor;
}

} // namespace morvane
