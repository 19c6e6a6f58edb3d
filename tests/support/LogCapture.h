#pragma once

#include <QStringList>

namespace morvane {

// The log lines of the application's own categories while it lives, as "category: line". One at a time.
class LogCapture {
public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture &) = delete;
    LogCapture &operator=(const LogCapture &) = delete;

    [[nodiscard]] const QStringList &lines() const;
};

} // namespace morvane
