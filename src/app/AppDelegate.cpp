#include "app/AppDelegate.h"

#include "utils/log/Log.h"
#include "view_models/chat/ChatViewModel.h"

#include <QGuiApplication>

namespace morvane {

using namespace Qt::StringLiterals;

AppDelegate::AppDelegate(QGuiApplication &application, AppState &state, QObject *parent)
    : QObject(parent)
    , m_application(application)
    , m_state(state)
{
    // Closing the last window leaves the program running, so that a reply still arrives.
    QGuiApplication::setQuitOnLastWindowClosed(false);
    connect(&application, &QGuiApplication::applicationStateChanged, this, [this](Qt::ApplicationState now) {
        m_state.presentation().chat->setWindowInFront(now == Qt::ApplicationActive);
        if (now == Qt::ApplicationActive)
            m_state.didBecomeActive();
    });
    connect(&application, &QCoreApplication::aboutToQuit, this, &AppDelegate::willTerminate);
    connect(&state, &AppState::quitConfirmed, this, &AppDelegate::end);
}

void AppDelegate::didFinishLaunching(AppState::FirstWindow window)
{
    Log::info(Log::Category::App, "Application did finish launching"_L1);
    if (m_state.host() == Host::test) {
        Log::info(Log::Category::App, "Unit-test host detected; skipping UI startup"_L1);
        return;
    }
    m_state.start(window);
}

void AppDelegate::requestQuit()
{
    if (m_state.shouldTerminate() == AppState::Termination::now)
        end();
}

// Not QCoreApplication::quit(): that asks the windows to close first, and closing one only puts it away.
void AppDelegate::end()
{
    QCoreApplication::exit(0);
}

void AppDelegate::willTerminate()
{
    if (std::exchange(m_hasTerminated, true))
        return;
    Log::info(Log::Category::App, "Application will terminate"_L1);
    m_state.willTerminate();
}

} // namespace morvane
