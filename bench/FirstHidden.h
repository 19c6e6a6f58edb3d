#pragma once

#include <QCoreApplication>
#include <QEvent>
#include <QQuickWindow>

namespace morvane {

// Closes each window of the program once it has shown its first frame, as a person would.
class FirstHidden : public QObject {
public:
    FirstHidden() { QCoreApplication::instance()->installEventFilter(this); }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        auto *window = event->type() == QEvent::Expose ? qobject_cast<QQuickWindow *>(watched) : nullptr;
        if (window && m_window != window) {
            m_window = window;
            connect(window, &QQuickWindow::frameSwapped, window, &QWindow::close, Qt::QueuedConnection);
        }
        return false;
    }

private:
    QQuickWindow *m_window = nullptr;
};

} // namespace morvane
