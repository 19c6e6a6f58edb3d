#pragma once

#include <QPointer>
#include <QWindow>

#include <vector>

namespace morvane {

// The windows of this program. GUI thread.
namespace OwnWindows {

// One of them covers the whole main display.
[[nodiscard]] bool fillMainDisplay();

// While one lives, none of them is shown. Those that were, come back as they were.
class Hidden {
public:
    Hidden();
    ~Hidden();
    Hidden(const Hidden &) = delete;
    Hidden &operator=(const Hidden &) = delete;

    [[nodiscard]] bool isNeeded() const { return !m_windows.empty(); }

private:
    struct Was {
        QPointer<QWindow> window;
        bool wasActive;
    };
    std::vector<Was> m_windows;
};

} // namespace OwnWindows

} // namespace morvane
