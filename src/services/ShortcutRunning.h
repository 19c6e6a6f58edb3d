#pragma once

#include "services/DesktopActionError.h"

#include <QCoroTask>
#include <QString>

#include <optional>
#include <stop_token>
#include <vector>

namespace morvane {

// Programs that the person put together for single tasks, by name. GUI thread.
class ShortcutRunning {
public:
    struct Shortcut {
        QString name;
        QString comment = {}; // what it says of itself; may be empty
        std::optional<DesktopActionError::ShortcutRefused> refusal = {}; // why it isn't run

        bool operator==(const Shortcut &) const = default;
    };

    virtual ~ShortcutRunning() = default;

    // By name. Nothing when they can't be told, which is logged. Throws DesktopActionError
    // (shortcutsUnavailable) where there is no place for them, and CancelledError.
    [[nodiscard]] virtual QCoro::Task<std::optional<std::vector<Shortcut>>> list(std::stop_token stop) = 0;

    // What it printed, trimmed and bounded. Throws DesktopActionError and CancelledError; either way it and
    // all it started have ended, but for what left its process group.
    [[nodiscard]] virtual QCoro::Task<QString> run(QString name, std::optional<QString> input,
                                                   std::stop_token stop) = 0;
};

} // namespace morvane
