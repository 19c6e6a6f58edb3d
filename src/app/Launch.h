#pragma once

#include "app/CommandLine.h"
#include "app/OutsideRequests.h"
#include "app/SecretKeeping.h"
#include "async/Clock.h"
#include "async/TaskHandle.h"
#include "async/Work.h"
#include "view_models/StartupViewModel.h"

#include <QCoroTask>
#include <QObject>

#include <memory>
#include <optional>

class QGuiApplication;

namespace morvane {

class AppDelegate;
class AppState;
class DemoPlayer;
struct DesktopServices;
class MainWindowController;
class StartupWindow;
class Tray;
class WindowEngine;

// From the first line of the program to its window. The key to the person's data comes first, and a keyring
// may be slow or ask for its password, so that waiting has a small window of its own; stores are opened only
// when the key is there.
class Launch : public QObject {
    Q_OBJECT
public:
    // `keyring` takes the place of the person's own.
    Launch(QGuiApplication &application, CommandLine commandLine,
           std::unique_ptr<SecretStoring> keyring = nullptr, QObject *parent = nullptr);
    ~Launch() override;

    void start();
    // Someone asks for something from outside.
    void take(const AppRequest &request);

private:
    enum class Way { usual, keyFile, afresh };

    void begin(Way way);
    static QCoro::Task<> openKeychain(QPointer<Launch> self, Way way, std::stop_token stop);
    static QCoro::Task<KeychainOpening> openOn(QPointer<Launch> self, Way way, std::stop_token stop);
    static QCoro::Task<KeychainOpening> openAfresh(QPointer<Launch> self, std::stop_token stop);
    void keychainChanged(KeychainState state);
    [[nodiscard]] StartupViewModel::Ways waysOn(KeychainState state);
    void showWaiting(const QString &sentence, const StartupViewModel::Ways &ways);
    void finish();
    void connectDesktop();
    void eraseAll();
    void endErasure();
    static QCoro::Task<> erase(QPointer<Launch> self, std::stop_token stop);
    void makeWindow();
    void showWindow();
    void showTray();
    void comeMinimised();
    [[nodiscard]] bool hasPutAside() const;
    void tellWhatIsAside();
    void playDemo();

    QGuiApplication &m_application;
    const CommandLine m_commandLine;
    SystemClock m_clock;
    Work m_work{m_clock};
    SecretKeeping m_secrets;
    const std::unique_ptr<DesktopServices> m_desktop;
    KeychainOpening m_opened;                       // with it the program was opened
    std::unique_ptr<StartupWindow> m_startupWindow; // while the key is waited for
    std::unique_ptr<Alarm> m_patience;
    std::unique_ptr<WindowEngine> m_windowEngine; // until the window has it
    std::unique_ptr<AppState> m_state;
    std::unique_ptr<MainWindowController> m_mainWindow;
    std::unique_ptr<AppDelegate> m_delegate;
    std::unique_ptr<Tray> m_tray;
    std::unique_ptr<DemoPlayer> m_demo;
    KeyExpectation m_expectation = KeyExpectation::Unknown; // of the latest attempt
    QString m_folderAside;                                  // named when starting afresh is offered
    bool m_isDataAside = false;
    OutsideRequests m_requests;
    bool m_isWindowWanted;                     // at the end of the start, or only when somebody asks
    std::optional<QByteArray> m_runtimeRecord; // outlives an erasure, as the runtime does
    TaskHandle m_opening;
};

} // namespace morvane
