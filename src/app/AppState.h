#pragma once

#include "app/AboutParts.h"
#include "app/AppLock.h"
#include "app/Assistant.h"
#include "app/DesktopHands.h"
#include "app/GlobalKeys.h"
#include "app/Presentation.h"
#include "app/SealingWatch.h"
#include "app/Storage.h"
#include "app/StoreNotices.h"
#include "app/Voice.h"

#include <QObject>

namespace morvane {

// The root object: everything long-lived in three parts, each made whole from those before it, and the
// application's lifecycle. One for the life of the process, on the main thread.
class AppState : public QObject {
    Q_OBJECT
public:
    // All that is given outlives this object, which ends `work` before its services go. Without
    // `notifications` none are posted.
    AppState(const CommandLine &commandLine, Host host, Clock &clock, const Secrets &secrets, Work &work,
             ReplyNotifying *notifications = nullptr, const VoicePorts &voice = {},
             const DesktopPorts &desktop = {}, const LockPorts &lock = {},
             GlobalShortcutBinding *keys = nullptr, QObject *parent = nullptr);
    ~AppState() override;

    [[nodiscard]] Storage &storage() { return m_storage; }
    [[nodiscard]] Assistant &assistant() { return m_assistant; }
    [[nodiscard]] AppLockService &appLock() { return *m_lock.service; }
    [[nodiscard]] Presentation &presentation() { return m_presentation; }
    [[nodiscard]] Host host() const { return m_host; }

    enum class FirstWindow { now, whenAsked };
    void start(FirstWindow window = FirstWindow::now);
    // Someone asks for the window again.
    void reopen();
    void didBecomeActive();

    enum class Termination { now, cancel };
    // Cancel means that the person is being asked; quitConfirmed() follows unless they stay.
    [[nodiscard]] Termination shouldTerminate();
    void willTerminate();

    // The first half of an erasure: ends what is under way, and deletes what open stores hold. The rest needs
    // nothing to be open, so that this object goes after it.
    void deleteRecords();

Q_SIGNALS:
    void windowNeeded(); // before anything that a window has to hear, which may be made for it
    void mainWindowRequested();
    void quitConfirmed();

private:
    void letThePersonApprove();
    void endWhatRuns();
    void followTheLock();
    void chatsCanBeOpened();
    void showFirstWindow();
    void showWhatChangedNotice();
    [[nodiscard]] bool showOnboarding() const;

    const Host m_host;
    Work &m_work;
    ReplyNotifying *const m_notifications; // may be null
    Storage m_storage;
    Assistant m_assistant;
    Voice m_voice;
    AppLock m_lock;
    AboutParts m_about;
    GlobalKeys m_globalKeys;
    Presentation m_presentation;
    SealingWatch m_sealingWatch;
    StoreNotices m_storeNotices;
    bool m_modelWaitsForKey = false;
};

} // namespace morvane
