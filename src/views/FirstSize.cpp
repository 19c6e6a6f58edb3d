#include "views/FirstSize.h"

#include <QScreen>

namespace morvane {

namespace {

// A frame is known only once its window shows. This is what the title bars of desktops take at most.
constexpr int titleBar = 40;

} // namespace

void FirstSize::componentComplete()
{
    const QScreen *screen = m_window ? m_window->screen() : nullptr;
    if (!screen)
        return;
    const QSize room = screen->availableSize() - QSize(0, titleBar);
    m_window->setMinimumSize(m_least.toSize().boundedTo(room));
    m_window->resize(m_best.toSize().boundedTo(room));
}

} // namespace morvane
