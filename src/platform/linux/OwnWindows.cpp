#include "platform/linux/OwnWindows.h"

#include <QGuiApplication>
#include <QScreen>

#include <algorithm>
#include <ranges>

namespace morvane {

// A window on another workspace isn't exposed.
bool OwnWindows::fillMainDisplay()
{
    const QWindowList windows = QGuiApplication::topLevelWindows();
    return std::ranges::any_of(windows, [](const QWindow *window) {
        return window->isVisible() && window->isExposed() &&
               window->windowStates().testFlag(Qt::WindowFullScreen) &&
               window->screen() == QGuiApplication::primaryScreen();
    });
}

OwnWindows::Hidden::Hidden()
{
    const QWindowList windows = QGuiApplication::topLevelWindows();
    for (QWindow *window : windows) {
        const bool isSeen = window->isVisible() && !window->windowStates().testFlag(Qt::WindowMinimized);
        if (isSeen)
            m_windows.push_back({window, window->isActive()});
    }
    for (const Was &was : m_windows)
        was.window->hide();
}

OwnWindows::Hidden::~Hidden()
{
    for (const Was &was : m_windows) {
        if (!was.window || was.window->isVisible())
            continue; // shown again by someone else
        was.window->setVisible(true);
        if (was.wasActive)
            was.window->requestActivate();
    }
}

} // namespace morvane
