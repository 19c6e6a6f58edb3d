#pragma once

#include "app/AppState.h"

#include <QObject>

class QGuiApplication;
class QQmlEngine;

namespace morvane {

// Receives the lifecycle of the application object and of the desktop, and hands it on.
class AppDelegate : public QObject {
    Q_OBJECT
public:
    AppDelegate(QGuiApplication &application, AppState &state, QObject *parent = nullptr);

    // The application object is ready.
    void didFinishLaunching(AppState::FirstWindow window = AppState::FirstWindow::now);

    // Quits unless the person has to be asked first.
    void requestQuit();

    // Ends the event loop without a question.
    static void end();

private:
    void willTerminate();

    QGuiApplication &m_application;
    AppState &m_state;
    bool m_hasTerminated = false;
};

} // namespace morvane
