#include "views/WindowKeeper.h"

#include <QQuickWindow>

namespace morvane {

void WindowKeeper::itemChange(ItemChange change, const ItemChangeData &data)
{
    if (change == ItemSceneChange) {
        if (m_former) {
            m_former->removeEventFilter(this);
            m_former->disconnect(this);
        }
        m_former = data.window;
        if (data.window) {
            data.window->installEventFilter(this);
            connect(data.window, &QQuickWindow::activeFocusItemChanged, this, &WindowKeeper::watch);
        }
    }
    QQuickItem::itemChange(change, data);
}

} // namespace morvane
