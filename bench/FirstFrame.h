#pragma once

#include <QCoreApplication>
#include <QEvent>
#include <QFile>
#include <QQuickWindow>

#include <cstdio>
#include <unistd.h>

namespace morvane {

// Ends the program when its first window has shown its first frame, and prints the resident memory in bytes.
class FirstFrame : public QObject {
public:
    FirstFrame() { QCoreApplication::instance()->installEventFilter(this); }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        auto *window = event->type() == QEvent::Expose ? qobject_cast<QQuickWindow *>(watched) : nullptr;
        if (window && !m_window) {
            m_window = window;
            connect(window, &QQuickWindow::frameSwapped, this, &FirstFrame::report, Qt::QueuedConnection);
        }
        return false;
    }

private:
    void report()
    {
        QFile statm(QStringLiteral("/proc/self/statm"));
        if (statm.open(QIODevice::ReadOnly))
            std::printf("%lld\n", statm.readAll().split(' ').value(1).toLongLong() * sysconf(_SC_PAGESIZE));
        std::fflush(stdout);
        QCoreApplication::exit(0);
    }

    QQuickWindow *m_window = nullptr;
};

} // namespace morvane
