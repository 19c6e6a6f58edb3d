#pragma once

#include <QObject>
#include <QPointer>
#include <QQuickWindow>
#include <QString>

namespace morvane {

struct Presentation;
class WindowEngine;

// The settings window of a locked application. It is made when it is asked for from the curtain, holds
// nothing of what is sealed, and is gone with the lock. What the constructor takes outlives this.
class LockedSettings : public QObject {
    Q_OBJECT
public:
    LockedSettings(Presentation &presentation, WindowEngine &engine, QWindow &mainWindow);
    ~LockedSettings() override;

    // Takes it away. Says which of its pages was shown; empty where it wasn't open.
    [[nodiscard]] QString leave();

private Q_SLOTS:
    void mainWindowIsBack();

private:
    void open(const QString &page = {}); // empty: the one that it was at
    [[nodiscard]] bool make();

    Presentation &m_presentation;
    WindowEngine &m_engine;
    QWindow &m_mainWindow;
    QPointer<QQuickWindow> m_window;
};

} // namespace morvane
