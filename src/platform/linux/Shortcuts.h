#pragma once

#include "services/ShortcutRunning.h"

#include <chrono>

namespace morvane {

class Clock;
class Work;

// The shortcuts of a folder. A text goes to one as a file, by "--input-path" and its path. GUI thread.
class Shortcuts final : public ShortcutRunning {
public:
    static constexpr std::chrono::milliseconds listPatience{5'000};
    static constexpr std::chrono::milliseconds runPatience{20'000};

    // `scratch` is where each run gets its working folder, which is empty and goes with it. `clock` and
    // `work` outlive this object.
    Shortcuts(QString folder, QString scratch, Clock &clock, Work &work);

    [[nodiscard]] const QString &folder() const { return m_folder; }

    QCoro::Task<std::optional<std::vector<Shortcut>>> list(std::stop_token stop) override;
    QCoro::Task<QString> run(QString name, std::optional<QString> input, std::stop_token stop) override;

private:
    const QString m_folder;
    const QString m_scratch;
    Clock &m_clock;
    Work &m_work;
};

} // namespace morvane
